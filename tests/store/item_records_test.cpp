// Item records on a real catalogue: adding, overwriting, moving, re-numbering and deleting rows,
// finding children by name, lookup entries, and texts with quotes, '%' and '_' arriving unchanged.
#include "store_test_util.h"

#include "catalogue.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using mdbtest::ItemValues;
using storetest::column;

const char kAllColumns[] =
    "select parentID||'|'||flags||'|'||title||'|'||fileName||'|'||size||'|'||date||'|'||bitsPerSample||'|'||"
    "duration||'|'||nrAudioChannels||'|'||resolution||'|'||sampleFrequency||'|'||bitrate||'|'||lastModify||'|'||"
    "originalTrackNumber||'|'||exID_ACTOR||'|'||exID_ALBUM||'|'||exID_ARTIST||'|'||exID_AUTHOR||'|'||"
    "exID_CREATOR||'|'||exID_DIRECTOR||'|'||exID_GENRE||'|'||exID_PRODUCER||'|'||exID_PUBLISHER from ITEM where id=";

// Every value distinct, so that a value in the wrong column shows.
ItemValues DistinctValues(long long base) {
    ItemValues v;
    v.parentId = base + 1;
    v.flags = static_cast<int32_t>(base + 2);
    v.title = "title" + std::to_string(base);
    v.fileName = "file" + std::to_string(base) + ".mp3";
    v.size = 5000000000LL + base;
    v.date = "2024-01-0" + std::to_string(base % 10);
    v.bitsPerSample = static_cast<int32_t>(base + 7);
    v.duration = 8000000000LL + base;
    v.nrAudioChannels = static_cast<int32_t>(base + 9);
    v.resolution = (1080LL << 32) + 1920 + base;
    v.sampleFrequency = static_cast<int32_t>(base + 11);
    v.bitrate = static_cast<int32_t>(base + 12);
    v.lastModify = "lm" + std::to_string(base);
    v.originalTrackNumber = static_cast<int32_t>(base + 14);
    v.actor = base + 15;
    v.album = base + 16;
    v.artist = base + 17;
    v.author = base + 18;
    v.creator = base + 19;
    v.director = base + 20;
    v.genre = base + 21;
    v.producer = base + 22;
    v.publisher = base + 23;
    return v;
}

