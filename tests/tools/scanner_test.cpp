// The media scanner on a copy of the sample tree: a first scan (items with their tags, properties
// and profiles; folders with their bits; corrupt and foreign files left out), rescans after changes
// on disk, the roots a scan is given, titles from names that are not UTF-8, and the EXIF that the
// sample library's stamper writes and the photo reader reads back.
#include "catalogue.h"
#include "sample_tree.h"
#include "tool_runner.h"

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
        options.batchSize = 2, options.messages = open_memstream(&text, &size);
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
        EXPECT_EQ(QRV_MDB_GetItemDetailInfo(catalogue.db(), IdOf(rel), &detail), MDB_OK) << rel;
        EXPECT_NE(detail.llId, 0) << "no row for " << rel;
        return detail;
    }
    std::string Name(const char *table, long long id) {
        return catalogue.rows(std::string("select name from ") + table + " where exID=" + std::to_string(id));
    }
    std::string Absolute(const std::string &rel) const { return rel.empty() ? media : media + "/" + rel; }
    long long ItemCount() { return std::stoll(catalogue.rows("select count(*) from ITEM")); }

    Catalogue catalogue;
    std::string media = CopySampleTree(catalogue.dir().path());
    mdbscan::ScanCounts counts;
    std::string messages;
};

TEST_F(Scanner, FirstScanGivesItemsTheirTagsPropertiesAndProfilesAndFoldersTheirBits) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    for (const ExpectedItem &e : kSampleItems) {
        const MdbItemDetail row = Row(e.rel);
        const MdbDlnaProfile *profile = QRV_DLNA_GetProfileByProfileId(row.ulFlags);
        ASSERT_NE(profile, nullptr) << e.rel << ": flags " << row.ulFlags << " name no profile";
        struct stat st;
        ASSERT_EQ(stat(Absolute(e.rel).c_str(), &st), 0);
        // Every item gets a date (its file's time at least) and a bitrate unless it is a picture.
        EXPECT_EQ(Join(row.ulFlags & (MDB_FLAGS_CLASS_MASK | MDB_FLAGS_RESTRICTED), profile->pcProfileName,
                       profile->pcMimeType, row.acTitle, Name("ARTISTS", row.llExIdArtist),
                       Name("ALBUMS", row.llExIdAlbum),
                       Name("GENRES", row.llExIdGenre), row.ulOriginalTrackNumber, row.ullResolution,
                       row.ulSampleFrequency, row.ulNrAudioChannels, row.ulBitsPerSample,
                       std::string(row.acDate).rfind(e.datePrefix, 0) == 0 && row.acDate[0] != '\0',
                       row.ulBitrate > 0, row.ullSize, row.acLastModify),
                  Join(e.itemClass, e.profile, e.mime, e.title, e.artist, e.album, e.genre, e.track,
                       (static_cast<uint64_t>(e.height) << 32) | e.width, e.sampleFrequency, e.channels,
                       e.bitsPerSample, true, e.itemClass != MDB_CLASS_PICTURE, st.st_size,
                       mdbscan::FormatModificationTime(st.st_mtime))) << e.rel;
        EXPECT_NEAR(row.ullDuration / 1000.0, e.durationMs, e.durationMs * 0.1 + 1) << e.rel;
    }
    for (const ExpectedFolder &f : kSampleFolders) {  // a root's fileName is its absolute path
        const std::string rel = f.rel, name = Absolute(rel).substr(Absolute(rel).find_last_of('/') + 1);
        const std::string::size_type slash = rel.find_last_of('/');
        const MdbItemDetail row = Row(rel);
        EXPECT_EQ(Join(row.ulFlags, row.llParentId, row.acFileName, row.acTitle),
                  Join(f.flags(), rel.empty() ? 0 : IdOf(slash == std::string::npos ? "" : rel.substr(0, slash)),
                       rel.empty() ? media : name, name)) << "folder \"" << rel << "\"";
    }
    for (const std::string &rel : kSampleCorruptFiles) {
        EXPECT_TRUE(IdOf(rel) == -1 && messages.find("skipped: " + Absolute(rel) + ": ") != std::string::npos) << rel;
    }
    for (const std::string &rel : kSampleForeignFiles) EXPECT_EQ(IdOf(rel), -1) << rel;
    EXPECT_EQ(IdOf("Pictures/Trip/.hidden.jpg"), -1) << "hidden files are left out";
    EXPECT_EQ(Join(counts.added, counts.files, counts.foldersAdded, counts.skipped, counts.ignored, ItemCount()),
              Join(kSampleItems.size(), kSampleItems.size() + kSampleCorruptFiles.size(), kSampleFolders.size(),
                   kSampleCorruptFiles.size(), kSampleForeignFiles.size(), kSampleItems.size() + kSampleFolders.size()));
    EXPECT_NE(catalogue.rows("select count(*) from sqlite_stat1 where tbl='ITEM'"), "0") << "ANALYZE has run";
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

