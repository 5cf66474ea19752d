// Rescans: unchanged files are not read or rewritten, changes on disk reach the catalogue, and
// folder bits follow what is left below each folder.
#include "scan_fixture.h"

#include <sys/stat.h>
#include <sys/time.h>

#include <filesystem>

namespace mdbtest {
namespace {

using Rescan = ScanFixture;
namespace fs = std::filesystem;

// Moves a file's modification time by a number of seconds, keeping its content and size.
void Touch(const std::string &path, long seconds) {
    struct stat st;
    ASSERT_EQ(stat(path.c_str(), &st), 0) << path;
    struct timeval times[2] = {{st.st_atime, 0}, {st.st_mtime + seconds, 0}};
    ASSERT_EQ(utimes(path.c_str(), times), 0) << path;
}

TEST_F(Rescan, UnchangedFilesAreNeitherReadNorRewritten) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    const long long rows = ItemCount();
    // A mark that a rewrite of the row would wipe out.
    catalogue.exec("update ITEM set title='marked' where id=" + std::to_string(IdOf("Music/Alpha/One.mp3")));
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_EQ(counts.unchanged, SampleItems().size());
    EXPECT_EQ(counts.added + counts.updated + counts.removed + counts.foldersAdded + counts.foldersRemoved, 0u);
    EXPECT_EQ(Row("Music/Alpha/One.mp3").acTitle, std::string("marked"));
    EXPECT_EQ(ItemCount(), rows);
    EXPECT_EQ(counts.skipped, SampleCorruptFiles().size()) << "corrupt files are tried again";
}

TEST_F(Rescan, FollowsFilesAndFoldersThatComeChangeAndGo) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    const long long oneId = IdOf("Music/Alpha/One.mp3");
    catalogue.exec("update ITEM set title='marked' where id=" + std::to_string(oneId));
    const long long rows = ItemCount();

    Touch(Absolute("Music/Alpha/One.mp3"), -3600);              // changed: same size, other time
    fs::remove(Absolute("Music/Beta/Three.m4a"));                // gone
    fs::copy_file(Absolute("Music/Alpha/Two.flac"), Absolute("Music/Beta/Four.flac"));  // new
    fs::remove_all(Absolute("Video"));                           // a whole folder gone
    fs::create_directories(Absolute("Music/Gamma/Deep"));
    fs::copy_file(Absolute("Pictures/icon.png"), Absolute("Music/Gamma/Deep/art.png"));  // a new folder chain

    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_EQ(counts.updated, 1u);
    EXPECT_EQ(counts.added, 2u);
    EXPECT_EQ(counts.removed, 3u) << "the m4a and the two videos";
    EXPECT_EQ(counts.foldersRemoved, 1u);
    EXPECT_EQ(counts.foldersAdded, 2u);
    EXPECT_EQ(ItemCount(), rows + 2 - 3 - 1 + 2);

    EXPECT_EQ(IdOf("Music/Alpha/One.mp3"), oneId) << "a changed file keeps its row";
    EXPECT_STREQ(Row("Music/Alpha/One.mp3").acTitle, "First Song") << "and is read again";
    EXPECT_EQ(IdOf("Music/Beta/Three.m4a"), -1);
    EXPECT_EQ(IdOf("Video"), -1);
    EXPECT_EQ(catalogue.scalar("select count(*) from ITEM where (flags & 127)=12"), "0");
    EXPECT_STREQ(Row("Music/Beta/Four.flac").acTitle, "Second Song");
    EXPECT_EQ(Row("Music/Gamma/Deep/art.png").ulFlags & MDB_FLAGS_CLASS_MASK, MDB_CLASS_PICTURE);

