// File information lookup: the path rebuilt from the parent chain, the DLNA description from the
// profile library and the family table, and the answers for ids that are no file under a root or
// whose chain is broken.
#include "upload_catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

using mdbtest::ItemValues;
using mdbtest::UploadCatalogue;

// The flags word the profile library gives a file of that MIME type and profile.
uint32_t profileFlags(const char *mime, const char *profile) {
    const char *suffix = nullptr;
    return QRV_MDB_PNtoFix(mime, profile, &suffix);
}

struct FileInfo {
    int32_t result = -2;
    bool pathSet = false;
    std::string path;
};

// Looks up the path alone; a path output that stays untouched keeps its marker.
FileInfo pathOf(long long id) {
    static char marker[] = "untouched";
    char *path = marker;
    FileInfo info;
    info.result = QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr);
    info.pathSet = path != marker;
    if (info.pathSet) {
        info.path = path != nullptr ? path : "NULL";
        free(path);
    }
    return info;
}

class FileInfoTest : public testing::Test {
protected:
    long long addFile(long long parent, const std::string &name, uint32_t flags) {
        ItemValues v;
        v.parentId = parent;
        v.flags = static_cast<int32_t>(flags);
        v.title = name;
        v.fileName = name;
        return up.cat().addItem(v);
    }
    UploadCatalogue up;
};

TEST_F(FileInfoTest, JoinsTheNamesFromTheRootFolderDown) {
    const long long album = up.cat().addFolder(up.uploadId(), "album");
    const long long deep = addFile(album, "track 1.mp3", profileFlags("audio/mpeg", "MP3"));
    const long long direct = addFile(up.rootId(), "top.mp3", profileFlags("audio/mpeg", "MP3"));
    const struct {
        long long id;
        std::string path;
    } cases[] = {
        {deep, up.rootDir() + "/upload/album/track 1.mp3"},
        {direct, up.rootDir() + "/top.mp3"},
        {album, up.rootDir() + "/upload/album"},
    };
    for (const auto &c : cases) {
        const FileInfo info = pathOf(c.id);
        EXPECT_EQ(info.result, 0) << c.path;
        EXPECT_EQ(info.path, c.path);
    }
}

TEST_F(FileInfoTest, AddsNoSlashOfItsOwn) {
    const long long root = up.cat().addFolder(0, "/mnt/usb1/");
    const long long item = addFile(root, "song.mp3", profileFlags("audio/mpeg", "MP3"));
    EXPECT_EQ(pathOf(item).path, "/mnt/usb1//song.mp3");
}

TEST_F(FileInfoTest, Answers1ForIdsThatAreNoFileUnderARoot) {
    ItemValues flagless;
    flagless.parentId = up.uploadId();
    flagless.title = flagless.fileName = "flagless.mp3";
    ItemValues nameless;
    nameless.parentId = up.uploadId();
    nameless.flags = static_cast<int32_t>(profileFlags("audio/mpeg", "MP3"));
    nameless.title = "nameless";
    const struct {
        const char *what;
        long long id;
    } cases[] = {
        {"no row", 987654},
        {"root folder", up.rootId()},
        {"flags 0", up.cat().addItem(flagless)},
        {"empty file name", up.cat().addItem(nameless)},
    };
    for (const auto &c : cases) {
        const FileInfo info = pathOf(c.id);
        EXPECT_EQ(info.result, 1) << c.what;
        EXPECT_FALSE(info.pathSet) << c.what;
    }
}

TEST_F(FileInfoTest, DescribesTheFormatFromProfileAndFamily) {
    const struct {
        const char *mime;
        const char *profile;
        uint32_t family;
    } cases[] = {{"audio/mpeg", "MP3", 0}, {"video/mpeg", "MPEG_PS_PAL", 1}, {"image/jpeg", "JPEG_TN", 2}};
    for (const auto &c : cases) {
        const uint32_t flags = profileFlags(c.mime, c.profile);
        ASSERT_EQ((flags >> 8) & 255u, c.family) << c.profile;
        const long long id = addFile(up.uploadId(), std::string(c.profile) + ".bin", flags);
        const char *mime = nullptr;
        const char *profile = nullptr;
        const char *op = nullptr;
        const char *flagsValue = nullptr;
        ASSERT_EQ(QRV_MDB_GetFileInfoById(id, nullptr, &mime, &profile, &op, &flagsValue), 0) << c.profile;
        EXPECT_STREQ(mime, c.mime);
        EXPECT_STREQ(profile, c.profile);
        EXPECT_EQ(op, g_astMediaClasses[c.family].pstTransfer->pcOpValue) << c.profile;
        EXPECT_EQ(flagsValue, g_astMediaClasses[c.family].pstTransfer->pcFlagsValue) << c.profile;
    }
}

