// Helpers shared by the store tests: status checks by name, a counting usleep, a second
// connection on a catalogue file, and rows inserted before a chosen statement.
#pragma once

#include "catalogue.h"

#include <mdb.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <memory>
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

// While alive, runs `insert` on a second connection of its own on the file at `path`, just before
// the first statement on `db` whose text is `sql` starts (before that statement takes any lock).
class InsertBefore {
public:
    InsertBefore(sqlite3 *db, const std::string &path, std::string sql, std::string insert);
    ~InsertBefore() { sqlite3_trace_v2(m_db, 0, nullptr, nullptr); }
    InsertBefore(const InsertBefore &) = delete;
    InsertBefore &operator=(const InsertBefore &) = delete;
    int rc() const { return m_rc; }  // the insert's result code; -1 until it ran

private:
    sqlite3 *m_db;
    Connection m_other;
    std::string m_sql, m_insert;
    int m_rc = -1;
};

using mdbtest::Join;

}  // namespace storetest
