// The shared row callbacks, fed by real statements through the runner: conversions, SQL NULL,
// the last row winning, the 255-character cut, the list cursor, and null arguments.
#include "store_test_util.h"

#include "catalogue.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

class RowCallbacks : public ::testing::Test {
protected:
    int run(const std::string &sql, MdbRowCallback callback, void *arg) {
        return MdbExecSql(catalogue.db(), sql.c_str(), callback, arg, nullptr);
    }
    mdbtest::Catalogue catalogue;
};

TEST_F(RowCallbacks, CountCallback) {
    struct Case {
        const char *sql;
        uint32_t preset;
        uint32_t expected;
    };
    const Case cases[] = {
        {"select 42", 7, 42},
        {"select '4294967295'", 7, 4294967295u},
        {"select 3 union all select 9", 7, 9},  // the last row wins
        {"select NULL", 7, 0},
        {"select 1 where 0", 7, 7},  // no row: nothing stored
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.sql);
        uint32_t value = c.preset;
        EXPECT_EQ(run(c.sql, MdbGetCountCallback, &value), SQLITE_OK);
        EXPECT_EQ(value, c.expected);
    }
}

TEST_F(RowCallbacks, IdCallback) {
    struct Case {
        const char *sql;
        long long expected;
    };
    const Case cases[] = {
        {"select 5000000000", 5000000000LL},
        {"select -12", -12},
        {"select NULL", -1},  // e.g. min(id) of a folder without children
        {"select 1 union all select 2", 2},
        {"select 1 where 0", 99},  // untouched
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.sql);
        long long value = 99;
        EXPECT_EQ(run(c.sql, MdbGetIdCallback, &value), SQLITE_OK);
        EXPECT_EQ(value, c.expected);
    }
}

TEST_F(RowCallbacks, NameCallbackCutsAt255Characters) {
    struct Case {
        std::string value;
        std::string expected;
    };
    const std::string longName(300, 'n');
    const Case cases[] = {
        {"Jazz", "Jazz"},
        {std::string(255, 'a'), std::string(255, 'a')},
        {longName, longName.substr(0, 255)},
        {"", ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.value.size());
        char name[256 + 8];
        std::memset(name, '#', sizeof name);
        EXPECT_EQ(run("select '" + c.value + "'", MdbGetNameCallback, name), SQLITE_OK);
        EXPECT_EQ(std::string(name), c.expected);
        EXPECT_EQ(name[256], '#') << "wrote past the 256-byte buffer";
    }
    char name[256] = "kept";
    EXPECT_EQ(run("select NULL", MdbGetNameCallback, name), SQLITE_OK);
    EXPECT_STREQ(name, "");
}

TEST_F(RowCallbacks, IdListCallbackAppendsAtTheCursor) {
    long long ids[4] = {0, 0, 0, -7};
    long long *cursor = ids;
    EXPECT_EQ(run("select 10 union all select 20 union all select 30", MdbGetIdListCallback, &cursor), SQLITE_OK);
    EXPECT_EQ(cursor, ids + 3);
    EXPECT_EQ(ids[0], 10);
    EXPECT_EQ(ids[1], 20);
    EXPECT_EQ(ids[2], 30);
    EXPECT_EQ(ids[3], -7);
}

TEST(StatementRunner, ReportsSqliteResultCodes) {
    mdbtest::Catalogue catalogue;
    struct Case {
        const char *sql;
        int expected;
    };
    const Case cases[] = {
        {"insert into GENRES values (NULL, 'a')", SQLITE_OK},
        {"select * from NO_SUCH_TABLE", SQLITE_ERROR},
        {"insert into GENRES values (1, 'again')", SQLITE_CONSTRAINT},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.sql);
        EXPECT_EQ(MdbExecSql(catalogue.db(), c.sql, nullptr, nullptr, nullptr), c.expected);
    }
    // A callback that stops the statement makes it end with SQLITE_ABORT.
    auto stop = [](void *, int, char **, char **) { return 1; };
    EXPECT_EQ(MdbExecSql(catalogue.db(), "select 1", stop, nullptr, nullptr), SQLITE_ABORT);
    // The error text, when asked for, is SQLite's and the caller frees it.
    char *err = nullptr;
    EXPECT_EQ(MdbExecSql(catalogue.db(), "select * from NO_SUCH_TABLE", nullptr, nullptr, &err), SQLITE_ERROR);
    ASSERT_NE(err, nullptr);
    EXPECT_NE(std::string(err).find("NO_SUCH_TABLE"), std::string::npos);
    sqlite3_free(err);
    EXPECT_EQ(MdbExecSql(nullptr, "select 1", nullptr, nullptr, nullptr), SQLITE_MISUSE);
    EXPECT_EQ(MdbExecSql(catalogue.db(), nullptr, nullptr, nullptr, nullptr), SQLITE_MISUSE);
}

}  // namespace
