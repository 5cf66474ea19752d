// The busy policy: the handler's answers for a budget, and what MdbSetBusyTimeout installs on a
// connection, observed against a real lock held by a second connection.
#include "store_test_util.h"

#include "catalogue.h"

#include <gtest/gtest.h>

namespace {

using storetest::resetSleepCount;
using storetest::sleepCount;

// Calls the handler with counts 0, 1, 2, ... until it gives up; returns how many times it said
// "retry" and the count at which it gave up.
struct HandlerRun {
    int retries = 0;
    int gaveUpAt = -1;
};
HandlerRun RunHandler(int32_t budget) {
    HandlerRun run;
    for (int count = 0; count < 1000; ++count) {
        if (MdbSqliteBusyCallback(&budget, count) == 0) {
            run.gaveUpAt = count;
            break;
        }
        ++run.retries;
    }
    return run;
}

TEST(BusyHandler, SleepsAsOftenAsTenGoesIntoTheBudget) {
    struct Case {
        int32_t budget;
        int retries;  // = sleeps; the next count gives up
    };
    const Case cases[] = {
        {80, 8},  // the budget every open sets: counts 0..7 retry, 8 gives up
        {9, 0},   // less than one sleep: gives up at once
        {10, 1},  // exactly one sleep
        {25, 2},  // integer quotient
        {1, 0},
        {0, 0},
        {-40, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE("budget " + std::to_string(c.budget));
        resetSleepCount();
        HandlerRun run = RunHandler(c.budget);
        EXPECT_EQ(run.retries, c.retries);
        EXPECT_EQ(run.gaveUpAt, c.retries);
        EXPECT_EQ(sleepCount(), c.retries) << "one 10 ms sleep per retry, none when giving up";
    }
}

TEST(BusyHandler, NoBudgetPointerGivesUp) {
    resetSleepCount();
    EXPECT_EQ(MdbSqliteBusyCallback(nullptr, 0), 0);
    EXPECT_EQ(sleepCount(), 0);
}

// A second connection holds the write lock for the whole test; a write on the first connection
// through plain sqlite3_exec shows how many times its busy handler slept before SQLITE_BUSY.
TEST(BusyTimeout, InstallsOrRemovesTheHandler) {
    mdbtest::Catalogue catalogue;
    storetest::SecondConnection holder(catalogue.dbPath());
    ASSERT_EQ(holder.exec("BEGIN IMMEDIATE"), SQLITE_OK);

    struct Case {
        const char *what;
        int32_t budget;
        int32_t overwriteAfter;  // written to g_mdbTimeout after the call when not 0
        int32_t expectedTimeout;
        int expectedSleeps;
    };
    const Case cases[] = {
        {"budget 30", 30, 0, 30, 3},
        {"the handler reads g_mdbTimeout at every wait", 30, 50, 50, 5},
        {"budget 0 removes the handler, keeps the global", 0, 0, 55, 0},
        {"negative budget likewise", -20, 0, 55, 0},
        {"budget 80 again", 80, 0, 80, 8},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        g_mdbTimeout = 55;
        EXPECT_EQ(MdbSetBusyTimeout(catalogue.db(), c.budget), 0);
        if (c.overwriteAfter != 0) {
            g_mdbTimeout = c.overwriteAfter;
        }
        EXPECT_EQ(g_mdbTimeout, c.expectedTimeout);
        resetSleepCount();
        EXPECT_EQ(sqlite3_exec(catalogue.db(), "insert into GENRES values (NULL, 'x')", nullptr, nullptr, nullptr),
                  SQLITE_BUSY);
        EXPECT_EQ(sleepCount(), c.expectedSleeps);
    }
    EXPECT_EQ(holder.exec("ROLLBACK"), SQLITE_OK);
    EXPECT_EQ(catalogue.scalar("select count(*) from GENRES"), "0");
}

}  // namespace
