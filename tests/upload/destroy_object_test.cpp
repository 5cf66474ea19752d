// DestroyObject on a real catalogue with real files: what it removes, what it refuses, what it
// prints, and how it waits out a failed deletion.
#include "fake_clock.h"
#include "upload_catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>

#include <unistd.h>

namespace {

using mdbtest::fileExists;
using mdbtest::ItemValues;
using mdbtest::UploadCatalogue;
namespace fakeclock = mdbtest::fakeclock;

constexpr int32_t kMp3Flags = static_cast<int32_t>(MDB_CLASS_MUSIC);

class DestroyObjectTest : public testing::Test {
protected:
    void TearDown() override { QRV_MDB_FreeUploadList(); }

    // A music file in the upload folder: its row, its file on disk, and an upload note.
    long long addUpload(const std::string &name, int32_t extraFlags = 0) {
        ItemValues v;
        v.parentId = up.uploadId();
        v.flags = kMp3Flags | extraFlags;
        v.title = name;
        v.fileName = name;
        const long long id = up.cat().addItem(v);
        up.cat().dir().write("media/upload/" + name, "audio bytes");
        QRV_MDB_AddUploadNote(id);
        return id;
    }
    std::string uploadFile(const std::string &name) const { return up.uploadDir() + "/" + name; }

    // Destroys id, returning its result and what it printed.
    std::pair<uint32_t, std::string> destroy(long long id) {
        testing::internal::CaptureStdout();
        const uint32_t result = QRV_MDB_DestroyObject(id);
        return {result, testing::internal::GetCapturedStdout()};
    }

