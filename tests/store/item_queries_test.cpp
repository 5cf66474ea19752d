// Item queries on a real catalogue: one row's file name, flags and parent; the whole row at full
// width; audio parameters and lookup names; folder emptiness; the list of all ids (bounded against
// rows that arrive between count and fill, and after a failed allocation); the DLNA view health
// test; and the shared name and id-list callbacks.
#include "store_test_util.h"

#include "catalogue.h"

#include <mdb_platform.h>

#include "store/store_alloc.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using mdbtest::ItemValues;

class ItemQueries : public ::testing::Test {
protected:
    long long addItem(long long parent, const std::string &name, int32_t flags) {
        ItemValues v;
        v.parentId = parent;
        v.flags = flags;
        v.title = v.fileName = name;
        return catalogue.addItem(v);
    }
    mdbtest::Catalogue catalogue;
};

TEST_F(ItemQueries, ItemInfoFillsTheGivenSlotsCutToTheBuffer) {
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    long long song = addItem(folder, "abcdefghij", 0x10000b);
    long long parent = -9;
    uint32_t flags = 7;
    char name[16];
    EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), song, &parent, name, sizeof name, &flags), MDB_OK);
    EXPECT_EQ(parent, folder);
    EXPECT_EQ(flags, 0x10000bu);
    EXPECT_STREQ(name, "abcdefghij");

    // Cut to size - 1 characters and a NUL; a size of 0 writes nothing.
    const std::pair<uint32_t, std::string> cuts[] = {
        {5, std::string("abcd\0#", 6)}, {1, std::string("\0#####", 6)}, {0, "######"}};
    for (const auto &[size, expected] : cuts) {
        SCOPED_TRACE(size);
        std::memset(name, '#', sizeof name);
        EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), song, nullptr, name, size, nullptr), MDB_OK);
        EXPECT_EQ(std::string(name, 6), expected);
    }

    // A missing row leaves every slot as preset; a NULL file name arrives as "".
    EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), 999, &parent, name, sizeof name, &flags), MDB_OK);
    EXPECT_EQ(parent, folder);
    EXPECT_EQ(flags, 0x10000bu);
    catalogue.exec("update ITEM set fileName=NULL where id=" + std::to_string(song));
    EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), song, nullptr, name, sizeof name, nullptr), MDB_OK);
    EXPECT_STREQ(name, "");
}

TEST_F(ItemQueries, DetailDeliversTheWholeRowAtFullWidth) {
    ItemValues v;
    v.parentId = 3;
    v.flags = static_cast<int32_t>(0x8000000bu);  // the top bit survives the unsigned field
    v.title = std::string(300, 't');
    v.fileName = std::string(5000, 'f');
    v.size = 5LL << 30;  // beyond 4 GiB
    v.date = std::string(100, 'd');
    v.duration = 9000000000LL;
    v.resolution = (1080LL << 32) + 1920;
    v.lastModify = "2024-05-06";
    v.originalTrackNumber = 12;
    v.actor = 1, v.genre = 7, v.publisher = 6000000000LL;
    long long rowId = catalogue.addItem(v);

    MdbItemDetail d;
    std::memset(&d, 0x5a, sizeof d);
    ASSERT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), rowId, &d), MDB_OK);
    EXPECT_EQ(d.llId, rowId);
    EXPECT_EQ(d.llParentId, 3);
    EXPECT_EQ(d.ulFlags, 0x8000000bu);
    EXPECT_EQ(std::string(d.acTitle), std::string(255, 't'));
    EXPECT_EQ(std::string(d.acFileName), std::string(4095, 'f'));
    EXPECT_EQ(d.ullSize, 5ULL << 30);
    EXPECT_EQ(std::string(d.acDate), std::string(63, 'd'));
    EXPECT_EQ(d.ullDuration, 9000000000ULL);
    EXPECT_EQ(d.ullResolution, 1080ULL * (1ULL << 32) + 1920);
    EXPECT_STREQ(d.acLastModify, "2024-05-06");
    EXPECT_EQ(d.ulOriginalTrackNumber, 12u);
    EXPECT_EQ(d.llExIdActor, 1);
    EXPECT_EQ(d.llExIdGenre, 7);
    EXPECT_EQ(d.llExIdPublisher, 6000000000LL);
    EXPECT_EQ(d.ulBitrate, 0u) << "the record is cleared before the row is read";

    // NULL columns leave their fields zero; a missing row leaves the record as the caller put it.
    catalogue.exec("update ITEM set date=NULL, size=NULL where id=" + std::to_string(rowId));
    std::memset(&d, 0x5a, sizeof d);
    ASSERT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), rowId, &d), MDB_OK);
    EXPECT_STREQ(d.acDate, "");
    EXPECT_EQ(d.ullSize, 0u);
    d.ullSize = 77;
    EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), rowId + 1, &d), MDB_OK);
    EXPECT_EQ(d.ullSize, 77u);
    EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), rowId, nullptr), MDB_ERR_PARA);
}

