// File information lookup: the path rebuilt from the parent chain, the DLNA description from the
// profile library and the family table, and the answers for ids that are no file under a root or
// whose parent chain is broken.
#include "upload_fixture.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using namespace mdbtest;

// The lookup's result and path ("<untouched>" when the output was not written).
std::pair<int32_t, std::string> pathOf(long long id, const char **mime = nullptr) {
    char marker[] = "<untouched>";
    char *path = marker;
    const int32_t result = QRV_MDB_GetFileInfoById(id, &path, mime, nullptr, nullptr, nullptr);
    const std::string text = path != nullptr ? path : "NULL";
    if (path != marker) free(path);
    return {result, text};
}

// The names joined from the root folder down; 1 for ids that are no file under a root; a broken
// chain (missing, negative or looping parents, more than 64 ancestors) fails after the
// description is written.
TEST(FileInfo, JoinsTheNamesFromTheRootFolderDown) {
    UploadCatalogue up;
    const long long album = up.cat.addFolder(up.uploadId, "album"), slashRoot = up.cat.addFolder(0, "/mnt/usb1/");
    const std::string longName(4095, 'n');
    const long long longFolder = up.cat.addFolder(up.uploadId, longName);
    const long long loopA = up.cat.addFolder(0, "a"), loopB = up.cat.addFolder(loopA, "b");
    up.cat.exec("update ITEM set parentID=" + std::to_string(loopB) + " where id=" + std::to_string(loopA));
    auto chain = [&](int n) {  // n folders below the root; the id of the last
        long long parent = up.rootId;
        for (int i = 0; i < n; ++i) parent = up.cat.addFolder(parent, "d" + std::to_string(i));
        return parent;
    };
    auto row = [&](long long parent, const std::string &name, uint32_t flags = mp3Flags()) {
        return up.cat.addRow(parent, name, flags);
    };
    const int32_t notFound = static_cast<int32_t>(MDB_ERR_NOT_FOUND);
    std::string deep63 = up.rootDir;
    for (int i = 0; i < 63; ++i) deep63 += "/d" + std::to_string(i);
    const struct { const char *what; long long id; int32_t result; std::string path; } cases[] = {
        {"item in a folder", row(album, "track 1.mp3"), 0, up.uploadDir + "/album/track 1.mp3"},
        {"item in a root", row(up.rootId, "top.mp3"), 0, up.rootDir + "/top.mp3"},
        {"folder", album, 0, up.uploadDir + "/album"},
        {"no '/' added or removed", row(slashRoot, "song.mp3"), 0, "/mnt/usb1//song.mp3"},
        {"names of 4095", row(longFolder, longName), 0, up.uploadDir + "/" + longName + "/" + longName},
        {"64 ancestors", row(chain(63), "x.mp3"), 0, deep63 + "/x.mp3"},
        {"no row", 987654, 1, "<untouched>"},
        {"root folder", up.rootId, 1, "<untouched>"},
        {"flags 0", row(up.uploadId, "flagless.mp3", 0), 1, "<untouched>"},
        {"empty file name", row(up.uploadId, ""), 1, "<untouched>"},
        {"missing ancestor", row(424242, "x.mp3"), notFound, "<untouched>"},
        {"negative parent", row(-1, "x.mp3"), notFound, "<untouched>"},
        {"loop", row(loopB, "x.mp3"), notFound, "<untouched>"},
        {"65 ancestors", row(chain(64), "x.mp3"), notFound, "<untouched>"},
    };
    for (const auto &c : cases) {
        const char *mime = nullptr;
        EXPECT_EQ(pathOf(c.id, &mime), std::make_pair(c.result, c.path)) << c.what;
        if (c.result != 1) {  // the description is written before the walk
            EXPECT_STREQ(mime, c.id == album ? nullptr : "audio/mpeg") << c.what;
        }
    }
}

// NULL texts for unknown profiles and for families outside the table.
TEST(FileInfo, DescribesTheFormatWithNullTextsForUnknownProfilesAndFamilies) {
    UploadCatalogue up;
    const uint32_t noProfile = (mp3Flags() & 0xffffu) | (59u << 16);
    ASSERT_EQ(QRV_DLNA_GetProfileByProfileId(noProfile), nullptr);
    ASSERT_LE(g_ulNumOfMediaClasses, 255u);
    const struct { const char *what; uint32_t flags; const char *mime, *profile; } cases[] = {  // NULL: none known
        {"MPEG_PS_PAL", ProfileFlags("video/mpeg", "MPEG_PS_PAL"), "video/mpeg", "MPEG_PS_PAL"},
        {"JPEG_TN", ProfileFlags("image/jpeg", "JPEG_TN"), "image/jpeg", "JPEG_TN"},
        {"unknown profile number", noProfile, nullptr, nullptr},
        {"first family index beyond the table", (mp3Flags() & ~0xff00u) | (g_ulNumOfMediaClasses << 8), nullptr,
         nullptr},
    };
    for (const auto &c : cases) {
        const long long id = up.cat.addRow(up.uploadId, c.what, c.flags);
        const uint32_t family = (c.flags >> 8) & 255u;
        const MdbTransferParams *transfer = family < g_ulNumOfMediaClasses ? g_astMediaClasses[family].pstTransfer
                                                                            : nullptr;
        const char *marker = "unset", *mime = marker, *profile = marker, *op = marker, *flagsValue = marker;
        EXPECT_EQ(QRV_MDB_GetFileInfoById(id, nullptr, &mime, &profile, &op, &flagsValue), 0) << c.what;
        EXPECT_STREQ(mime, c.mime) << c.what;
        EXPECT_STREQ(profile, c.profile) << c.what;
        EXPECT_EQ(op, transfer != nullptr ? transfer->pcOpValue : nullptr) << c.what;
        EXPECT_EQ(flagsValue, transfer != nullptr ? transfer->pcFlagsValue : nullptr) << c.what;
    }
}

}  // namespace
