// DestroyObject on a real catalogue with real files: what it removes, what it refuses, what it
// prints, and how it waits out a failed deletion.
#include "upload_fixture.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

using namespace mdbtest;

// Destroys id, returning its result and what it printed.
std::pair<uint32_t, std::string> destroy(long long id) {
    testing::internal::CaptureStdout();
    const uint32_t result = QRV_MDB_DestroyObject(id);
    return {result, testing::internal::GetCapturedStdout()};
}

TEST(DestroyObject, RemovesWhatItMayAndSaysWhenNoFileIsKnown) {
    const std::string notFound = "the file not find!\n";
    ASSERT_EQ(g_pstMdbCtx, nullptr);
    fake::reset();
    EXPECT_EQ(destroy(1), std::make_pair(0u, notFound)) << "no catalogue";
    EXPECT_TRUE(fake::sleeps().empty()) << "a missing connection is not a failed deletion";

    UploadCatalogue up;
    const long long bystander = up.addUpload("bystander.mp3");
    // Each case makes its object (it gets a note) and names the file or directory to watch.
    const struct { const char *what; std::function<long long(std::string &watched)> make; uint32_t result;
                   std::string out; bool rowGoes, watchedStays; } cases[] = {
        {"upload", [&](std::string &w) { w = up.uploadDir + "/a.mp3"; return up.addUpload("a.mp3"); },
         0u, "", true, false},
        {"restricted", [&](std::string &w) {
             w = up.uploadDir + "/r.mp3";
             return up.addUpload("r.mp3", MDB_FLAGS_RESTRICTED);
         }, MDB_UPNP_ERR_RESTRICTED_OBJECT, "", false, true},
        {"file already gone", [&](std::string &) {
             const long long id = up.addUpload("gone.mp3");
             unlink((up.uploadDir + "/gone.mp3").c_str());
             return id;
         }, 0u, "", true, false},
        {"folder with a child", [&](std::string &w) {
             const long long folder = up.cat.addFolder(up.uploadId, "album");
             up.addRow(folder, "inside.mp3", mp3Flags());
             w = up.cat.dir().write("media/upload/album/inside.mp3", "x");
             return folder;
         }, 0u, "", true, true},
        {"unknown id", [&](std::string &) { return 999999LL; }, 0u, notFound, false, false},
        {"root folder", [&](std::string &w) {
             w = up.cat.dir().mkdir("root2");
             return up.cat.addFolder(0, w);
         }, 0u, notFound, true, true},
    };
    for (const auto &c : cases) {
        fake::reset();
        std::string watched;
        const long long id = c.make(watched);
        if (QRV_MDB_FindUploadNote(id) != 0) {
            QRV_MDB_AddUploadNote(id);
        }
        const long long rowsBefore = up.rowCount();
        EXPECT_EQ(destroy(id), std::make_pair(c.result, c.out)) << c.what;
        EXPECT_EQ(up.rowCount(), rowsBefore - (c.rowGoes ? 1 : 0)) << c.what << ": only the one row goes";
        EXPECT_EQ(up.hasRow(id), c.result == MDB_UPNP_ERR_RESTRICTED_OBJECT) << c.what;
        EXPECT_EQ(QRV_MDB_FindUploadNote(id), c.result == 0 ? -1 : 0) << c.what;
        EXPECT_TRUE(watched.empty() || fileExists(watched) == c.watchedStays) << c.what;
        EXPECT_TRUE(fake::sleeps().empty()) << c.what;
    }
    EXPECT_TRUE(up.hasRow(bystander) && fileExists(up.uploadDir + "/bystander.mp3"));
    EXPECT_EQ(QRV_MDB_FindUploadNote(bystander), 0);
}

TEST(DestroyObject, RetriesAFailedDeletionOnceAfterTwoSeconds) {
    UploadCatalogue up;
    for (const bool secondSucceeds : {true, false}) {
        fake::reset();
        const std::string name = secondSucceeds ? "second.mp3" : "never.mp3";
        const long long id = up.addUpload(name);
        up.cat.exec("CREATE TRIGGER refuse_delete BEFORE DELETE ON ITEM BEGIN SELECT RAISE(ABORT, 'no'); END");
        if (secondSucceeds) {
            fake::onSleep([&up] { up.cat.exec("DROP TRIGGER refuse_delete"); });
        }
        EXPECT_EQ(destroy(id).first, 0u) << name;
        if (!secondSucceeds) {
            up.cat.exec("DROP TRIGGER refuse_delete");
        }
        EXPECT_EQ(fake::sleeps(), std::vector<unsigned>{2}) << name;
        EXPECT_EQ(up.hasRow(id), !secondSucceeds) << name;
        EXPECT_EQ(QRV_MDB_FindUploadNote(id), -1) << name << ": the note goes in any case";
        EXPECT_FALSE(fileExists(up.uploadDir + "/" + name)) << name;
    }
}

}  // namespace