TEST_F(FileInfoTest, AnswersNullTextsWhereProfileOrFamilyIsUnknown) {
    const uint32_t mp3 = profileFlags("audio/mpeg", "MP3");
    const uint32_t noProfile = (mp3 & 0xffffu) | (59u << 16);
    ASSERT_EQ(QRV_DLNA_GetProfileByProfileId(noProfile), nullptr);
    const uint32_t noFamily = (mp3 & ~0xff00u) | (255u << 8);
    ASSERT_GE(255u, g_ulNumOfMediaClasses);
    const uint32_t folder = MDB_CLASS_FOLDER | MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_VIDEO | MDB_FLAGS_FOLDER_PICTURE;
    const struct {
        const char *what;
        uint32_t flags;
        bool profileKnown;
        bool familyKnown;
    } cases[] = {
        {"unknown profile number", noProfile, false, true},
        {"family index 255", noFamily, QRV_DLNA_GetProfileByProfileId(noFamily) != nullptr, false},
        {"folder bits as family index", folder, QRV_DLNA_GetProfileByProfileId(folder) != nullptr,
         ((folder >> 8) & 255u) < g_ulNumOfMediaClasses},
    };
    for (const auto &c : cases) {
        const long long id = addFile(up.uploadId(), c.what, c.flags);
        const char *marker = "unset";
        const char *mime = marker, *profile = marker, *op = marker, *flagsValue = marker;
        char *path = nullptr;
        EXPECT_EQ(QRV_MDB_GetFileInfoById(id, &path, &mime, &profile, &op, &flagsValue), 0) << c.what;
        EXPECT_EQ(path != nullptr ? std::string(path) : "NULL", up.uploadDir() + "/" + c.what);
        free(path);
        EXPECT_EQ(mime == nullptr, !c.profileKnown) << c.what;
        EXPECT_EQ(profile == nullptr, !c.profileKnown) << c.what;
        EXPECT_EQ(op == nullptr, !c.familyKnown) << c.what;
        EXPECT_EQ(flagsValue == nullptr, !c.familyKnown) << c.what;
    }
}

TEST_F(FileInfoTest, ReadsLongNamesWhole) {
    const std::string longName(4095, 'n');
    const long long folder = up.cat().addFolder(up.uploadId(), longName);
    const long long item = addFile(folder, longName, profileFlags("audio/mpeg", "MP3"));
    const FileInfo info = pathOf(item);
    ASSERT_EQ(info.result, 0);
    EXPECT_EQ(info.path, up.uploadDir() + "/" + longName + "/" + longName);
    EXPECT_GT(info.path.size(), 8192u);
}

TEST_F(FileInfoTest, FailsOnABrokenParentChain) {
    const uint32_t mp3 = profileFlags("audio/mpeg", "MP3");
    // Builds a chain of n folders below the root, returns the id of the last.
    auto chain = [&](int n) {
        long long parent = up.rootId();
        for (int i = 0; i < n; ++i) {
            parent = up.cat().addFolder(parent, "d" + std::to_string(i));
        }
        return parent;
    };
    const long long loopA = up.cat().addFolder(0, "a");
    const long long loopB = up.cat().addFolder(loopA, "b");
    up.cat().exec("update ITEM set parentID=" + std::to_string(loopB) + " where id=" + std::to_string(loopA));

    const struct {
        const char *what;
        long long parent;
        int32_t result;
    } cases[] = {
        {"missing ancestor", 424242, static_cast<int32_t>(MDB_ERR_NOT_FOUND)},
        {"negative parent", -1, static_cast<int32_t>(MDB_ERR_NOT_FOUND)},
        {"loop", loopB, static_cast<int32_t>(MDB_ERR_NOT_FOUND)},
        {"64 ancestors", chain(63), 0},
        {"65 ancestors", chain(64), static_cast<int32_t>(MDB_ERR_NOT_FOUND)},
    };
    for (const auto &c : cases) {
        const long long item = addFile(c.parent, "x.mp3", mp3);
        const char *mime = nullptr;
        char marker[] = "untouched";
        char *path = marker;
        EXPECT_EQ(QRV_MDB_GetFileInfoById(item, &path, &mime, nullptr, nullptr, nullptr), c.result)
            << c.what << ": " << QRV_MDB_StatusName(static_cast<uint32_t>(c.result));
        EXPECT_STREQ(mime, "audio/mpeg") << c.what << ": descriptions are written before the walk";
        if (c.result == 0) {
            EXPECT_EQ(std::string(path).substr(0, up.rootDir().size()), up.rootDir()) << c.what;
            free(path);
        } else {
            EXPECT_EQ(path, marker) << c.what;
        }
    }
}

TEST(FileInfoWithoutCatalogue, Answers1) {
    ASSERT_EQ(g_pstMdbCtx, nullptr);
    char *path = nullptr;
    EXPECT_EQ(QRV_MDB_GetFileInfoById(1, &path, nullptr, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(path, nullptr);
}

}  // namespace
