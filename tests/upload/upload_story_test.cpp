// The life of an uploaded object on a real catalogue with a real root folder: completion; the
// time-out, which destroys an upload that never arrives after 35 seconds of uptime read as a
// signed 32-bit difference, one object per call; the note list it works on; and DestroyObject:
// what it removes, what it refuses, what it prints, and its retry.
#include "upload_fixture.h"

#include <mdb_platform.h>

#include "store/store_alloc.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>

namespace {

using namespace mdbtest;

// Runs the time-out check at the given uptime; its result and what it printed.
std::pair<int32_t, std::string> checkAt(long uptime) {
    g_fakes.uptime = uptime;
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

// An upload is complete once its row has a size, all 64 bits of it counting. (The whole story, the
// file arriving at its importUri, is told end to end by the media server's upload test.)
TEST(UploadComplete, ReadsTheWholeSizeOfTheRow) {
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(1), 0) << "no catalogue";
    UploadCatalogue up;
    const long long id = up.addUpload("summer.mp3");
    for (const auto &[size, complete] : {std::pair{0LL, 0}, {1LL << 32, 1}, {70000LL, 1}}) {
        up.cat.exec("update ITEM set size=" + std::to_string(size) + " where id=" + std::to_string(id));
        EXPECT_EQ(QRV_MDB_CheckUploadComplete(id), complete) << size;
    }
    EXPECT_EQ(QRV_MDB_CheckUploadComplete(555555), 0) << "no row";
}

// An upload that never completes is destroyed (row, file and note) at 35 seconds, not 34; the age
// is a signed 32-bit difference: a note from the future is young, and an uptime wrapping past 32
// bits still counts 34 and 35 seconds right.
TEST(AutoDestroyObject, DestroysAt35SecondsTakingTheAgeAsASigned32BitDifference) {
    UploadCatalogue up;
    EXPECT_EQ(checkAt(100000), kNothing) << "empty list";
    const struct { const char *what; long start, now; bool destroyed; } cases[] = {
        {"34", 7000, 7034, false}, {"35", 7000, 7035, true}, {"future", 5000, 4000, false},
        {"wrapped 35", 0xFFFFFFF0L, 0x100000013L, true}, {"wrapped 34", 0xFFFFFFF0L, 0x100000012L, false},
    };
    for (const auto &c : cases) {
        g_fakes.uptime = c.start;
        const long long id = up.addUpload(std::string(c.what) + ".mp3");
        EXPECT_EQ(checkAt(c.now), c.destroyed ? destroyed(id) : kNothing) << c.what;
        EXPECT_EQ(intact(up, id), !c.destroyed) << c.what;
        EXPECT_FALSE(c.destroyed && (up.hasRow(id) || fileExists(up.uploadDir + "/" + c.what + ".mp3"))) << c.what;
        QRV_MDB_FreeUploadList();
    }
}

// One object per call, nearest the head first; disabled notes are passed over, a restricted
// object is offered again at every call and blocks the expired notes behind it.
TEST(AutoDestroyObject, DestroysOneObjectPerCallInListOrder) {
    UploadCatalogue up;
    g_fakes.uptime = 100;
    const long long disabled = up.addUpload("disabled.mp3"), older = up.addUpload("older.mp3");
    ASSERT_EQ(QRV_MDB_DisableUploadNote(disabled), 0);
    g_fakes.uptime = 110;
    const long long newer = up.addUpload("newer.mp3");
    g_fakes.uptime = 190;
    const long long young = up.addUpload("young.mp3");
    g_fakes.uptime = 100;
    const long long locked = up.addUpload("locked.mp3", MDB_FLAGS_RESTRICTED), behind = up.addUpload("behind.mp3");
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
    EXPECT_EQ(checkAt(100000), destroyed(young));
    EXPECT_EQ(checkAt(100000), kNothing);
    EXPECT_TRUE(intact(up, disabled));
}

// The note list matches the whole 64-bit id; disabling and deleting take the first match only; a
// failed allocation adds no note; freeing the list deletes the rows of notes in both states.
TEST(UploadNotes, MatchWholeIdsAndFreeingDeletesTheirRows) {
    UploadCatalogue up;
    const long long high = (1LL << 32) + 3;  // matches neither 3 nor 1 << 32
    for (long long id : {5LL, 3LL, high, 3LL}) EXPECT_EQ(QRV_MDB_AddUploadNote(id), 0);
    EXPECT_EQ(QRV_MDB_DisableUploadNote(1LL << 32) + QRV_MDB_FindUploadNote(-(1LL << 32) + 3), -2);
    EXPECT_EQ(QRV_MDB_DisableUploadNote(3) + QRV_MDB_FindUploadNote(3), 0) << "a disabled note is still found";
    MdbSetAllocator([](size_t) -> void * { return nullptr; });
    EXPECT_EQ(QRV_MDB_AddUploadNote(2), -1);
    MdbSetAllocator(nullptr);
    std::string notes;
    for (MdbUploadNote *n = g_pstUploadList; n != nullptr; n = n->pstNext) {
        notes += std::to_string(n->llObjectId) + "/" + std::to_string(n->ulState) + " ";
    }
    EXPECT_EQ(notes, "5/1 3/0 " + std::to_string(high) + "/1 3/1 ") << "first match disabled, no 2";
    for (long long id : {3LL, 5LL, 1LL << 32}) EXPECT_EQ(QRV_MDB_DelUploadNote(id), 0);
    EXPECT_EQ(QRV_MDB_FindUploadNote(high) + QRV_MDB_FindUploadNote(3) + QRV_MDB_FindUploadNote(5), -1);
    QRV_MDB_FreeUploadList();
    const long long waiting = up.addUpload("a.mp3"), disabled = up.addUpload("b.mp3");
    const long long kept = up.cat.addRow(up.uploadId, "c.mp3", 11);
    QRV_MDB_DisableUploadNote(disabled);
    QRV_MDB_AddUploadNote(424242);  // a note without row
    EXPECT_EQ(QRV_MDB_FreeUploadList(), 0);
    EXPECT_TRUE(g_pstUploadList == nullptr && !up.hasRow(waiting) && !up.hasRow(disabled) && up.hasRow(kept));
}

// Destroys id: its result and what it printed.
std::pair<uint32_t, std::string> destroy(long long id) {
    testing::internal::CaptureStdout();
    const uint32_t result = QRV_MDB_DestroyObject(id);
    return {result, testing::internal::GetCapturedStdout()};
}

// Only the one row goes, with its note and file (a folder's files stay); restricted objects are
// refused with 711; an id without a file says so; a bystander upload stays whole; nothing pauses.
TEST(DestroyObject, RemovesWhatItMayAndSaysWhenNoFileIsKnown) {
    const std::string notFound = "the file not find!\n";
    g_fakes = Fakes{};
    EXPECT_EQ(destroy(1), std::make_pair(0u, notFound)) << "no catalogue";
    UploadCatalogue up;
    const long long bystander = up.addUpload("bystander.mp3"), gone = up.addUpload("gone.mp3");
    unlink((up.uploadDir + "/gone.mp3").c_str());
    const long long album = up.cat.addFolder(up.uploadId, "album");
    up.cat.addRow(album, "inside.mp3", mp3Flags());
    const std::string inside = up.cat.dir().write("media/upload/album/inside.mp3", "x"), root2 = up.cat.dir().mkdir("r2");
    const struct { const char *what; long long id; uint32_t result; std::string out, watched; bool rowGoes, stays; }
        cases[] = {
        {"upload", up.addUpload("a.mp3"), 0u, "", up.uploadDir + "/a.mp3", true, false},
        {"restricted", up.addUpload("r.mp3", 128), MDB_UPNP_ERR_RESTRICTED_OBJECT, "", up.uploadDir + "/r.mp3", false,
         true},
        {"file already gone", gone, 0u, "", "", true, false},
        {"folder with a child", album, 0u, "", inside, true, true},
        {"unknown id", 999999, 0u, notFound, "", false, false},
        {"root folder", up.cat.addFolder(0, root2), 0u, notFound, root2, true, true},
    };
    for (const auto &c : cases) {
        if (QRV_MDB_FindUploadNote(c.id) != 0) QRV_MDB_AddUploadNote(c.id);
        const long long rowsBefore = up.rowCount();
        EXPECT_EQ(destroy(c.id), std::make_pair(c.result, c.out)) << c.what;
        EXPECT_EQ(up.rowCount(), rowsBefore - (c.rowGoes ? 1 : 0)) << c.what;
        EXPECT_EQ(up.hasRow(c.id), c.result == MDB_UPNP_ERR_RESTRICTED_OBJECT) << c.what;
        EXPECT_EQ(QRV_MDB_FindUploadNote(c.id), c.result == 0 ? -1 : 0) << c.what;
        EXPECT_TRUE(c.watched.empty() || fileExists(c.watched) == c.stays) << c.what;
    }
    EXPECT_TRUE(g_fakes.sleeps.empty() && intact(up, bystander));
}

// A failed deletion of the row is tried once more after two seconds; the note and the file go in
// any case.
TEST(DestroyObject, RetriesAFailedDeletionOnceAfterTwoSeconds) {
    for (const bool secondSucceeds : {true, false}) {
        UploadCatalogue up;
        const long long id = up.addUpload("song.mp3");
        up.cat.exec("CREATE TRIGGER refuse_delete BEFORE DELETE ON ITEM BEGIN SELECT RAISE(ABORT, 'no'); END");
        g_fakes.onSleep = [&up, secondSucceeds] { if (secondSucceeds) up.cat.exec("DROP TRIGGER refuse_delete"); };
        EXPECT_EQ(destroy(id).first, 0u);
        EXPECT_EQ(g_fakes.sleeps, std::vector<unsigned>{2});
        EXPECT_EQ(up.hasRow(id), !secondSucceeds);
        EXPECT_FALSE(QRV_MDB_FindUploadNote(id) == 0 || fileExists(up.uploadDir + "/song.mp3"));
        up.cat.exec("DROP TRIGGER IF EXISTS refuse_delete");
    }
}

}  // namespace