    const struct {
        const char *rel;
        uint32_t bits;
    } folders[] = {
        {"", MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_PICTURE},  // lost its only video
        {"Music", MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_PICTURE},  // gained a picture deep below
        {"Music/Gamma", MDB_FLAGS_FOLDER_PICTURE},
        {"Music/Gamma/Deep", MDB_FLAGS_FOLDER_PICTURE},
        {"Music/Beta", MDB_FLAGS_FOLDER_MUSIC},
    };
    for (const auto &f : folders) {
        EXPECT_EQ(Row(f.rel).ulFlags, MDB_CLASS_FOLDER | f.bits) << "folder \"" << f.rel << "\"";
    }
}

TEST_F(Rescan, AFolderThatLosesItsLastItemOfAClassLosesThatBit) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    fs::remove(Absolute("Pictures/Trip/photo.jpg"));
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_EQ(Row("Pictures/Trip").ulFlags, MDB_CLASS_FOLDER) << "no pictures left in Trip";
    EXPECT_EQ(Row("Pictures").ulFlags, MDB_CLASS_FOLDER | MDB_FLAGS_FOLDER_PICTURE) << "icon.png is still there";
    fs::remove(Absolute("Pictures/icon.png"));
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_EQ(Row("Pictures").ulFlags, MDB_CLASS_FOLDER);
    EXPECT_EQ(Row("").ulFlags, MDB_CLASS_FOLDER | MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_VIDEO);
}

TEST_F(Rescan, AFileThatTurnsCorruptLosesItsRow) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    ASSERT_GT(IdOf("Music/Alpha/Two.flac"), 0);
    {
        FILE *file = fopen(Absolute("Music/Alpha/Two.flac").c_str(), "wb");
        ASSERT_NE(file, nullptr);
        fputs("no longer audio", file);
        fclose(file);
    }
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_EQ(IdOf("Music/Alpha/Two.flac"), -1);
    EXPECT_EQ(counts.removed, 1u);
    EXPECT_NE(messages.find("skipped: " + Absolute("Music/Alpha/Two.flac")), std::string::npos) << messages;
}

TEST_F(Rescan, AnEntryThatChangesKindIsReplaced) {
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    // The folder "Pictures/Trip" becomes a file "Trip" (not media); a media file becomes a folder.
    fs::remove_all(Absolute("Pictures/Trip"));
    {
        FILE *file = fopen(Absolute("Pictures/Trip").c_str(), "wb");
        ASSERT_NE(file, nullptr);
        fclose(file);
    }
    fs::remove(Absolute("Pictures/icon.png"));
    fs::create_directories(Absolute("Pictures/icon.png"));
    fs::copy_file(Absolute("Music/Alpha/One.mp3"), Absolute("Pictures/icon.png/song.mp3"));
    ASSERT_EQ(Scan(), MDB_OK) << messages;
    EXPECT_EQ(IdOf("Pictures/Trip"), -1);
    EXPECT_EQ(Row("Pictures/icon.png").ulFlags, MDB_CLASS_FOLDER | MDB_FLAGS_FOLDER_MUSIC);
    EXPECT_STREQ(Row("Pictures/icon.png/song.mp3").acTitle, "First Song");
    EXPECT_EQ(catalogue.scalar("select count(*) from ITEM where parentID not in (select id from ITEM) and parentID != 0"),
              "0")
        << "no row is left without its parent";
}

TEST_F(Rescan, RootsNotNamedAreLeftAlone) {
    std::string second = catalogue.dir().mkdir("second");
    fs::copy_file(Absolute("Music/Alpha/One.mp3"), second + "/song.mp3");
    ASSERT_EQ(Scan({media, second}), MDB_OK) << messages;
    const long long rows = ItemCount();
    fs::remove(second + "/song.mp3");
    ASSERT_EQ(Scan({media}), MDB_OK) << messages;
    EXPECT_EQ(ItemCount(), rows) << "the second root was not scanned, so its song stays";
    ASSERT_EQ(Scan({second}), MDB_OK) << messages;
    EXPECT_EQ(ItemCount(), rows - 1);
}

}  // namespace
}  // namespace mdbtest
