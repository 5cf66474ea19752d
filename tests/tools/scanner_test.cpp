// The media scanner on a copy of the sample tree: a first scan (items with their tags, properties
// and profiles; folders with their bits; corrupt and foreign files left out) and rescans after
// changes on disk.
#include "catalogue.h"
#include "sample_tree.h"

#include <media_scanner.h>
#include <mdb_platform.h>

#include <sys/stat.h>
#include <sys/time.h>

#include <cstdio>
#include <sstream>

namespace mdbtest {
namespace {

namespace fs = std::filesystem;

class Scanner : public ::testing::Test {
protected:
    // Scans the directories (default: the tree) in transactions of two changes, so that every scan
    // commits several batches; the scanner's messages are kept in messages.
    uint32_t Scan(std::vector<std::string> dirs = {}) {
        char *text = nullptr;
        size_t size = 0;
        mdbscan::ScanOptions options;
        options.batchSize = 2;
        options.messages = open_memstream(&text, &size);
        mdbscan::MediaScanner scanner(catalogue.db(), options);
        const uint32_t status = scanner.Scan(dirs.empty() ? std::vector<std::string>{media} : dirs);
        fclose(options.messages);
        messages.assign(text, size);
        free(text);
        counts = scanner.counts();
        return status;
    }
    // The id of the row of a path below the tree ("": the root row), or -1.
    long long IdOf(const std::string &rel) {
        long long id = -1;
        QRV_MDB_DbGetItemIdByName(catalogue.db(), 0, media.c_str(), &id);
        std::istringstream names(rel);
        for (std::string name; id > 0 && std::getline(names, name, '/');) {
            long long child = -1;
            id = QRV_MDB_DbGetItemIdByName(catalogue.db(), id, name.c_str(), &child) == MDB_OK ? child : -1;
        }
        return id > 0 ? id : -1;
    }
    MdbItemDetail Row(const std::string &rel) {
        MdbItemDetail detail{};
        const long long id = IdOf(rel);
        EXPECT_GT(id, 0) << "no row for " << rel;
        EXPECT_TRUE(id <= 0 || QRV_MDB_GetItemDetailInfo(catalogue.db(), id, &detail) == MDB_OK) << rel;
        return detail;
    }
    std::string Absolute(const std::string &rel) const { return rel.empty() ? media : media + "/" + rel; }
    long long ItemCount() { return std::stoll(catalogue.scalar("select count(*) from ITEM")); }

    Catalogue catalogue;
    std::string media = CopySampleTree(catalogue.dir().path());
    mdbscan::ScanCounts counts;
    std::string messages;
};

TEST_F(Scanner, FirstScanGivesItemsTheirTagsPropertiesAndProfiles) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    auto name = [this](const char *table, long long id) {
        return catalogue.scalar(std::string("select name from ") + table + " where exID=" + std::to_string(id));
    };
    for (const ExpectedItem &e : kSampleItems) {
        SCOPED_TRACE(e.rel);
        MdbItemDetail row = Row(e.rel);
        EXPECT_EQ(row.ulFlags & (MDB_FLAGS_CLASS_MASK | MDB_FLAGS_RESTRICTED), e.itemClass);
        const MdbDlnaProfile *profile = QRV_DLNA_GetProfileByProfileId(row.ulFlags);
        ASSERT_NE(profile, nullptr) << "flags 0x" << std::hex << row.ulFlags << " name no profile";
        EXPECT_STREQ(profile->pcProfileName, e.profile);
        EXPECT_STREQ(profile->pcMimeType, e.mime);
        EXPECT_STREQ(row.acTitle, e.title);
        EXPECT_EQ(name("ARTISTS", row.llExIdArtist), e.artist);
        EXPECT_EQ(name("ALBUMS", row.llExIdAlbum), e.album);
        EXPECT_EQ(name("GENRES", row.llExIdGenre), e.genre);
        EXPECT_EQ(row.ulOriginalTrackNumber, e.track);
        EXPECT_EQ(row.ullResolution, (static_cast<uint64_t>(e.height) << 32) | e.width);
        EXPECT_EQ(row.ulSampleFrequency, e.sampleFrequency);
        EXPECT_EQ(row.ulNrAudioChannels, e.channels);
        EXPECT_EQ(row.ulBitsPerSample, e.bitsPerSample);
        EXPECT_EQ(std::string(row.acDate).rfind(e.datePrefix, 0), 0u) << row.acDate;
        EXPECT_NE(row.acDate[0], '\0') << "every item gets a date, its file's time at least";
        EXPECT_NEAR(row.ullDuration / 1000.0, e.durationMs, e.durationMs * 0.1 + 1);
        EXPECT_EQ(row.ulBitrate > 0, e.itemClass != MDB_CLASS_PICTURE) << "bytes per second of sound and video";
        struct stat st;
        ASSERT_EQ(stat(Absolute(e.rel).c_str(), &st), 0);
        EXPECT_EQ(row.ullSize, static_cast<uint64_t>(st.st_size));
        EXPECT_EQ(row.acLastModify, mdbscan::FormatModificationTime(st.st_mtime));
    }
    EXPECT_EQ(counts.added, kSampleItems.size());
    EXPECT_EQ(counts.files, kSampleItems.size() + kSampleCorruptFiles.size());
    EXPECT_NE(catalogue.scalar("select count(*) from sqlite_stat1 where tbl='ITEM'"), "0") << "ANALYZE has run";
}

TEST_F(Scanner, FirstScanMakesFolderRowsAndLeavesOutWhatIsNotGoodMedia) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    for (const ExpectedFolder &f : kSampleFolders) {
        const std::string rel = f.rel;
        SCOPED_TRACE("folder \"" + rel + "\"");
        const std::string::size_type slash = rel.find_last_of('/');
        const std::string name = Absolute(rel).substr(Absolute(rel).find_last_of('/') + 1);
        MdbItemDetail row = Row(rel);
        EXPECT_EQ(row.ulFlags, f.flags());
        EXPECT_EQ(row.llParentId, rel.empty() ? 0 : IdOf(slash == std::string::npos ? "" : rel.substr(0, slash)));
        EXPECT_EQ(row.acFileName, rel.empty() ? media : name) << "a root's fileName is its absolute path";
        EXPECT_EQ(row.acTitle, name);
    }
    EXPECT_EQ(counts.foldersAdded, kSampleFolders.size());

