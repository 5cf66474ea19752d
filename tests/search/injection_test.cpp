// Hostile SearchCriteria and ContainerIDs: each is refused or matches literally. None ends an SQL
// literal early, runs a second statement, writes to the catalogue (its file stays byte-identical)
// or returns a row outside what its harmless reading selects.
#include <gtest/gtest.h>
#include <mdb.h>

#include <string>
#include <vector>

#include "search_library.h"

using searchtest::SearchLibrary;
using searchtest::Titles;

namespace {

Titles RunSearch(SearchLibrary &lib, const std::string &container, const std::string &criteria, uint32_t *status,
                 std::vector<std::string> *statements) {
    mdbtest::Action action(false, 100, 0);  // no optional property: the writer runs no statement of its own
    action.setObjectId(container);
    searchtest::SqlTrace trace(lib.db());
    *status = QRV_MDB_Search(container.c_str(), criteria.c_str(), action.ctx());
    *statements = trace.statements();
    return searchtest::AsSet(searchtest::WrittenTitles(action));
}

TEST(Injection, HostileInputNeverWidensOrWrites) {
    SearchLibrary lib;
    struct {
        std::string container, criteria;
        // What the request returns: the rows of a harmless twin criteria in the same container, or,
        // without a twin, exactly the titles given.
        std::string twin;
        Titles allowed;
    } cases[] = {
        {"0", "dc:title contains \"x' or 1=1 --\"", "", {}},
        {"0", "dc:title contains \"'; delete from ITEM; --\"", "", {}},
        {"0", "dc:title contains \"%' or title like '%\"", "", {}},
        {"0", "upnp:genre contains \"It's\"", "", {"Come Together", "Something"}},
        {"0", "upnp:class derivedfrom \"object.item') or 1=1 --\"", "", {}},
        {"0", "dc:date >= \"2000\\\" or 1=1 --\"", "", {}},
        {"0", "dc:title = \"a\" or 1=1", "", {}},
        {"0", "dc:title contains \"x\") or (1=1", "", {}},
        {"0", "@id = \"0.1.256|1 or 1=1\"", "", {}},
        {"0.1.257", "@id = \"0.1.257|3' or '1'='1\"", "", {}},
        {"0.1.257", "@id = \"0.1.257|1,2 or 1=1\"", "", {}},
        {"0", "res@protocolInfo contains \"http-get:*:audio/mpeg' or 1=1 --:*\"", "", {}},
        {"0", "res@duration < \"0:05:00 or 1=1\"", "res@duration < \"0:05:00\"", {}},
        {"0", "res@resolution >= \"1x1 or 1=1\"", "res@resolution >= \"1x1\"", {}},
        {"0.1.264|5' or '1'='1", "*", "", {}},
        {"0.1.257|3' union select * from ITEM --", "*", "", {}},
        {"0.1.257|3;delete from ITEM", "*", "", {}},
        {"0.1.264|5" + std::string(240, '\''), "*", "", {}},
        {"0", "dc:title contains \"" + std::string(200, '\'') + "\"", "", {}},
        {"0.1.264|5", "dc:title contains \"_\"", "", {}},  // a LIKE wildcard matches itself only
    };
    const std::string path = lib.catalogue().dbPath();
    const std::string before = searchtest::FileBytes(path);
    ASSERT_FALSE(before.empty());
    const int changesBefore = sqlite3_total_changes(lib.db());

    for (const auto &c : cases) {
        SCOPED_TRACE(c.container + " / " + c.criteria);
        uint32_t status = 0;
        std::vector<std::string> statements;
        Titles allowed = c.allowed;
        if (!c.twin.empty()) {
            allowed = RunSearch(lib, c.container, c.twin, &status, &statements);
            ASSERT_EQ(status, MDB_OK);
            ASSERT_FALSE(allowed.empty()) << "a twin that finds nothing shows nothing";
        }
        Titles got = RunSearch(lib, c.container, c.criteria, &status, &statements);
        EXPECT_TRUE(status == MDB_OK || status == MDB_ERR_PARA) << QRV_MDB_StatusName(status);
        EXPECT_LE(statements.size(), 2u);
        for (const std::string &sql : statements) {
            EXPECT_EQ(sql.rfind("select ", 0), 0u) << sql;
            EXPECT_EQ(searchtest::PrepareError(lib.db(), sql.substr(sql.find(" where ") + 7)), "") << sql;
        }
        EXPECT_EQ(got, allowed);
    }
    EXPECT_EQ(sqlite3_total_changes(lib.db()), changesBefore);
    EXPECT_EQ(searchtest::FileBytes(path), before) << "the catalogue file changed";
    EXPECT_EQ(lib.catalogue().scalar("select count(*) from ITEM"), std::to_string(lib.titles().size()));
}

}  // namespace
