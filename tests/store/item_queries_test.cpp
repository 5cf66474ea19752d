// Item queries on a real catalogue: one row's file name, flags and parent; the whole row; audio
// parameters; lookup names; folder emptiness; the list of all ids (bounded against rows that
// arrive between count and fill, and after a failed allocation); the DLNA view health test.
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
        v.title = name;
        v.fileName = name;
        return catalogue.addItem(v);
    }
    std::string id(long long value) { return std::to_string(value); }
    mdbtest::Catalogue catalogue;
};

TEST_F(ItemQueries, ItemInfoFillsTheGivenSlots) {
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    long long song = addItem(folder, "song.mp3", 0x10000b);

    long long parent = -9;
    uint32_t flags = 7;
    char name[64] = "preset";
    EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), song, &parent, name, sizeof name, &flags), MDB_OK);
    EXPECT_EQ(parent, folder);
    EXPECT_EQ(flags, 0x10000bu);
    EXPECT_STREQ(name, "song.mp3");

    uint32_t onlyFlags = 0;
    EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), folder, nullptr, nullptr, 0, &onlyFlags), MDB_OK);
    EXPECT_EQ(onlyFlags, 2u);

    // A missing row leaves everything as preset.
    parent = -9;
    flags = 7;
    EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), 999, &parent, name, sizeof name, &flags), MDB_OK);
    EXPECT_EQ(parent, -9);
    EXPECT_EQ(flags, 7u);
    EXPECT_STREQ(name, "song.mp3");

    EXPECT_STATUS(QRV_MDB_GetItemInfo(nullptr, song, &parent, name, sizeof name, &flags), MDB_ERR_PARA);
}

TEST_F(ItemQueries, ItemInfoCutsTheFileNameToTheBuffer) {
    long long song = addItem(0, "abcdefghij", 11);
    struct Case {
        uint32_t size;
        std::string expected;
    };
    for (const Case &c : {Case{5, "abcd"}, Case{11, "abcdefghij"}, Case{10, "abcdefghi"}, Case{1, ""}}) {
        SCOPED_TRACE(c.size);
        char buffer[16];
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), song, nullptr, buffer, c.size, nullptr), MDB_OK);
        EXPECT_EQ(std::string(buffer), c.expected);
        EXPECT_EQ(buffer[c.size], '#') << "wrote past the given size";
    }
    // A zero-sized buffer is not written at all; a NULL file name arrives as "".
    char untouched[4] = "abc";
    EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), song, nullptr, untouched, 0, nullptr), MDB_OK);
    EXPECT_STREQ(untouched, "abc");
    catalogue.exec("update ITEM set fileName=NULL where id=" + id(song));
    char name[16] = "x";
    EXPECT_STATUS(QRV_MDB_GetItemInfo(catalogue.db(), song, nullptr, name, sizeof name, nullptr), MDB_OK);
    EXPECT_STREQ(name, "");
}

