// Upload completion and the 35-second time-out, with the uptime under the test's control.
#include "fakes.h"
#include "upload_catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using mdbtest::fileExists;
using mdbtest::UploadCatalogue;
namespace fake = mdbtest::fake;

TEST(CheckUploadComplete, AnswersFromTheRowsSize) {
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(1), 0) << "no catalogue";
    UploadCatalogue up;
    const struct {
        const char *what;
        long long size;
        int32_t result;
    } cases[] = {{"size 0", 0, 0}, {"size 1", 1, 1}, {"only the upper 32 bits set", 1LL << 32, 1}};
    for (const auto &c : cases) {
        const long long id = up.addUpload(c.what);
        up.cat().exec("update ITEM set size=" + std::to_string(c.size) + " where id=" + std::to_string(id));
        EXPECT_EQ(QRV_MDB_CheckUploadComplete(id), c.result) << c.what;
    }
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(555555), 0) << "no row";
}

// Runs the time-out check at the given uptime; its result and what it printed.
std::pair<int32_t, std::string> checkAt(long uptime) {
    fake::setUptime(uptime);
    testing::internal::CaptureStdout();
    const int32_t result = QRV_MDB_AutoDestroyObject();
    return {result, testing::internal::GetCapturedStdout()};
}

std::string timedOut(long long id) { return "35 second time out, auto destory item:" + std::to_string(id) + "\n"; }

// Row, file and note of an upload made with UploadCatalogue::addUpload.
bool intact(UploadCatalogue &up, long long id) {
    return up.hasRow(id) && fileExists(up.uploadDir() + "/" + up.column(id, "fileName")) &&
           QRV_MDB_FindUploadNote(id) == 0;
}

// (The 34 and 35 second cases are in the upload story.)
TEST(AutoDestroyObject, TakesTheAgeAsASigned32BitDifference) {
    UploadCatalogue up;
    EXPECT_EQ(checkAt(100000), std::make_pair(0, std::string()));
    EXPECT_EQ(fake::sysinfoCalls(), 0) << "an empty list does not read the uptime";
    const struct {
        const char *what;
        long start, now;
        bool destroyed;
    } cases[] = {
        {"note from the future", 5000, 4000, false},
        {"uptime wrapped past 32 bits, 35 seconds", 0xFFFFFFF0L, 0x100000013L, true},
        {"uptime wrapped past 32 bits, 34 seconds", 0xFFFFFFF0L, 0x100000012L, false},
    };
    for (const auto &c : cases) {
        fake::setUptime(c.start);
        const long long id = up.addUpload(std::string(c.what) + ".mp3");
        const std::string file = up.uploadDir() + "/" + c.what + ".mp3";
        EXPECT_EQ(checkAt(c.now), std::make_pair(0, c.destroyed ? timedOut(id) : std::string())) << c.what;
        if (c.destroyed) {
            EXPECT_FALSE(up.hasRow(id) || fileExists(file) || QRV_MDB_FindUploadNote(id) == 0) << c.what;
        } else {
            EXPECT_TRUE(intact(up, id)) << c.what;
        }
        QRV_MDB_FreeUploadList();
    }
}

// One object per call, nearest the head first; disabled notes are passed over, a restricted
// object is offered again at every call and blocks the expired notes behind it.
TEST(AutoDestroyObject, DestroysOneObjectPerCallInListOrder) {
    UploadCatalogue up;
    fake::setUptime(100);
    const long long disabled = up.addUpload("disabled.mp3");
    ASSERT_EQ(QRV_MDB_DisableUploadNote(disabled), 0);
    const long long older = up.addUpload("older.mp3");
    fake::setUptime(110);
    const long long newer = up.addUpload("newer.mp3");
    fake::setUptime(190);
    const long long young = up.addUpload("young.mp3");
    fake::setUptime(100);
    const long long locked = up.addUpload("locked.mp3", MDB_FLAGS_RESTRICTED);
    const long long behind = up.addUpload("behind.mp3");
    const std::pair<int32_t, std::string> restricted{static_cast<int32_t>(MDB_UPNP_ERR_RESTRICTED_OBJECT),
                                                     timedOut(locked)};
    EXPECT_EQ(checkAt(200), std::make_pair(0, timedOut(older)));
    EXPECT_TRUE(intact(up, newer));
    EXPECT_EQ(checkAt(200), std::make_pair(0, timedOut(newer)));
    EXPECT_EQ(checkAt(200), restricted);
    EXPECT_EQ(checkAt(200), restricted);
    EXPECT_TRUE(intact(up, locked));
    EXPECT_TRUE(intact(up, behind));
    QRV_MDB_DelUploadNote(locked);
    EXPECT_EQ(checkAt(200), std::make_pair(0, timedOut(behind)));
    EXPECT_EQ(checkAt(200).second, "");
    EXPECT_TRUE(intact(up, young));
    EXPECT_EQ(checkAt(100000).second, timedOut(young));
    EXPECT_EQ(checkAt(100000).second, "");
    EXPECT_TRUE(intact(up, disabled));
}

}  // namespace