std::string Joined(const ItemValues &v) {
    std::vector<std::string> parts = {
        std::to_string(v.parentId), std::to_string(v.flags), v.title, v.fileName, std::to_string(v.size), v.date,
        std::to_string(v.bitsPerSample), std::to_string(v.duration), std::to_string(v.nrAudioChannels),
        std::to_string(v.resolution), std::to_string(v.sampleFrequency), std::to_string(v.bitrate), v.lastModify,
        std::to_string(v.originalTrackNumber), std::to_string(v.actor), std::to_string(v.album),
        std::to_string(v.artist), std::to_string(v.author), std::to_string(v.creator), std::to_string(v.director),
        std::to_string(v.genre), std::to_string(v.producer), std::to_string(v.publisher)};
    std::string out;
    for (size_t i = 0; i < parts.size(); ++i) {
        out += (i ? "|" : "") + parts[i];
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
    std::string row(long long id) { return catalogue.scalar(kAllColumns + std::to_string(id)); }
    std::string count() { return catalogue.scalar("select count(*) from ITEM"); }
    mdbtest::Catalogue catalogue;
};

TEST_F(ItemRecords, AddStoresEveryValueInColumnOrder) {
    ItemValues v = DistinctValues(30);
    long long id = catalogue.addItem(v);
    EXPECT_EQ(row(id), Joined(v));
    EXPECT_EQ(catalogue.scalar("select max(id) from ITEM"), std::to_string(id));
}

TEST_F(ItemRecords, AddRefusesMissingTextsAndAcceptsMissingDates) {
    sqlite3 *db = catalogue.db();
    EXPECT_STATUS(QRV_MDB_DbAddItem(db, 0, 2, nullptr, "f", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                    0, nullptr),
                  MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItem(db, 0, 2, "t", nullptr, 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                    0, nullptr),
                  MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItem(nullptr, 0, 2, "t", "f", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0,
                                    0, 0, nullptr),
                  MDB_ERR_PARA);
    EXPECT_EQ(count(), "0");

    // No id pointer: the row arrives all the same. NULL date texts are formatted by %q as "(NULL)".
    EXPECT_STATUS(QRV_MDB_DbAddItem(db, 0, 2, "t", "f", 0, nullptr, 0, 0, 0, 0, 0, 0, nullptr, 0, 0, 0, 0, 0, 0,
                                    0, 0, 0, 0, nullptr),
                  MDB_OK);
    EXPECT_EQ(count(), "1");
    EXPECT_EQ(catalogue.scalar("select date||'/'||lastModify from ITEM"), "(NULL)/(NULL)");
}

TEST_F(ItemRecords, UpdateValuesOverwritesTheWholeRow) {
    long long first = catalogue.addItem(DistinctValues(10));
    long long second = catalogue.addItem(DistinctValues(20));
    ItemValues changed = DistinctValues(40);
    EXPECT_STATUS(UpdateValues(catalogue.db(), changed, first), MDB_OK);
    EXPECT_EQ(row(first), Joined(changed));
    EXPECT_EQ(row(second), Joined(DistinctValues(20)));

    EXPECT_STATUS(UpdateValues(catalogue.db(), changed, 0), MDB_ERR_PARA);
    EXPECT_STATUS(UpdateValues(nullptr, changed, first), MDB_ERR_PARA);
    EXPECT_STATUS(UpdateValues(catalogue.db(), changed, 9999), MDB_OK) << "a missing row is no error";
    EXPECT_STATUS(QRV_MDB_DbUpdateItemValues(catalogue.db(), 0, 2, nullptr, "f", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0,
                                             0, 0, 0, 0, 0, 0, 0, 0, first),
                  MDB_ERR_PARA);
    EXPECT_EQ(row(first), Joined(changed));
}

TEST_F(ItemRecords, UpdateValuesFormatsTheCurrentTemplate) {
    long long id = catalogue.addItem(DistinctValues(1));
    const char *const original = mdb_updateitem_sql;
    // The server's own template: same 24 conversions in the same order, the title framed.
    std::string framed = original;
    const std::string titleSet = "title='%q'";
    ASSERT_NE(framed.find(titleSet), std::string::npos);
    framed.replace(framed.find(titleSet), titleSet.size(), "title='<%q>'");
    mdb_updateitem_sql = framed.c_str();
    ItemValues v = DistinctValues(2);
    uint32_t status = UpdateValues(catalogue.db(), v, id);
    mdb_updateitem_sql = original;
    EXPECT_STATUS(status, MDB_OK);
    ItemValues expected = v;
    expected.title = "<" + v.title + ">";
    EXPECT_EQ(row(id), Joined(expected));
}

TEST_F(ItemRecords, MoveAndRename) {
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    long long other = catalogue.addFolder(0, "/mnt/usb2_1");
    long long item = catalogue.addItem(DistinctValues(3));
    EXPECT_STATUS(QRV_MDB_DbUpdateItemParentIDandName(catalogue.db(), item, other, "New title", "new.mp3"), MDB_OK);
    EXPECT_EQ(catalogue.scalar("select parentID||'|'||title||'|'||fileName from ITEM where id=" +
                               std::to_string(item)),
              std::to_string(other) + "|New title|new.mp3");
    EXPECT_STATUS(QRV_MDB_DbUpdateItemParentIDandName(catalogue.db(), 0, folder, "x", "y"), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbUpdateItemParentIDandName(nullptr, item, folder, "x", "y"), MDB_ERR_PARA);
}

TEST_F(ItemRecords, ChangeIdMovesOnlyTheRowItself) {
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    long long child = catalogue.addFolder(folder, "music");
    long long taken = catalogue.addFolder(0, "/mnt/usb2_1");

    struct Case {
        const char *what;
        bool nullPointer;
        long long newId;
    };
    for (const Case &c : {Case{"null pointer", true, 0}, Case{"zero", false, 0}, Case{"negative", false, -4}}) {
        SCOPED_TRACE(c.what);
        storetest::StatementCounter statements(catalogue.db());
        EXPECT_STATUS(QRV_MDB_DbUpdateItem(catalogue.db(), folder, c.nullPointer ? nullptr : &c.newId), MDB_OK);
        EXPECT_EQ(statements.count(), 0) << "nothing to set: no statement runs";
    }

    long long newId = 500;
    EXPECT_STATUS(QRV_MDB_DbUpdateItem(catalogue.db(), folder, &newId), MDB_OK);
    EXPECT_EQ(catalogue.scalar("select fileName from ITEM where id=500"), "/mnt/usb1_1");
    EXPECT_EQ(catalogue.scalar("select parentID from ITEM where id=" + std::to_string(child)), std::to_string(folder))
        << "children keep the old id as parent";

    testing::internal::CaptureStdout();
    EXPECT_STATUS(QRV_MDB_DbUpdateItem(catalogue.db(), 500, &taken), MDB_ERR_DB);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "SQL executing [update ITEM set  id=" + std::to_string(taken) +
                                                          " where id=500] failed with code 19.\n");
    EXPECT_STATUS(QRV_MDB_DbUpdateItem(catalogue.db(), 0, &newId), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbUpdateItem(nullptr, 500, &newId), MDB_ERR_PARA);
}

