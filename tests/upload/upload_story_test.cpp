// The whole upload, as a media server drives it on a real catalogue with a real root folder:
// CreateObject, Browse while the file is expected, the file arriving, completion, Browse of the
// finished item; and the upload that never arrives, destroyed by the time-out.
#include "action.h"
#include "fake_clock.h"
#include "upload_catalogue.h"

#include <mdb_platform.h>
#include "server/mdb_server_shim.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace {

using mdbtest::Action;
using mdbtest::attr;
using mdbtest::childText;
using mdbtest::fileExists;
using mdbtest::ItemDescription;
using mdbtest::NewObjectRequest;
using mdbtest::UploadCatalogue;
namespace fakeclock = mdbtest::fakeclock;

// What Browse (metadata of the item below the music folders) shows of an uploaded object.
struct Shown {
    uint32_t status = ~0u;
    size_t objects = 0;
    std::string id;
    std::string url;        // text of the res element
    std::string importUri;  // "<none>" without one
    std::string protocolInfo;
};

Shown browse(long long id) {
    Action action;
    Shown shown;
    shown.status = QRV_MDB_Browse(("0.1.264|" + std::to_string(id)).c_str(), 0, action.ctx());
    const auto objects = action.objects();
    shown.objects = objects.size();
    if (!objects.empty()) {
        shown.id = attr(objects[0], g_astDlnaCols[0].pcColName);
        shown.url = childText(objects[0], "res");
        const auto res = mdbtest::children(objects[0], "res");
        shown.importUri = res.empty() ? "<no res>" : attr(res[0], "importUri");
        shown.protocolInfo = res.empty() ? "<no res>" : attr(res[0], "protocolInfo");
    }
    return shown;
}

// The path the file server writes an upload to, from the library's lookup.
std::string pathOf(long long id) {
    char *path = nullptr;
    EXPECT_EQ(QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr), 0);
    std::string out = path != nullptr ? path : "";
    free(path);
    return out;
}

class UploadStoryTest : public testing::Test {
protected:
    void SetUp() override { MdbShimSetFileServerPorts(8200, 8206); }
    void TearDown() override { QRV_MDB_FreeUploadList(); }

    long long createMusic(const std::string &title) {
        ItemDescription d;
        d.parentId = "0.1.264|" + std::to_string(up.uploadId());
        d.title = title;
        d.protocolInfo = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000";
        NewObjectRequest request(d.text(), 2, *d.parentId);
        EXPECT_EQ(request.parse(), 0u);
        EXPECT_EQ(request.create(), 0u);
        const long long id = request.createdId();
        EXPECT_EQ(attr(request->pstRes, "importUri"), importUri(id));
        return id;
    }
    static std::string importUri(long long id) { return "http://192.0.2.7:8200/web/upload/" + std::to_string(id) + ".mp3"; }

    fakeclock::Scope clock;
    UploadCatalogue up;
};

TEST_F(UploadStoryTest, TheFileArrivesAndTheItemBecomesAnOrdinaryItem) {
    fakeclock::setUptime(2000);
    const long long id = createMusic("Summer");
    ASSERT_GT(id, 0);

    const Shown pending = browse(id);
    ASSERT_EQ(pending.status, MDB_OK) << QRV_MDB_StatusName(pending.status);
    ASSERT_EQ(pending.objects, 1u);
    EXPECT_EQ(pending.id, "0.1.264|" + std::to_string(id));
    EXPECT_EQ(pending.url, "");
    EXPECT_EQ(pending.importUri, importUri(id));
    EXPECT_NE(pending.protocolInfo.find("DLNA.ORG_PN=MP3"), std::string::npos) << pending.protocolInfo;
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(id), 0);

    // The file server receives the bytes at the importUri and stores them where the lookup says.
    const std::string path = pathOf(id);
    EXPECT_EQ(path, up.uploadDir() + "/Summer.mp3");
    const std::string bytes(70000, 'm');
    std::ofstream(path, std::ios::binary) << bytes;
    fakeclock::advance(20);
    up.setSize(id, static_cast<long long>(bytes.size()));
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(id), 1);
    EXPECT_EQ(QRV_MDB_DelUploadNote(id), 0);

    const Shown done = browse(id);
    ASSERT_EQ(done.objects, 1u);
    EXPECT_EQ(done.url, "http://192.0.2.7:8200/web/mdb/" + std::to_string(id) + ".mp3");
    EXPECT_EQ(done.importUri, "<none>");

    fakeclock::advance(100);
    EXPECT_EQ(QRV_MDB_AutoDestroyObject(), 0);
    EXPECT_EQ(mdbtest::readFile(path), bytes);
    EXPECT_TRUE(up.hasRow(id));
}

TEST_F(UploadStoryTest, AnUploadThatNeverCompletesIsDestroyedAfter35Seconds) {
    fakeclock::setUptime(7000);
    const long long id = createMusic("Winter");
    const std::string path = pathOf(id);
    std::ofstream(path, std::ios::binary) << "partial";

    fakeclock::setUptime(7034);
    EXPECT_EQ(QRV_MDB_AutoDestroyObject(), 0);
    EXPECT_TRUE(up.hasRow(id));
    EXPECT_EQ(browse(id).importUri, importUri(id));

    fakeclock::setUptime(7035);
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRV_MDB_AutoDestroyObject(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "35 second time out, auto destory item:" + std::to_string(id) + "\n");
    EXPECT_FALSE(up.hasRow(id));
    EXPECT_FALSE(fileExists(path));
    EXPECT_EQ(QRV_MDB_FindUploadNote(id), -1);
    testing::internal::CaptureStdout();
    const Shown after = browse(id);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(after.status, MDB_ERR_NOT_FOUND);
    EXPECT_EQ(after.objects, 0u);
}

}  // namespace
