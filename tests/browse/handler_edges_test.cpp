// The database handlers at their edges: lists that ignore StartingIndex, missing objects, sub-ids
// that change the request, failing statements, missing arguments, category rows of a search, and
// sort texts too long for a statement.
#include "library.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

using mdbtest::attr;

using Strings = std::vector<std::string>;

std::string Status(uint32_t s) { return QRV_MDB_StatusName(s); }

// One request each: the status, objects, counters and UPnP error that come back.
TEST(HandlerEdges, SingleRequests) {
    mdbtest::Library lib;
    const std::string jazz = lib.value("GENRES", "Jazz"), track = lib.id("Dave.Brubeck-Take.Five.mp3");
    const size_t roots = lib.where([](const mdbtest::Row &r) { return r.parentId == 0; }).size(), any = SIZE_MAX;
    const size_t genres = lib.values("GENRES").size();
    // total any: not checked; first: the first object's "id title" ("": not checked)
    const struct { const char *why; std::string id; uint32_t flag, count, start; bool badSort; std::string status;
                   size_t objects, total; std::string first; } cases[] = {
        {"root folders ignore StartingIndex", "0.2.516", 1, 2, 1, false, "MDB_OK", 2, roots,
         "0.2.516|" + std::to_string(g_pstRootPaths[0].llId) + " " + g_pstRootPaths[0].pcTitle},
        {"genres ignore StartingIndex", "0.1.257", 1, 2, 2, false, "MDB_OK", 2, genres, ""},
        {"a missing folder row", "0.1.264|999999", 0, 100, 0, false, "MDB_ERR_NOT_FOUND", 0, 0, ""},
        {"a missing all-items row", "0.1.256|999999", 0, 100, 0, false, "MDB_OK", 0, 1, ""},
        {"a missing category item", "0.1.257|1,999999", 0, 100, 0, false, "MDB_OK", 0, 0, ""},
        {"a category item of another class", "0.1.257|1," + lib.id("beach.jpg"), 0, 100, 0, false, "MDB_OK", 0, 0, ""},
        {"metadata beyond StartingIndex", "0.1.264|" + lib.id("Music"), 0, 10, 1, false, "MDB_OK", 0, 1, ""},
        {"an all-items row answers its metadata", "0.1.256|" + track, 1, 100, 0, false, "MDB_OK", 1, 1,
         "0.1.256|" + track + " Take Five"},
        {"a category item has only metadata", "0.1.257|" + jazz + "," + track, 1, 100, 0, false, "MDB_ERR_PARA", 0, 0,
         ""},
        {"a genre value without row", "0.1.257|4242", 0, 100, 0, false, "MDB_OK", 1, 1, "0.1.257|4242 "},
        {"a failing folder statement", "0.1.264|" + lib.id("Jazz"), 1, 100, 0, true, "MDB_ERR_DB", 0, any, ""},
        {"a failing all-items statement", "0.1.256", 1, 100, 0, true, "MDB_ERR_DB", 0, any, ""},
        {"a failing category statement", "0.1.257|" + jazz, 1, 100, 0, true, "MDB_ERR_DB", 0, any, ""},
    };
    for (const auto &c : cases) {
        mdbtest::Action action(true, c.count, c.start);
        action.adoptSort(c.badSort ? strdup("ORDER BY no_such_column") : nullptr);
        testing::internal::CaptureStdout();
        EXPECT_EQ(Status(QRV_MDB_Browse(c.id.c_str(), c.flag, action.ctx())), c.status) << c.why;
        testing::internal::GetCapturedStdout();
        const std::vector<IXML_Element *> objects = action.objects();
        EXPECT_EQ(objects.size(), c.objects) << c.why;
        EXPECT_EQ(action->ulNumberReturned, c.objects) << c.why;
        EXPECT_TRUE(c.total == any || action->ulTotalMatches == c.total) << c.why << ": " << action->ulTotalMatches;
        if (!c.first.empty() && !objects.empty()) {
            EXPECT_EQ(attr(objects[0], "id") + " " + mdbtest::childText(objects[0], "dc:title"), c.first) << c.why;
        }
        const bool missing = c.status == "MDB_ERR_NOT_FOUND";
        EXPECT_EQ(action->lUpnpErrCode, missing ? 701 : 0) << c.why;
        EXPECT_STREQ(action->pcErrStr, missing ? "No such object." : "") << c.why;
    }
}

// Handlers called without an action or a connection refuse rather than crash; a class number past
// the folder bits shows no folder (and shifts no bit out of range).
TEST(HandlerEdges, MissingArgumentsAndClassesBeyondTheFolderBits) {
    mdbtest::Library lib;
    const MdbStaticContainer *node = nullptr;
    ASSERT_EQ(Status(MdbLocateStaticContainerById("0.1.256", &node, nullptr)), "MDB_OK");
    using Handler = uint32_t (*)(const MdbStaticContainer *, const char *, uint32_t, MdbActionCtx *, uint32_t);
    for (Handler h : {QRV_MDB_BrowseFolder, QRV_MDB_BrowseAll, QRV_MDB_BrowseMusicGenre, QRV_MDB_BrowseMusicArtist,
                      QRV_MDB_BrowseMusicAlbum, QRV_MDB_BrowseVideoCreator, QRV_MDB_BrowseVideoAlbum}) {
        EXPECT_EQ(Status(h(node, nullptr, 1, nullptr, MDB_CLASS_MUSIC)), "MDB_ERR_PARA");
    }
    mdbtest::Action action;
    EXPECT_EQ(Status(QRV_MDB_BrowseFolder(node, lib.id("/media/usb1_1").c_str(), 1, action.ctx(), 40)), "MDB_OK");
    EXPECT_EQ(action->ulTotalMatches + action.objects().size(), 0u);
    EXPECT_EQ(Status(QRV_MDB_DbBrowseObject(nullptr, action.ctx(), 1, 11, 1, MdbBuildItemCallback, nullptr, nullptr)),
              "MDB_ERR_PARA");
    EXPECT_EQ(Status(QRV_MDB_DbBrowseByType(lib.db(), nullptr, 1, 11, 1, MdbBuildItemCallback, nullptr, nullptr)),
              "MDB_ERR_PARA");
    sqlite3 *open = g_pstMdbCtx;
    g_pstMdbCtx = nullptr;
    for (const char *id : {"0.1.256", "0.1.257", "0.1.258|1", "0.1.264|1"}) {
        EXPECT_EQ(Status(QRV_MDB_Browse(id, 1, action.ctx())), "MDB_ERR_PARA") << id << " without a connection";
    }
    g_pstMdbCtx = open;
}

