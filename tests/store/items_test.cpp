// Item records and queries on a real catalogue: values (quotes, '%' and '_' included) through add,
// update, the whole-row read and lookups; the update template; re-numbering, deleting and finding
// children; texts cut to their buffers; audio parameters and lookup names; the DLNA view test; and
// the list of all ids, bounded against rows that arrive between count and fill.
#include "store_test_util.h"

#include <mdb_platform.h>

#include "store/store_alloc.h"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using mdbtest::ItemValues;
using storetest::Join;

// Every value distinct, the 64-bit ones beyond 32 bits, so that a value in the wrong column or cut
// to 32 bits shows.
ItemValues DistinctValues(int base) {
    const long long big = 5000000000LL + base;
    return ItemValues{base + 1LL, base + 2, "title" + std::to_string(base), "file" + std::to_string(base), big,
                      "date" + std::to_string(base), base + 7, big + 8, base + 9, big + 10, base + 11, base + 12,
                      "lm" + std::to_string(base), base + 14, base + 15LL, base + 16LL, base + 17LL, base + 18LL,
                      base + 19LL, base + 20LL, base + 21LL, base + 22LL, big + 23};
}

std::string RowOf(long long id, const ItemValues &v) {
    return Join(id, v.parentId, v.flags, v.title, v.fileName, v.size, v.date, v.bitsPerSample, v.duration,
                v.nrAudioChannels, v.resolution, v.sampleFrequency, v.bitrate, v.lastModify, v.originalTrackNumber,
                v.actor, v.album, v.artist, v.author, v.creator, v.director, v.genre, v.producer, v.publisher);
}

uint32_t UpdateValues(sqlite3 *db, const ItemValues &v, long long id) {
    return QRV_MDB_DbUpdateItemValues(db, v.parentId, v.flags, v.title.c_str(), v.fileName.c_str(), v.size,
                                      v.date.c_str(), v.bitsPerSample, v.duration, v.nrAudioChannels, v.resolution,
                                      v.sampleFrequency, v.bitrate, v.lastModify.c_str(), v.originalTrackNumber,
                                      v.actor, v.album, v.artist, v.author, v.creator, v.director, v.genre,
                                      v.producer, v.publisher, id);
}

class Items : public ::testing::Test {
protected:
    void TearDown() override {  // the id list is the caller's to free
        std::free(g_pllIDArray);
        g_pllIDArray = nullptr;
        g_ulIDArrayCount = 0;
        MdbSetAllocator(nullptr);
    }
    std::string row(long long id) { return catalogue.rows("select * from ITEM where id=" + Join(id)); }
    mdbtest::Catalogue catalogue;
    sqlite3 *db = catalogue.db();
};

