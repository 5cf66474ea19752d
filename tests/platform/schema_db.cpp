// In-memory catalogues from the shipped schema script (see schema_db.h).
#include "schema_db.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace platformtest {

SchemaDb::SchemaDb() {
    if (sqlite3_open(":memory:", &m_db) != SQLITE_OK) {
        ADD_FAILURE() << "cannot open an in-memory database";
        return;
    }
    std::ifstream in(MDB_TEST_SCHEMA_SCRIPT);
    std::stringstream script;
    script << in.rdbuf();
    if (script.str().empty()) {
        ADD_FAILURE() << "cannot read " << MDB_TEST_SCHEMA_SCRIPT;
        return;
    }
    std::string error;
    if (exec(script.str(), &error) != SQLITE_OK) {
        ADD_FAILURE() << "schema script failed: " << error;
    }
}

SchemaDb::~SchemaDb() { sqlite3_close(m_db); }

int SchemaDb::exec(const std::string &sql, std::string *error) {
    char *message = nullptr;
    int rc = sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &message);
    if (error != nullptr) {
        *error = message != nullptr ? message : "";
    }
    sqlite3_free(message);
    return rc;
}

std::vector<std::string> SchemaDb::columns(const std::string &sql) {
    std::vector<std::string> names;
    sqlite3_stmt *stmt = nullptr;
    if (sqlite3_prepare_v2(m_db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
        ADD_FAILURE() << "cannot prepare [" << sql << "]: " << sqlite3_errmsg(m_db);
        return names;
    }
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) {
        names.emplace_back(sqlite3_column_name(stmt, i));
    }
    sqlite3_finalize(stmt);
    return names;
}

std::vector<std::string> SchemaDb::plan(const std::string &sql) {
    std::vector<std::string> details;
    sqlite3_stmt *stmt = nullptr;
    std::string explain = "EXPLAIN QUERY PLAN " + sql;
    if (sqlite3_prepare_v2(m_db, explain.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
        ADD_FAILURE() << "cannot prepare [" << explain << "]: " << sqlite3_errmsg(m_db);
        return details;
    }
    // Columns: id, parent, notused, detail.
    while (sqlite3_step(stmt) == SQLITE_ROW) {
        const unsigned char *detail = sqlite3_column_text(stmt, 3);
        details.emplace_back(detail != nullptr ? reinterpret_cast<const char *>(detail) : "");
    }
    sqlite3_finalize(stmt);
    return details;
}

} // namespace platformtest
