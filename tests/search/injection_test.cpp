// Hostile SearchCriteria and ContainerIDs: each is refused or matches literally. None ends an SQL
// literal early, runs a second statement, writes to the catalogue (its file stays byte-identical)
// or returns a row outside what its harmless reading selects.
#include <gtest/gtest.h>
#include <mdb.h>

#include "search_probes.h"

namespace {

using searchtest::Titles;

TEST(Injection, HostileInputNeverWidensOrWrites) {
    mdbtest::Library lib;
    const std::string music = "0.1.264|" + lib.id("Music");
    const struct {
        std::string container, criteria;
        // What the request returns: the rows of a harmless twin criteria in the same container, or,
        // without a twin, exactly the titles given.
        std::string twin;
        Titles allowed;
    } cases[] = {
        {"0", "dc:title contains \"x' or 1=1 --\"", "", {}},
        {"0", "dc:title contains \"'; delete from ITEM; --\"", "", {}},
        {"0", "dc:title contains \"%' or title like '%\"", "", {}},
        {"0", "upnp:genre contains \"It's\"", "", {"Interlude"}},
        {"0", "upnp:class derivedfrom \"object.item') or 1=1 --\"", "", {}},
        {"0", "dc:date >= \"2000\\\" or 1=1 --\"", "", {}},
        {"0", "dc:title = \"a\" or 1=1", "", {}},
        {"0", "dc:title contains \"x\") or (1=1", "", {}},
        {"0", "@id = \"0.1.256|1 or 1=1\"", "", {}},
        {"0.1.257", "@id = \"0.1.257|3' or '1'='1\"", "", {}},
        {"0.1.257", "@id = \"0.1.257|1,2 or 1=1\"", "", {}},
        {"0.1.257", "@id = \"0.1.257|3,1 or 1=1\"", "", {}},
        {"0", "res@protocolInfo contains \"http-get:*:audio/mpeg' or 1=1 --:*\"", "", {}},
        {"0", "res@protocolInfo contains \"http-get:*:x' or 1=1 --:*\"", "", {}},
        {"0", "res@duration < \"0:05:00 or 1=1\"", "res@duration < \"0:05:00\"", {}},
        {"0", "res@resolution >= \"1x1 or 1=1\"", "res@resolution >= \"1x1\"", {}},
        {music + "' or '1'='1", "*", "", {}},
        {"0.1.257|3' union select * from ITEM --", "*", "", {}},
        {"0.1.257|3;delete from ITEM", "*", "", {}},
        {music + std::string(240, '\''), "*", "", {}},
        {"0", "dc:title contains \"" + std::string(200, '\'') + "\"", "", {}},
        {music, "dc:title contains \"_\"", "", {}},  // a LIKE wildcard matches itself only
    };
    const std::string path = lib.catalogue().dbPath(), before = mdbtest::readFile(path);
    ASSERT_FALSE(before.empty());
    const int changesBefore = sqlite3_total_changes(lib.db());
    for (const auto &c : cases) {
        SCOPED_TRACE(c.container + " / " + c.criteria);
        Titles allowed = c.allowed;
        if (!c.twin.empty()) {
            const searchtest::Outcome twin = searchtest::SearchOn(lib.db(), c.container.c_str(), c.twin.c_str());
            ASSERT_EQ(twin.status, "MDB_OK");
            allowed = searchtest::AsSet(twin.titles);
            ASSERT_FALSE(allowed.empty()) << "a twin that finds nothing shows nothing";
        }
        const searchtest::Outcome o = searchtest::SearchOn(lib.db(), c.container.c_str(), c.criteria.c_str());
        EXPECT_TRUE(o.status == "MDB_OK" || o.status == "MDB_ERR_PARA") << o.status;
        EXPECT_LE(o.statements.size(), 2u);
        for (const std::string &sql : o.statements) {
            EXPECT_EQ(sql.rfind("select ", 0), 0u) << sql;
            EXPECT_EQ(searchtest::PrepareError(lib.db(), sql.substr(sql.find(" where ") + 7)), "") << sql;
        }
        EXPECT_EQ(searchtest::AsSet(o.titles), allowed);
    }
    EXPECT_EQ(sqlite3_total_changes(lib.db()), changesBefore);
    EXPECT_EQ(mdbtest::readFile(path), before) << "the catalogue file changed";
    EXPECT_EQ(lib.catalogue().rows("select count(*) from ITEM"),
              std::to_string(lib.where([](const mdbtest::Row &) { return true; }).size()));
}

}  // namespace
