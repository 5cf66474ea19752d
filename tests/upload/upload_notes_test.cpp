// The upload note list: creation order, matching by the whole 64-bit id, the two states, removal
// of the first match only, the uptime stamp, allocation failure, and dropping all notes with their
// rows.
#include "catalogue.h"

#include <mdb_platform.h>

#include "store/store_alloc.h"

#include <gtest/gtest.h>

#include <sys/sysinfo.h>

#include <string>
#include <vector>

namespace {

// The list as "id/state" texts, head first.
std::vector<std::string> Notes() {
    std::vector<std::string> out;
    for (MdbUploadNote *n = g_pstUploadList; n != nullptr && out.size() < 1000; n = n->pstNext) {
        out.push_back(std::to_string(n->llObjectId) + "/" + std::to_string(n->ulState));
    }
    return out;
}

class UploadNotes : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(g_pstUploadList, nullptr) << "a previous test left notes"; }
    void TearDown() override {
        MdbSetAllocator(nullptr);
        g_pstMdbCtx = nullptr;
        QRV_MDB_FreeUploadList();
    }
};

TEST_F(UploadNotes, AddFindDisable) {
    EXPECT_EQ(QRV_MDB_FindUploadNote(1), -1);
    EXPECT_EQ(QRV_MDB_DisableUploadNote(1), -1);
    struct sysinfo before {}, after {};
    sysinfo(&before);
    for (long long id : {5LL, 3LL, 9LL, 3LL}) {
        EXPECT_EQ(QRV_MDB_AddUploadNote(id), 0);
    }
    sysinfo(&after);
    EXPECT_GE(g_pstUploadList->ulStartTime, static_cast<uint32_t>(before.uptime));
    EXPECT_LE(g_pstUploadList->ulStartTime, static_cast<uint32_t>(after.uptime));

    EXPECT_EQ(QRV_MDB_DisableUploadNote(3), 0);
    EXPECT_EQ(QRV_MDB_FindUploadNote(3), 0) << "a disabled note is still found";
    EXPECT_EQ(QRV_MDB_FindUploadNote(4), -1);
    EXPECT_EQ(Notes(), (std::vector<std::string>{"5/1", "3/0", "9/1", "3/1"})) << "first match disabled";

    MdbSetAllocator([](size_t) -> void * { return nullptr; });
    EXPECT_EQ(QRV_MDB_AddUploadNote(2), -1);
    EXPECT_EQ(Notes().size(), 4u) << "a failed allocation leaves the list unchanged";
}

TEST_F(UploadNotes, IdsMatchOnAll64Bits) {
    const long long high = (1LL << 32) + 7;
    QRV_MDB_AddUploadNote(high);
    for (long long other : {7LL, 1LL << 32, -(1LL << 32) + 7}) {
        SCOPED_TRACE(other);
        EXPECT_EQ(QRV_MDB_FindUploadNote(other), -1);
        EXPECT_EQ(QRV_MDB_DisableUploadNote(other), -1);
        EXPECT_EQ(QRV_MDB_DelUploadNote(other), 0);
    }
    EXPECT_EQ(QRV_MDB_FindUploadNote(high), 0);
    EXPECT_EQ(Notes(), std::vector<std::string>{std::to_string(high) + "/1"});
}

TEST_F(UploadNotes, DeleteRemovesTheFirstMatchOnly) {
    struct Case {
        std::vector<long long> ids;
        long long del;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {{1, 2, 3}, 1, {"2/1", "3/1"}},  // the successor becomes the head
        {{1, 2, 3}, 3, {"1/1", "2/1"}},
        {{1, 2}, 9, {"1/1", "2/1"}},
        {{4, 1, 4}, 4, {"1/1", "4/1"}},
        {{8}, 8, {}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.del);
        for (long long id : c.ids) {
            ASSERT_EQ(QRV_MDB_AddUploadNote(id), 0);
        }
        EXPECT_EQ(QRV_MDB_DelUploadNote(c.del), 0);
        EXPECT_EQ(Notes(), c.expected);
        QRV_MDB_FreeUploadList();
    }
}

TEST_F(UploadNotes, FreeListDeletesTheRowsOfNotesInBothStates) {
    mdbtest::Catalogue catalogue;
    int statements = 0;
    sqlite3_trace_v2(
        catalogue.db(), SQLITE_TRACE_STMT,
        [](unsigned, void *ctx, void *, void *) {
            ++*static_cast<int *>(ctx);
            return 0;
        },
        &statements);
    EXPECT_EQ(QRV_MDB_FreeUploadList(), 0);
    EXPECT_EQ(statements, 0) << "an empty list runs no SQL";
    sqlite3_trace_v2(catalogue.db(), 0, nullptr, nullptr);

    long long folder = catalogue.addFolder(0, "/mnt/usb1_1");
    long long waiting = catalogue.addFolder(folder, "a.mp3");
    long long disabled = catalogue.addFolder(folder, "b.mp3");
    long long kept = catalogue.addFolder(folder, "c.mp3");
    QRV_MDB_AddUploadNote(waiting);
    QRV_MDB_AddUploadNote(disabled);
    QRV_MDB_AddUploadNote(424242);  // a note without a row
    QRV_MDB_DisableUploadNote(disabled);
    EXPECT_EQ(QRV_MDB_FreeUploadList(), 0);
    EXPECT_EQ(g_pstUploadList, nullptr);
    EXPECT_EQ(catalogue.scalar("select group_concat(id) from (select id from ITEM order by id)"),
              std::to_string(folder) + "," + std::to_string(kept));
}

}  // namespace
