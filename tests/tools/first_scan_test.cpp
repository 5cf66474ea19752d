// A first scan of the sample tree: every valid file becomes an item with its tags, stream
// properties and DLNA profile; folders get their bits; corrupt and foreign files are left out;
// the upload folder is made; ANALYZE has run.
#include "scan_fixture.h"

#include <mdb_platform.h>

#include <sys/stat.h>

#include <cstdlib>

namespace mdbtest {
namespace {

using FirstScan = ScanFixture;

std::string LookupName(uint32_t (*lookup)(sqlite3 *, int32_t, char *), sqlite3 *db, long long id) {
    char name[256] = "";
    if (id > 0) {
        EXPECT_EQ(lookup(db, static_cast<int32_t>(id), name), MDB_OK);
    }
    return name;
}

TEST_F(FirstScan, ItemsCarryTheirTagsPropertiesAndProfiles) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    for (const ExpectedItem &e : SampleItems()) {
        SCOPED_TRACE(e.rel);
        MdbItemDetail row = Row(e.rel);
        EXPECT_EQ(row.ulFlags & MDB_FLAGS_CLASS_MASK, e.itemClass);
        EXPECT_EQ(row.ulFlags & MDB_FLAGS_RESTRICTED, 0u);
        const MdbDlnaProfile *profile = QRV_DLNA_GetProfileByProfileId(row.ulFlags);
        ASSERT_NE(profile, nullptr) << "flags 0x" << std::hex << row.ulFlags << " name no profile";
        EXPECT_STREQ(profile->pcProfileName, e.profile);
        EXPECT_STREQ(profile->pcMimeType, e.mime);
        EXPECT_STREQ(row.acTitle, e.title);
        EXPECT_EQ(LookupName(QRV_MDB_GetArtist, catalogue.db(), row.llExIdArtist), e.artist);
        EXPECT_EQ(LookupName(QRV_MDB_GetAlbum, catalogue.db(), row.llExIdAlbum), e.album);
        EXPECT_EQ(LookupName(QRV_MDB_GetGenre, catalogue.db(), row.llExIdGenre), e.genre);
        EXPECT_EQ(row.ulOriginalTrackNumber, e.track);
        EXPECT_EQ(row.ullResolution, (static_cast<uint64_t>(e.height) << 32) | e.width);
        EXPECT_EQ(row.ulSampleFrequency, e.sampleFrequency);
        EXPECT_EQ(row.ulNrAudioChannels, e.channels);
        EXPECT_EQ(row.ulBitsPerSample, e.bitsPerSample);
        EXPECT_EQ(std::string(row.acDate).rfind(e.datePrefix, 0), 0u) << "date " << row.acDate;
        EXPECT_NE(row.acDate[0], '\0') << "every item gets a date, its file's time at least";
        const long long durationMs = static_cast<long long>(row.ullDuration / 1000);
        EXPECT_NEAR(static_cast<double>(durationMs), static_cast<double>(e.durationMs), e.durationMs * 0.1 + 1);
        if (e.itemClass != MDB_CLASS_PICTURE) {
            EXPECT_GT(row.ulBitrate, 0u) << "bytes per second";
        }
        struct stat st;
        ASSERT_EQ(stat(Absolute(e.rel).c_str(), &st), 0);
        EXPECT_EQ(row.ullSize, static_cast<uint64_t>(st.st_size));
        EXPECT_STREQ(row.acLastModify, mdbscan::FormatModificationTime(st.st_mtime).c_str());
    }
    EXPECT_EQ(counts.added, SampleItems().size());
    EXPECT_EQ(counts.files, SampleItems().size() + SampleCorruptFiles().size());
}

TEST_F(FirstScan, FoldersAreRowsWithTheBitsOfTheClassesBelowThem) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    for (const ExpectedFolder &f : SampleFolders()) {
        SCOPED_TRACE(std::string("folder \"") + f.rel + "\"");
        MdbItemDetail row = Row(f.rel);
        EXPECT_EQ(row.ulFlags, MDB_CLASS_FOLDER | f.bits);
        std::string rel = f.rel;
        std::string name = rel.substr(rel.find_last_of('/') + 1);
        if (rel.empty()) {
            EXPECT_EQ(row.llParentId, 0) << "a root folder";
            EXPECT_EQ(std::string(row.acFileName), media) << "a root's fileName is its absolute path";
            EXPECT_EQ(std::string(row.acTitle), media.substr(media.find_last_of('/') + 1));
        } else {
            std::string::size_type slash = rel.find_last_of('/');
            EXPECT_EQ(row.llParentId, IdOf(slash == std::string::npos ? "" : rel.substr(0, slash)));
            EXPECT_EQ(std::string(row.acFileName), name);
            EXPECT_EQ(std::string(row.acTitle), name);
        }
    }
    EXPECT_EQ(counts.folders, SampleFolders().size());
    EXPECT_EQ(counts.foldersAdded, SampleFolders().size());
}