// An unchanged file is not read again (a mark in its row stays); a file whose modification time
// changed is read again in its row; new, changed, corrupted and vanished files and folders are
// followed, and the folder bits recomputed.
TEST_F(Scanner, RescanLeavesUnchangedFilesAndFollowsThoseThatComeChangeAndGo) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    const long long oneId = IdOf("Music/Alpha/One.mp3"), rows = ItemCount();
    catalogue.exec("update ITEM set title='marked' where id=" + std::to_string(oneId));
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_EQ(Join(counts.unchanged, counts.added + counts.updated + counts.removed + counts.foldersAdded +
                   counts.foldersRemoved, counts.skipped, Row("Music/Alpha/One.mp3").acTitle),
              Join(kSampleItems.size(), 0, kSampleCorruptFiles.size(), "marked")) << "corrupt files are tried again";
    struct stat st;  // same size, modification time an hour earlier: changed
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
    // updated One.mp3; unchanged memo.wav; added Four.flac, art.png, song.mp3; removed Three.m4a,
    // Two.flac, the two videos, photo.jpg and the icon.png item; the Video folder gone, three new
    EXPECT_EQ(Join(counts.updated, counts.unchanged, counts.added, counts.removed, counts.foldersRemoved,
                   counts.foldersAdded, ItemCount() - rows), "1|1|3|6|1|3|-1");
    EXPECT_NE(messages.find("skipped: " + Absolute("Music/Alpha/Two.flac")), std::string::npos) << messages;
    EXPECT_EQ(IdOf("Music/Alpha/One.mp3"), oneId) << "a changed file keeps its row";
    EXPECT_EQ(Join(Row("Music/Alpha/One.mp3").acTitle, Row("Music/Beta/Four.flac").acTitle,
                   Row("Pictures/icon.png/song.mp3").acTitle), "First Song|Second Song|First Song");
    for (const char *gone : {"Music/Beta/Three.m4a", "Music/Alpha/Two.flac", "Video", "Pictures/Trip/photo.jpg"}) {
        EXPECT_EQ(IdOf(gone), -1) << gone;
    }
    EXPECT_EQ(catalogue.rows("select count(*) from ITEM where parentID != 0 and parentID not in (select id from ITEM)"),
              "0") << "no row is left without its parent";
    const uint32_t M = MDB_FLAGS_FOLDER_MUSIC, P = MDB_FLAGS_FOLDER_PICTURE, V = MDB_FLAGS_FOLDER_VIDEO;
    for (const ExpectedFolder &f : std::vector<ExpectedFolder>{{"", M | P | V}, {"Music", M | P}, {"Music/Alpha", M},
             {"Music/Beta", M}, {"Music/Gamma", P}, {"Music/Gamma/Deep", P}, {"Pictures", M}, {"Pictures/Trip", 0},
             {"Pictures/icon.png", M}}) {
        EXPECT_EQ(Row(f.rel).ulFlags, f.flags()) << "folder \"" << f.rel << "\"";
    }
}

// A missing directory or a file among the roots is refused before any change; the upload folder
// goes below the first root only; a rescan of some roots leaves the others alone.
TEST_F(Scanner, RootsAreCheckedFirstAndOnlyTheNamedOnesAreScanned) {
    for (const std::string &bad : {media + "/no-such-folder", Absolute("Music/Alpha/One.mp3")}) {
        EXPECT_EQ(Scan({media, bad}), MDB_ERR_PARA) << bad;
        EXPECT_TRUE(ItemCount() == 0 && !fs::exists(Absolute("upload"))) << bad;
    }
    const std::string second = catalogue.dir().mkdir("second");
    fs::copy_file(Absolute("Music/Alpha/One.mp3"), second + "/song.mp3");
    ASSERT_EQ(Scan({media, second}), MDB_OK) << messages;
    EXPECT_TRUE(fs::is_directory(Absolute("upload")) && IdOf("upload") > 0 && !fs::exists(second + "/upload"));
    const long long rows = ItemCount();
    fs::remove(second + "/song.mp3");
    ASSERT_EQ(Scan({media}), MDB_OK) << messages;
    EXPECT_EQ(ItemCount(), rows) << "the second root was not scanned, so its song stays";
    ASSERT_EQ(Scan({second}), MDB_OK) << messages;
    EXPECT_EQ(ItemCount(), rows - 1);
}

// The sample library's EXIF stamper gives a JPEG a date taken, a description and an artist, which
// the scan reads as date, title and creator; it refuses what is not a JPEG and a wrong command line.
TEST_F(Scanner, ReadsTheExifTheSampleStamperWrites) {
    const std::string photo = Absolute("Pictures/Trip/photo.jpg"), icon = Absolute("Pictures/icon.png");
    const std::string iconBytes = readFile(icon);
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{photo, "2021:02:03 04:05:06", "Lighthouse", "Ann Lee"}, 0}, {{icon, "2021:02:03 04:05:06"}, 1}, {{photo}, 2},
    };
    for (const auto &[args, exitCode] : cases) EXPECT_EQ(RunProgram(MDB_TEST_EXIF_STAMP, args).exitCode, exitCode);
    EXPECT_EQ(readFile(icon), iconBytes) << "a refused file stays as it was";
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    const MdbItemDetail row = Row("Pictures/Trip/photo.jpg");
    EXPECT_EQ(Join(row.acDate, row.acTitle, Name("CREATORS", row.llExIdCreator)),
              "2021-02-03T04:05:06|Lighthouse|Ann Lee");
}

}  // namespace
}  // namespace mdbtest