// Category rows that a search finds become containers of the searched container: RequestedCount
// of them written, all of them counted; a container id that does not resolve stops the statement.
TEST(HandlerEdges, SearchCategoryRowsBecomeContainersOfTheSearchedContainer) {
    mdbtest::Library lib;
    mdbtest::Action action(true, 2);
    action.setObjectId("0.1.258");
    MdbItemBuildCtx ctx{};
    ctx.pstAction = action.ctx();
    const char *sql = "select exID,name from ARTISTS order by exID";
    ASSERT_EQ(MdbExecSql(lib.db(), sql, MdbBuildSearchCategoryCallback, &ctx, nullptr), SQLITE_OK);
    ASSERT_EQ(action.objects().size(), 2u);
    EXPECT_EQ(action->ulTotalMatches, lib.values("ARTISTS").size());
    EXPECT_EQ(attr(action.objects()[0], "id") + " " + attr(action.objects()[0], "parentID") + " " +
                  mdbtest::childText(action.objects()[0], "dc:title"),
              "0.1.258|" + lib.value("ARTISTS", "Miles Davis") + " 0.1.258 Miles Davis");
    action.setObjectId("0.9");
    action.reset();
    EXPECT_EQ(MdbExecSql(lib.db(), sql, MdbBuildSearchCategoryCallback, &ctx, nullptr), SQLITE_ABORT);
}

// A sort text that a list statement cannot hold is refused, never cut into a wrong page; one of
// MDB_BROWSE_SORT_MAX characters fits every list, even with the largest numbers, and each page
// starts where it should.
TEST(HandlerEdges, SortTextsThatDoNotFitAreRefusedNotCut) {
    mdbtest::Library lib;
    std::string keys;  // every sortable property, as a client that lists them all sends it
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        if ((g_astDlnaCols[i].usFlags & MDB_COL_CONTAINER_ONLY) == 0) {
            keys += (keys.empty() ? "-" : ",-") + std::string(g_astDlnaCols[i].pcPropName);
        }
    }
    std::unique_ptr<char, decltype(&std::free)> allKeys(QRV_MDB_BuildSortStr(keys.c_str()), &std::free);
    ASSERT_TRUE(allKeys && std::strlen(allKeys.get()) > MDB_BROWSE_SORT_MAX);
    EXPECT_EQ(QRV_MDB_BuildSortStr("+x:unknown"), nullptr) << "no known key: no sort text at all";
    const std::string longest = "ORDER BY" + std::string(MDB_BROWSE_SORT_MAX - 13, ' ') + "title";
    auto page = [](const std::string &list, const std::string &sort, uint32_t count, uint32_t start) {
        mdbtest::Action action(true, count, start);
        action.adoptSort(strdup(sort.c_str()));
        const std::string status = Status(QRV_MDB_Browse(list.c_str(), 1, action.ctx()));
        return std::make_pair(status, mdbtest::TitlesOf(mdbtest::ReadDidl(action.xml())));
    };
    const struct { std::string list; bool allKeysFit; } lists[] = {
        {"0.1.264|" + lib.id("Music"), false}, {"0.1.256", true}, {"0.1.257|" + lib.value("GENRES", "Jazz"), true},
        {"0.1.258|" + lib.value("ARTISTS", "Dave Brubeck"), true}};
    for (const auto &l : lists) {
        SCOPED_TRACE(l.list);
        const auto all = page(l.list, "ORDER BY title", 100, 0);
        ASSERT_GE(all.second.size(), 2u);
        EXPECT_EQ(page(l.list, longest, 1, 1), std::make_pair(std::string("MDB_OK"), Strings{all.second[1]}));
        // Every key descending: refused where the statement cannot hold it, else the right page.
        const auto first = page(l.list, allKeys.get(), 100, 0), second = page(l.list, allKeys.get(), 100, 1);
        EXPECT_EQ(first.first + " " + second.first, l.allKeysFit ? "MDB_OK MDB_OK" : "MDB_ERR_PARA MDB_ERR_PARA");
        EXPECT_EQ(first.second.size(), l.allKeysFit ? all.second.size() : 0u);
        EXPECT_EQ(second.second, Strings(first.second.begin() + (first.second.empty() ? 0 : 1), first.second.end()));
    }
    // The largest numbers a folder statement can carry, with the longest sort text.
    mdbtest::Action extreme(true, UINT32_MAX, UINT32_MAX);
    extreme.adoptSort(strdup(longest.c_str()));
    EXPECT_EQ(Status(QRV_MDB_BrowseFolder(&g_stRootContainer, "-9223372036854775808", 1, extreme.ctx(), 31)), "MDB_OK");
}

}  // namespace
