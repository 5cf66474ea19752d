// Item records on a real catalogue: every value in its column, the current update template,
// re-numbering and deleting rows, children by name, lookup entries, texts with quotes, '%' and '_'
// arriving unchanged, and the null connection of every store operation.
#include "store_test_util.h"

#include "catalogue.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using mdbtest::ItemValues;
using storetest::rows;

// Every value distinct, so that a value in the wrong column shows.
ItemValues DistinctValues(long long base) {
    ItemValues v;
    v.parentId = base + 1;
    v.flags = static_cast<int32_t>(base + 2);
    v.title = "title" + std::to_string(base);
    v.fileName = "file" + std::to_string(base);
    v.size = 5000000000LL + base;
    v.date = "date" + std::to_string(base);
    v.bitsPerSample = static_cast<int32_t>(base + 7);
    v.duration = 8000000000LL + base;
    v.nrAudioChannels = static_cast<int32_t>(base + 9);
    v.resolution = (1080LL << 32) + 1920 + base;
    v.sampleFrequency = static_cast<int32_t>(base + 11);
    v.bitrate = static_cast<int32_t>(base + 12);
    v.lastModify = "lm" + std::to_string(base);
    v.originalTrackNumber = static_cast<int32_t>(base + 14);
    v.actor = base + 15, v.album = base + 16, v.artist = base + 17, v.author = base + 18, v.creator = base + 19;
    v.director = base + 20, v.genre = base + 21, v.producer = base + 22, v.publisher = base + 23;
    return v;
}

// "select * from ITEM where id=<id>" as storetest::rows prints it.
std::string RowText(long long id, const ItemValues &v) {
    std::string out = std::to_string(id);
    for (const std::string &part :
         {std::to_string(v.parentId), std::to_string(v.flags), v.title, v.fileName, std::to_string(v.size), v.date,
          std::to_string(v.bitsPerSample), std::to_string(v.duration), std::to_string(v.nrAudioChannels),
          std::to_string(v.resolution), std::to_string(v.sampleFrequency), std::to_string(v.bitrate), v.lastModify,
          std::to_string(v.originalTrackNumber), std::to_string(v.actor), std::to_string(v.album),
          std::to_string(v.artist), std::to_string(v.author), std::to_string(v.creator), std::to_string(v.director),
          std::to_string(v.genre), std::to_string(v.producer), std::to_string(v.publisher)}) {
        out += "|" + part;
    }
    return out;
}

uint32_t UpdateValues(sqlite3 *db, const ItemValues &v, long long id) {
    return QRV_MDB_DbUpdateItemValues(db, v.parentId, v.flags, v.title.c_str(), v.fileName.c_str(), v.size,
                                      v.date.c_str(), v.bitsPerSample, v.duration, v.nrAudioChannels,
                                      v.resolution, v.sampleFrequency, v.bitrate, v.lastModify.c_str(),
                                      v.originalTrackNumber, v.actor, v.album, v.artist, v.author, v.creator,
                                      v.director, v.genre, v.producer, v.publisher, id);
}

class ItemRecords : public ::testing::Test {
protected:
    std::vector<std::string> row(long long id) { return rows(catalogue.db(), "select * from ITEM where id=" + std::to_string(id)); }
    std::string count() { return catalogue.scalar("select count(*) from ITEM"); }
    mdbtest::Catalogue catalogue;
};

TEST_F(ItemRecords, AddAndOverwriteKeepEveryValueInItsColumn) {
    long long first = catalogue.addItem(DistinctValues(10));
    long long second = catalogue.addItem(DistinctValues(20));
    EXPECT_EQ(row(first), std::vector<std::string>{RowText(first, DistinctValues(10))});

    EXPECT_STATUS(UpdateValues(catalogue.db(), DistinctValues(40), first), MDB_OK);
    EXPECT_EQ(row(first), std::vector<std::string>{RowText(first, DistinctValues(40))});
    EXPECT_EQ(row(second), std::vector<std::string>{RowText(second, DistinctValues(20))});
    EXPECT_STATUS(UpdateValues(catalogue.db(), DistinctValues(50), 9999), MDB_OK) << "a missing row is no error";
    EXPECT_STATUS(UpdateValues(catalogue.db(), DistinctValues(50), 0), MDB_ERR_PARA);

    // The server's own template (same conversions, title framed) is used from the next call on.
    const char *const original = mdb_updateitem_sql;
    std::string framed = original;
    framed.replace(framed.find("title='%q'"), 10, "title='<%q>'");
    mdb_updateitem_sql = framed.c_str();
    uint32_t status = UpdateValues(catalogue.db(), DistinctValues(60), first);
    mdb_updateitem_sql = original;
    EXPECT_STATUS(status, MDB_OK);
    ItemValues expected = DistinctValues(60);
    expected.title = "<" + expected.title + ">";
    EXPECT_EQ(row(first), std::vector<std::string>{RowText(first, expected)});
}

