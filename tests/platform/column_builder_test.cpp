// QRV_MDB_AdaptColItemBuilder: the DIDL-Lite forms of stored values, the folder properties, and
// the properties it must leave to the library.
#include "action.h"
#include "schema_db.h"

#include <mdb_platform.h>

#include "adapt/adapt_ids.h"

#include <gtest/gtest.h>

#include <string>

using mdbtest::Action;
using mdbtest::attr;
using mdbtest::childText;
using namespace mdbadapt;

namespace {

const uint32_t kMusicItem = 11, kVideoItem = 0x10C, kPhotoItem = 0x20D;

// Folder views as the tree holds them: the adaptation data is the view's media class.
const MdbStaticContainer kMusicFolders = {"Folders", kIdMusicFolders, kClassStorageFolder, kSearchMusicFolders,
                                         kClassMusicTrack, 0, nullptr, nullptr, nullptr};
const MdbStaticContainer kVideoFolders = {"Folders", kIdVideoFolders, kClassStorageFolder, kSearchVideoFolders,
                                          kClassVideoItem, 0, nullptr, nullptr, nullptr};

class ColumnBuilder : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(MakeItem(), MDB_OK); }
    // A fresh document with an item element and its res element, as the library prepares them.
    uint32_t MakeItem() {
        action.reset();
        item = ixmlDocument_createElement(action->pstDoc, "item");
        res = ixmlDocument_createElement(action->pstDoc, "res");
        if (item == nullptr || res == nullptr) return MDB_ERR_MEM;
        ixmlNode_appendChild(&action->pstDidlRoot->n, &item->n);
        ixmlNode_appendChild(&item->n, &res->n);
        return MDB_OK;
    }
    uint32_t Build(uint32_t index, const char *value, uint32_t flags = kMusicItem,
                   const MdbStaticContainer *container = nullptr) {
        return QRV_MDB_AdaptColItemBuilder(container, action.ctx(), item, res, flags, index, value);
    }

    Action action;
    IXML_Element *item = nullptr;
    IXML_Element *res = nullptr;
};

TEST_F(ColumnBuilder, DurationIsWrittenAsHoursMinutesSecondsMilliseconds) {
    const struct {
        const char *stored; // microseconds
        const char *written;
    } cases[] = {
        {"1005000", "0:00:01.005"},       {"300000000", "0:05:00.000"},   {"3600000000", "1:00:00.000"},
        {"86399999000", "23:59:59.999"},  {"360000000000", "100:00:00.000"}, {"1999", "0:00:00.001"},
        {"0", "<none>"},                  {"-5", "<none>"},              {"", "<none>"},
        {"12x", "<none>"},                {nullptr, "<none>"},
    };
    for (const auto &c : cases) {
        ASSERT_EQ(MakeItem(), MDB_OK);
        EXPECT_EQ(Build(kColDuration, c.stored), MDB_OK) << (c.stored ? c.stored : "NULL");
        EXPECT_EQ(attr(res, "duration"), c.written) << (c.stored ? c.stored : "NULL");
        EXPECT_EQ(attr(item, "duration"), "<none>");
    }
}

TEST_F(ColumnBuilder, ResolutionIsWrittenAsWidthByHeight) {
    const struct {
        long long stored; // height << 32 + width
        const char *written;
    } cases[] = {
        {(1080LL << 32) + 1920, "1920x1080"},
        {(480LL << 32) + 640, "640x480"},
        {(1LL << 32) + 1, "1x1"},
        {1920, "<none>"},        // no height
        {1080LL << 32, "<none>"}, // no width
        {0, "<none>"},
    };
    for (const auto &c : cases) {
        ASSERT_EQ(MakeItem(), MDB_OK);
        std::string stored = std::to_string(c.stored);
        EXPECT_EQ(Build(kColResolution, stored.c_str(), kVideoItem), MDB_OK);
        EXPECT_EQ(attr(res, "resolution"), c.written) << stored;
    }
}

TEST_F(ColumnBuilder, ResAttributesNeedAResElement) {
    EXPECT_EQ(QRV_MDB_AdaptColItemBuilder(nullptr, action.ctx(), item, nullptr, kMusicItem, kColDuration, "1000000"),
              MDB_ERR_PARA);
    EXPECT_EQ(QRV_MDB_AdaptColItemBuilder(nullptr, action.ctx(), nullptr, res, kMusicItem, kColDuration, "1000000"),
              MDB_ERR_PARA);
}

TEST_F(ColumnBuilder, LeavesTheLibrarysResAttributesAlone) {
    ixmlElement_setAttribute(res, "protocolInfo", "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3");
    ixmlElement_setAttribute(res, "importUri", "http://h/web/upload/4.mp3");
    for (uint32_t index : std::initializer_list<uint32_t>{kColProtocolInfo, kColImportUri, kColRes}) {
        EXPECT_EQ(Build(index, "139"), MDB_OK) << index;
    }
    EXPECT_EQ(attr(res, "protocolInfo"), "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3");
    EXPECT_EQ(attr(res, "importUri"), "http://h/web/upload/4.mp3");
    EXPECT_EQ(mdbtest::attrNames(res).size(), 2u);
    EXPECT_EQ(mdbtest::attrNames(item).size(), 0u);
}

TEST_F(ColumnBuilder, DlnaManagedMarksDestroyableItems) {
    const struct {
        uint32_t flags;
        const char *written;
    } cases[] = {
        {kMusicItem, "00000004"}, {kPhotoItem | (3u << 16), "00000004"},
        {kVideoItem | 0x80u, "<none>"}, // restricted
        {2 | 0x800u, "<none>"},         // a folder
    };
    for (const auto &c : cases) {
        ASSERT_EQ(MakeItem(), MDB_OK);
        EXPECT_EQ(Build(kColDlnaManaged, "42", c.flags), MDB_OK);
        EXPECT_EQ(attr(item, "dlna:dlnaManaged"), c.written) << c.flags;
    }
}

