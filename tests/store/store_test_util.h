// Helpers shared by the store tests: status checks by name, a counting usleep, a second
// connection on a catalogue file, and a hook that runs code just before a given statement starts.
#pragma once

#include <mdb.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
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

// A plain SQLite connection of its own on an existing file, closed when it goes.
class SecondConnection {
public:
    explicit SecondConnection(const std::string &path);
    ~SecondConnection();
    SecondConnection(const SecondConnection &) = delete;
    SecondConnection &operator=(const SecondConnection &) = delete;

    sqlite3 *db() const { return m_db; }
    // sqlite3_exec without any busy handling; returns SQLite's code.
    int exec(const std::string &sql);

private:
    sqlite3 *m_db = nullptr;
};

// While alive, runs `action` once, just before the first statement on `db` whose text equals
// `sql` starts (before it takes any lock).
class BeforeStatement {
public:
    BeforeStatement(sqlite3 *db, std::string sql, std::function<void()> action);
    ~BeforeStatement();
    BeforeStatement(const BeforeStatement &) = delete;
    BeforeStatement &operator=(const BeforeStatement &) = delete;

    bool fired() const { return m_fired; }

private:
    static int onTrace(unsigned type, void *ctx, void *stmt, void *text);
    sqlite3 *m_db;
    std::string m_sql;
    std::function<void()> m_action;
    bool m_fired = false;
};

// While alive, counts the statements that start on `db`.
class StatementCounter {
public:
    explicit StatementCounter(sqlite3 *db);
    ~StatementCounter();
    StatementCounter(const StatementCounter &) = delete;
    StatementCounter &operator=(const StatementCounter &) = delete;

    int count() const { return m_count; }

private:
    sqlite3 *m_db;
    int m_count = 0;
};

// The values of a column of a query, one text per row ("NULL" for SQL NULL), in row order.
std::vector<std::string> column(sqlite3 *db, const std::string &sql);

}  // namespace storetest