TEST_F(ItemRecords, RequiredTextsAndOptionalOutputs) {
    sqlite3 *db = catalogue.db();
    EXPECT_STATUS(QRV_MDB_DbAddItem(db, 0, 2, nullptr, "f", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                    0, nullptr),
                  MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItem(db, 0, 2, "t", nullptr, 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                    0, nullptr),
                  MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbUpdateItemValues(db, 0, 2, nullptr, "f", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0,
                                             0, 0, 0, 0, 1),
                  MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbUpdateItemParentIDandName(db, 0, 1, "t", "f"), MDB_ERR_PARA);
    EXPECT_EQ(count(), "0");

    // No new-id pointer: the row arrives all the same. NULL dates are formatted by %q as "(NULL)".
    EXPECT_STATUS(QRV_MDB_DbAddItem(db, 0, 2, "t", "f", 0, nullptr, 0, 0, 0, 0, 0, 0, nullptr, 0, 0, 0, 0, 0, 0,
                                    0, 0, 0, 0, nullptr),
                  MDB_OK);
    EXPECT_EQ(catalogue.scalar("select date||'/'||lastModify from ITEM"), "(NULL)/(NULL)");
}

TEST_F(ItemRecords, ChangeIdMovesOnlyTheRowItself) {
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    long long child = catalogue.addFolder(folder, "music");
    long long taken = catalogue.addFolder(0, "/mnt/usb2_1");
    const long long zero = 0, negative = -4;
    for (const long long *noNewId : {static_cast<const long long *>(nullptr), &zero, &negative}) {
        storetest::StatementHook statements(catalogue.db());
        EXPECT_STATUS(QRV_MDB_DbUpdateItem(catalogue.db(), folder, noNewId), MDB_OK);
        EXPECT_EQ(statements.count(), 0) << "nothing to set: no statement runs";
    }
    long long newId = 500;
    EXPECT_STATUS(QRV_MDB_DbUpdateItem(catalogue.db(), folder, &newId), MDB_OK);
    EXPECT_EQ(catalogue.scalar("select fileName from ITEM where id=500"), "/mnt/usb1_1");
    EXPECT_EQ(catalogue.scalar("select parentID from ITEM where id=" + std::to_string(child)), std::to_string(folder))
        << "children keep the old id as parent";

    testing::internal::CaptureStdout();
    EXPECT_STATUS(QRV_MDB_DbUpdateItem(catalogue.db(), 500, &taken), MDB_ERR_DB);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "SQL executing [update ITEM set  id=" + std::to_string(taken) + " where id=500] failed with code 19.\n");
    EXPECT_STATUS(QRV_MDB_DbUpdateItem(catalogue.db(), 0, &newId), MDB_ERR_PARA);
}

TEST_F(ItemRecords, DeleteRowOrDirectChildrenOnly) {
    long long root = catalogue.addFolder(0, "/mnt/usb1_1");
    long long sub = catalogue.addFolder(root, "sub");
    long long deep = catalogue.addFolder(sub, "deep");
    catalogue.addFolder(root, "leaf");
    EXPECT_STATUS(QRV_MDB_DbDelSubItem(catalogue.db(), root), MDB_OK);
    EXPECT_EQ(rows(catalogue.db(), "select id from ITEM order by id"),
              (std::vector<std::string>{std::to_string(root), std::to_string(deep)}));
    EXPECT_STATUS(QRV_MDB_DbDelItem(catalogue.db(), root), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbDelItem(catalogue.db(), 12345), MDB_OK);
    EXPECT_EQ(rows(catalogue.db(), "select id from ITEM"), std::vector<std::string>{std::to_string(deep)});
}

TEST_F(ItemRecords, FindChildByName) {
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    long long empty = catalogue.addFolder(0, "/mnt/usb2_1");
    long long b = catalogue.addFolder(folder, "b");
    long long a = catalogue.addFolder(folder, "a");
    struct Case {
        long long parent;
        const char *name;
        long long expected;
    };
    const Case cases[] = {
        {folder, "a", a},   {folder, "b", b},
        {folder, "c", 77},  // no row: the value is not preset
        {empty, "a", 77},   {folder, nullptr, b},  // no name: the smallest child id
        {empty, nullptr, -1},                      // min(id) of no children is NULL
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::to_string(c.parent) + (c.name ? c.name : "(null)"));
        long long id = 77;
        EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(catalogue.db(), c.parent, c.name, &id), MDB_OK);
        EXPECT_EQ(id, c.expected);
    }
}

// Found-or-created-once is shown with the special texts below; here the NULL name and refusals.
TEST_F(ItemRecords, LookupEntryNamesAndRefusals) {
    sqlite3 *db = catalogue.db();
    long long unnamed = -1;
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &unnamed, "ACTORS", nullptr), MDB_OK);
    EXPECT_GT(unnamed, 0);
    EXPECT_EQ(catalogue.lookup("ACTORS", ""), unnamed) << "a NULL name is the empty name";
    long long id = 5;
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &id, "", "x"), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &id, nullptr, "x"), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, nullptr, "GENRES", "x"), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &id, "NO_SUCH_TABLE", "x"), MDB_ERR_DB);
    EXPECT_EQ(id, 5);
    EXPECT_EQ(catalogue.scalar("select count(*) from ACTORS"), "1");
    EXPECT_EQ(catalogue.scalar("select count(*) from GENRES"), "0") << "a refused call inserts nothing";
}

