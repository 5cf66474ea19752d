// The database handlers at their edges: missing objects, argument errors, failing statements, and
// the answers that differ between folder, all-items and category containers.
#include "library.h"

#include "cds/folder_browse.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

using browsetest::Library;
using mdbtest::attr;

const MdbStaticContainer *Node(const char *id) {
    const MdbStaticContainer *node = nullptr;
    EXPECT_STREQ(QRV_MDB_StatusName(MdbLocateStaticContainerById(id, &node, nullptr)), "MDB_OK") << id;
    return node;
}

std::string Status(uint32_t s) { return QRV_MDB_StatusName(s); }

class HandlerEdges : public ::testing::Test {
protected:
    std::string id(const char *base, const std::string &file) { return base + ("|" + std::to_string(lib.row(file).id)); }
    Library lib;
};

TEST_F(HandlerEdges, RootFoldersAreCountedWholeAndWrittenUpToRequestedCount) {
    mdbtest::Action action(true, 2, 1);
    ASSERT_EQ(Status(QRV_MDB_Browse("0.2.516", 1, action.ctx())), "MDB_OK");
    ASSERT_EQ(action.objects().size(), 2u);
    EXPECT_EQ(action->ulNumberReturned, 2u);
    EXPECT_EQ(action->ulTotalMatches, 3u);
    EXPECT_EQ(attr(action.objects()[0], "id"), "0.2.516|" + std::to_string(g_pstRootPaths[0].llId))
        << "StartingIndex does not apply";
    EXPECT_EQ(mdbtest::childText(action.objects()[0], "dc:title"), g_pstRootPaths[0].pcTitle);
}

TEST_F(HandlerEdges, MissingObjects) {
    struct Case {
        const char *why;
        std::string id;
        std::string status;
        uint32_t total;
        int32_t upnpError;
    };
    const std::vector<Case> cases = {
        {"a folder row that does not exist", "0.1.264|999999", "MDB_ERR_NOT_FOUND", 0, 701},
        {"an all-items row that does not exist", "0.1.256|999999", "MDB_OK", 1, 0},
        {"a category item that does not exist", "0.1.257|1,999999", "MDB_OK", 0, 0},
        {"a category item of another class", "0.1.257|1," + std::to_string(lib.row("beach.jpg").id), "MDB_OK", 0, 0},
    };
    for (const Case &c : cases) {
        mdbtest::Action action;
        testing::internal::CaptureStdout();
        EXPECT_EQ(Status(QRV_MDB_Browse(c.id.c_str(), 0, action.ctx())), c.status) << c.why;
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_TRUE(action.objects().empty()) << c.why;
        EXPECT_EQ(action->ulTotalMatches, c.total) << c.why;
        EXPECT_EQ(action->lUpnpErrCode, c.upnpError) << c.why;
        if (c.upnpError == 701) {
            EXPECT_STREQ(action->pcErrStr, "No such object.");
            EXPECT_NE(out.find(":ctx->lUpnpErrCode=[701],ctx->pcErrStr=[No such object.]\n"), std::string::npos) << out;
        }
    }
}

TEST_F(HandlerEdges, MetadataOfAnExistingRowBeyondStartingIndexWritesNothing) {
    mdbtest::Action action(true, 10, 1);
    EXPECT_EQ(Status(QRV_MDB_Browse(id("0.1.264", "Music").c_str(), 0, action.ctx())), "MDB_OK");
    EXPECT_TRUE(action.objects().empty());
    EXPECT_EQ(action->ulTotalMatches, 1u);
    EXPECT_EQ(action->ulNumberReturned, 0u);
}

TEST_F(HandlerEdges, SubIdsThatChangeTheRequest) {
    // An all-items container answers a row's metadata whatever the flag; an item inside a
    // category value can only be browsed for its metadata.
    mdbtest::Action all;
    EXPECT_EQ(Status(QRV_MDB_Browse(id("0.1.256", "take5.mp3").c_str(), 1, all.ctx())), "MDB_OK");
    ASSERT_EQ(all.objects().size(), 1u);
    EXPECT_EQ(mdbtest::childText(all.objects()[0], "dc:title"), "Take Five");
    const std::string inGenre = "0.1.257|" + std::to_string(lib.genre("Jazz")) + "," +
                                std::to_string(lib.row("take5.mp3").id);
    mdbtest::Action children;
    EXPECT_EQ(Status(QRV_MDB_Browse(inGenre.c_str(), 1, children.ctx())), "MDB_ERR_PARA");
    EXPECT_TRUE(children.objects().empty());
    // A value id that names no genre still gets its container, with an empty title.
    mdbtest::Action unknown;
    EXPECT_EQ(Status(QRV_MDB_Browse("0.1.257|4242", 0, unknown.ctx())), "MDB_OK");
    ASSERT_EQ(unknown.objects().size(), 1u);
    EXPECT_EQ(attr(unknown.objects()[0], "id"), "0.1.257|4242");
    EXPECT_EQ(mdbtest::childText(unknown.objects()[0], "dc:title"), "");
}

