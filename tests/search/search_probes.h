// What the Search tests watch of one request on the test catalogue: its status, the objects and
// counters it writes, the action's object id afterwards, and the statements it runs (traced with
// sqlite3_trace_v2); and a check that a WHERE text compiles.
#pragma once

#include "library.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace searchtest {

using Titles = std::set<std::string>;
using Strings = std::vector<std::string>;

struct Outcome {
    std::string status, objectId;
    Strings statements, titles, ids;
    uint32_t total = 0, returned = 0;
};

// Runs one Search the way the server does (ContainerID also in the action's object id). The action
// asks for no optional property, so the item writer runs no statement of its own.
inline Outcome SearchOn(sqlite3 *db, const char *container, const char *criteria, uint32_t count = 100,
                        uint32_t start = 0, const char *sort = nullptr) {
    mdbtest::Action action(false, count, start);
    action.setObjectId(container != nullptr ? container : "");
    action.adoptSort(sort != nullptr ? strdup(sort) : nullptr);
    Outcome o;
    auto trace = [](unsigned type, void *ctx, void *, void *sql) {
        // Statements of triggers are reported as "-- ..." comments; only top-level statements count.
        if (type == SQLITE_TRACE_STMT && sql != nullptr && std::strncmp(static_cast<char *>(sql), "--", 2) != 0) {
            static_cast<Strings *>(ctx)->emplace_back(static_cast<char *>(sql));
        }
        return 0;
    };
    sqlite3_trace_v2(db, SQLITE_TRACE_STMT, trace, &o.statements);
    o.status = QRV_MDB_StatusName(QRV_MDB_Search(container, criteria, action.ctx()));
    sqlite3_trace_v2(db, 0, nullptr, nullptr);
    o.objectId = action->pcObjectId;
    for (IXML_Element *el : action.objects()) {
        o.titles.push_back(mdbtest::childText(el, "dc:title"));
        o.ids.push_back(mdbtest::attr(el, "id"));
    }
    o.total = action->ulTotalMatches;
    o.returned = action->ulNumberReturned;
    return o;
}

inline Titles AsSet(const Strings &v) { return Titles(v.begin(), v.end()); }

// "status written/total title|title..." with the titles sorted: a whole answer on one line, so
// that an object written twice or a wrong count shows as well as a wrong row.
inline std::string Found(const Outcome &o) {
    std::string out = o.status + " " + std::to_string(o.titles.size()) + "/" + std::to_string(o.total) + " ";
    for (const std::string &t : AsSet(o.titles)) out += t + "|";
    return out;
}
inline std::string Found(const Titles &titles) {
    std::string out = "MDB_OK " + std::to_string(titles.size()) + "/" + std::to_string(titles.size()) + " ";
    for (const std::string &t : titles) out += t + "|";
    return out;
}

// "" when "select * from DLNA where <where>" compiles on db as one statement, else why not.
inline std::string PrepareError(sqlite3 *db, const std::string &where) {
    const std::string sql = "select * from DLNA where " + where;
    sqlite3_stmt *stmt = nullptr;
    const char *tail = nullptr;
    const int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, &tail);
    std::string err = rc == SQLITE_OK ? "" : sqlite3_errmsg(db);
    sqlite3_finalize(stmt);
    return err.empty() && tail != nullptr && *tail != '\0' ? std::string("text after the statement: ") + tail : err;
}

}  // namespace searchtest
