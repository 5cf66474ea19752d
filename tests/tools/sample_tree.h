// The media tree of the scanner and tool tests (made once per build by make-sample-tree.sh) and
// what a scan must make of it. Each test scans its own copy, which it may change freely.
#pragma once

#include <mdb.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace mdbtest {

// What the scanner must make of one valid media file of the tree.
struct ExpectedItem {
    const char *rel;  // path below the tree's root
    uint32_t itemClass;
    const char *mime, *profile;  // of the profile the row's flags name ("Unknown": none)
    const char *title, *artist, *album, *genre;  // "" for none
    uint32_t track, width, height, sampleFrequency, channels, bitsPerSample;
    const char *datePrefix;  // the row's date begins with this
    long long durationMs;    // checked within 10%
};

inline const std::vector<ExpectedItem> kSampleItems = {
    {"Music/Alpha/One.mp3", MDB_CLASS_MUSIC, "audio/mpeg", "MP3", "First Song", "Alpha Band", "Alpha Album", "Pop", 1,
     0, 0, 44100, 2, 0, "2019-01-01", 2000},
    {"Music/Alpha/Two.flac", MDB_CLASS_MUSIC, "audio/x-flac", "Unknown", "Second Song", "Alpha Band", "Alpha Album",
     "Pop", 2, 0, 0, 44100, 2, 16, "2019-01-01", 2000},
    {"Music/Beta/Three.m4a", MDB_CLASS_MUSIC, "audio/mp4", "AAC_ISO_320", "Third Song", "Beta", "Beta Sessions", "Jazz",
     3, 0, 0, 44100, 2, 16, "", 3000},
    {"Music/Beta/memo.wav", MDB_CLASS_MUSIC, "audio/x-wav", "Unknown", "memo", "", "", "", 0, 0, 0, 44100, 2, 16, "",
     1000},
    {"Video/clip.mp4", MDB_CLASS_VIDEO, "video/mp4", "AVC_MP4_BL_CIF15_AAC_520", "Small Clip", "Home Movies", "", "", 0,
     320, 240, 48000, 2, 0, "2020-05-06T07:08:09", 2000},
    {"Video/news.ts", MDB_CLASS_VIDEO, "video/mpeg", "MPEG_TS_HD_NA_ISO", "news", "", "", "", 0, 1280, 720, 48000, 2, 0,
     "", 1000},
    {"Pictures/Trip/photo.jpg", MDB_CLASS_PICTURE, "image/jpeg", "JPEG_MED", "Harbour at dawn", "", "", "", 0, 800, 600,
     0, 0, 0, "2019-07-14T09:12:00", 0},
    {"Pictures/icon.png", MDB_CLASS_PICTURE, "image/png", "PNG_TN", "icon", "", "", "", 0, 100, 100, 0, 0, 0, "", 0},
};
// Files that pretend to be media but are not valid files of their kind, and files that are not media.
inline const std::vector<std::string> kSampleCorruptFiles = {"Music/broken.mp3", "Pictures/Trip/half.jpg",
                                                             "Video/empty.mp4", "Music/Alpha/noise.flac"};
inline const std::vector<std::string> kSampleForeignFiles = {"Music/notes.txt", "cover.xyz"};

// Folders ("" is the root) and the bits of the classes below them; "upload" is made by the scan and
// is listed in every folder view (so are the folders above it) while empty.
struct ExpectedFolder {
    const char *rel;
    uint32_t bits;
    // The row's flags word: a restricted folder, except the upload folder where clients create.
    uint32_t flags() const { return (std::string(rel) == "upload" ? 2u : 2u | MDB_FLAGS_RESTRICTED) | bits; }
};
inline const std::vector<ExpectedFolder> kSampleFolders = {
    {"", MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_VIDEO | MDB_FLAGS_FOLDER_PICTURE},
    {"Music", MDB_FLAGS_FOLDER_MUSIC},
    {"Music/Alpha", MDB_FLAGS_FOLDER_MUSIC},
    {"Music/Beta", MDB_FLAGS_FOLDER_MUSIC},
    {"Video", MDB_FLAGS_FOLDER_VIDEO},
    {"Pictures", MDB_FLAGS_FOLDER_PICTURE},
    {"Pictures/Trip", MDB_FLAGS_FOLDER_PICTURE},
    {"upload", MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_VIDEO | MDB_FLAGS_FOLDER_PICTURE},
};

// Copies the tree to dir/media and returns the copy's real path (the form a scan stores).
inline std::string CopySampleTree(const std::string &dir) {
    const std::string copy = dir + "/media";
    std::filesystem::copy(MDB_TEST_SAMPLE_TREE, copy, std::filesystem::copy_options::recursive);
    char real[PATH_MAX] = "";
    EXPECT_NE(realpath(copy.c_str(), real), nullptr) << copy;
    return real;
}

}  // namespace mdbtest