TEST_F(ItemQueries, AudioParametersAndLookupNames) {
    ItemValues v;
    v.title = v.fileName = "a.flac";
    v.flags = 11;
    v.sampleFrequency = 44100;
    v.nrAudioChannels = 2;
    long long song = catalogue.addItem(v);
    uint32_t frequency = 0, channels = 0;
    EXPECT_STATUS(QRV_MDB_GetChannelAndSampleFrequency(song, &frequency, &channels), MDB_OK);
    EXPECT_EQ(frequency, 44100u);
    EXPECT_EQ(channels, 2u);
    frequency = channels = 9;
    EXPECT_STATUS(QRV_MDB_GetChannelAndSampleFrequency(song + 100, &frequency, &channels), MDB_OK);
    EXPECT_EQ(frequency + channels, 18u) << "a missing row leaves both";
    g_pstMdbCtx = nullptr;
    EXPECT_STATUS(QRV_MDB_GetChannelAndSampleFrequency(song, &frequency, &channels), MDB_ERR_PARA);
    g_pstMdbCtx = catalogue.db();

    using Getter = uint32_t (*)(sqlite3 *, int32_t, char *);
    const std::pair<const char *, Getter> getters[] = {
        {"GENRES", QRV_MDB_GetGenre}, {"ALBUMS", QRV_MDB_GetAlbum}, {"ARTISTS", QRV_MDB_GetArtist}};
    for (const auto &g : getters) {
        SCOPED_TRACE(g.first);
        catalogue.lookup(g.first, "first");
        long long second = catalogue.lookup(g.first, std::string(g.first) + " name");
        char name[256] = "untouched";
        EXPECT_STATUS(g.second(catalogue.db(), static_cast<int32_t>(second), name), MDB_OK);
        EXPECT_EQ(std::string(name), std::string(g.first) + " name");
        std::strcpy(name, "untouched");
        EXPECT_STATUS(g.second(catalogue.db(), 4242, name), MDB_OK);
        EXPECT_STREQ(name, "untouched");
    }
}

TEST_F(ItemQueries, FolderIsEmptyWithoutChildrenWorthShowing) {
    struct Case {
        const char *what;
        std::vector<int32_t> childFlags;
        int32_t expected;
    };
    const Case cases[] = {
        {"no children", {}, 1},
        {"only restricted folders without folder bits", {130, 130}, 1},
        {"a plain folder", {130, 2}, 0},
        {"an item", {11}, 0},
        {"a restricted folder with a folder bit", {130 | 0x800}, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        long long folder = catalogue.addFolder(0, c.what);
        for (int32_t flags : c.childFlags) {
            addItem(folder, "child", flags);
        }
        EXPECT_EQ(QRV_MDB_IsFolderEmpty(folder), c.expected);
    }
    g_pstMdbCtx = nullptr;
    EXPECT_EQ(QRV_MDB_IsFolderEmpty(12345), 0);
    g_pstMdbCtx = catalogue.db();
    catalogue.exec("drop view DLNA; drop view AV_INFO; drop table ITEM");
    EXPECT_EQ(QRV_MDB_IsFolderEmpty(12345), 0) << "a failing query answers not empty";
}

TEST_F(ItemQueries, DlnaViewHealthTest) {
    const std::tuple<int, uint32_t, int32_t> cases[] = {
        // rows, expected count, answer
        {0, 0, 1}, {1, 1, 1}, {1, 3, 0}, {5, 3, 1}, {5, 4, 0},  // at most three rows are looked at
    };
    for (const auto &[rows, expectedCount, answer] : cases) {
        SCOPED_TRACE(std::to_string(rows) + " rows, expecting " + std::to_string(expectedCount));
        catalogue.exec("delete from ITEM");
        for (int i = 0; i < rows; ++i) {
            addItem(0, "r" + std::to_string(i), 2);
        }
        EXPECT_EQ(QRV_MDB_DbDLNATest(catalogue.db(), expectedCount), answer);
    }
    catalogue.exec("drop view DLNA");
    EXPECT_EQ(QRV_MDB_DbDLNATest(catalogue.db(), 0), 0) << "a failing statement fails the test";
}

// Each test of the id list releases what the operation allocated.
class AllItemIds : public ItemQueries {
protected:
    void TearDown() override {
        std::free(g_pllIDArray);
        g_pllIDArray = nullptr;
        g_ulIDArrayCount = 0;
        MdbSetAllocator(nullptr);
    }
    std::vector<long long> ids() const {
        return g_pllIDArray ? std::vector<long long>(g_pllIDArray, g_pllIDArray + g_ulIDArrayCount)
                            : std::vector<long long>{};
    }
};

TEST_F(AllItemIds, ListsEveryIdAndNothingForAnEmptyCatalogue) {
    long long sentinel[1] = {7};
    g_pllIDArray = sentinel;
    g_ulIDArrayCount = 9;
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(catalogue.db()), MDB_OK);
    EXPECT_EQ(g_ulIDArrayCount, 0u);
    EXPECT_EQ(g_pllIDArray, sentinel) << "a count of 0 allocates nothing";
    g_pllIDArray = nullptr;

    std::vector<long long> expected = {catalogue.addFolder(0, "/mnt/usb1_1")};
    for (int i = 0; i < 4; ++i) {
        expected.push_back(addItem(expected[0], "f" + std::to_string(i), 11));
    }
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(catalogue.db()), MDB_OK);
    EXPECT_EQ(ids(), expected);
}