    for (const std::string &rel : kSampleCorruptFiles) {
        EXPECT_EQ(IdOf(rel), -1) << rel;
        EXPECT_NE(messages.find("skipped: " + Absolute(rel) + ": "), std::string::npos) << messages;
    }
    for (const std::string &rel : kSampleForeignFiles) {
        EXPECT_EQ(IdOf(rel), -1) << rel;
    }
    EXPECT_EQ(IdOf("Pictures/Trip/.hidden.jpg"), -1) << "hidden files are left out";
    EXPECT_EQ(counts.skipped, kSampleCorruptFiles.size());
    EXPECT_EQ(counts.ignored, kSampleForeignFiles.size());
    EXPECT_EQ(ItemCount(), static_cast<long long>(kSampleItems.size() + kSampleFolders.size()));
}

// File and folder names in Latin-1 (as old disks hold them) give UTF-8 titles; the rows keep the
// names as they are, so that the files are still found.
TEST_F(Scanner, TitlesAreValidUtf8WhateverTheNamesOnDisk) {
    const std::string folder = "Caf\xe9", file = "na\xefve \xff.wav";
    fs::create_directory(Absolute(folder));
    fs::copy_file(Absolute("Music/Beta/memo.wav"), Absolute(folder + "/" + file));
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_STREQ(Row(folder).acTitle, "Caf\xc3\xa9");
    EXPECT_STREQ(Row(folder + "/" + file).acTitle, "na\xc3\xafve \xc3\xbf");
    EXPECT_EQ(Row(folder + "/" + file).acFileName, file);
}

TEST_F(Scanner, RefusesAMissingDirectoryOrAFileBeforeAnyChange) {
    for (const std::string &bad : {media + "/no-such-folder", Absolute("Music/Alpha/One.mp3")}) {
        EXPECT_EQ(Scan({media, bad}), MDB_ERR_PARA) << bad;
        EXPECT_EQ(ItemCount(), 0);
        EXPECT_FALSE(fs::exists(Absolute("upload")));
    }
}

