// The Search request on a real catalogue: the complete statements it runs (captured with
// sqlite3_trace_v2), the objects and counters it writes, paging, category results, the deepest
// nesting, and its answers to bad arguments, unknown containers and a broken DLNA view.
#include <gtest/gtest.h>
#include <mdb.h>
#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "search_library.h"

using searchtest::AsSet;
using searchtest::SearchLibrary;
using searchtest::Titles;
using Strings = std::vector<std::string>;

namespace {

struct Outcome {
    std::string status, objectId;
    Strings statements, titles, ids;
    uint32_t total = 0, returned = 0;
};

// Runs one Search the way the server does (ContainerID also in the action's object id). The action
// asks for no optional property, so the item writer runs no statement of its own.
Outcome SearchOn(SearchLibrary &lib, const char *container, const char *criteria, uint32_t count = 10,
                 uint32_t start = 0, const char *sort = nullptr) {
    mdbtest::Action action(false, count, start);
    action.setObjectId(container != nullptr ? container : "");
    if (sort != nullptr) {
        action.adoptSort(strdup(sort));
    }
    searchtest::SqlTrace trace(lib.db());
    Outcome o;
    o.status = QRV_MDB_StatusName(QRV_MDB_Search(container, criteria, action.ctx()));
    o.objectId = action->pcObjectId ? action->pcObjectId : "";
    o.statements = trace.statements();
    o.titles = searchtest::WrittenTitles(action);
    o.ids = searchtest::WrittenIds(action);
    o.total = action->ulTotalMatches;
    o.returned = action->ulNumberReturned;
    return o;
}

const char *const kGenres = "upnp:class = \"object.container.genre.musicGenre\"";

TEST(SearchRequest, CompleteStatementsAndResults) {
    SearchLibrary lib;
    Outcome all = SearchOn(lib, "0", "*");
    ASSERT_EQ(all.status, "MDB_OK");
    EXPECT_EQ(all.statements,
              (Strings{"select count(*) from DLNA where 1", "select * from DLNA where 1 LIMIT 10 OFFSET 0"}));
    EXPECT_EQ(all.total, lib.titles().size());
    EXPECT_EQ(all.returned, 10u);
    EXPECT_EQ(all.titles.size(), 10u);
    EXPECT_EQ(all.objectId, "0");

    Outcome genres = SearchOn(lib, "0.1.257", kGenres);
    ASSERT_EQ(genres.status, "MDB_OK");
    EXPECT_EQ(genres.statements, (Strings{"select distinct genre_id,genre from DLNA where (flags & 127) = 11 and "
                                          "(((flags & 127) = 11)) LIMIT 10 OFFSET 0"}));
    EXPECT_EQ(AsSet(genres.titles), (Titles{"Rock", "Jazz", "It's Pop"}));
    EXPECT_EQ(AsSet(genres.ids), (Titles{"0.1.257|1", "0.1.257|2", "0.1.257|3"}));
    EXPECT_EQ(genres.total, 3u);
    EXPECT_EQ(genres.returned, 3u);
    EXPECT_EQ(genres.objectId, "0.1.257");

    const std::string folder = "((flags & 127) = 11 or (flags & 127) = 2) and parentID = '5' and (title like '%x%')";
    Outcome paged = SearchOn(lib, "0.1.264|5", "dc:title contains \"x\"", 10, 20, "ORDER BY title");
    ASSERT_EQ(paged.status, "MDB_OK");
    EXPECT_EQ(paged.statements, (Strings{"select count(*) from DLNA where " + folder,
                                         "select * from DLNA where " + folder + " ORDER BY title LIMIT 10 OFFSET 20"}));
    EXPECT_EQ(paged.total, 0u);
    EXPECT_TRUE(paged.titles.empty());

    Outcome genre = SearchOn(lib, "0.1.257|3", "*");
    ASSERT_EQ(genre.status, "MDB_OK");
    EXPECT_EQ(genre.statements,
              (Strings{"select count(*) from DLNA where (flags & 127) = 11 and genre_id = '3'",
                       "select * from DLNA where (flags & 127) = 11 and genre_id = '3' LIMIT 10 OFFSET 0"}));
    EXPECT_EQ(genre.total, 2u);
    EXPECT_EQ(AsSet(genre.ids), (Titles{"0.1.257," + std::to_string(lib.id("Come Together")),
                                        "0.1.257," + std::to_string(lib.id("Something"))}));

    // A matching folder search, sorted and paged: ids under the folder view, the object id kept.
    Outcome found = SearchOn(lib, "0.1.264|5", "dc:title contains \"so\"", 10, 1, "ORDER BY title");
    EXPECT_EQ(found.total, 3u);  // Bohemian Rhapsody, So What, Something
    EXPECT_EQ(found.titles, (Strings{"So What", "Something"}));
    EXPECT_EQ(found.ids, (Strings{"0.1.264|" + std::to_string(lib.id("So What")),
                                  "0.1.264|" + std::to_string(lib.id("Something"))}));
    EXPECT_EQ(found.objectId, "0.1.264|5");

    // Another container class runs item statements and takes the container copy as object id.
    Outcome playlists = SearchOn(lib, "0.1.264|5", "upnp:class = \"object.container.playlistContainer\"");
    ASSERT_EQ(playlists.statements.size(), 2u);
    EXPECT_EQ(playlists.statements[1].rfind("select * from DLNA where ", 0), 0u);
    EXPECT_EQ(playlists.objectId, "0.1.264");

    // Requested count 0: an item search still counts every match, a category search counts its page.
    Outcome none = SearchOn(lib, "0.1.256", "*", 0);
    EXPECT_TRUE(none.titles.empty());
    EXPECT_EQ(none.total, 6u);
    EXPECT_EQ(SearchOn(lib, "0.1.257", kGenres, 0).total, 0u);
    Outcome artists = SearchOn(lib, "0.1.258", "upnp:class derivedfrom \"object.container.person\"", 2);
    EXPECT_EQ(artists.total, 2u);
    EXPECT_EQ(artists.returned, 2u);
}

TEST(SearchRequest, WorkerWithoutTotalRunsOnlyTheSelect) {
    SearchLibrary lib;
    mdbtest::Action action(false, 10, 0);
    action.setObjectId("0.2.512");
    char copy[256] = "0.2.512";
    MdbItemBuildCtx build;
    std::memset(&build, 0, sizeof(build));
    build.pstAction = action.ctx();
    build.pcBaseId = copy;
    build.llLastId = -1;
    searchtest::SqlTrace trace(lib.db());
    ASSERT_EQ(
        QRV_MDB_DbSearch(lib.db(), action.ctx(), 0, 0, "*", copy, sizeof(copy), MdbBuildItemCallback, &build, nullptr),
        MDB_OK);
    EXPECT_EQ(trace.statements(), (Strings{"select * from DLNA where (flags & 127) = 12 LIMIT 10 OFFSET 0"}));
    EXPECT_EQ(AsSet(searchtest::WrittenTitles(action)), (Titles{"Sea Trip", "Lovely Clip", "Short"}));
}

TEST(SearchRequest, DeepestNestingParsesInSqliteAndDeeperIsRefused) {
    SearchLibrary lib;
    // The nesting that needs most of SQLite's parser stack: per level two expressions, "or" and
    // "and" pending before the next "(", 16 levels and all 32 expressions.
    auto deepest = [](const std::string &innermost) {
        std::string c;
        for (int i = 0; i < 15; ++i) {
            c += "@refID exists false or @refID exists false and (";
        }
        return c + "@refID exists false and (" + innermost + std::string(16, ')');
    };
    Outcome all = SearchOn(lib, "0.1.264|5", "*", 100);
    Outcome items = SearchOn(lib, "0.1.264|5", deepest("@refID exists false").c_str(), 100);
    ASSERT_EQ(items.status, "MDB_OK");
    EXPECT_EQ(items.statements.size(), 2u);
    EXPECT_EQ(items.total, all.total);
    EXPECT_EQ(AsSet(items.titles), AsSet(all.titles));
    Outcome genres = SearchOn(lib, "0.1.257", deepest(kGenres).c_str(), 100, 0, "ORDER BY genre");
    EXPECT_EQ(genres.titles, (Strings{"It's Pop", "Jazz", "Rock"}));

    std::string longCriteria;  // a WHERE text of 491 characters: the select statement exceeds 511
    for (int i = 0; i < 11; ++i) {
        longCriteria += (i ? " or " : "") + std::string("dc:title contains \"abcdefghijklmnopqrstuvwxyz\"");
    }
    const std::string longId = "0.1.264|5" + std::string(250, '0');
    const std::string deeper = std::string(17, '(') + "@refID exists false" + std::string(17, ')');
    struct {
        const char *container, *criteria;
    } refused[] = {
        {"0", nullptr},
        {"0", ""},
        {"0", "dc:title contains"},
        {"0.7", "*"},
        {"0.1.256|1", "@id = \"0.2.512|1\""},
        {"0", "res@protocolInfo contains \"audio/mpeg\""},
        {longId.c_str(), "*"},
        {"0", longCriteria.c_str()},
        {"0.1.264|5", deeper.c_str()},
    };
    for (const auto &r : refused) {
        SCOPED_TRACE(std::string(r.container) + " / " + (r.criteria ? r.criteria : "(null)"));
        Outcome o = SearchOn(lib, r.container, r.criteria);
        EXPECT_EQ(o.status, "MDB_ERR_PARA");
        EXPECT_TRUE(o.statements.empty());
        EXPECT_TRUE(o.titles.empty());
    }
    EXPECT_EQ(QRV_MDB_Search("0", "*", nullptr), MDB_ERR_PARA);
    mdbtest::Action action(false, 10, 0);
    action.setObjectId("0");
    searchtest::FailStrdupCall(0);  // a failed copy of an expression text is answered like bad criteria
    EXPECT_EQ(QRV_MDB_Search("0", "dc:title contains \"a\"", action.ctx()), MDB_ERR_PARA);
    searchtest::FailStrdupCall(-1);
    sqlite3 *saved = g_pstMdbCtx;
    g_pstMdbCtx = nullptr;
    EXPECT_EQ(SearchOn(lib, "0", "*").status, "MDB_ERR_PARA");
    g_pstMdbCtx = saved;
}

TEST(SearchRequest, BrokenViewFailsTheSelect) {
    SearchLibrary lib;
    // A DLNA view without the flags column: every search statement fails to compile.
    lib.catalogue().exec("drop view DLNA");
    lib.catalogue().exec("create view DLNA as select id, title from ITEM");
    mdbtest::Action action(false, 10, 0);
    action.setObjectId("0.1.256");
    action->ulTotalMatches = 77;
    EXPECT_EQ(QRV_MDB_Search("0.1.256", "*", action.ctx()), MDB_ERR_DB);
    EXPECT_EQ(action->ulTotalMatches, 0u) << "the failed count leaves the total at 0";
    EXPECT_TRUE(action.objects().empty());
    EXPECT_EQ(SearchOn(lib, "0.1.257", kGenres).status, "MDB_ERR_DB");
}

}  // namespace
