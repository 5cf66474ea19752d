// Upload completion and the 35-second time-out, with the uptime under the test's control.
#include "fake_clock.h"
#include "upload_catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using mdbtest::fileExists;
using mdbtest::ItemValues;
using mdbtest::UploadCatalogue;
namespace fakeclock = mdbtest::fakeclock;

TEST(CheckUploadComplete, AnswersFromTheRowsSize) {
    UploadCatalogue up;
    auto item = [&](long long size) {
        ItemValues v;
        v.parentId = up.uploadId();
        v.flags = static_cast<int32_t>(MDB_CLASS_MUSIC);
        v.title = v.fileName = "size " + std::to_string(size);
        v.size = size;
        return up.cat().addItem(v);
    };
    const struct {
        const char *what;
        long long id;
        int32_t result;
    } cases[] = {
        {"no row", 555555, 0},
        {"size 0", item(0), 0},
        {"size 1", item(1), 1},
        {"only the upper 32 bits set", item(1LL << 32), 1},
        {"above 4 GiB", item(5000000000LL), 1},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(QRV_MDB_CheckUploadComplete(c.id), c.result) << c.what;
    }
    const long long pending = item(0);
    up.setSize(pending, 4096);
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(pending), 1) << "the server set the size";
}

TEST(CheckUploadComplete, Answers0WithoutCatalogue) {
    ASSERT_EQ(g_pstMdbCtx, nullptr);
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(1), 0);
}

class AutoDestroyTest : public testing::Test {
protected:
    void TearDown() override { QRV_MDB_FreeUploadList(); }

    // An uploaded music file (row, file, note) whose note is made at the given uptime.
    long long upload(const std::string &name, long startUptime, int32_t extraFlags = 0) {
        ItemValues v;
        v.parentId = up.uploadId();
        v.flags = static_cast<int32_t>(MDB_CLASS_MUSIC) | extraFlags;
        v.title = v.fileName = name;
        const long long id = up.cat().addItem(v);
        up.cat().dir().write("media/upload/" + name, "bytes");
        fakeclock::setUptime(startUptime);
        EXPECT_EQ(QRV_MDB_AddUploadNote(id), 0);
        return id;
    }
    // Runs the check at the given uptime; returns its result and what it printed.
    std::pair<int32_t, std::string> checkAt(long uptime) {
        fakeclock::setUptime(uptime);
        testing::internal::CaptureStdout();
        const int32_t result = QRV_MDB_AutoDestroyObject();
        return {result, testing::internal::GetCapturedStdout()};
    }
    bool intact(long long id, const std::string &name) {
        return up.hasRow(id) && fileExists(up.uploadDir() + "/" + name) && QRV_MDB_FindUploadNote(id) == 0;
    }
    bool gone(long long id, const std::string &name) {
        return !up.hasRow(id) && !fileExists(up.uploadDir() + "/" + name) && QRV_MDB_FindUploadNote(id) == -1;
    }

    fakeclock::Scope clock;
    UploadCatalogue up;
};

TEST_F(AutoDestroyTest, DoesNothingWithoutNotesAndDoesNotReadTheClock) {
    EXPECT_EQ(checkAt(100000).first, 0);
    EXPECT_EQ(fakeclock::sysinfoCalls(), 0);
}

TEST_F(AutoDestroyTest, DestroysAWaitingObjectAfter35SecondsNotBefore) {
    const long long id = upload("late.mp3", 1000);
    const struct {
        long uptime;
        bool destroyed;
    } steps[] = {{1000, false}, {1034, false}, {1035, true}};
    for (const auto &s : steps) {
        const auto [result, out] = checkAt(s.uptime);
        EXPECT_EQ(result, 0) << s.uptime;
        if (s.destroyed) {
            EXPECT_EQ(out, "35 second time out, auto destory item:" + std::to_string(id) + "\n") << s.uptime;
            EXPECT_TRUE(gone(id, "late.mp3")) << s.uptime;
        } else {
            EXPECT_EQ(out, "") << s.uptime;
            EXPECT_TRUE(intact(id, "late.mp3")) << s.uptime;
        }
    }
    EXPECT_EQ(g_pstUploadList, nullptr);
}

TEST_F(AutoDestroyTest, DestroysOneObjectPerCallOldestFirst) {
    const long long older = upload("older.mp3", 100);
    const long long newer = upload("newer.mp3", 110);
    const long long young = upload("young.mp3", 190);
    checkAt(200);
    EXPECT_TRUE(gone(older, "older.mp3"));
    EXPECT_TRUE(intact(newer, "newer.mp3"));
    checkAt(200);
    EXPECT_TRUE(gone(newer, "newer.mp3"));
    EXPECT_EQ(checkAt(200).second, "");
    EXPECT_TRUE(intact(young, "young.mp3"));
}

TEST_F(AutoDestroyTest, NeverTimesOutADisabledNote) {
    const long long disabled = upload("kept.mp3", 100);
    ASSERT_EQ(QRV_MDB_DisableUploadNote(disabled), 0);
    const long long waiting = upload("waiting.mp3", 100);
    checkAt(1000);
    EXPECT_TRUE(intact(disabled, "kept.mp3"));
    EXPECT_TRUE(gone(waiting, "waiting.mp3"));
    EXPECT_EQ(checkAt(100000).first, 0);
    EXPECT_TRUE(intact(disabled, "kept.mp3"));
}

TEST_F(AutoDestroyTest, KeepsOfferingARestrictedObjectAndNeverReachesThoseBehindIt) {
    const long long locked = upload("locked.mp3", 100, static_cast<int32_t>(MDB_FLAGS_RESTRICTED));
    const long long behind = upload("behind.mp3", 100);
    for (int call = 0; call < 3; ++call) {
        const auto [result, out] = checkAt(500);
        EXPECT_EQ(result, static_cast<int32_t>(MDB_UPNP_ERR_RESTRICTED_OBJECT)) << call;
        EXPECT_EQ(out, "35 second time out, auto destory item:" + std::to_string(locked) + "\n") << call;
    }
    EXPECT_TRUE(intact(locked, "locked.mp3"));
    EXPECT_TRUE(intact(behind, "behind.mp3"));
}

TEST_F(AutoDestroyTest, ReadsTheAgeAsASigned32BitDifference) {
    const struct {
        const char *what;
        long start;
        long now;
        bool destroyed;
    } cases[] = {
        {"note from the future", 5000, 4000, false},
        {"uptime wrapped past 32 bits", 0xFFFFFFF0L, 0x100000013L, true},
        {"wrapped, 34 seconds", 0xFFFFFFF0L, 0x100000012L, false},
    };
    for (const auto &c : cases) {
        const std::string name = std::string(c.what) + ".mp3";
        const long long id = upload(name, c.start);
        checkAt(c.now);
        EXPECT_EQ(gone(id, name), c.destroyed) << c.what;
        QRV_MDB_FreeUploadList();
    }
}

}  // namespace