// Texts pass through %q: quotes are doubled in the statement and stored once; '%' and '_' are
// ordinary characters for '=' comparisons (the decoys would match them as wildcards).
TEST_F(ItemRecords, SpecialTextsRoundTrip) {
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    long long other = catalogue.addFolder(0, "/mnt/usb2_1");
    catalogue.addFolder(folder, "100x off");
    catalogue.addFolder(folder, "axb");
    for (const std::string text : {"It's", "''", "100% off", "a_b", "%_%'", "50%_off_it's"}) {
        SCOPED_TRACE(text);
        ItemValues v;
        v.parentId = folder;
        v.title = v.fileName = v.date = v.lastModify = text;
        long long id = catalogue.addItem(v);
        long long found = -5;
        EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(catalogue.db(), folder, text.c_str(), &found), MDB_OK);
        EXPECT_EQ(found, id);
        MdbItemDetail detail{};
        EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), id, &detail), MDB_OK);
        EXPECT_EQ(std::string(detail.acTitle) + detail.acFileName + detail.acDate + detail.acLastModify,
                  text + text + text + text);

        v.title = text + "!";
        v.fileName = "x" + text;
        EXPECT_STATUS(UpdateValues(catalogue.db(), v, id), MDB_OK);
        EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(catalogue.db(), folder, v.fileName.c_str(), &found), MDB_OK);
        EXPECT_EQ(found, id);
        EXPECT_EQ(catalogue.scalar("select title from ITEM where id=" + std::to_string(id)), text + "!");

        EXPECT_STATUS(QRV_MDB_DbUpdateItemParentIDandName(catalogue.db(), id, other, text.c_str(), text.c_str()),
                      MDB_OK);
        EXPECT_EQ(rows(catalogue.db(), "select parentID, title, fileName from ITEM where id=" + std::to_string(id)),
                  std::vector<std::string>{std::to_string(other) + "|" + text + "|" + text});

        long long entry = catalogue.lookup("ARTISTS", text);
        EXPECT_EQ(catalogue.lookup("ARTISTS", text), entry);
        char name[256] = {0};
        EXPECT_STATUS(QRV_MDB_GetArtist(catalogue.db(), static_cast<int32_t>(entry), name), MDB_OK);
        EXPECT_EQ(std::string(name), text);
    }
    EXPECT_EQ(catalogue.scalar("select count(*) from ARTISTS"), "6");
}

// Every store operation that takes a connection refuses a NULL one, except the two whose answer
// for it is fixed otherwise.
TEST(StoreOperations, NullConnection) {
    long long id = 1;
    uint32_t flags = 0;
    char name[256];
    MdbItemDetail detail{};
    const std::vector<std::function<uint32_t()>> calls = {
        [&] { return QRV_MDB_DbAddItem(nullptr, 0, 2, "t", "f", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, &id); },
        [&] { return QRV_MDB_DbUpdateItemValues(nullptr, 0, 2, "t", "f", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1); },
        [&] { return QRV_MDB_DbUpdateItemParentIDandName(nullptr, 1, 0, "t", "f"); },
        [&] { return QRV_MDB_DbUpdateItem(nullptr, 1, &id); },
        [&] { return QRV_MDB_DbDelItem(nullptr, 1); },
        [&] { return QRV_MDB_DbDelSubItem(nullptr, 1); },
        [&] { return QRV_MDB_DbGetItemIdByName(nullptr, 1, "a", &id); },
        [&] { return QRV_MDB_DbAddItemExtraInfo(nullptr, &id, "GENRES", "x"); },
        [&] { return QRV_MDB_GetItemInfo(nullptr, 1, &id, name, sizeof name, &flags); },
        [&] { return QRV_MDB_GetItemDetailInfo(nullptr, 1, &detail); },
        [&] { return QRV_MDB_GetGenre(nullptr, 1, name); },
        [&] { return QRV_MDB_GetAlbum(nullptr, 1, name); },
        [&] { return QRV_MDB_GetArtist(nullptr, 1, name); },
        [&] { return QRV_MDB_UpdateFolderFlags(nullptr, 1, 0x800); },
        [&] { return QRV_MDB_SetFolderFlags(nullptr, 1, 2); },
        [&] { return QRV_MDB_ReplaceRoot(nullptr, "/nxd", "/nxd/usb2_1"); },
    };
    for (size_t i = 0; i < calls.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_STATUS(calls[i](), MDB_ERR_PARA);
    }
    g_ulIDArrayCount = 3;
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(nullptr), MDB_OK);
    EXPECT_EQ(g_ulIDArrayCount, 3u) << "no connection: nothing changes";
    g_ulIDArrayCount = 0;
    EXPECT_EQ(QRV_MDB_DbDLNATest(nullptr, 0), 0);
}

}  // namespace
