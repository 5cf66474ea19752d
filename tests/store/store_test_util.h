// Helpers shared by the store tests: status checks by name, a counting usleep, a second
// connection on a catalogue file, statement hooks, and reading rows back as text.
#pragma once

#include <mdb.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <functional>
#include <string>
#include <vector>

// Compares status words by name so that a failure reads "MDB_ERR_DB" vs "MDB_OK".
#define EXPECT_STATUS(expr, expected) EXPECT_STREQ(QRV_MDB_StatusName(expr), QRV_MDB_StatusName(expected))
#define ASSERT_STATUS(expr, expected) ASSERT_STREQ(QRV_MDB_StatusName(expr), QRV_MDB_StatusName(expected))

namespace storetest {

// Number of usleep calls made by the thread that last called resetSleepCount (the busy handler
// sleeps through usleep). The test program's usleep counts and then really sleeps.
int sleepCount();
void resetSleepCount();

// A plain SQLite connection of its own on an existing file, without busy handling.
class SecondConnection {
public:
    explicit SecondConnection(const std::string &path);
    ~SecondConnection();
    SecondConnection(const SecondConnection &) = delete;
    SecondConnection &operator=(const SecondConnection &) = delete;
    int exec(const std::string &sql);  // SQLite's result code

private:
    sqlite3 *m_db = nullptr;
};

// While alive, traces the statements that start on `db`: counts them, and runs `action` once just
// before the first one whose text equals `sql` (before it takes any lock).
class StatementHook {
public:
    explicit StatementHook(sqlite3 *db, std::string sql = "", std::function<void()> action = nullptr);
    ~StatementHook();
    StatementHook(const StatementHook &) = delete;
    StatementHook &operator=(const StatementHook &) = delete;
    int count() const { return m_count; }
    bool fired() const { return m_fired; }

private:
    static int onTrace(unsigned type, void *ctx, void *stmt, void *text);
    sqlite3 *m_db;
    std::string m_sql;
    std::function<void()> m_action;
    int m_count = 0;
    bool m_fired = false;
};

// The rows of a query, each as its columns joined with '|' ("NULL" for SQL NULL), in row order.
std::vector<std::string> rows(sqlite3 *db, const std::string &sql);

}  // namespace storetest