TEST_F(HandlerEdges, ClassesBeyondTheFolderBitsShowNoFolders) {
    mdbtest::Action action;
    const std::string usb = std::to_string(lib.row("/media/usb1_1").id);
    EXPECT_EQ(Status(QRV_MDB_BrowseFolder(Node("0.1.264"), usb.c_str(), 1, action.ctx(), 40)), "MDB_OK");
    EXPECT_EQ(action->ulTotalMatches, 0u);
    EXPECT_TRUE(action.objects().empty());
}

TEST_F(HandlerEdges, MissingActionOrConnection) {
    using Handler = uint32_t (*)(const MdbStaticContainer *, const char *, uint32_t, MdbActionCtx *, uint32_t);
    const Handler handlers[] = {QRV_MDB_BrowseFolder,      QRV_MDB_BrowseAll,         QRV_MDB_BrowseMusicGenre,
                                QRV_MDB_BrowseMusicArtist, QRV_MDB_BrowseMusicAlbum,  QRV_MDB_BrowseVideoCreator,
                                QRV_MDB_BrowseVideoAlbum};
    for (Handler h : handlers) {
        EXPECT_EQ(Status(h(Node("0.1.256"), nullptr, 1, nullptr, MDB_CLASS_MUSIC)), "MDB_ERR_PARA");
    }
    mdbtest::Action action;
    EXPECT_EQ(Status(QRV_MDB_Browse("0.1.256", 1, nullptr)), "MDB_ERR_PARA");
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

TEST_F(HandlerEdges, AFailingRowStatementIsReported) {
    struct Case {
        const char *id;
        bool printed;
    };
    for (const Case &c : {Case{"0.1.264|1", true}, Case{"0.1.256", false}, Case{"0.1.257|1", false}}) {
        mdbtest::Action action;
        action.adoptSort(strdup("ORDER BY no_such_column"));
        testing::internal::CaptureStdout();
        EXPECT_EQ(Status(QRV_MDB_Browse(c.id, 1, action.ctx())), "MDB_ERR_DB") << c.id;
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(out.rfind("SQL executing [select * from DLNA where parentID=1 ", 0) == 0 &&
                      out.find("ORDER BY no_such_column LIMIT 100 OFFSET 0] failed with code 1.\n") != std::string::npos,
                  c.printed)
            << c.id << ": " << out;
    }
}

TEST_F(HandlerEdges, SearchCategoryRowsBecomeContainersOfTheSearchedContainer) {
    mdbtest::Action action(true, 2);
    action.setObjectId("0.1.258");
    MdbItemBuildCtx ctx{};
    ctx.pstAction = action.ctx();
    ASSERT_EQ(MdbExecSql(lib.db(), "select exID,name from ARTISTS order by exID", MdbBuildSearchCategoryCallback, &ctx,
                         nullptr),
              SQLITE_OK);
    ASSERT_EQ(action.objects().size(), 2u);
    EXPECT_EQ(std::to_string(action->ulTotalMatches), lib.catalogue().scalar("select count(*) from ARTISTS"));
    EXPECT_EQ(attr(action.objects()[0], "parentID"), "0.1.258");
    EXPECT_EQ(attr(action.objects()[0], "id"), "0.1.258|" + std::to_string(lib.artist("Miles Davis")));
    EXPECT_EQ(mdbtest::childText(action.objects()[0], "dc:title"), "Miles Davis");
    action.setObjectId("0.9");
    action.reset();
    EXPECT_EQ(MdbExecSql(lib.db(), "select exID,name from ARTISTS", MdbBuildSearchCategoryCallback, &ctx, nullptr),
              SQLITE_ABORT)
        << "a container id that does not resolve stops the statement";
}

}  // namespace