TEST_F(FirstScan, CorruptAndForeignFilesAreReportedAndLeftOut) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    ASSERT_EQ(skipped.size(), SampleCorruptFiles().size()) << messages;
    for (const std::string &rel : SampleCorruptFiles()) {
        SCOPED_TRACE(rel);
        EXPECT_EQ(IdOf(rel), -1);
        bool reported = false;
        for (const mdbscan::SkippedFile &s : skipped) {
            reported = reported || (s.path == Absolute(rel) && !s.reason.empty());
        }
        EXPECT_TRUE(reported);
        EXPECT_NE(messages.find("skipped: " + Absolute(rel) + ": "), std::string::npos) << messages;
    }
    for (const std::string &rel : SampleForeignFiles()) {
        EXPECT_EQ(IdOf(rel), -1) << rel;
    }
    EXPECT_EQ(IdOf("Pictures/Trip/.hidden.jpg"), -1) << "hidden files are left out";
    EXPECT_EQ(counts.skipped, SampleCorruptFiles().size());
    EXPECT_EQ(counts.ignored, SampleForeignFiles().size());
    EXPECT_EQ(ItemCount(), static_cast<long long>(SampleItems().size() + SampleFolders().size()));
}

TEST_F(FirstScan, TheUploadFolderGoesBelowTheFirstRootOnly) {
    std::string second = catalogue.dir().mkdir("second");
    ASSERT_EQ(Scan({media, second}), MDB_OK) << messages;
    struct stat st;
    EXPECT_EQ(stat((media + "/upload").c_str(), &st), 0);
    EXPECT_TRUE(S_ISDIR(st.st_mode));
    EXPECT_NE(stat((second + "/upload").c_str(), &st), 0) << "only the first root gets one";
    long long firstRoot = -1;
    ASSERT_EQ(QRV_MDB_DbGetItemIdByName(catalogue.db(), 0, nullptr, &firstRoot), MDB_OK);
    EXPECT_EQ(firstRoot, IdOf(""));
    long long upload = -1;
    ASSERT_EQ(QRV_MDB_DbGetItemIdByName(catalogue.db(), firstRoot, "upload", &upload), MDB_OK);
    EXPECT_GT(upload, 0);
    ASSERT_EQ(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_EQ(g_ulRootPathNum, 2u);
}

TEST_F(FirstScan, EndsWithStatisticsForThePlanner) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_NE(catalogue.scalar("select count(*) from sqlite_stat1 where tbl='ITEM'"), "0");
}

TEST_F(FirstScan, AnyBatchSizeWritesTheSameCatalogue) {
    ASSERT_EQ(Scan({}, 1), MDB_OK) << messages;
    const long long rows = ItemCount();
    const std::string titles = catalogue.scalar("select group_concat(title, '|') from (select title from ITEM order by id)");
    EXPECT_EQ(catalogue.scalar("PRAGMA integrity_check"), "ok");
    Catalogue other;
    mdbscan::ScanOptions options;
    options.messages = tmpfile();
    mdbscan::MediaScanner scanner(other.db(), options);
    ASSERT_EQ(scanner.Scan({media}), MDB_OK);
    fclose(options.messages);
    EXPECT_EQ(std::stoll(other.scalar("select count(*) from ITEM")), rows);
    EXPECT_EQ(other.scalar("select group_concat(title, '|') from (select title from ITEM order by id)"), titles);
}

TEST_F(FirstScan, RefusesAMissingDirectoryBeforeAnyChange) {
    std::string missing = media + "/no-such-folder";
    ASSERT_EQ(Scan({media, missing}), MDB_ERR_PARA);
    EXPECT_EQ(ItemCount(), 0);
    struct stat st;
    EXPECT_NE(stat((media + "/upload").c_str(), &st), 0);
    ASSERT_EQ(Scan({media + "/Music/Alpha/One.mp3"}), MDB_ERR_PARA) << "a file is no root";
    EXPECT_EQ(ItemCount(), 0);
}

}  // namespace
}  // namespace mdbtest
