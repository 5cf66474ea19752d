// QRV_MDB_AdaptColItemBuilder: the DIDL-Lite forms of stored values, the folder properties, and
// the properties it must leave to the library.
#include "action.h"
#include "catalogue.h"

#include <mdb_platform.h>

#include "adapt/adapt_ids.h"

#include <gtest/gtest.h>

using mdbtest::attr;
using namespace mdbadapt;

namespace {

const uint32_t kMusicItem = 11, kVideoItem = 0x10C, kMusicFolder = 2 | 0x800;
using View = const MdbStaticContainer *;  // the browsed container; nullptr in a Search

// Folder views as the tree holds them: the adaptation data is the view's media class.
const MdbStaticContainer kMusicFolders = {"Folders", kIdMusicFolders, kClassStorageFolder, kSearchMusicFolders,
                                          kClassMusicTrack, 0, nullptr, nullptr, nullptr};
const MdbStaticContainer kVideoFolders = {"Folders", kIdVideoFolders, kClassStorageFolder, kSearchVideoFolders,
                                          kClassVideoItem, 0, nullptr, nullptr, nullptr};

class ColumnBuilder : public ::testing::Test {
protected:
    // A fresh item element with its res element, as the library prepares them.
    void Fresh() {
        action.reset();
        item = ixmlDocument_createElement(action->pstDoc, "item");
        res = ixmlDocument_createElement(action->pstDoc, "res");
        ixmlNode_appendChild(&action->pstDidlRoot->n, &item->n);
        ixmlNode_appendChild(&item->n, &res->n);
    }
    uint32_t Build(uint32_t index, const char *value, uint32_t flags, View view = nullptr) {
        if (index == kColDlnaManaged && value != nullptr) {
            // Written from the @restricted attribute, which the library has set from the view.
            ixmlElement_setAttribute(item, "restricted", value);
        }
        return QRV_MDB_AdaptColItemBuilder(view, action.ctx(), item, res, flags, index, value);
    }
    // What was written for property `index`, looked for where the property table says it goes.
    std::string Written(uint32_t index) {
        const MdbDlnaCol &col = g_astDlnaCols[index];
        std::string name = col.pcPropName;
        name = name.substr(name.find('@') + 1);  // "res@duration" and "@childCount" name attributes
        if ((col.usFlags & MDB_COL_RES_ATTRIBUTE) != 0) return attr(res, name);
        return (col.usFlags & MDB_COL_ELEMENT) != 0 ? mdbtest::childText(item, name) : attr(item, name);
    }
    mdbtest::Action action;
    IXML_Element *item = nullptr, *res = nullptr;
};

// Durations and resolutions in their DIDL-Lite form, the dlnaManaged flags of destroyable items,
// folder rows answering as static containers do, and no element at all for a value the row lacks.
TEST_F(ColumnBuilder, WritesStoredValuesInTheirDidlForm) {
    const std::string hd = std::to_string((1080LL << 32) + 1920), noWidth = std::to_string(1080LL << 32);
    const struct { uint32_t index; const char *stored; uint32_t flags; const char *written; } cases[] = {
        {kColDuration, "86399999000", kMusicItem, "23:59:59.999"}, {kColDuration, "1999", kMusicItem, "0:00:00.001"},
        {kColDuration, "360000000000", kMusicItem, "100:00:00.000"}, {kColDuration, "0", kMusicItem, "<none>"},
        {kColDuration, "12x", kMusicItem, "<none>"}, {kColDuration, nullptr, kMusicItem, "<none>"},
        {kColResolution, hd.c_str(), kVideoItem, "1920x1080"}, {kColResolution, "1920", kVideoItem, "<none>"},
        {kColResolution, noWidth.c_str(), kVideoItem, "<none>"},
        {kColDlnaManaged, "0", kMusicItem | (3u << 16), "00000004"}, {kColDlnaManaged, "1", kMusicItem, "<none>"},
        {kColDlnaManaged, nullptr, kVideoItem, "<none>"}, {kColDlnaManaged, "0", kMusicFolder, "<none>"},
        {kColSearchable, "9", kMusicFolder, "1"}, {kColStorageUsed, "9", kMusicFolder, "-1"},
        {kColWriteStatus, "9", kMusicFolder, "NOT_WRITABLE"},
        {kColArtist, "Miles Davis", kMusicItem, "Miles Davis"}, {kColArtist, nullptr, kMusicItem, "<none>"},
        {kColPublisher, "", kMusicItem, "<none>"}, {kColDate, "2024-05-01", kMusicItem, "2024-05-01"},
        {kColTrackNumber, "10", kMusicItem, "10"}, {kColTrackNumber, "0", kMusicItem, "<none>"},
    };
    for (const auto &c : cases) {
        Fresh();
        EXPECT_EQ(Build(c.index, c.stored, c.flags, &kMusicFolders), MDB_OK);
        EXPECT_EQ(Written(c.index), c.written) << g_astDlnaCols[c.index].pcPropName << " from "
                                               << (c.stored ? c.stored : "NULL");
        EXPECT_EQ(mdbtest::childNames(item).size(), (g_astDlnaCols[c.index].usFlags & MDB_COL_ELEMENT) != 0 &&
                                                            std::string(c.written) != "<none>" ? 2u : 1u);
    }
}

// A folder view counts and searches its own media, whatever the row's bits; in a Search result
// the row's folder bits tell.
TEST_F(ColumnBuilder, FolderCountsAndSearchClassesFollowTheShownMedia) {
    mdbtest::Catalogue catalogue;
    catalogue.exec("insert into ITEM (id, parentID, flags, title) values (1, 0, 2 | 2048 | 4096, 'root'),"
                   "(2, 1, 11, 'song a'), (3, 1, 11 | 65536, 'song b'), (4, 1, 268, 'film'),"
                   "(5, 1, 2 | 2048, 'music sub'), (6, 1, 2 | 8192, 'picture sub'), (7, 5, 11, 'deeper')");
    const struct { const char *row; View view; uint32_t flags; const char *count, *media; } cases[] = {
        {"1", &kMusicFolders, 2 | 2048 | 4096, "3", "object.item.audioItem.musicTrack"},  // 2 songs + 1 sub-folder
        {"1", &kVideoFolders, 2 | 2048 | 4096, "1", "object.item.videoItem"},
        {"1", nullptr, 2 | 4096, "1", "object.item.videoItem"},
        {"6", nullptr, 2 | 8192, "0", "object.item.imageItem.photo"},
        {"1", nullptr, 2, "<none>", nullptr},  // no media class: nothing to say
    };
    for (const auto &c : cases) {
        Fresh();
        SCOPED_TRACE(std::string("row ") + c.row + " flags " + std::to_string(c.flags));
        EXPECT_EQ(Build(kColChildCount, c.row, c.flags, c.view) + Build(kColSearchClass, c.row, c.flags, c.view), 0u);
        EXPECT_EQ(Written(kColChildCount), c.count);
        std::vector<std::string> want;
        if (c.media != nullptr) want = {"object.container.storageFolder 1", std::string(c.media) + " 1"};
        EXPECT_EQ(mdbtest::searchClasses(item), want);
    }
}

// Exactly the flagged entries are built; the res attributes the library wrote stay; an index
// beyond the table and missing elements are refused, not crashed on.
TEST_F(ColumnBuilder, BuildsExactlyWhatTheTableSendsItAndLeavesTheLibrarysResAlone) {
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const bool folder = (g_astDlnaCols[i].usFlags & MDB_COL_CONTAINER_ONLY) != 0 && i != kColDlnaManaged;
        Fresh();
        EXPECT_EQ(Build(i, "1", folder ? kMusicFolder : kMusicItem, &kMusicFolders) == MDB_OK,
                  (g_astDlnaCols[i].usFlags & MDB_COL_ADAPT_BUILDER) != 0) << g_astDlnaCols[i].pcPropName;
    }
    Fresh();
    ixmlElement_setAttribute(res, "protocolInfo", "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3");
    for (uint32_t index : {kColProtocolInfo, kColImportUri, kColRes}) EXPECT_EQ(Build(index, "1", kMusicItem), MDB_OK);
    EXPECT_EQ(attr(res, "protocolInfo"), "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3");
    EXPECT_EQ(mdbtest::attrNames(res).size() + mdbtest::attrNames(item).size(), 1u);
    EXPECT_EQ(Build(g_ulNumOfDlnaCols + 100, "1", kMusicItem), MDB_ERR_PARA);
    EXPECT_EQ(QRV_MDB_AdaptColItemBuilder(nullptr, action.ctx(), item, nullptr, 11, kColDuration, "9"), MDB_ERR_PARA);
    EXPECT_EQ(QRV_MDB_AdaptColItemBuilder(nullptr, action.ctx(), nullptr, res, 11, kColDuration, "9"), MDB_ERR_PARA);
    EXPECT_EQ(QRV_MDB_AdaptColItemBuilder(nullptr, nullptr, item, res, 11, kColArtist, "x"), MDB_ERR_PARA);
}

}  // namespace