TEST_F(ItemQueries, DetailDeliversTheWholeRowAtFullWidth) {
    ItemValues v;
    v.parentId = 3;
    v.flags = static_cast<int32_t>(0x8000000bu);  // the top bit survives the unsigned field
    v.title = std::string(300, 't');
    v.fileName = std::string(5000, 'f');
    v.size = 5LL * 1024 * 1024 * 1024;  // beyond 4 GiB
    v.date = std::string(100, 'd');
    v.bitsPerSample = 24;
    v.duration = 9000000000LL;
    v.nrAudioChannels = 6;
    v.resolution = 1080LL * (1LL << 32) + 1920;
    v.sampleFrequency = 96000;
    v.bitrate = 320000;
    v.lastModify = "2024-05-06";
    v.originalTrackNumber = 12;
    v.actor = 1, v.album = 2, v.artist = 3, v.author = 4, v.creator = 5, v.director = 6, v.genre = 7;
    v.producer = 8, v.publisher = 6000000000LL;
    long long rowId = catalogue.addItem(v);

    MdbItemDetail d;
    std::memset(&d, 0x5a, sizeof d);
    ASSERT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), rowId, &d), MDB_OK);
    EXPECT_EQ(d.llId, rowId);
    EXPECT_EQ(d.llParentId, 3);
    EXPECT_EQ(d.ulFlags, 0x8000000bu);
    EXPECT_EQ(std::string(d.acTitle), std::string(255, 't'));
    EXPECT_EQ(std::string(d.acFileName), std::string(4095, 'f'));
    EXPECT_EQ(d.ullSize, 5ULL * 1024 * 1024 * 1024);
    EXPECT_EQ(std::string(d.acDate), std::string(63, 'd'));
    EXPECT_EQ(d.ulBitsPerSample, 24u);
    EXPECT_EQ(d.ullDuration, 9000000000ULL);
    EXPECT_EQ(d.ulNrAudioChannels, 6u);
    EXPECT_EQ(d.ullResolution, 1080ULL * (1ULL << 32) + 1920);
    EXPECT_EQ(d.ulSampleFrequency, 96000u);
    EXPECT_EQ(d.ulBitrate, 320000u);
    EXPECT_STREQ(d.acLastModify, "2024-05-06");
    EXPECT_EQ(d.ulOriginalTrackNumber, 12u);
    const long long exIds[] = {d.llExIdActor,    d.llExIdAlbum, d.llExIdArtist,   d.llExIdAuthor,   d.llExIdCreator,
                               d.llExIdDirector, d.llExIdGenre, d.llExIdProducer, d.llExIdPublisher};
    const long long expectedExIds[] = {1, 2, 3, 4, 5, 6, 7, 8, 6000000000LL};
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(exIds[i], expectedExIds[i]) << "lookup id " << i;
    }

    // NULL columns leave their fields zero: the record was cleared first.
    catalogue.exec("update ITEM set date=NULL, size=NULL, exID_GENRE=NULL where id=" + id(rowId));
    std::memset(&d, 0x5a, sizeof d);
    ASSERT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), rowId, &d), MDB_OK);
    EXPECT_STREQ(d.acDate, "");
    EXPECT_EQ(d.ullSize, 0u);
    EXPECT_EQ(d.llExIdGenre, 0);
    EXPECT_EQ(d.ulBitrate, 320000u);
}

TEST_F(ItemQueries, DetailOfAMissingRowKeepsTheRecord) {
    MdbItemDetail d;
    std::memset(&d, 0, sizeof d);
    d.ullSize = 77;
    std::strcpy(d.acTitle, "caller's");
    EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), 42, &d), MDB_OK);
    EXPECT_EQ(d.ullSize, 77u);
    EXPECT_STREQ(d.acTitle, "caller's");
    EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(catalogue.db(), 42, nullptr), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_GetItemDetailInfo(nullptr, 42, &d), MDB_ERR_PARA);
}

TEST_F(ItemQueries, AudioParametersUseTheProcessConnection) {
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

    uint32_t onlyChannels = 0;
    EXPECT_STATUS(QRV_MDB_GetChannelAndSampleFrequency(song, nullptr, &onlyChannels), MDB_OK);
    EXPECT_EQ(onlyChannels, 2u);

    frequency = channels = 9;
    EXPECT_STATUS(QRV_MDB_GetChannelAndSampleFrequency(song + 100, &frequency, &channels), MDB_OK);
    EXPECT_EQ(frequency, 9u);
    EXPECT_EQ(channels, 9u);

    sqlite3 *saved = g_pstMdbCtx;
    g_pstMdbCtx = nullptr;
    EXPECT_STATUS(QRV_MDB_GetChannelAndSampleFrequency(song, &frequency, &channels), MDB_ERR_PARA);
    g_pstMdbCtx = saved;
}