TEST_F(ItemRecords, DeleteRowAndDirectChildren) {
    long long root = catalogue.addFolder(0, "/mnt/usb1_1");
    long long sub = catalogue.addFolder(root, "sub");
    long long deep = catalogue.addFolder(sub, "deep");
    long long leaf = catalogue.addFolder(root, "leaf");

    EXPECT_STATUS(QRV_MDB_DbDelSubItem(catalogue.db(), root), MDB_OK);
    EXPECT_EQ(column(catalogue.db(), "select id from ITEM order by id"),
              (std::vector<std::string>{std::to_string(root), std::to_string(deep)}));
    (void)leaf;

    EXPECT_STATUS(QRV_MDB_DbDelItem(catalogue.db(), root), MDB_OK);
    EXPECT_EQ(column(catalogue.db(), "select id from ITEM"), std::vector<std::string>{std::to_string(deep)});
    EXPECT_STATUS(QRV_MDB_DbDelItem(catalogue.db(), 12345), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbDelItem(catalogue.db(), 0), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbDelSubItem(catalogue.db(), 12345), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbDelItem(nullptr, deep), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbDelSubItem(nullptr, deep), MDB_ERR_PARA);
    EXPECT_EQ(count(), "1");
}

TEST_F(ItemRecords, FindChildByName) {
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    long long empty = catalogue.addFolder(0, "/mnt/usb2_1");
    long long b = catalogue.addFolder(folder, "b");
    long long a = catalogue.addFolder(folder, "a");

    struct Case {
        const char *what;
        long long parent;
        const char *name;
        long long expected;
    };
    const Case cases[] = {
        {"by name", folder, "a", a},
        {"other name", folder, "b", b},
        {"no such name leaves the value", folder, "c", 77},
        {"name under another parent", empty, "a", 77},
        {"no name: smallest child id", folder, nullptr, b},
        {"no name, no children: -1", empty, nullptr, -1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        long long id = 77;
        EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(catalogue.db(), c.parent, c.name, &id), MDB_OK);
        EXPECT_EQ(id, c.expected);
    }
    EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(catalogue.db(), folder, "a", nullptr), MDB_OK);
    long long id = 0;
    EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(nullptr, folder, "a", &id), MDB_ERR_PARA);
}