    fakeclock::Scope clock;
    UploadCatalogue up;
};

TEST_F(DestroyObjectTest, RemovesFileRowAndNote) {
    const long long id = addUpload("song.mp3");
    const long long other = addUpload("other.mp3");
    const auto [result, out] = destroy(id);
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(out, "");
    EXPECT_FALSE(fileExists(uploadFile("song.mp3")));
    EXPECT_FALSE(up.hasRow(id));
    EXPECT_EQ(QRV_MDB_FindUploadNote(id), -1);
    EXPECT_TRUE(fileExists(uploadFile("other.mp3")));
    EXPECT_TRUE(up.hasRow(other));
    EXPECT_EQ(QRV_MDB_FindUploadNote(other), 0);
    EXPECT_TRUE(fakeclock::sleeps().empty());
}

TEST_F(DestroyObjectTest, RefusesARestrictedObjectWith711) {
    const long long id = addUpload("locked.mp3", static_cast<int32_t>(MDB_FLAGS_RESTRICTED));
    const auto [result, out] = destroy(id);
    EXPECT_EQ(result, MDB_UPNP_ERR_RESTRICTED_OBJECT);
    EXPECT_EQ(out, "");
    EXPECT_TRUE(fileExists(uploadFile("locked.mp3")));
    EXPECT_TRUE(up.hasRow(id));
    EXPECT_EQ(QRV_MDB_FindUploadNote(id), 0);
}

TEST_F(DestroyObjectTest, SaysSoWhenNoFileIsKnownAndStillDeletesRowAndNote) {
    const struct {
        const char *what;
        long long (*make)(UploadCatalogue &);
        bool rowExpected;
    } cases[] = {
        {"unknown id", [](UploadCatalogue &) { return 999999LL; }, false},
        {"root folder", [](UploadCatalogue &u) { return u.cat().addFolder(0, u.cat().dir().mkdir("root2")); }, true},
        {"row with flags 0",
         [](UploadCatalogue &u) {
             ItemValues v;
             v.parentId = u.uploadId();
             v.title = v.fileName = "flagless.mp3";
             return u.cat().addItem(v);
         },
         true},
        {"row with an empty file name",
         [](UploadCatalogue &u) {
             ItemValues v;
             v.parentId = u.uploadId();
             v.flags = kMp3Flags;
             v.title = "nameless";
             return u.cat().addItem(v);
         },
         true},
    };
    for (const auto &c : cases) {
        const long long id = c.make(up);
        ASSERT_EQ(up.hasRow(id), c.rowExpected) << c.what;
        QRV_MDB_AddUploadNote(id);
        const long long rowsBefore = up.rowCount();
        const auto [result, out] = destroy(id);
        EXPECT_EQ(result, 0u) << c.what;
        EXPECT_EQ(out, "the file not find!\n") << c.what;
        EXPECT_FALSE(up.hasRow(id)) << c.what;
        EXPECT_EQ(up.rowCount(), rowsBefore - (c.rowExpected ? 1 : 0)) << c.what;
        EXPECT_EQ(QRV_MDB_FindUploadNote(id), -1) << c.what;
    }
    EXPECT_TRUE(fileExists(up.cat().dir().file("root2"))) << "a root folder's directory stays";
}

TEST_F(DestroyObjectTest, DeletesOnlyTheRowOfAFolderAndNeverItsDirectory) {
    const long long folder = up.cat().addFolder(up.uploadId(), "album");
    up.cat().dir().mkdir("media/upload/album");
    ItemValues v;
    v.parentId = folder;
    v.flags = kMp3Flags;
    v.title = v.fileName = "inside.mp3";
    const long long child = up.cat().addItem(v);
    up.cat().dir().write("media/upload/album/inside.mp3", "x");

    const auto [result, out] = destroy(folder);
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(out, "");
    EXPECT_FALSE(up.hasRow(folder));
    EXPECT_TRUE(up.hasRow(child));
    EXPECT_TRUE(fileExists(uploadFile("album/inside.mp3")));
}

TEST_F(DestroyObjectTest, PassesOverAFileThatIsAlreadyGone) {
    const long long id = addUpload("gone.mp3");
    ASSERT_EQ(unlink(uploadFile("gone.mp3").c_str()), 0);
    const auto [result, out] = destroy(id);
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(out, "");
    EXPECT_FALSE(up.hasRow(id));
}

TEST_F(DestroyObjectTest, RetriesAFailedDeletionOnceAfterTwoSeconds) {
    const struct {
        const char *what;
        bool liftedBySleep;
        bool rowRemains;
    } cases[] = {{"second deletion succeeds", true, false}, {"both deletions fail", false, true}};
    for (const auto &c : cases) {
        fakeclock::reset();
        const long long id = addUpload(std::string(c.what) + ".mp3");
        up.cat().exec("CREATE TRIGGER refuse_delete BEFORE DELETE ON ITEM BEGIN SELECT RAISE(ABORT, 'no'); END");
        if (c.liftedBySleep) {
            fakeclock::onSleep([this](unsigned) { up.cat().exec("DROP TRIGGER refuse_delete"); });
        }
        const auto [result, out] = destroy(id);
        EXPECT_EQ(result, 0u) << c.what;
        EXPECT_EQ(fakeclock::sleeps(), std::vector<unsigned>{2}) << c.what;
        EXPECT_EQ(up.hasRow(id), c.rowRemains) << c.what;
        EXPECT_EQ(QRV_MDB_FindUploadNote(id), -1) << c.what << ": the note goes in any case";
        EXPECT_FALSE(fileExists(uploadFile(std::string(c.what) + ".mp3"))) << c.what;
        if (!c.liftedBySleep) {
            up.cat().exec("DROP TRIGGER refuse_delete");
        }
    }
}

TEST(DestroyObjectWithoutCatalogue, SaysSoAndAnswers0) {
    ASSERT_EQ(g_pstMdbCtx, nullptr);
    fakeclock::Scope clock;
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRV_MDB_DestroyObject(1), 0u);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "the file not find!\n");
    EXPECT_TRUE(fakeclock::sleeps().empty()) << "a missing connection is not a failed deletion";
}

}  // namespace
