// The whole upload as a media server drives it on a real catalogue with a real root folder:
// CreateObject, Browse while the file is expected, the file arriving, completion, Browse of the
// finished item; the upload that never arrives, destroyed by the time-out; and the completion and
// time-out checks on their own, with the uptime under the test's control.
#include "action.h"
#include "upload_fixture.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <tuple>

namespace {

using namespace mdbtest;

// What Browse (metadata of the object below the music folders) shows: status, then the text and
// importUri ("<none>" without one) of res, or the number of objects when it is not one.
using Shown = std::tuple<uint32_t, std::string, std::string>;

Shown browse(long long id) {
    Action action;
    testing::internal::CaptureStdout();
    const uint32_t status = QRV_MDB_Browse(("0.1.264|" + std::to_string(id)).c_str(), 0, action.ctx());
    testing::internal::GetCapturedStdout();
    const auto objects = action.objects();
    if (objects.size() != 1) {
        return {status, std::to_string(objects.size()) + " objects", ""};
    }
    EXPECT_EQ(attr(objects[0], g_astDlnaCols[0].pcColName), "0.1.264|" + std::to_string(id));
    return {status, childText(objects[0], "res"), attr(children(objects[0], "res").at(0), "importUri")};
}

std::string importUri(long long id) { return "http://192.0.2.7:8200/web/upload/" + std::to_string(id) + ".mp3"; }

// A music upload as a control point asks for it: its id, after checking the importUri answered.
long long createMusic(UploadCatalogue &up, const std::string &title) {
    ItemDescription d;
    d.parentId = "0.1.264|" + std::to_string(up.uploadId);
    d.title = title;
    d.protocolInfo = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000";
    NewObjectRequest request(d.text(), 2, *d.parentId);
    EXPECT_EQ(request.parse(), 0u);
    EXPECT_EQ(request.create(), 0u);
    EXPECT_EQ(attr(request->pstRes, "importUri"), importUri(request.createdId()));
    return request.createdId();
}

// The path the file server writes an upload to, from the library's lookup.
std::string pathOf(long long id) {
    char *path = nullptr;
    EXPECT_EQ(QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr), 0);
    const std::string out = path != nullptr ? path : "";
    free(path);
    return out;
}

void setSize(UploadCatalogue &up, long long id, long long size) {
    up.cat.exec("update ITEM set size=" + std::to_string(size) + " where id=" + std::to_string(id));
}

// Runs the time-out check at the given uptime; its result and what it printed.
std::pair<int32_t, std::string> checkAt(long uptime) {
    fake::setUptime(uptime);
    testing::internal::CaptureStdout();
    const int32_t result = QRV_MDB_AutoDestroyObject();
    return {result, testing::internal::GetCapturedStdout()};
}

std::pair<int32_t, std::string> destroyed(long long id, int32_t result = 0) {
    return {result, "35 second time out, auto destory item:" + std::to_string(id) + "\n"};
}
const std::pair<int32_t, std::string> kNothing{0, ""};

// Row, file and note of an upload made with UploadCatalogue::addUpload.
bool intact(UploadCatalogue &up, long long id) {
    return up.hasRow(id) && fileExists(up.uploadDir + "/" + up.column(id, "fileName")) &&
           QRV_MDB_FindUploadNote(id) == 0;
}

TEST(UploadStory, TheFileArrivesAndTheItemBecomesAnOrdinaryItem) {
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(1), 0) << "no catalogue";
    UploadCatalogue up;
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(555555), 0) << "no row";
    const long long id = createMusic(up, "Summer");
    ASSERT_GT(id, 0);
    EXPECT_EQ(browse(id), Shown(MDB_OK, "", importUri(id)));
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(id), 0);

    // The file server receives the bytes at the importUri and stores them where the lookup says.
    const std::string path = pathOf(id);
    EXPECT_EQ(path, up.uploadDir + "/Summer.mp3");
    const std::string bytes(70000, 'm');
    std::ofstream(path, std::ios::binary) << bytes;
    setSize(up, id, static_cast<long long>(bytes.size()));
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(id), 1);
    setSize(up, id, 1LL << 32);
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(id), 1) << "a size with only the upper 32 bits set";
    setSize(up, id, static_cast<long long>(bytes.size()));
    EXPECT_EQ(QRV_MDB_DelUploadNote(id), 0);
    EXPECT_EQ(browse(id), Shown(MDB_OK, "http://192.0.2.7:8200/web/mdb/" + std::to_string(id) + ".mp3", "<none>"));

    EXPECT_EQ(checkAt(fake::kStartUptime + 100), kNothing);
    EXPECT_EQ(readFile(path), bytes);
    EXPECT_TRUE(up.hasRow(id));
}

TEST(UploadStory, AnUploadThatNeverCompletesIsDestroyedAt35SecondsNot34) {
    UploadCatalogue up;
    fake::setUptime(7000);
    const long long id = createMusic(up, "Winter");
    const std::string path = pathOf(id);
    std::ofstream(path, std::ios::binary) << "partial";

    EXPECT_EQ(checkAt(7034), kNothing);
    EXPECT_TRUE(up.hasRow(id) && fileExists(path));
    EXPECT_EQ(browse(id), Shown(MDB_OK, "", importUri(id)));

    EXPECT_EQ(checkAt(7035), destroyed(id));
    EXPECT_FALSE(up.hasRow(id) || fileExists(path) || QRV_MDB_FindUploadNote(id) == 0);
    EXPECT_EQ(browse(id), Shown(MDB_ERR_NOT_FOUND, "0 objects", ""));
}

TEST(AutoDestroyObject, TakesTheAgeAsASigned32BitDifference) {
    UploadCatalogue up;
    EXPECT_EQ(checkAt(100000), kNothing) << "empty list";
    const struct { const char *what; long start, now; bool destroyed; } cases[] = {
        {"note from the future", 5000, 4000, false},
        {"uptime wrapped past 32 bits, 35 seconds", 0xFFFFFFF0L, 0x100000013L, true},
        {"uptime wrapped past 32 bits, 34 seconds", 0xFFFFFFF0L, 0x100000012L, false},
    };
    for (const auto &c : cases) {
        fake::setUptime(c.start);
        const long long id = up.addUpload(std::string(c.what) + ".mp3");
        const std::string file = up.uploadDir + "/" + c.what + ".mp3";
        EXPECT_EQ(checkAt(c.now), c.destroyed ? destroyed(id) : kNothing) << c.what;
        EXPECT_EQ(intact(up, id), !c.destroyed) << c.what;
        EXPECT_FALSE(c.destroyed && (up.hasRow(id) || fileExists(file))) << c.what;
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
    const auto restricted = destroyed(locked, static_cast<int32_t>(MDB_UPNP_ERR_RESTRICTED_OBJECT));
    EXPECT_EQ(checkAt(200), destroyed(older));
    EXPECT_TRUE(intact(up, newer));
    EXPECT_EQ(checkAt(200), destroyed(newer));
    EXPECT_EQ(checkAt(200), restricted);
    EXPECT_EQ(checkAt(200), restricted);
    EXPECT_TRUE(intact(up, locked) && intact(up, behind));
    QRV_MDB_DelUploadNote(locked);
    EXPECT_EQ(checkAt(200), destroyed(behind));
    EXPECT_EQ(checkAt(200), kNothing);
    EXPECT_TRUE(intact(up, young));
    EXPECT_EQ(checkAt(100000), destroyed(young));
    EXPECT_EQ(checkAt(100000), kNothing);
    EXPECT_TRUE(intact(up, disabled));
}

}  // namespace
