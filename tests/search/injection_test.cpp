// Hostile SearchCriteria and ContainerIDs: each is refused or matches literally. None ends an SQL
// literal early, runs a second statement, writes to the catalogue (its file stays byte-identical)
// or returns a row outside what its harmless reading selects.
#include "search_library.h"
#include "search_probe.h"

#include <gtest/gtest.h>
#include <mdb.h>

#include <set>
#include <string>
#include <vector>

using mdbtest::Action;
using searchtest::SearchLibrary;
using searchtest::SqlTrace;

namespace {

using Titles = std::set<std::string>;

struct HostileCase {
    std::string container;
    std::string criteria;
    // What the request may return: the rows of a harmless twin request (twin criteria in the same
    // container), or, without a twin, exactly the titles given.
    std::string twin;
    Titles allowed;
    const char *why;
};

Titles RunSearch(const std::string &container, const std::string &criteria, uint32_t *status,
           std::vector<std::string> *statements, SearchLibrary &lib) {
    Action action(false, 100, 0);  // no optional property: the writer runs no statement of its own
    action.setObjectId(container);
    SqlTrace trace(lib.db());
    *status = QRV_MDB_Search(container.c_str(), criteria.c_str(), action.ctx());
    if (statements != nullptr) {
        *statements = trace.statements();
    }
    std::vector<std::string> written = searchtest::WrittenTitles(action);
    return Titles(written.begin(), written.end());
}

TEST(Injection, HostileInputNeverWidensOrWrites) {
    SearchLibrary lib;
    const Titles none;
    const std::vector<HostileCase> cases = {
        {"0", "dc:title contains \"x' or 1=1 --\"", "", none, "quote and comment in a containment"},
        {"0", "dc:title contains \"'; delete from ITEM; --\"", "", none, "a second statement in a containment"},
        {"0", "dc:title contains \"%' or title like '%\"", "", none, "a LIKE pattern closed early"},
        {"0", "dc:title contains \"x' || (select name from GENRES) || '\"", "", none, "a sub-select in a containment"},
        {"0", "upnp:genre contains \"It's\"", "", {"Come Together", "Something"}, "a real quote matches literally"},
        {"0", "upnp:class derivedfrom \"object.item') or 1=1 --\"", "", none, "a class value closing the group"},
        {"0", "dc:date >= \"2000\\\" or 1=1 --\"", "", none, "a backslash before the closing quote"},
        {"0", "dc:title = \"a\" or 1=1", "", none, "a bare SQL term"},
        {"0", "dc:title contains \"x\") or (1=1", "", none, "parentheses around SQL"},
        {"0", "dc:title contains \"x\"; drop table ITEM", "", none, "a statement after the criteria"},
        {"0", "dc:title contains \"x\" -- comment", "", none, "an SQL comment"},
        {"0", "@id = \"0.1.256|1 or 1=1\"", "", none, "SQL in an object id"},
        {"0.1.257", "@id = \"0.1.257|3' or '1'='1\"", "", none, "a quote in a category id"},
        {"0.1.257", "@id = \"0.1.257|1,2 or 1=1\"", "", none, "SQL in a row id inside a category"},
        {"0", "res@protocolInfo contains \"http-get:*:audio/mpeg' or 1=1 --:*\"", "", none, "SQL in a MIME type"},
        {"0", "res@duration < \"0:05:00 or 1=1\"", "res@duration < \"0:05:00\"", {}, "SQL behind a duration"},
        {"0", "res@resolution >= \"1x1 or 1=1\"", "res@resolution >= \"1x1\"", {}, "SQL behind a resolution"},
        {"0.1.264|5' or '1'='1", "*", "", none, "a quote in a folder sub-id"},
        {"0.1.264|5 or 1=1", "*", "", none, "SQL in a folder sub-id"},
        {"0.1.264|5'--", "*", "", none, "a comment in a folder sub-id"},
        {"0.1.257|3' union select * from ITEM --", "*", "", none, "a union in a category sub-id"},
        {"0.1.257|3;delete from ITEM", "*", "", none, "a second statement in a category sub-id"},
        {"0.1.264|5" + std::string(240, '\''), "*", "", none, "quotes that overflow the row condition"},
        {"0", "dc:title contains \"" + std::string(200, '\'') + "\"", "", none, "quotes that overflow a condition"},
        {"0.1.264|5", "dc:title contains \"_\"", "*", {}, "LIKE wildcards stay wildcards, within the folder"},
    };
    const std::string path = lib.catalogue().dbPath();
    const std::string before = searchtest::FileBytes(path);
    ASSERT_FALSE(before.empty());
    const int changesBefore = sqlite3_total_changes(lib.db());

    for (const HostileCase &c : cases) {
        SCOPED_TRACE(std::string(c.why) + ": " + c.container + " / " + c.criteria);
        Titles allowed = c.allowed;
        if (!c.twin.empty()) {
            uint32_t twinStatus = 0;
            allowed = RunSearch(c.container, c.twin, &twinStatus, nullptr, lib);
            ASSERT_EQ(twinStatus, MDB_OK);
        }
        uint32_t status = 0;
        std::vector<std::string> statements;
        Titles got = RunSearch(c.container, c.criteria, &status, &statements, lib);
        EXPECT_TRUE(status == MDB_OK || status == MDB_ERR_PARA) << QRV_MDB_StatusName(status);
        EXPECT_LE(statements.size(), 2u);
        for (const std::string &sql : statements) {
            EXPECT_EQ(sql.rfind("select ", 0), 0u) << sql;
            EXPECT_EQ(searchtest::PrepareError(lib.db(), sql.substr(sql.find(" where ") + 7)), "") << sql;
        }
        for (const std::string &title : got) {
            EXPECT_EQ(allowed.count(title), 1u) << "returned " << title << " beyond the intended rows";
        }
        if (!c.allowed.empty() || !c.twin.empty()) {
            EXPECT_EQ(got, allowed) << "the harmless reading finds these rows";
        }
    }
    EXPECT_EQ(sqlite3_total_changes(lib.db()), changesBefore);
    EXPECT_EQ(searchtest::FileBytes(path), before) << "the catalogue file changed";
    EXPECT_EQ(lib.catalogue().scalar("select count(*) from ITEM"), std::to_string(lib.titles().size()));
}

}  // namespace
