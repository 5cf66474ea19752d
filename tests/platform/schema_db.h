// An in-memory catalogue made straight from the shipped schema script with SQLite alone, for the
// tests of the platform tables and of the schema's indexes.
#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

namespace platformtest {

class SchemaDb {
public:
    // Opens ":memory:" and runs the schema script; fails the current test when it cannot.
    SchemaDb();
    ~SchemaDb();
    SchemaDb(const SchemaDb &) = delete;
    SchemaDb &operator=(const SchemaDb &) = delete;

    sqlite3 *db() const { return m_db; }
    // Runs SQL; returns the SQLite result code and puts the error text in *error when given.
    int exec(const std::string &sql, std::string *error = nullptr);
    // Names of the result columns of a statement, in order (the statement is prepared, not run).
    std::vector<std::string> columns(const std::string &sql);
    // The detail lines of EXPLAIN QUERY PLAN for a statement, in plan order.
    std::vector<std::string> plan(const std::string &sql);

private:
    sqlite3 *m_db = nullptr;
};

} // namespace platformtest
