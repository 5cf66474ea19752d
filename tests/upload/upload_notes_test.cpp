// The upload note list: order, matching by the whole 64-bit id, the two states, removal of the
// first match only, the uptime stamp, allocation failure, and dropping all notes with their rows.
#include "catalogue.h"

#include <mdb_platform.h>

#include "store/store_alloc.h"

#include <gtest/gtest.h>

#include <sys/sysinfo.h>

#include <string>
#include <vector>

namespace {

struct NoteView {
    long long id;
    uint32_t state;
    bool operator==(const NoteView &o) const { return id == o.id && state == o.state; }
};
std::ostream &operator<<(std::ostream &os, const NoteView &n) { return os << n.id << "/" << n.state; }

std::vector<NoteView> Notes() {
    std::vector<NoteView> out;
    int guard = 0;
    for (MdbUploadNote *n = g_pstUploadList; n != nullptr && guard < 1000; n = n->pstNext, ++guard) {
        out.push_back({n->llObjectId, n->ulState});
    }
    return out;
}

class UploadNotes : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(g_pstUploadList, nullptr) << "a previous test left notes"; }
    void TearDown() override {
        MdbSetAllocator(nullptr);
        sqlite3 *saved = g_pstMdbCtx;
        g_pstMdbCtx = nullptr;
        QRV_MDB_FreeUploadList();
        g_pstMdbCtx = saved;
    }
};

TEST_F(UploadNotes, NotesAreKeptInCreationOrder) {
    for (long long id : {5LL, 3LL, 9LL}) {
        EXPECT_EQ(QRV_MDB_AddUploadNote(id), 0);
    }
    EXPECT_EQ(Notes(), (std::vector<NoteView>{{5, 1}, {3, 1}, {9, 1}}));
}

TEST_F(UploadNotes, FindAndDisable) {
    QRV_MDB_AddUploadNote(5);
    QRV_MDB_AddUploadNote(6);
    EXPECT_EQ(QRV_MDB_FindUploadNote(6), 0);
    EXPECT_EQ(QRV_MDB_FindUploadNote(7), -1);
    EXPECT_EQ(QRV_MDB_DisableUploadNote(6), 0);
    EXPECT_EQ(QRV_MDB_FindUploadNote(6), 0) << "a disabled note is still found";
    EXPECT_EQ(QRV_MDB_DisableUploadNote(7), -1);
    EXPECT_EQ(Notes(), (std::vector<NoteView>{{5, 1}, {6, 0}}));
}

TEST_F(UploadNotes, EmptyListAnswers) {
    EXPECT_EQ(QRV_MDB_FindUploadNote(1), -1);
    EXPECT_EQ(QRV_MDB_DisableUploadNote(1), -1);
    EXPECT_EQ(QRV_MDB_DelUploadNote(1), 0);
    EXPECT_EQ(g_pstUploadList, nullptr);
}

TEST_F(UploadNotes, IdsMatchOnAll64Bits) {
    const long long high = (1LL << 32) + 7;
    QRV_MDB_AddUploadNote(high);
    struct Case {
        const char *what;
        long long id;
        int32_t expected;
    };
    const Case cases[] = {
        {"same id", high, 0},
        {"same lower 32 bits", 7, -1},
        {"same upper 32 bits", 1LL << 32, -1},
        {"negative with the same low word", -(1LL << 32) + 7, -1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(QRV_MDB_FindUploadNote(c.id), c.expected);
        EXPECT_EQ(QRV_MDB_DisableUploadNote(c.id), c.expected);
    }
    QRV_MDB_DelUploadNote(7);
    EXPECT_EQ(Notes(), (std::vector<NoteView>{{high, 0}})) << "deleting the low word alone removed the note";
}

TEST_F(UploadNotes, DeleteRemovesTheFirstMatchOnly) {
    struct Case {
        const char *what;
        std::vector<long long> ids;
        long long del;
        std::vector<NoteView> expected;
    };
    const Case cases[] = {
        {"head", {1, 2, 3}, 1, {{2, 1}, {3, 1}}},
        {"middle", {1, 2, 3}, 2, {{1, 1}, {3, 1}}},
        {"tail", {1, 2, 3}, 3, {{1, 1}, {2, 1}}},
        {"unknown id", {1, 2}, 9, {{1, 1}, {2, 1}}},
        {"two notes for one id", {4, 1, 4}, 4, {{1, 1}, {4, 1}}},
        {"only note", {8}, 8, {}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        for (long long id : c.ids) {
            ASSERT_EQ(QRV_MDB_AddUploadNote(id), 0);
        }
        EXPECT_EQ(QRV_MDB_DelUploadNote(c.del), 0);
        EXPECT_EQ(Notes(), c.expected);
        QRV_MDB_FreeUploadList();
    }
}

TEST_F(UploadNotes, DuplicateIdsDisableTheFirst) {
    QRV_MDB_AddUploadNote(4);
    QRV_MDB_AddUploadNote(4);
    EXPECT_EQ(QRV_MDB_DisableUploadNote(4), 0);
    EXPECT_EQ(Notes(), (std::vector<NoteView>{{4, 0}, {4, 1}}));
}

TEST_F(UploadNotes, StartTimeIsTheUptime) {
    struct sysinfo before {};
    struct sysinfo after {};
    sysinfo(&before);
    ASSERT_EQ(QRV_MDB_AddUploadNote(11), 0);
    sysinfo(&after);
    ASSERT_NE(g_pstUploadList, nullptr);
    EXPECT_GE(g_pstUploadList->ulStartTime, static_cast<uint32_t>(before.uptime));
    EXPECT_LE(g_pstUploadList->ulStartTime, static_cast<uint32_t>(after.uptime));
    EXPECT_EQ(g_pstUploadList->pstNext, nullptr);
}

TEST_F(UploadNotes, AllocationFailureLeavesTheListUnchanged) {
    QRV_MDB_AddUploadNote(1);
    MdbSetAllocator([](size_t) -> void * { return nullptr; });
    EXPECT_EQ(QRV_MDB_AddUploadNote(2), -1);
    MdbSetAllocator(nullptr);
    EXPECT_EQ(Notes(), (std::vector<NoteView>{{1, 1}}));
}

TEST_F(UploadNotes, FreeListDeletesEveryNotesRow) {
    mdbtest::Catalogue catalogue;
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

TEST_F(UploadNotes, FreeingAnEmptyListRunsNoSql) {
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
    sqlite3_trace_v2(catalogue.db(), 0, nullptr, nullptr);
    EXPECT_EQ(statements, 0);
}

TEST_F(UploadNotes, FreeListWithoutConnectionStillFreesTheNotes) {
    QRV_MDB_AddUploadNote(1);
    QRV_MDB_AddUploadNote(2);
    sqlite3 *saved = g_pstMdbCtx;
    g_pstMdbCtx = nullptr;
    EXPECT_EQ(QRV_MDB_FreeUploadList(), 0);
    g_pstMdbCtx = saved;
    EXPECT_EQ(g_pstUploadList, nullptr);
}

}  // namespace