// Every value lands in its own column through add, update and the whole-row read: %q doubles quotes
// in the statement and they are stored once; '%' and '_' are ordinary characters for '='
// comparisons (the decoys would match them as wildcards).
TEST_F(Items, ValuesRoundTripThroughAddUpdateAndLookup) {
    const long long folder = catalogue.addFolder(0, "/mnt/usb1_1"), other = catalogue.addFolder(0, "/mnt/usb2_1");
    catalogue.addFolder(folder, "100x off");
    catalogue.addFolder(folder, "axb");
    const std::vector<std::string> texts = {"It's", "''", "100% off", "a_b", "%_%'"};
    for (size_t i = 0; i < texts.size(); ++i) {
        const std::string &text = texts[i];
        SCOPED_TRACE(text);
        ItemValues v = DistinctValues(static_cast<int>(i) * 100);
        v.parentId = folder, v.title = "T" + text, v.fileName = text, v.date = v.lastModify = "D" + text;
        long long id = catalogue.addItem(v), found = -5;
        EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(db, folder, text.c_str(), &found), MDB_OK);
        EXPECT_EQ(Join(found, row(id)), Join(id, RowOf(id, v)));
        MdbItemDetail d;
        EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(db, id, &d), MDB_OK);
        EXPECT_EQ(Join(d.llId, d.llParentId, d.ulFlags, d.acTitle, d.acFileName, d.ullSize, d.acDate,
                       d.ulBitsPerSample, d.ullDuration, d.ulNrAudioChannels, d.ullResolution, d.ulSampleFrequency,
                       d.ulBitrate, d.acLastModify, d.ulOriginalTrackNumber, d.llExIdActor, d.llExIdAlbum,
                       d.llExIdArtist, d.llExIdAuthor, d.llExIdCreator, d.llExIdDirector, d.llExIdGenre,
                       d.llExIdProducer, d.llExIdPublisher),
                  row(id));
        v = DistinctValues(static_cast<int>(i) * 100 + 50);
        v.parentId = folder, v.title = text + "!", v.fileName = "x" + text, v.date = v.lastModify = text;
        EXPECT_STATUS(UpdateValues(db, v, id), MDB_OK);
        EXPECT_EQ(row(id), RowOf(id, v));
        EXPECT_STATUS(QRV_MDB_DbUpdateItemParentIDandName(db, id, other, text.c_str(), text.c_str()), MDB_OK);
        EXPECT_EQ(catalogue.rows("select title, fileName from ITEM where parentID=" + Join(other) + " and id=" +
                                 Join(id)), Join(text, text));
        const long long entry = catalogue.lookup("ARTISTS", text);
        EXPECT_EQ(catalogue.lookup("ARTISTS", text), entry) << "found, not created again";
        char name[256] = {0};
        EXPECT_STATUS(QRV_MDB_GetArtist(db, static_cast<int32_t>(entry), name), MDB_OK);
        EXPECT_EQ(std::string(name), text);
    }
    EXPECT_EQ(catalogue.rows("select count(*) from ITEM where parentID=" + Join(other)), Join(texts.size()));
    EXPECT_STATUS(UpdateValues(db, DistinctValues(1), 9999), MDB_OK) << "a missing row is no error";
    // The server's own template (same conversions, title framed) is used from the next call on.
    const char *const original = mdb_updateitem_sql;
    std::string framed = original;
    mdb_updateitem_sql = framed.replace(framed.find("title='%q'"), 10, "title='<%q>'").c_str();
    const uint32_t status = UpdateValues(db, DistinctValues(1), folder);
    mdb_updateitem_sql = original;
    EXPECT_STATUS(status, MDB_OK);
    EXPECT_EQ(catalogue.rows("select title from ITEM where id=" + Join(folder)), "<title1>");
}

// Finding a child by name (no name: the smallest child id); a new id moves the row only; deleting
// removes direct children and the row itself only.
TEST_F(Items, ChangeIdDeleteAndFindByName) {
    const long long root = catalogue.addFolder(0, "/mnt/usb1_1"), other = catalogue.addFolder(0, "/mnt/usb2_1");
    const long long b = catalogue.addFolder(root, "b"), a = catalogue.addFolder(root, "a");
    const long long deep = catalogue.addFolder(b, "d");
    for (const auto &[parent, name, expected] : {std::tuple<long long, const char *, long long>{root, "a", a},
                                                 {root, "c", 77}, {root, nullptr, b}, {other, nullptr, -1}}) {
        long long id = 77;  // no match: the value is not preset
        EXPECT_STATUS(QRV_MDB_DbGetItemIdByName(db, parent, name, &id), MDB_OK);
        EXPECT_EQ(id, expected) << (name ? name : "(null)");
    }
    const long long zero = 0, newId = 500;
    for (const long long *noNewId : {static_cast<const long long *>(nullptr), &zero}) {
        EXPECT_STATUS(QRV_MDB_DbUpdateItem(db, root, noNewId), MDB_OK);
    }
    testing::internal::CaptureStdout();
    EXPECT_STATUS(QRV_MDB_DbUpdateItem(db, root, &other), MDB_ERR_DB);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("failed with code 19"), std::string::npos);
    EXPECT_STATUS(QRV_MDB_DbUpdateItem(db, root, &newId), MDB_OK);
    EXPECT_EQ(catalogue.rows("select id, parentID from ITEM order by id"),
              Join(other, 0) + "," + Join(b, root) + "," + Join(a, root) + "," + Join(deep, b) + ",500|0");
    EXPECT_STATUS(QRV_MDB_DbDelSubItem(db, root), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbDelItem(db, 500), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbDelItem(db, 12345), MDB_OK);
    EXPECT_EQ(catalogue.rows("select id from ITEM order by id"), Join(other) + "," + Join(deep));
}

