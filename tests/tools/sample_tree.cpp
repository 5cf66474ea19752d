// The test media tree, its expectations, and the copy made for each test.
#include "sample_tree.h"

#include "media_maker.h"
#include "temp_dir.h"

#include <mdb.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace mdbtest {

namespace {

const std::vector<std::string> kMp3 = {"-c:a", "libmp3lame", "-b:a", "128k", "-id3v2_version", "3"};
const std::vector<std::string> kH264 = {"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p"};

std::vector<std::string> Join(std::vector<std::string> a, const std::vector<std::string> &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Made once; the TempDir removes it when the test program ends.
const TempDir &Template() {
    static std::unique_ptr<TempDir> tree;
    if (tree) {
        return *tree;
    }
    tree = std::make_unique<TempDir>();
    MediaMaker make(tree->path());
    make.Tone("Music/Alpha/One.mp3", 2, kMp3,
              {{"title", "First Song"}, {"artist", "Alpha Band"}, {"album", "Alpha Album"}, {"genre", "Pop"},
               {"track", "1"}, {"date", "2019"}});
    make.Tone("Music/Alpha/Two.flac", 2, {"-c:a", "flac"},
              {{"title", "Second Song"}, {"artist", "Alpha Band"}, {"album", "Alpha Album"}, {"genre", "Pop"},
               {"track", "2"}, {"date", "2019"}});
    make.Tone("Music/Beta/Three.m4a", 3, {"-c:a", "aac", "-b:a", "96k"},
              {{"title", "Third Song"}, {"artist", "Beta"}, {"album", "Beta Sessions"}, {"genre", "Jazz"},
               {"track", "3"}});
    make.Tone("Music/Beta/memo.wav", 1, {"-c:a", "pcm_s16le"}, {});
    make.Clip("Video/clip.mp4", 320, 240, 2, Join(kH264, {"-c:a", "aac"}),
              {{"title", "Small Clip"}, {"artist", "Home Movies"}, {"creation_time", "2020-05-06T07:08:09Z"}});
    make.Clip("Video/news.ts", 1280, 720, 1, {"-c:v", "mpeg2video", "-b:v", "1M", "-c:a", "mp2"}, {});
    make.Picture("Pictures/Trip/photo.jpg", 800, 600);
    make.StampExif("Pictures/Trip/photo.jpg", "2019:07:14 09:12:00", "Harbour at dawn");
    make.Picture("Pictures/icon.png", 100, 100);
    // Corrupt: text in an MP3, the head of a JPEG, an empty MP4, noise in a FLAC.
    make.Bytes("Music/broken.mp3", std::string(2000, 'x'));
    make.Bytes("Pictures/Trip/half.jpg", readFile(make.Path("Pictures/Trip/photo.jpg")).substr(0, 100));
    make.Bytes("Video/empty.mp4", "");
    std::string noise;
    for (unsigned i = 0; i < 4096; ++i) {
        noise += static_cast<char>((i * 2654435761u) >> 24);
    }
    make.Bytes("Music/Alpha/noise.flac", noise);
    // Not media.
    make.Bytes("Music/notes.txt", "liner notes\n");
    make.Bytes("Pictures/Trip/.hidden.jpg", "hidden files are left out");
    make.Bytes("cover.xyz", "unknown format");
    return *tree;
}

}  // namespace

const std::vector<ExpectedItem> &SampleItems() {
    static const std::vector<ExpectedItem> items = {
        {"Music/Alpha/One.mp3", MDB_CLASS_MUSIC, "audio/mpeg", "MP3", "First Song", "Alpha Band", "Alpha Album", "Pop",
         1, 0, 0, 44100, 2, 0, "2019-01-01", 2000},
        {"Music/Alpha/Two.flac", MDB_CLASS_MUSIC, "audio/x-flac", "Unknown", "Second Song", "Alpha Band",
         "Alpha Album", "Pop", 2, 0, 0, 44100, 2, 16, "2019-01-01", 2000},
        {"Music/Beta/Three.m4a", MDB_CLASS_MUSIC, "audio/mp4", "AAC_ISO_320", "Third Song", "Beta", "Beta Sessions",
         "Jazz", 3, 0, 0, 44100, 2, 16, "", 3000},
        {"Music/Beta/memo.wav", MDB_CLASS_MUSIC, "audio/x-wav", "Unknown", "memo", "", "", "", 0, 0, 0, 44100, 2, 16, "",
         1000},
        {"Video/clip.mp4", MDB_CLASS_VIDEO, "video/mp4", "AVC_MP4_BL_CIF15_AAC_520", "Small Clip", "Home Movies", "", "",
         0, 320, 240, 48000, 2, 0, "2020-05-06T07:08:09", 2000},
        {"Video/news.ts", MDB_CLASS_VIDEO, "video/mpeg", "MPEG_TS_HD_NA_ISO", "news", "", "", "", 0, 1280, 720, 48000, 2,
         0, "", 1000},
        {"Pictures/Trip/photo.jpg", MDB_CLASS_PICTURE, "image/jpeg", "JPEG_MED", "Harbour at dawn", "", "", "", 0, 800,
         600, 0, 0, 0, "2019-07-14T09:12:00", 0},
        {"Pictures/icon.png", MDB_CLASS_PICTURE, "image/png", "PNG_TN", "icon", "", "", "", 0, 100, 100, 0, 0, 0, "", 0},
    };
    return items;
}

const std::vector<std::string> &SampleCorruptFiles() {
    static const std::vector<std::string> files = {"Music/broken.mp3", "Pictures/Trip/half.jpg", "Video/empty.mp4",
                                                   "Music/Alpha/noise.flac"};
    return files;
}

const std::vector<std::string> &SampleForeignFiles() {
    static const std::vector<std::string> files = {"Music/notes.txt", "cover.xyz"};
    return files;
}

const std::vector<ExpectedFolder> &SampleFolders() {
    static const std::vector<ExpectedFolder> folders = {
        {"", MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_VIDEO | MDB_FLAGS_FOLDER_PICTURE},
        {"Music", MDB_FLAGS_FOLDER_MUSIC},
        {"Music/Alpha", MDB_FLAGS_FOLDER_MUSIC},
        {"Music/Beta", MDB_FLAGS_FOLDER_MUSIC},
        {"Video", MDB_FLAGS_FOLDER_VIDEO},
        {"Pictures", MDB_FLAGS_FOLDER_PICTURE},
        {"Pictures/Trip", MDB_FLAGS_FOLDER_PICTURE},
        {"upload", 0},
    };
    return folders;
}

void CopySampleTree(const std::string &dir) {
    const TempDir &tree = Template();
    ASSERT_FALSE(::testing::Test::HasFatalFailure()) << "the sample media tree could not be made";
    std::filesystem::copy(tree.path(), dir, std::filesystem::copy_options::recursive);
}

}  // namespace mdbtest
