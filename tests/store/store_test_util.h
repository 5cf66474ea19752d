// Helpers shared by the store tests: status checks by name, a counting usleep, a second
// connection on a catalogue file, a hook before a chosen statement, and values and rows as text.
#pragma once

#include <mdb.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>

// Compares status words by name so that a failure reads "MDB_ERR_DB" vs "MDB_OK".
#define EXPECT_STATUS(expr, expected) EXPECT_STREQ(QRV_MDB_StatusName(expr), QRV_MDB_StatusName(expected))

namespace storetest {

// usleep calls made by the thread that last called resetSleepCount (the busy handler sleeps
// through usleep; the test program's usleep counts, then really sleeps).
int sleepCount();
void resetSleepCount();

// A plain SQLite connection of its own on an existing file, without busy handling.
using Connection = std::unique_ptr<sqlite3, int (*)(sqlite3 *)>;
Connection openSecond(const std::string &path);

// While alive, runs `action` once just before the first statement on `db` whose text is `sql`
// starts (before it takes any lock).
class BeforeStatement {
public:
    BeforeStatement(sqlite3 *db, std::string sql, std::function<void()> action);
    ~BeforeStatement();
    BeforeStatement(const BeforeStatement &) = delete;
    BeforeStatement &operator=(const BeforeStatement &) = delete;
    bool fired() const { return m_fired; }

private:
    sqlite3 *m_db;
    std::string m_sql;
    std::function<void()> m_action;
    bool m_fired = false;
};

// The values joined with '|', as rows() prints the columns of a row.
template <typename... T>
std::string Join(const T &...values) {
    std::ostringstream out;
    ((out << values << '|'), ...);
    return out.str().substr(0, out.str().size() - 1);
}

// The rows of a query: columns joined with '|', rows with ',' ("NULL" for SQL NULL), in row order.
std::string rows(sqlite3 *db, const std::string &sql);

}  // namespace storetest
