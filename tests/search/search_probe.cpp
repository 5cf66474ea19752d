// Probes for the search tests; see search_probe.h.
#include "search_probe.h"

#include <gtest/gtest.h>
#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace {
int g_lStrdupFailAt = -1;
int g_lStrdupCalls = 0;
}  // namespace

// The program's own strdup, which the library's calls reach as well: it fails on request.
extern "C" char *strdup(const char *pcText) {
    if (g_lStrdupFailAt >= 0 && g_lStrdupCalls++ == g_lStrdupFailAt) {
        g_lStrdupFailAt = -1;
        return nullptr;
    }
    size_t len = std::strlen(pcText) + 1;
    char *pcCopy = static_cast<char *>(std::malloc(len));
    if (pcCopy != nullptr) {
        std::memcpy(pcCopy, pcText, len);
    }
    return pcCopy;
}

namespace searchtest {

void FailStrdupCall(int n) {
    g_lStrdupCalls = 0;
    g_lStrdupFailAt = n;
}

Translated Translate(const std::string &container, const std::string &criteria, uint32_t initialCommaSep) {
    Translated t;
    MdbSearchSyntax st;
    std::memset(&st, 0, sizeof(st));
    uint32_t status = MDBSearchCriteriaSyntax(criteria.c_str(), &st);
    if (status != MDB_OK) {
        t.status = QRV_MDB_StatusName(status);
        return t;
    }
    char copy[256];
    std::snprintf(copy, sizeof(copy), "%s", container.c_str());
    char where[512];
    std::memset(where, '#', sizeof(where));
    t.resultClass = 99;
    t.commaSep = initialCommaSep;
    status = MDBSearchCriteriaCheck(container.c_str(), copy, sizeof(copy), &t.resultClass, where, sizeof(where),
                                    &t.commaSep, &st);
    t.status = QRV_MDB_StatusName(status);
    EXPECT_EQ(st.lExprNum, 0) << "expression texts not released";
    if (status == MDB_OK) {
        t.where = where;
    }
    t.copy = copy;
    return t;
}

std::string Prop(uint32_t index) {
    EXPECT_LT(index, g_ulNumOfDlnaCols);
    return index < g_ulNumOfDlnaCols && g_astDlnaCols[index].pcPropName ? g_astDlnaCols[index].pcPropName : "";
}

SqlTrace::SqlTrace(sqlite3 *db) : m_db(db) { sqlite3_trace_v2(m_db, SQLITE_TRACE_STMT, &SqlTrace::OnTrace, this); }

SqlTrace::~SqlTrace() { sqlite3_trace_v2(m_db, 0, nullptr, nullptr); }

int SqlTrace::OnTrace(unsigned type, void *ctx, void *, void *x) {
    const char *sql = static_cast<const char *>(x);
    // Statements of triggers are reported as "-- ..." comments; only top-level statements count.
    if (type == SQLITE_TRACE_STMT && sql != nullptr && std::strncmp(sql, "--", 2) != 0) {
        static_cast<SqlTrace *>(ctx)->m_statements.emplace_back(sql);
    }
    return 0;
}

ReadOnlyGuard::ReadOnlyGuard(sqlite3 *db) : m_db(db) { sqlite3_set_authorizer(m_db, &ReadOnlyGuard::OnAuthorize, this); }

ReadOnlyGuard::~ReadOnlyGuard() { sqlite3_set_authorizer(m_db, nullptr, nullptr); }

int ReadOnlyGuard::OnAuthorize(void *ctx, int action, const char *, const char *, const char *, const char *) {
    if (action == SQLITE_SELECT || action == SQLITE_READ || action == SQLITE_FUNCTION) {
        return SQLITE_OK;
    }
    static_cast<ReadOnlyGuard *>(ctx)->m_denied.push_back(action);
    return SQLITE_DENY;
}

std::string PrepareError(sqlite3 *db, const std::string &where) {
    std::string sql = "select * from DLNA where " + where;
    sqlite3_stmt *stmt = nullptr;
    const char *tail = nullptr;
    int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, &tail);
    std::string err = rc == SQLITE_OK ? "" : sqlite3_errmsg(db);
    sqlite3_finalize(stmt);
    if (err.empty() && tail != nullptr && *tail != '\0') {
        err = std::string("text after the statement: ") + tail;
    }
    return err;
}

std::string FileBytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

SchemaDb::SchemaDb() {
    EXPECT_EQ(sqlite3_open(":memory:", &m_db), SQLITE_OK);
    std::string script = FileBytes(MDB_TEST_SCHEMA_SCRIPT);
    EXPECT_FALSE(script.empty()) << "schema script not found: " << MDB_TEST_SCHEMA_SCRIPT;
    char *err = nullptr;
    EXPECT_EQ(sqlite3_exec(m_db, script.c_str(), nullptr, nullptr, &err), SQLITE_OK) << (err ? err : "");
    sqlite3_free(err);
}

SchemaDb::~SchemaDb() { sqlite3_close(m_db); }

}  // namespace searchtest