// Refused calls change nothing; what is optional may be left out (NULL dates are formatted by %q
// as "(NULL)"; a NULL lookup name is "").
TEST_F(Items, RequiredAndOptionalArguments) {
    long long id = 5;
    auto add = [&](const char *title, const char *file, const char *date, long long *newId) {
        return QRV_MDB_DbAddItem(db, 0, 2, title, file, 0, date, 0, 0, 0, 0, 0, 0, date, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                 newId);
    };
    EXPECT_STATUS(add(nullptr, "f", "", &id), MDB_ERR_PARA);
    EXPECT_STATUS(add("t", nullptr, "", &id), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbUpdateItemValues(db, 0, 2, nullptr, "f", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0,
                                             0, 0, 0, 1), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(db, 1, nullptr), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, nullptr, "GENRES", "x"), MDB_ERR_PARA);
    EXPECT_EQ(Join(id, catalogue.rows("select (select count(*) from ITEM) + (select count(*) from GENRES)")), "5|0");
    EXPECT_STATUS(add("t", "f", nullptr, nullptr), MDB_OK);
    EXPECT_EQ(catalogue.rows("select date||'/'||lastModify from ITEM"), "(NULL)/(NULL)");
    EXPECT_STATUS(QRV_MDB_DbAddItemExtraInfo(db, &id, "ACTORS", nullptr), MDB_OK);
    EXPECT_EQ(catalogue.lookup("ACTORS", ""), id);
}

// Texts are cut to size - 1 characters and a NUL (a size of 0 writes nothing); the detail record is
// cleared before the row is read; NULL columns arrive as "" and 0; a missing row leaves every
// out-place as the caller put it.
TEST_F(Items, InfoAndDetailCutTextsToTheirBuffers) {
    ItemValues v;
    v.parentId = 3, v.flags = static_cast<int32_t>(0x8000000bu);  // the top bit survives the unsigned field
    v.title = std::string(300, 't'), v.fileName = std::string(5000, 'f'), v.date = std::string(100, 'd');
    const long long id = catalogue.addItem(v);
    long long parent = -9;
    uint32_t flags = 7;
    char name[16];
    for (const auto &[size, expected] : {std::pair{16u, std::string(15, 'f') + '\0'}, {5u, std::string("ffff\0#", 6)},
                                         {1u, std::string("\0#####", 6)}, {0u, std::string("######")}}) {
        std::memset(name, '#', sizeof name);
        EXPECT_STATUS(QRV_MDB_GetItemInfo(db, id, &parent, name, size, &flags), MDB_OK);
        EXPECT_EQ(std::string(name, expected.size()), expected) << size;
    }
    EXPECT_EQ(Join(parent, flags), Join(3, 0x8000000bu));
    MdbItemDetail d;
    std::memset(&d, 0x5a, sizeof d);
    EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(db, id, &d), MDB_OK);
    EXPECT_EQ(Join(d.ulFlags, d.acTitle, d.acFileName, d.acDate, d.ulBitrate),
              Join(0x8000000bu, std::string(255, 't'), std::string(4095, 'f'), std::string(63, 'd'), 0));
    catalogue.exec("update ITEM set fileName=NULL, date=NULL, size=NULL where id=" + Join(id));
    EXPECT_STATUS(QRV_MDB_GetItemInfo(db, id, nullptr, name, sizeof name, nullptr), MDB_OK);
    EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(db, id, &d), MDB_OK);
    EXPECT_EQ(Join(name, d.acDate, d.ullSize), "||0");
    d.ullSize = 77;
    EXPECT_STATUS(QRV_MDB_GetItemInfo(db, 999, &parent, name, sizeof name, &flags), MDB_OK);
    EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(db, 999, &d), MDB_OK);
    EXPECT_EQ(Join(parent, flags, d.ullSize), Join(3, 0x8000000bu, 77));
}