TEST_F(ItemQueries, LookupNamesById) {
    using Getter = uint32_t (*)(sqlite3 *, int32_t, char *);
    struct Case {
        const char *table;
        Getter get;
    };
    for (const Case &c : {Case{"GENRES", QRV_MDB_GetGenre}, Case{"ALBUMS", QRV_MDB_GetAlbum},
                          Case{"ARTISTS", QRV_MDB_GetArtist}}) {
        SCOPED_TRACE(c.table);
        catalogue.lookup(c.table, "first");
        long long second = catalogue.lookup(c.table, std::string(c.table) + " name");
        char name[256] = "untouched";
        EXPECT_STATUS(c.get(catalogue.db(), static_cast<int32_t>(second), name), MDB_OK);
        EXPECT_EQ(std::string(name), std::string(c.table) + " name");
        std::strcpy(name, "untouched");
        EXPECT_STATUS(c.get(catalogue.db(), 4242, name), MDB_OK);
        EXPECT_STREQ(name, "untouched");
        EXPECT_STATUS(c.get(nullptr, 1, name), MDB_ERR_PARA);
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
        {"a folder with a folder bit", {2 | 0x800}, 0},
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
    sqlite3 *saved = g_pstMdbCtx;
    g_pstMdbCtx = nullptr;
    EXPECT_EQ(QRV_MDB_IsFolderEmpty(12345), 0);
    g_pstMdbCtx = saved;
}

// Each test of the id list releases what the operation allocated.
class AllItemIds : public ItemQueries {
protected:
    void SetUp() override {
        g_pllIDArray = nullptr;
        g_ulIDArrayCount = 0;
    }
    void TearDown() override {
        std::free(g_pllIDArray);
        g_pllIDArray = nullptr;
        g_ulIDArrayCount = 0;
        MdbSetAllocator(nullptr);
    }
    std::vector<long long> ids() const {
        return g_pllIDArray != nullptr ? std::vector<long long>(g_pllIDArray, g_pllIDArray + g_ulIDArrayCount)
                                       : std::vector<long long>{};
    }
};

TEST_F(AllItemIds, EmptyCatalogueAllocatesNothing) {
    long long sentinel[1] = {7};
    g_pllIDArray = sentinel;
    g_ulIDArrayCount = 9;
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(catalogue.db()), MDB_OK);
    EXPECT_EQ(g_ulIDArrayCount, 0u);
    EXPECT_EQ(g_pllIDArray, sentinel);
    g_pllIDArray = nullptr;
}

TEST_F(AllItemIds, ListsEveryId) {
    std::vector<long long> expected;
    long long root = catalogue.addFolder(0, "/mnt/usb1_1");
    expected.push_back(root);
    for (int i = 0; i < 5; ++i) {
        expected.push_back(addItem(root, "f" + std::to_string(i), 11));
    }
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(catalogue.db()), MDB_OK);
    EXPECT_EQ(ids(), expected);
}

TEST_F(AllItemIds, NullConnectionChangesNothing) {
    g_ulIDArrayCount = 3;
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(nullptr), MDB_OK);
    EXPECT_EQ(g_ulIDArrayCount, 3u);
    EXPECT_EQ(g_pllIDArray, nullptr);
}

// Another connection adds rows after the count and before the fill: the fill keeps to the
// counted entries (AddressSanitizer would report a write past them).
TEST_F(AllItemIds, RowsAddedBetweenCountAndFillAreDropped) {
    long long first = catalogue.addFolder(0, "/mnt/usb1_1");
    long long second = addItem(first, "a.mp3", 11);
    storetest::SecondConnection other(catalogue.dbPath());
    storetest::BeforeStatement hook(catalogue.db(), "select id from ITEM", [&] {
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

TEST_F(AllItemIds, AllocationFailureLeavesNoList) {
    catalogue.addFolder(0, "/mnt/usb1_1");
    MdbSetAllocator([](size_t) -> void * { return nullptr; });
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(catalogue.db()), MDB_ERR_MEM);
    EXPECT_EQ(g_pllIDArray, nullptr);
    EXPECT_EQ(g_ulIDArrayCount, 0u);
}

TEST_F(AllItemIds, FailedCountIsAnSqlError) {
    catalogue.exec("drop view DLNA; drop view AV_INFO; drop table ITEM");
    EXPECT_STATUS(QRV_MDB_DbGetAllItemID(catalogue.db()), MDB_ERR_DB);
    EXPECT_EQ(g_pllIDArray, nullptr);
}

TEST_F(ItemQueries, DlnaViewHealthTest) {
    struct Case {
        const char *what;
        int rows;
        uint32_t expectedCount;
        int32_t expected;
    };
    const Case cases[] = {
        {"empty catalogue, expecting 0", 0, 0, 1},
        {"one row, expecting 1", 1, 1, 1},
        {"one row, expecting 3", 1, 3, 0},
        {"five rows, expecting 3 (only three are looked at)", 5, 3, 1},
        {"five rows, expecting 4", 5, 4, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        catalogue.exec("delete from ITEM");
        for (int i = 0; i < c.rows; ++i) {
            addItem(0, "r" + std::to_string(i), 2);
        }
        EXPECT_EQ(QRV_MDB_DbDLNATest(catalogue.db(), c.expectedCount), c.expected);
    }
    EXPECT_EQ(QRV_MDB_DbDLNATest(nullptr, 0), 0);
    catalogue.exec("drop view DLNA");
    EXPECT_EQ(QRV_MDB_DbDLNATest(catalogue.db(), 0), 0) << "a failing statement fails the test";
}

}  // namespace
