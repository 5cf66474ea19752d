// Probes for the search tests: translating criteria into a WHERE text, watching the statements
// that run on a connection (sqlite3_trace_v2), refusing and recording every statement action that
// is not a read (sqlite3_set_authorizer), and checking that a WHERE text is valid SQL.
#pragma once

#include <mdb.h>

#include <string>
#include <vector>

namespace searchtest {

// The outcome of MDBSearchCriteriaSyntax and MDBSearchCriteriaCheck on one container and criteria.
struct Translated {
    std::string status;       // status name of the first failing step, or "MDB_OK"
    std::string where;        // the WHERE text
    uint32_t resultClass = 0;
    std::string copy;         // the container copy afterwards
    uint32_t commaSep = 0;    // the separator flag afterwards
};

// Check and translate; the separator flag starts at initialCommaSep so that "unchanged" shows.
Translated Translate(const std::string &container, const std::string &criteria, uint32_t initialCommaSep = 7);

// The property name of entry i of the property table.
std::string Prop(uint32_t index);

// The statements run on a connection while the object lives, in order, as their SQL text.
class SqlTrace {
public:
    explicit SqlTrace(sqlite3 *db);
    ~SqlTrace();
    SqlTrace(const SqlTrace &) = delete;
    SqlTrace &operator=(const SqlTrace &) = delete;
    const std::vector<std::string> &statements() const { return m_statements; }

private:
    static int OnTrace(unsigned type, void *ctx, void *p, void *x);
    sqlite3 *m_db;
    std::vector<std::string> m_statements;
};

// Denies every statement action but reading (select, read, functions) while it lives and records
// what was denied.
class ReadOnlyGuard {
public:
    explicit ReadOnlyGuard(sqlite3 *db);
    ~ReadOnlyGuard();
    ReadOnlyGuard(const ReadOnlyGuard &) = delete;
    ReadOnlyGuard &operator=(const ReadOnlyGuard &) = delete;
    const std::vector<int> &denied() const { return m_denied; }

private:
    static int OnAuthorize(void *ctx, int action, const char *, const char *, const char *, const char *);
    sqlite3 *m_db;
    std::vector<int> m_denied;
};

// "" when "select * from DLNA where <where>" compiles on db, else SQLite's message.
std::string PrepareError(sqlite3 *db, const std::string &where);

// Makes the n-th strdup call from now on fail (0 the next one); -1 stops failing. The test program
// defines strdup so that the library's copies can be made to fail.
void FailStrdupCall(int n);

// The whole content of a file.
std::string FileBytes(const std::string &path);

// A connection to a fresh in-memory database holding the shipped schema.
class SchemaDb {
public:
    SchemaDb();
    ~SchemaDb();
    SchemaDb(const SchemaDb &) = delete;
    SchemaDb &operator=(const SchemaDb &) = delete;
    sqlite3 *db() const { return m_db; }

private:
    sqlite3 *m_db = nullptr;
};

}  // namespace searchtest
