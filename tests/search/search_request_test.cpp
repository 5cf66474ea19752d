// The Search request on a real catalogue: the complete statements it runs (captured with
// sqlite3_trace_v2), the objects and counters it writes, paging, category results, and its
// answers to bad arguments, unknown containers and a broken DLNA view.
#include "search_library.h"
#include "search_probe.h"

#include <gtest/gtest.h>
#include <mdb.h>
#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using mdbtest::Action;
using searchtest::SearchLibrary;
using searchtest::SqlTrace;
using searchtest::WrittenIds;
using searchtest::WrittenTitles;
using searchtest::WrittenTitleSet;

namespace {

using Statements = std::vector<std::string>;

std::string Status(uint32_t s) { return QRV_MDB_StatusName(s); }

// Runs one Search the way the server does: ContainerID also in the action's object id.
uint32_t Search(Action &action, const char *container, const char *criteria) {
    action.setObjectId(container != nullptr ? container : "");
    return QRV_MDB_Search(container, criteria, action.ctx());
}

// The actions of these tests ask for no optional property, so that the item writer runs no
// statement of its own (a folder's child count) and the trace holds only the Search's statements.
class SearchRequest : public ::testing::Test {
protected:
    SearchLibrary lib;
};

TEST_F(SearchRequest, EverythingBelowTheRoot) {
    Action action(false, 10, 0);
    SqlTrace trace(lib.db());
    ASSERT_EQ(Status(Search(action, "0", "*")), "MDB_OK");
    EXPECT_EQ(trace.statements(),
              (Statements{"select count(*) from DLNA where 1", "select * from DLNA where 1 LIMIT 10 OFFSET 0"}));
    EXPECT_EQ(action->ulTotalMatches, lib.titles().size());
    EXPECT_EQ(action->ulNumberReturned, 10u);
    EXPECT_EQ(action.objects().size(), 10u);
    EXPECT_STREQ(action->pcObjectId, "0");
}

TEST_F(SearchRequest, GenresOfTheGenreContainer) {
    Action action(false, 10, 0);
    SqlTrace trace(lib.db());
    ASSERT_EQ(Status(Search(action, "0.1.257", "upnp:class = \"object.container.genre.musicGenre\"")), "MDB_OK");
    EXPECT_EQ(trace.statements(), (Statements{"select distinct genre_id,genre from DLNA where (flags & 127) = 11 and "
                                              "(((flags & 127) = 11)) LIMIT 10 OFFSET 0"}));
    EXPECT_STREQ(action->pcObjectId, "0.1.257");
    EXPECT_EQ(WrittenTitleSet(action), (std::set<std::string>{"Rock", "Jazz", "It's Pop"}));
    std::set<std::string> ids;
    for (const std::string &id : WrittenIds(action)) {
        ids.insert(id);
    }
    EXPECT_EQ(ids, (std::set<std::string>{"0.1.257|1", "0.1.257|2", "0.1.257|3"}));
    EXPECT_EQ(action->ulTotalMatches, 3u);
    EXPECT_EQ(action->ulNumberReturned, 3u);
}

TEST_F(SearchRequest, TitlesInAMusicFolderSortedAndPaged) {
    Action action(false, 10, 20);
    action.adoptSort(strdup("ORDER BY title"));
    SqlTrace trace(lib.db());
    ASSERT_EQ(Status(Search(action, "0.1.264|5", "dc:title contains \"x\"")), "MDB_OK");
    EXPECT_EQ(trace.statements(),
              (Statements{"select count(*) from DLNA where ((flags & 127) = 11 or (flags & 127) = 2) and parentID = '5' "
                          "and (title like '%x%')",
                          "select * from DLNA where ((flags & 127) = 11 or (flags & 127) = 2) and parentID = '5' and "
                          "(title like '%x%') ORDER BY title LIMIT 10 OFFSET 20"}));
    EXPECT_EQ(action->ulTotalMatches, 0u);
    EXPECT_TRUE(action.objects().empty());

    // The same folder with a criterion that matches: ids under the folder view, in title order.
    Action found(false, 10, 1);
    found.adoptSort(strdup("ORDER BY title"));
    ASSERT_EQ(Status(Search(found, "0.1.264|5", "dc:title contains \"so\"")), "MDB_OK");
    EXPECT_EQ(found->ulTotalMatches, 3u);  // Bohemian Rhapsody, So What, Something
    EXPECT_EQ(WrittenTitles(found), (std::vector<std::string>{"So What", "Something"}));
    EXPECT_EQ(WrittenIds(found), (std::vector<std::string>{"0.1.264|" + std::to_string(lib.id("So What")),
                                                           "0.1.264|" + std::to_string(lib.id("Something"))}));
    EXPECT_STREQ(found->pcObjectId, "0.1.264|5") << "item results leave the object id alone";
}

TEST_F(SearchRequest, ItemsOfOneGenre) {
    Action action(false, 10, 0);
    SqlTrace trace(lib.db());
    ASSERT_EQ(Status(Search(action, "0.1.257|3", "*")), "MDB_OK");
    EXPECT_EQ(trace.statements(),
              (Statements{"select count(*) from DLNA where (flags & 127) = 11 and genre_id = '3'",
                          "select * from DLNA where (flags & 127) = 11 and genre_id = '3' LIMIT 10 OFFSET 0"}));
    EXPECT_EQ(action->ulTotalMatches, 2u);
    EXPECT_EQ(WrittenTitleSet(action), (std::set<std::string>{"Come Together", "Something"}));
    std::vector<std::string> written = WrittenIds(action);
    std::set<std::string> ids(written.begin(), written.end());
    EXPECT_EQ(ids, (std::set<std::string>{"0.1.257," + std::to_string(lib.id("Come Together")),
                                          "0.1.257," + std::to_string(lib.id("Something"))}));
}

TEST_F(SearchRequest, RequestedCountZero) {
    Action items(false, 0, 0);
    ASSERT_EQ(Status(Search(items, "0.1.256", "*")), "MDB_OK");
    EXPECT_TRUE(items.objects().empty());
    EXPECT_EQ(items->ulTotalMatches, 6u) << "an item search still counts every match";

    Action genres(false, 0, 0);
    ASSERT_EQ(Status(Search(genres, "0.1.257", "upnp:class = \"object.container.genre.musicGenre\"")), "MDB_OK");
    EXPECT_TRUE(genres.objects().empty());
    EXPECT_EQ(genres->ulTotalMatches, 0u);
}

TEST_F(SearchRequest, CategoryTotalIsThePage) {
    Action action(false, 2, 0);
    ASSERT_EQ(Status(Search(action, "0.1.258", "upnp:class derivedfrom \"object.container.person\"")), "MDB_OK");
    EXPECT_EQ(action->ulTotalMatches, 2u);
    EXPECT_EQ(action->ulNumberReturned, 2u);
    for (const std::string &id : WrittenIds(action)) {
        EXPECT_EQ(id.rfind("0.1.258|", 0), 0u) << id;
    }
}

TEST_F(SearchRequest, OtherContainerClassesRunItemStatements) {
    Action action(false, 10, 0);
    SqlTrace trace(lib.db());
    ASSERT_EQ(Status(Search(action, "0.1.264|5", "upnp:class = \"object.container.playlistContainer\"")), "MDB_OK");
    ASSERT_EQ(trace.statements().size(), 2u);
    EXPECT_EQ(trace.statements()[0].rfind("select count(*) from DLNA where ", 0), 0u);
    EXPECT_EQ(trace.statements()[1].rfind("select * from DLNA where ", 0), 0u);
    EXPECT_STREQ(action->pcObjectId, "0.1.264") << "rewritten with the container copy";
    EXPECT_TRUE(action.objects().empty());
}

TEST_F(SearchRequest, WorkerWithoutTotalRunsOnlyTheSelect) {
    Action action(false, 10, 0);
    action.setObjectId("0.2.512");
    char copy[256] = "0.2.512";
    MdbItemBuildCtx build;
    std::memset(&build, 0, sizeof(build));
    build.pstAction = action.ctx();
    build.pcBaseId = copy;
    build.llLastId = -1;
    SqlTrace trace(lib.db());
    ASSERT_EQ(Status(QRV_MDB_DbSearch(lib.db(), action.ctx(), 0, 0, "*", copy, sizeof(copy), MdbBuildItemCallback,
                                      &build, nullptr)),
              "MDB_OK");
    EXPECT_EQ(trace.statements(), (Statements{"select * from DLNA where (flags & 127) = 12 LIMIT 10 OFFSET 0"}));
    EXPECT_EQ(WrittenTitleSet(action), (std::set<std::string>{"Sea Trip", "Lovely Clip", "Short"}));
}

TEST_F(SearchRequest, RefusedRequests) {
    std::string longId = "0.1.264|5" + std::string(250, '0');
    std::string longCriteria;
    for (int i = 0; i < 11; ++i) {  // a WHERE text of 491 characters
        longCriteria += (i ? " or " : "") + std::string("dc:title contains \"abcdefghijklmnopqrstuvwxyz\"");
    }
    struct {
        const char *container;
        const char *criteria;
        const char *why;
    } cases[] = {
        {"0", nullptr, "no criteria"},
        {"0", "", "empty criteria"},
        {"0", "dc:title contains", "rejected criteria"},
        {"0.7", "*", "unknown container"},
        {"0.1.256|1", "@id = \"0.2.512|1\"", "an object id outside the container"},
        {"0", "res@protocolInfo contains \"audio/mpeg\"", "a protocolInfo value without keys"},
        {longId.c_str(), "*", "a ContainerID longer than 255 characters"},
        {"0", longCriteria.c_str(), "a select statement longer than 511 characters"},
    };
    for (const auto &c : cases) {
        Action action(false, 10, 0);
        SqlTrace trace(lib.db());
        EXPECT_EQ(Status(Search(action, c.container, c.criteria)), "MDB_ERR_PARA") << c.why;
        EXPECT_TRUE(trace.statements().empty()) << c.why;
        EXPECT_TRUE(action.objects().empty()) << c.why;
    }
    EXPECT_EQ(Status(QRV_MDB_Search("0", "*", nullptr)), "MDB_ERR_PARA");

    // A failed copy of an expression text is answered like rejected criteria.
    Action action(false, 10, 0);
    searchtest::FailStrdupCall(0);
    EXPECT_EQ(Status(Search(action, "0", "dc:title contains \"a\"")), "MDB_ERR_PARA");
    searchtest::FailStrdupCall(-1);
}

TEST_F(SearchRequest, DeepestCriteriaStillParseInSqlite) {
    // The nesting that needs most of SQLite's parser stack: per level two expressions, "or" and
    // "and" pending before the next "(", 16 levels and all 32 expressions.
    auto deepest = [](const std::string &innermost) {
        std::string c;
        for (int i = 0; i < 15; ++i) {
            c += "@refID exists false or @refID exists false and (";
        }
        return c + "@refID exists false and (" + innermost + std::string(16, ')');
    };
    Action all(false, 100, 0);
    ASSERT_EQ(Status(Search(all, "0.1.264|5", "*")), "MDB_OK");

    Action items(false, 100, 0);
    items.adoptSort(strdup("ORDER BY title"));
    SqlTrace trace(lib.db());
    ASSERT_EQ(Status(Search(items, "0.1.264|5", deepest("@refID exists false").c_str())), "MDB_OK");
    EXPECT_EQ(trace.statements().size(), 2u);
    EXPECT_EQ(items->ulTotalMatches, all->ulTotalMatches);
    EXPECT_EQ(WrittenTitleSet(items), WrittenTitleSet(all));

    Action genres(false, 100, 0);
    genres.adoptSort(strdup("ORDER BY genre"));
    ASSERT_EQ(Status(Search(genres, "0.1.257", deepest("upnp:class = \"object.container.genre.musicGenre\"").c_str())),
              "MDB_OK");
    EXPECT_EQ(WrittenTitles(genres), (std::vector<std::string>{"It's Pop", "Jazz", "Rock"}));

    // Deeper nesting is refused before any SQL runs (100 levels would overflow SQLite's parser).
    for (int depth : {17, 100}) {
        Action deeper(false, 100, 0);
        SqlTrace none(lib.db());
        std::string criteria = std::string(depth, '(') + "@refID exists false" + std::string(depth, ')');
        EXPECT_EQ(Status(Search(deeper, "0.1.264|5", criteria.c_str())), "MDB_ERR_PARA") << depth;
        EXPECT_TRUE(none.statements().empty()) << depth;
    }
}

TEST_F(SearchRequest, NoDatabase) {
    sqlite3 *saved = g_pstMdbCtx;
    g_pstMdbCtx = nullptr;
    Action action(false, 10, 0);
    EXPECT_EQ(Status(Search(action, "0", "*")), "MDB_ERR_PARA");
    g_pstMdbCtx = saved;
}

TEST_F(SearchRequest, BrokenViewFailsTheSelect) {
    // A DLNA view without the flags column: every search statement fails to compile.
    lib.catalogue().exec("drop view DLNA");
    lib.catalogue().exec("create view DLNA as select id, title from ITEM");
    Action action(false, 10, 0);
    action->ulTotalMatches = 77;
    EXPECT_EQ(Status(Search(action, "0.1.256", "*")), "MDB_ERR_DB");
    EXPECT_EQ(action->ulTotalMatches, 0u) << "the failed count leaves the total at 0";
    EXPECT_TRUE(action.objects().empty());

    Action genres(false, 10, 0);
    EXPECT_EQ(Status(Search(genres, "0.1.257", "upnp:class = \"object.container.genre.musicGenre\"")), "MDB_ERR_DB");
}

}  // namespace
