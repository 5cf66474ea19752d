// The catalogue the Search tests search (folders for music, video and pictures; items of several
// profiles with genres, artists, albums, creators, dates, durations and resolutions, added through
// the store's own operations) and the probes the tests use: translating criteria into a WHERE text,
// watching the statements that run (sqlite3_trace_v2), and checking that a WHERE text compiles.
#pragma once

#include <mdb.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "action.h"
#include "catalogue.h"

namespace searchtest {

using Titles = std::set<std::string>;

class SearchLibrary {
public:
    SearchLibrary();
    mdbtest::Catalogue &catalogue() { return m_cat; }
    sqlite3 *db() const { return m_cat.db(); }
    // Row id of the row with that title (fails the test for an unknown title).
    long long id(const std::string &title) const;
    // Titles of all rows.
    Titles titles() const;

private:
    long long add(const mdbtest::ItemValues &v);
    mdbtest::Catalogue m_cat;
    std::map<std::string, long long> m_ids;
};

// The outcome of MDBSearchCriteriaSyntax and MDBSearchCriteriaCheck on one container and criteria.
struct Translated {
    std::string status;  // status name of the first failing step, or "MDB_OK"
    std::string where;
    uint32_t resultClass = 0;
    std::string copy;       // the container copy afterwards
    uint32_t commaSep = 0;  // the separator flag afterwards; starts at 7 so that "unchanged" shows
};
Translated Translate(const std::string &container, const std::string &criteria);

// The property name of entry i of the property table.
std::string Prop(uint32_t index);

// The top-level statements run on a connection while the object lives, in order.
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

// "" when "select * from DLNA where <where>" compiles on db as one statement, else why not.
std::string PrepareError(sqlite3 *db, const std::string &where);
// Makes the n-th strdup call from now on fail (0 the next one); -1 stops failing. The test program
// defines strdup so that the library's copies can be made to fail.
void FailStrdupCall(int n);
std::string FileBytes(const std::string &path);

// Titles and id attributes of the objects written into the action's document, in order.
std::vector<std::string> WrittenTitles(const mdbtest::Action &action);
std::vector<std::string> WrittenIds(const mdbtest::Action &action);
template <typename T>
std::set<T> AsSet(const std::vector<T> &v) {
    return std::set<T>(v.begin(), v.end());
}

}  // namespace searchtest