// Lookup names are cut to 255 characters in their 256-byte buffer; an unknown id leaves it alone.
TEST_F(Items, AudioParametersAndLookupNames) {
    ItemValues v;
    v.title = v.fileName = "a.flac", v.flags = 11, v.sampleFrequency = 44100, v.nrAudioChannels = 2;
    const long long song = catalogue.addItem(v);
    uint32_t frequency = 9, channels = 9;
    EXPECT_STATUS(QRV_MDB_GetChannelAndSampleFrequency(song, &frequency, &channels), MDB_OK);
    EXPECT_EQ(Join(frequency, channels), "44100|2");
    using Getter = uint32_t (*)(sqlite3 *, int32_t, char *);
    for (const auto &[table, get] : {std::pair<std::string, Getter>{"GENRES", QRV_MDB_GetGenre},
                                     {"ALBUMS", QRV_MDB_GetAlbum}, {"ARTISTS", QRV_MDB_GetArtist}}) {
        const long long entry = catalogue.lookup(table, table + std::string(300, 'n'));
        char name[264];
        std::memset(name, '#', sizeof name);
        EXPECT_STATUS(get(db, 4242, name), MDB_OK);
        EXPECT_EQ(name[0], '#') << table;
        EXPECT_STATUS(get(db, static_cast<int32_t>(entry), name), MDB_OK);
        EXPECT_EQ(std::string(name), (table + std::string(300, 'n')).substr(0, 255));
        EXPECT_EQ(name[256], '#') << "wrote past the 256-byte buffer";
    }
}

// The DLNA view test looks at three rows at most, and fails when its statement fails.
TEST_F(Items, DlnaViewHealthLooksAtThreeRowsAtMost) {
    for (const auto &[count, expected, answer] : {std::tuple{0, 0u, 1}, {1, 1u, 1}, {1, 3u, 0}, {5, 3u, 1}, {5, 4u, 0}}) {
        catalogue.exec("delete from ITEM");
        for (int i = 0; i < count; ++i) catalogue.addFolder(0, "r" + Join(i));
        EXPECT_EQ(QRV_MDB_DbDLNATest(db, expected), answer) << count << " rows, " << expected << " expected";
    }
    catalogue.exec("drop view DLNA");
    EXPECT_EQ(QRV_MDB_DbDLNATest(db, 0), 0);
}

// Another connection adds rows after the count and before the fill: the fill keeps to the counted
// entries (AddressSanitizer would report a write past them). The exported id-list callback has no
// bound: its cursor moves on with every row, SQL NULL stored as -1.
TEST_F(Items, AllItemIdsKeepToTheCount) {
    long long sentinel[4] = {0, 0, 0, -7}, *cursor = sentinel;
    g_pllIDArray = sentinel;
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(db), MDB_OK);
    EXPECT_EQ(g_ulIDArrayCount, 0u);
    EXPECT_EQ(g_pllIDArray, sentinel) << "a count of 0 allocates nothing";
    g_pllIDArray = nullptr;
    EXPECT_EQ(MdbExecSql(db, "select 10 union all select NULL union all select 30", MdbGetIdListCallback, &cursor,
                         nullptr), SQLITE_OK);
    EXPECT_EQ(Join(cursor - sentinel, sentinel[0], sentinel[1], sentinel[2], sentinel[3]), "3|10|-1|30|-7");
    const long long first = catalogue.addFolder(0, "/mnt/usb1_1"), second = catalogue.addFolder(first, "a");
    storetest::InsertBefore late(db, catalogue.dbPath(), "select id from ITEM",
                                 "insert into ITEM (parentID, flags, title, fileName) values "
                                 "(1, 11, 'a', 'a'), (1, 11, 'b', 'b'), (1, 11, 'c', 'c')");
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(db), MDB_OK);
    ASSERT_EQ(late.rc(), SQLITE_OK);
    EXPECT_EQ(std::vector<long long>(g_pllIDArray, g_pllIDArray + g_ulIDArrayCount),
              (std::vector<long long>{first, second}));
    std::free(g_pllIDArray);
    MdbSetAllocator([](size_t) -> void * { return nullptr; });
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(db), MDB_ERR_MEM);
    EXPECT_EQ(Join(g_pllIDArray == nullptr, g_ulIDArrayCount), "1|0");
    MdbSetAllocator(nullptr);
    catalogue.exec("drop view DLNA; drop view AV_INFO; drop table ITEM");
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(db), MDB_ERR_DB);
}

}  // namespace