TEST_F(ItemRecords, LookupEntriesAreFoundOrCreatedOnce) {
    sqlite3 *db = catalogue.db();
    long long jazz = 0, again = 0, rock = 0, unnamed = 0, unnamedAgain = 0;
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &jazz, "GENRES", "Jazz"), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &rock, "GENRES", "Rock"), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &again, "GENRES", "Jazz"), MDB_OK);
    EXPECT_GT(jazz, 0);
    EXPECT_NE(rock, jazz);
    EXPECT_EQ(again, jazz);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &unnamed, "ACTORS", nullptr), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &unnamedAgain, "ACTORS", ""), MDB_OK);
    EXPECT_EQ(unnamedAgain, unnamed) << "a NULL name is the empty name";
    EXPECT_EQ(column(db, "select name from GENRES order by exID"), (std::vector<std::string>{"Jazz", "Rock"}));
    EXPECT_EQ(column(db, "select '['||name||']' from ACTORS"), std::vector<std::string>{"[]"});

    long long id = 5;
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &id, "", "x"), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &id, nullptr, "x"), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, nullptr, "GENRES", "x"), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(nullptr, &id, "GENRES", "x"), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &id, "NO_SUCH_TABLE", "x"), MDB_ERR_DB);
    EXPECT_EQ(id, 5);
}

// Texts pass through %q: quotes are doubled in the statement and stored once; '%' and '_' are
// ordinary characters for '=' comparisons.
TEST_F(ItemRecords, SpecialTextsRoundTrip) {
    const std::vector<std::string> texts = {
        "It's", "say \"hi\"", "''", "100% off", "a_b", "%", "_", "%_%'", "50%_off_it's",
    };
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    // Decoys that a wildcard match would find first.
    catalogue.addFolder(folder, "100x off");
    catalogue.addFolder(folder, "axb");
    for (const std::string &text : texts) {
        SCOPED_TRACE(text);
        ItemValues v;
        v.parentId = folder;
        v.title = text;
        v.fileName = text;
        v.date = text;
        v.lastModify = text;
        long long id = catalogue.addItem(v);

        long long found = -5;
        EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(catalogue.db(), folder, text.c_str(), &found), MDB_OK);
        EXPECT_EQ(found, id);
        MdbItemDetail detail{};
        EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), id, &detail), MDB_OK);
        EXPECT_EQ(std::string(detail.acTitle), text);
        EXPECT_EQ(std::string(detail.acFileName), text);
        EXPECT_EQ(std::string(detail.acDate), text);
        EXPECT_EQ(std::string(detail.acLastModify), text);

        v.title = text + text;
        v.fileName = "x" + text;
        EXPECT_STATUS(UpdateValues(catalogue.db(), v, id), MDB_OK);
        found = -5;
        EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(catalogue.db(), folder, v.fileName.c_str(), &found), MDB_OK);
        EXPECT_EQ(found, id);
        EXPECT_EQ(catalogue.scalar("select title from ITEM where id=" + std::to_string(id)), text + text);

        EXPECT_STATUS(QRV_MDB_DbUpdateItemParentIDandName(catalogue.db(), id, folder, text.c_str(), text.c_str()),
                      MDB_OK);
        EXPECT_EQ(catalogue.scalar("select title||'|'||fileName from ITEM where id=" + std::to_string(id)),
                  text + "|" + text);

        long long entry = catalogue.lookup("ARTISTS", text);
        EXPECT_EQ(catalogue.lookup("ARTISTS", text), entry);
        char name[256] = {0};
        EXPECT_STATUS(QRV_MDB_GetArtist(catalogue.db(), static_cast<int32_t>(entry), name), MDB_OK);
        EXPECT_EQ(std::string(name), text);
    }
    EXPECT_EQ(catalogue.scalar("select count(*) from ARTISTS"), std::to_string(texts.size()));
}

}  // namespace
