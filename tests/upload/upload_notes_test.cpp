// The upload note list: creation order with the uptime stamp, matching by the whole 64-bit id,
// the two states, removal of the first match only, allocation failure, and dropping all notes
// with their rows.
#include "catalogue.h"
#include "upload_fixture.h"

#include <mdb_platform.h>

#include "store/store_alloc.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The list as "id/state/start " texts, head first.
std::string Notes() {
    std::string out;
    for (MdbUploadNote *n = g_pstUploadList; n != nullptr && out.size() < 10000; n = n->pstNext) {
        out += std::to_string(n->llObjectId) + "/" + std::to_string(n->ulState) + "/" + std::to_string(n->ulStartTime);
        out += " ";
    }
    return out;
}

class UploadNotes : public ::testing::Test {
protected:
    void SetUp() override {
        mdbtest::fake::reset();
        ASSERT_EQ(g_pstUploadList, nullptr) << "a previous test left notes";
    }
    void TearDown() override {
        MdbSetAllocator(nullptr);
        QRV_MDB_FreeUploadList();
        mdbtest::fake::reset();
    }
};

TEST_F(UploadNotes, AddFindDisableAndDelete) {
    EXPECT_EQ(QRV_MDB_FindUploadNote(1), -1);
    EXPECT_EQ(QRV_MDB_DisableUploadNote(1), -1);
    const long long high = (1LL << 32) + 3;  // matches neither 3 nor 1 << 32
    const std::string h = std::to_string(high);
    long uptime = 100;
    for (long long id : {5LL, 3LL, high, 9LL, 3LL}) {
        mdbtest::fake::setUptime(uptime++);
        EXPECT_EQ(QRV_MDB_AddUploadNote(id), 0);
    }
    EXPECT_EQ(QRV_MDB_DisableUploadNote(3), 0);
    EXPECT_EQ(QRV_MDB_DisableUploadNote(1LL << 32), -1);
    EXPECT_EQ(QRV_MDB_FindUploadNote(3), 0) << "a disabled note is still found";
    EXPECT_EQ(QRV_MDB_FindUploadNote(-(1LL << 32) + 3), -1);
    MdbSetAllocator([](size_t) -> void * { return nullptr; });
    EXPECT_EQ(QRV_MDB_AddUploadNote(2), -1);
    MdbSetAllocator(nullptr);
    EXPECT_EQ(Notes(), "5/1/100 3/0/101 " + h + "/1/102 9/1/103 3/1/104 ") << "first match disabled, no 2";

    // Each delete removes the first match only; the successor of a removed head becomes the head.
    for (long long id : {3LL, 5LL, 1LL << 32, 7LL, 9LL}) {
        EXPECT_EQ(QRV_MDB_DelUploadNote(id), 0);
    }
    EXPECT_EQ(Notes(), h + "/1/102 3/1/104 ");
    EXPECT_EQ(QRV_MDB_DelUploadNote(3) + QRV_MDB_DelUploadNote(high), 0);
    EXPECT_EQ(g_pstUploadList, nullptr);
}

TEST_F(UploadNotes, FreeListDeletesTheRowsOfNotesInBothStates) {
    EXPECT_EQ(QRV_MDB_FreeUploadList(), 0) << "an empty list without a catalogue";
    mdbtest::Catalogue catalogue;
    long long folder = catalogue.addFolder(0, "/mnt/usb1_1"), waiting = catalogue.addFolder(folder, "a.mp3");
    long long disabled = catalogue.addFolder(folder, "b.mp3"), kept = catalogue.addFolder(folder, "c.mp3");
    for (long long id : {waiting, disabled, 424242LL}) {  // the last note has no row
        QRV_MDB_AddUploadNote(id);
    }
    QRV_MDB_DisableUploadNote(disabled);
    EXPECT_EQ(QRV_MDB_FreeUploadList(), 0);
    EXPECT_EQ(g_pstUploadList, nullptr);
    EXPECT_EQ(catalogue.scalar("select group_concat(id) from (select id from ITEM order by id)"),
              std::to_string(folder) + "," + std::to_string(kept));
}

}  // namespace