TEST_F(Scanner, RescanLeavesUnchangedFilesAndFollowsThoseThatComeChangeAndGo) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    const long long oneId = IdOf("Music/Alpha/One.mp3");
    const long long rows = ItemCount();
    catalogue.exec("update ITEM set title='marked' where id=" + std::to_string(oneId));  // a rewrite wipes it out
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_EQ(counts.unchanged, kSampleItems.size());
    EXPECT_EQ(counts.added + counts.updated + counts.removed + counts.foldersAdded + counts.foldersRemoved, 0u);
    EXPECT_EQ(counts.skipped, kSampleCorruptFiles.size()) << "corrupt files are tried again";
    EXPECT_STREQ(Row("Music/Alpha/One.mp3").acTitle, "marked");
    EXPECT_EQ(ItemCount(), rows);

    // Same size, modification time an hour earlier: changed.
    struct stat st;
    ASSERT_EQ(stat(Absolute("Music/Alpha/One.mp3").c_str(), &st), 0);
    struct timeval times[2] = {{st.st_atime, 0}, {st.st_mtime - 3600, 0}};
    ASSERT_EQ(utimes(Absolute("Music/Alpha/One.mp3").c_str(), times), 0);
    fs::remove(Absolute("Music/Beta/Three.m4a"));  // Beta keeps memo.wav
    fs::copy_file(Absolute("Music/Alpha/Two.flac"), Absolute("Music/Beta/Four.flac"));
    fs::resize_file(Absolute("Music/Alpha/Two.flac"), 100);  // now corrupt
    fs::remove_all(Absolute("Video"));
    fs::create_directories(Absolute("Music/Gamma/Deep"));
    fs::copy_file(Absolute("Pictures/icon.png"), Absolute("Music/Gamma/Deep/art.png"));
    fs::remove(Absolute("Pictures/Trip/photo.jpg"));  // Trip's last picture
    fs::remove(Absolute("Pictures/icon.png"));        // a file becomes a folder of music
    fs::create_directories(Absolute("Pictures/icon.png"));
    fs::copy_file(Absolute("Music/Alpha/One.mp3"), Absolute("Pictures/icon.png/song.mp3"));

    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_EQ(counts.updated, 1u);
    EXPECT_EQ(counts.unchanged, 1u) << "memo.wav";
    EXPECT_EQ(counts.added, 3u) << "Four.flac, art.png, song.mp3";
    EXPECT_EQ(counts.removed, 6u) << "Three.m4a, Two.flac, the two videos, photo.jpg, the icon.png item";
    EXPECT_EQ(counts.foldersRemoved, 1u);
    EXPECT_EQ(counts.foldersAdded, 3u);
    EXPECT_EQ(ItemCount(), rows + 3 - 6 - 1 + 3);
    EXPECT_NE(messages.find("skipped: " + Absolute("Music/Alpha/Two.flac")), std::string::npos) << messages;

    EXPECT_EQ(IdOf("Music/Alpha/One.mp3"), oneId) << "a changed file keeps its row";
    EXPECT_STREQ(Row("Music/Alpha/One.mp3").acTitle, "First Song") << "and is read again";
    for (const char *gone : {"Music/Beta/Three.m4a", "Music/Alpha/Two.flac", "Video", "Pictures/Trip/photo.jpg"}) {
        EXPECT_EQ(IdOf(gone), -1) << gone;
    }
    EXPECT_STREQ(Row("Music/Beta/Four.flac").acTitle, "Second Song");
    EXPECT_EQ(Row("Music/Gamma/Deep/art.png").ulFlags & MDB_FLAGS_CLASS_MASK, MDB_CLASS_PICTURE);
    EXPECT_STREQ(Row("Pictures/icon.png/song.mp3").acTitle, "First Song");
    EXPECT_EQ(catalogue.scalar("select count(*) from ITEM where parentID != 0 and parentID not in (select id from ITEM)"),
              "0")
        << "no row is left without its parent";

    const ExpectedFolder folders[] = {
        {"", MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_PICTURE},  // lost its only videos
        {"Music", MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_PICTURE},  // gained a picture deep below
        {"Music/Alpha", MDB_FLAGS_FOLDER_MUSIC},
        {"Music/Beta", MDB_FLAGS_FOLDER_MUSIC},
        {"Music/Gamma", MDB_FLAGS_FOLDER_PICTURE},
        {"Music/Gamma/Deep", MDB_FLAGS_FOLDER_PICTURE},
        {"Pictures", MDB_FLAGS_FOLDER_MUSIC},  // lost its last picture, gained music
        {"Pictures/Trip", 0},
        {"Pictures/icon.png", MDB_FLAGS_FOLDER_MUSIC},
    };
    for (const ExpectedFolder &f : folders) {
        EXPECT_EQ(Row(f.rel).ulFlags, f.flags()) << "folder \"" << f.rel << "\"";
    }
}

TEST_F(Scanner, UploadFolderGoesBelowTheFirstRootAndRootsNotNamedAreLeftAlone) {
    const std::string second = catalogue.dir().mkdir("second");
    fs::copy_file(Absolute("Music/Alpha/One.mp3"), second + "/song.mp3");
    ASSERT_EQ(Scan({media, second}), MDB_OK) << messages;
    EXPECT_TRUE(fs::is_directory(Absolute("upload")));
    EXPECT_FALSE(fs::exists(second + "/upload")) << "only the first root gets one";
    EXPECT_GT(IdOf("upload"), 0);

    const long long rows = ItemCount();
    fs::remove(second + "/song.mp3");
    ASSERT_EQ(Scan({media}), MDB_OK) << messages;
    EXPECT_EQ(ItemCount(), rows) << "the second root was not scanned, so its song stays";
    ASSERT_EQ(Scan({second}), MDB_OK) << messages;
    EXPECT_EQ(ItemCount(), rows - 1);
}

}  // namespace
}  // namespace mdbtest