// Another connection adds rows after the count and before the fill: the fill keeps to the
// counted entries (AddressSanitizer would report a write past them).
TEST_F(AllItemIds, RowsAddedBetweenCountAndFillAreDropped) {
    long long first = catalogue.addFolder(0, "/mnt/usb1_1");
    long long second = addItem(first, "a.mp3", 11);
    storetest::SecondConnection other(catalogue.dbPath());
    storetest::StatementHook hook(catalogue.db(), "select id from ITEM", [&] {
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(other.exec("insert into ITEM (parentID, flags, title, fileName) values (1, 11, 'late', 'late')"),
                      SQLITE_OK);
        }
    });
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(catalogue.db()), MDB_OK);
    ASSERT_TRUE(hook.fired());
    EXPECT_EQ(catalogue.scalar("select count(*) from ITEM"), "5") << "the late rows did arrive";
    EXPECT_EQ(ids(), (std::vector<long long>{first, second}));
}

TEST_F(AllItemIds, FailuresLeaveNoList) {
    catalogue.addFolder(0, "/mnt/usb1_1");
    MdbSetAllocator([](size_t) -> void * { return nullptr; });
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(catalogue.db()), MDB_ERR_MEM);
    EXPECT_EQ(g_pllIDArray, nullptr);
    EXPECT_EQ(g_ulIDArrayCount, 0u);
    MdbSetAllocator(nullptr);
    catalogue.exec("drop view DLNA; drop view AV_INFO; drop table ITEM");
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(catalogue.db()), MDB_ERR_DB);
    EXPECT_EQ(g_pllIDArray, nullptr);
}

// The two shared callbacks no store query above reaches in full: the 255-character cut and the
// unbounded list cursor.
TEST_F(ItemQueries, NameAndIdListCallbacks) {
    for (size_t length : {255u, 300u}) {
        SCOPED_TRACE(length);
        char name[264];
        std::memset(name, '#', sizeof name);
        std::string sql = "select '" + std::string(length, 'n') + "'";
        EXPECT_EQ(MdbExecSql(catalogue.db(), sql.c_str(), MdbGetNameCallback, name, nullptr), SQLITE_OK);
        EXPECT_EQ(std::string(name), std::string(255, 'n'));
        EXPECT_EQ(name[256], '#') << "wrote past the 256-byte buffer";
    }
    long long ids[4] = {0, 0, 0, -7};
    long long *cursor = ids;
    EXPECT_EQ(MdbExecSql(catalogue.db(), "select 10 union all select NULL union all select 30", MdbGetIdListCallback,
                         &cursor, nullptr),
              SQLITE_OK);
    EXPECT_EQ(cursor, ids + 3);
    EXPECT_EQ(std::vector<long long>(ids, ids + 4), (std::vector<long long>{10, -1, 30, -7}));
}

}  // namespace
