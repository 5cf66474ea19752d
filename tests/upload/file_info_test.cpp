// File information lookup: the path rebuilt from the parent chain, the DLNA description from the
// profile library and the family table, and the answers for ids that are no file under a root or
// whose parent chain is broken.
#include "upload_fixture.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace mdbtest;

// The path lookup alone: its result and the path ("<untouched>" when the output was not written).
std::pair<int32_t, std::string> pathOf(long long id) {
    char marker[] = "<untouched>";
    char *path = marker;
    const int32_t result = QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr);
    const std::string text = path != nullptr ? path : "NULL";
    if (path != marker) {
        free(path);
    }
    return {result, text};
}

TEST(FileInfo, JoinsTheNamesFromTheRootFolderDownOrAnswers1ForNoFile) {
    UploadCatalogue up;
    const long long album = up.cat.addFolder(up.uploadId, "album");
    const long long slashRoot = up.cat.addFolder(0, "/mnt/usb1/");
    const std::string longName(4095, 'n');
    const long long longFolder = up.cat.addFolder(up.uploadId, longName);
    const struct { const char *what; long long id; int32_t result; std::string path; } cases[] = {
        {"item in a folder", up.addRow(album, "track 1.mp3", mp3Flags()), 0, up.uploadDir + "/album/track 1.mp3"},
        {"item in a root", up.addRow(up.rootId, "top.mp3", mp3Flags()), 0, up.rootDir + "/top.mp3"},
        {"folder", album, 0, up.uploadDir + "/album"},
        {"no '/' added or removed", up.addRow(slashRoot, "song.mp3", mp3Flags()), 0, "/mnt/usb1//song.mp3"},
        {"names of 4095", up.addRow(longFolder, longName, mp3Flags()), 0,
         up.uploadDir + "/" + longName + "/" + longName},
        {"no row", 987654, 1, "<untouched>"},
        {"root folder", up.rootId, 1, "<untouched>"},
        {"flags 0", up.addRow(up.uploadId, "flagless.mp3", 0), 1, "<untouched>"},
        {"empty file name", up.addRow(up.uploadId, "", mp3Flags()), 1, "<untouched>"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(pathOf(c.id), std::make_pair(c.result, c.path)) << c.what;
    }
}

TEST(FileInfo, DescribesTheFormatWithNullTextsForUnknownProfilesAndFamilies) {
    UploadCatalogue up;
    auto flagsOf = [](const char *mime, const char *profile) {
        const char *suffix = nullptr;
        return QRV_MDB_PNtoFix(mime, profile, &suffix);
    };
    const uint32_t noProfile = (mp3Flags() & 0xffffu) | (59u << 16);
    ASSERT_EQ(QRV_DLNA_GetProfileByProfileId(noProfile), nullptr);
    const uint32_t noFamily = (mp3Flags() & ~0xff00u) | (255u << 8);
    const uint32_t firstBeyond = (mp3Flags() & ~0xff00u) | (g_ulNumOfMediaClasses << 8);
    ASSERT_LE(g_ulNumOfMediaClasses, 255u);
    const uint32_t folder = MDB_CLASS_FOLDER | MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_VIDEO | MDB_FLAGS_FOLDER_PICTURE;
    const struct { const char *what; uint32_t flags; const char *mime, *profile; } cases[] = {  // NULL: none known
        {"MP3", flagsOf("audio/mpeg", "MP3"), "audio/mpeg", "MP3"},
        {"MPEG_PS_PAL", flagsOf("video/mpeg", "MPEG_PS_PAL"), "video/mpeg", "MPEG_PS_PAL"},
        {"JPEG_TN", flagsOf("image/jpeg", "JPEG_TN"), "image/jpeg", "JPEG_TN"},
        {"unknown profile number", noProfile, nullptr, nullptr},
        {"family index 255", noFamily, nullptr, nullptr},
        {"first family index beyond the table", firstBeyond, nullptr, nullptr},
        {"folder bits as family index", folder, nullptr, nullptr},
    };
    for (const auto &c : cases) {
        const long long id = up.addRow(up.uploadId, c.what, c.flags);
        const uint32_t family = (c.flags >> 8) & 255u;
        const MdbTransferParams *transfer = family < g_ulNumOfMediaClasses ? g_astMediaClasses[family].pstTransfer
                                                                            : nullptr;
        const char *marker = "unset";
        const char *mime = marker, *profile = marker, *op = marker, *flagsValue = marker;
        EXPECT_EQ(QRV_MDB_GetFileInfoById(id, nullptr, &mime, &profile, &op, &flagsValue), 0) << c.what;
        EXPECT_STREQ(mime, c.mime) << c.what;
        EXPECT_STREQ(profile, c.profile) << c.what;
        EXPECT_EQ(op, transfer != nullptr ? transfer->pcOpValue : nullptr) << c.what;
        EXPECT_EQ(flagsValue, transfer != nullptr ? transfer->pcFlagsValue : nullptr) << c.what;
    }
}

TEST(FileInfo, FailsOnABrokenParentChainAfterWritingTheDescription) {
    UploadCatalogue up;
    auto chain = [&](int n) {  // n folders below the root; the id of the last
        long long parent = up.rootId;
        for (int i = 0; i < n; ++i) {
            parent = up.cat.addFolder(parent, "d" + std::to_string(i));
        }
        return parent;
    };
    const long long loopA = up.cat.addFolder(0, "a");
    const long long loopB = up.cat.addFolder(loopA, "b");
    up.cat.exec("update ITEM set parentID=" + std::to_string(loopB) + " where id=" + std::to_string(loopA));
    const int32_t notFound = static_cast<int32_t>(MDB_ERR_NOT_FOUND);
    const struct { const char *what; long long parent; int32_t result; } cases[] = {
        {"missing ancestor", 424242, notFound},
        {"negative parent", -1, notFound},
        {"loop", loopB, notFound},
        {"64 ancestors", chain(63), 0},
        {"65 ancestors", chain(64), notFound},
    };
    for (const auto &c : cases) {
        const long long item = up.addRow(c.parent, "x.mp3", mp3Flags());
        const char *mime = nullptr;
        char marker[] = "<untouched>";
        char *path = marker;
        EXPECT_EQ(QRV_MDB_GetFileInfoById(item, &path, &mime, nullptr, nullptr, nullptr), c.result) << c.what;
        EXPECT_STREQ(mime, "audio/mpeg") << c.what << ": descriptions are written before the walk";
        EXPECT_EQ(path == marker, c.result != 0) << c.what;
        if (path != marker) {
            EXPECT_EQ(std::string(path).rfind(up.rootDir, 0), 0u) << c.what;
            free(path);
        }
    }
}

}  // namespace
