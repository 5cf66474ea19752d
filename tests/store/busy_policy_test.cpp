// The busy policy and the statement runner: the handler's answers for a budget, what
// MdbSetBusyTimeout installs, and a real write transaction of another thread's connection that a
// write through MdbExecSql waits out.
#include "store_test_util.h"

#include "catalogue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using namespace std::chrono_literals;
using storetest::resetSleepCount;
using storetest::sleepCount;

TEST(BusyHandler, SleepsAsOftenAsTenGoesIntoTheBudget) {
    const std::pair<int32_t, int> cases[] = {{80, 8}, {9, 0}, {10, 1}, {25, 2}, {0, 0}, {-40, 0}};
    for (const auto &c : cases) {
        SCOPED_TRACE("budget " + std::to_string(c.first));
        int32_t budget = c.first;
        resetSleepCount();
        int count = 0;  // retries until the handler gives up, i.e. the count at which it does
        while (count < 1000 && MdbSqliteBusyCallback(&budget, count) == 1) {
            ++count;
        }
        EXPECT_EQ(count, c.second);
        EXPECT_EQ(sleepCount(), c.second) << "one 10 ms sleep per retry, none when giving up";
    }
}

// A second connection holds the write lock; a plain sqlite3_exec write on the first one shows how
// often its busy handler slept before SQLITE_BUSY.
TEST(BusyTimeout, InstallsOrRemovesTheHandler) {
    mdbtest::Catalogue catalogue;
    storetest::SecondConnection holder(catalogue.dbPath());
    ASSERT_EQ(holder.exec("BEGIN IMMEDIATE"), SQLITE_OK);
    struct Case {
        int32_t budget;
        int32_t setAfterwards;  // written to g_mdbTimeout after the call when not 0
        int32_t expectedTimeout;
        int expectedSleeps;
    };
    const Case cases[] = {
        {30, 0, 30, 3},
        {30, 50, 50, 5},  // the handler reads g_mdbTimeout at every wait
        {0, 0, 55, 0},  // no handler; the global keeps its value
        {-20, 0, 55, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE("budget " + std::to_string(c.budget));
        g_mdbTimeout = 55;
        EXPECT_EQ(MdbSetBusyTimeout(catalogue.db(), c.budget), 0);
        if (c.setAfterwards != 0) {
            g_mdbTimeout = c.setAfterwards;
        }
        EXPECT_EQ(g_mdbTimeout, c.expectedTimeout);
        resetSleepCount();
        EXPECT_EQ(sqlite3_exec(catalogue.db(), "insert into GENRES values (NULL, 'x')", nullptr, nullptr, nullptr),
                  SQLITE_BUSY);
        EXPECT_EQ(sleepCount(), c.expectedSleeps);
    }
}

// Another thread's connection writes a row in a transaction and holds it until this thread's busy
// handler has slept 20 times (more than two budgets of 80 ms: only the runner's re-runs can
// succeed), then commits. Every wait is bounded.
TEST(StatementRunner, WaitsOutAnotherConnectionsTransaction) {
    mdbtest::Catalogue catalogue;
    constexpr int kSleepsWhileHeld = 20;
    std::atomic<bool> locked{false};
    std::atomic<int> sleepsWhileHeld{0}, commitRc{-1};
    resetSleepCount();
    std::thread holder([&, path = catalogue.dbPath()] {
        storetest::SecondConnection conn(path);
        locked = conn.exec("BEGIN IMMEDIATE; insert into GENRES values (NULL, 'held')") == SQLITE_OK;
        auto deadline = std::chrono::steady_clock::now() + 20s;
        while (locked && sleepCount() < kSleepsWhileHeld && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(1ms);
        }
        sleepsWhileHeld = sleepCount();
        // The writer holds a shared lock for an instant while it reads: retry the commit, bounded.
        for (int attempt = 0; attempt < 20000 && (commitRc = conn.exec("COMMIT")) == SQLITE_BUSY; ++attempt) {
            std::this_thread::sleep_for(1ms);
        }
        locked = true;  // release the main thread even when BEGIN failed
    });
    for (auto deadline = std::chrono::steady_clock::now() + 20s; !locked && std::chrono::steady_clock::now() < deadline;) {
        std::this_thread::sleep_for(1ms);
    }

    // The batch reads, then writes: each busy run starts again from the read.
    int reads = 0;
    auto countRow = [](void *arg, int, char **, char **) {
        ++*static_cast<int *>(arg);
        return 0;
    };
    int rc = MdbExecSql(catalogue.db(), "select count(*) from GENRES; insert into GENRES values (NULL, 'waiting')",
                        countRow, &reads, nullptr);
    holder.join();

    EXPECT_EQ(rc, SQLITE_OK);
    EXPECT_EQ(commitRc, SQLITE_OK);
    EXPECT_GE(sleepsWhileHeld, kSleepsWhileHeld) << "the write did not wait on the held lock";
    EXPECT_GE(reads, 2) << "a busy batch runs again from its first statement";
    EXPECT_EQ(storetest::rows(catalogue.db(), "select name from GENRES order by exID"),
              (std::vector<std::string>{"held", "waiting"}));
}

TEST(StatementRunner, RefusesNullArguments) {
    mdbtest::Catalogue catalogue;
    EXPECT_EQ(MdbExecSql(nullptr, "select 1", nullptr, nullptr, nullptr), SQLITE_MISUSE);
    EXPECT_EQ(MdbExecSql(catalogue.db(), nullptr, nullptr, nullptr, nullptr), SQLITE_MISUSE);
}

}  // namespace
