// Owning holders for what SQLite allocates on our behalf: statement texts made by sqlite3_mprintf
// and result tables of sqlite3_get_table. Each releases its block on every path out of a scope.
#pragma once

#include <sqlite3.h>

#include <memory>

struct MdbSqliteFree {
    void operator()(char *pcText) const { sqlite3_free(pcText); }
};

// A statement text from sqlite3_mprintf; empty (null) when formatting failed.
using MdbSqlText = std::unique_ptr<char, MdbSqliteFree>;

// A result table of sqlite3_get_table, released with sqlite3_free_table.
class MdbResultTable {
public:
    MdbResultTable() = default;
    ~MdbResultTable() { sqlite3_free_table(m_ppcTable); }
    MdbResultTable(const MdbResultTable &) = delete;
    MdbResultTable &operator=(const MdbResultTable &) = delete;

    char ***out() { return &m_ppcTable; }
    char **get() const { return m_ppcTable; }

private:
    char **m_ppcTable = nullptr;
};