TEST_F(ColumnBuilder, FolderRowsGetTheStaticContainersAnswers) {
    const MdbStaticContainer *musicFolders = &kMusicFolders;
    uint32_t folder = 2 | 0x800u | 0x1000u;
    EXPECT_EQ(Build(kColSearchable, "9", folder, musicFolders), MDB_OK);
    EXPECT_EQ(Build(kColStorageUsed, "9", folder, musicFolders), MDB_OK);
    EXPECT_EQ(Build(kColWriteStatus, "9", folder, musicFolders), MDB_OK);
    EXPECT_EQ(Build(kColSearchClass, "9", folder, musicFolders), MDB_OK);
    EXPECT_EQ(attr(item, "searchable"), "1");
    EXPECT_EQ(childText(item, "upnp:storageUsed"), "-1");
    EXPECT_EQ(childText(item, "upnp:writeStatus"), "NOT_WRITABLE");
    std::vector<IXML_Element *> classes = mdbtest::children(item, "upnp:searchClass");
    ASSERT_EQ(classes.size(), 2u);
    EXPECT_EQ(mdbtest::childText(item, "upnp:searchClass"), "object.container.storageFolder");
    IXML_Node *text = ixmlNode_getFirstChild(&classes[1]->n);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(ixmlNode_getNodeValue(text), "object.item.audioItem.musicTrack"); // the container's class
    EXPECT_EQ(attr(classes[0], "includeDerived"), "1");
    EXPECT_EQ(attr(classes[1], "includeDerived"), "1");
}

TEST_F(ColumnBuilder, SearchResultFolderTakesItsClassFromItsFolderBits) {
    EXPECT_EQ(Build(kColSearchClass, "9", 2 | 0x2000u, nullptr), MDB_OK);
    std::vector<IXML_Element *> classes = mdbtest::children(item, "upnp:searchClass");
    ASSERT_EQ(classes.size(), 2u);
    EXPECT_STREQ(ixmlNode_getNodeValue(ixmlNode_getFirstChild(&classes[1]->n)), "object.item.imageItem.photo");
    // a folder without media bits outside a media view: nothing to say
    ASSERT_EQ(MakeItem(), MDB_OK);
    EXPECT_EQ(Build(kColSearchClass, "9", 2, nullptr), MDB_OK);
    EXPECT_TRUE(mdbtest::children(item, "upnp:searchClass").empty());
}

TEST_F(ColumnBuilder, ChildCountCountsWhatTheFolderBrowseShows) {
    platformtest::SchemaDb db;
    ASSERT_EQ(db.exec("insert into ITEM (id, parentID, flags, title) values "
                      "(1, 0, 2 | 2048 | 4096, 'root'),"
                      "(2, 1, 11, 'song a'), (3, 1, 11 | 65536, 'song b'), (4, 1, 268, 'film'),"
                      "(5, 1, 2 | 2048, 'music sub'), (6, 1, 2 | 8192, 'picture sub'), (7, 5, 11, 'deeper')"),
              SQLITE_OK);
    sqlite3 *saved = g_pstMdbCtx;
    g_pstMdbCtx = db.db();
    const struct {
        const char *rowId;
        const MdbStaticContainer *container;
        uint32_t flags;
        const char *written;
    } cases[] = {
        {"1", &kMusicFolders, 2 | 2048 | 4096, "3"}, // 2 songs + music sub
        {"1", &kVideoFolders, 2 | 2048 | 4096, "1"},                                     // the film
        {"1", nullptr, 2 | 4096, "1"},                                                 // Search: video bit
        {"5", nullptr, 2 | 2048, "1"},
        {"6", nullptr, 2 | 8192, "0"},
        {"1", nullptr, 2, "<none>"}, // no media class to count in
    };
    for (const auto &c : cases) {
        ASSERT_EQ(MakeItem(), MDB_OK);
        EXPECT_EQ(Build(kColChildCount, c.rowId, c.flags, c.container), MDB_OK);
        EXPECT_EQ(attr(item, "childCount"), c.written) << c.rowId << " flags " << c.flags;
    }
    g_pstMdbCtx = saved;
}

TEST_F(ColumnBuilder, RefusesWhatItDoesNotBuild) {
    for (uint32_t index : std::initializer_list<uint32_t>{kColId, kColTitle, kColDate, kColSize, kColRestricted, kColRecordQuality, 999u}) {
        EXPECT_EQ(Build(index, "x"), MDB_ERR_PARA) << index;
    }
    EXPECT_EQ(mdbtest::attrNames(item).size(), 0u);
}

TEST_F(ColumnBuilder, BuildsExactlyThePropertiesTheTableSendsIt) {
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        bool flagged = (g_astDlnaCols[i].usFlags & MDB_COL_ADAPT_BUILDER) != 0;
        bool containerOnly = (g_astDlnaCols[i].usFlags & MDB_COL_CONTAINER_ONLY) != 0;
        uint32_t flags = containerOnly && i != kColDlnaManaged ? 2u | 0x800u : kMusicItem;
        ASSERT_EQ(MakeItem(), MDB_OK);
        uint32_t status = Build(i, "1", flags, &kMusicFolders);
        EXPECT_EQ(status == MDB_OK, flagged) << "entry " << i << " " << g_astDlnaCols[i].pcPropName;
    }
}

} // namespace
