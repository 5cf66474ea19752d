// The root list, folder flags and root re-pointing on a real catalogue; re-pointing runs against
// real directories and files in a scratch folder.
#include "store_test_util.h"

#include "catalogue.h"

#include "store/store_alloc.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using mdbtest::ItemValues;

class RootPaths : public ::testing::Test {
protected:
    void TearDown() override {
        // The library keeps the list until the next rebuild; release it so that every test ends
        // without blocks of its own.
        for (uint32_t i = 0; g_pstRootPaths != nullptr && i < g_ulRootPathNum; ++i) {
            std::free(g_pstRootPaths[i].pcTitle);
        }
        std::free(g_pstRootPaths);
        g_pstRootPaths = nullptr;
        g_ulRootPathNum = 0;
        MdbSetAllocator(nullptr);
    }
    // The list as sorted "id:title" texts ("id:NULL" for no title): SQLite chooses the row order.
    static std::vector<std::string> list() {
        std::vector<std::string> out;
        for (uint32_t i = 0; i < g_ulRootPathNum; ++i) {
            const char *title = g_pstRootPaths[i].pcTitle;
            out.push_back(std::to_string(g_pstRootPaths[i].llId) + ":" + (title ? title : "NULL"));
        }
        std::sort(out.begin(), out.end());
        return out;
    }
    static std::string entry(long long id, const std::string &title) { return std::to_string(id) + ":" + title; }
    mdbtest::Catalogue catalogue;
};

TEST_F(RootPaths, RebuildsListTheRowsWithParentZero) {
    long long usb = catalogue.addFolder(0, "/mnt/usb1_1");
    catalogue.addFolder(usb, "music");
    long long untitled = catalogue.addFolder(0, "/mnt/sd_1");
    catalogue.exec("update ITEM set title=NULL where id=" + std::to_string(untitled));
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_EQ(list(), (std::vector<std::string>{entry(usb, "/mnt/usb1_1"), entry(untitled, "NULL")}));

    // A root that another connection adds between count and fill waits for the next rebuild, which
    // replaces the list (LeakSanitizer sees the first list's titles released).
    storetest::SecondConnection other(catalogue.dbPath());
    {
        storetest::StatementHook hook(catalogue.db(), "select id,title from ITEM where parentID=0", [&] {
            EXPECT_EQ(other.exec("insert into ITEM (id, parentID, flags, title, fileName) values (90, 0, 2, 'late', 'l')"),
                      SQLITE_OK);
        });
        EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
        ASSERT_TRUE(hook.fired());
    }
    std::vector<std::string> expected = {entry(usb, "/mnt/usb1_1"), entry(untitled, "NULL")};
    EXPECT_EQ(list(), expected);
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    expected.push_back(entry(90, "late"));
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(list(), expected);

    catalogue.exec("delete from ITEM where parentID=0");
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_EQ(g_pstRootPaths, nullptr) << "no roots: no list";
    EXPECT_EQ(g_ulRootPathNum, 0u);
}

TEST_F(RootPaths, FailuresLeaveTheDocumentedList) {
    long long usb = catalogue.addFolder(0, "/mnt/usb1_1");
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_STATUS(QRV_MDB_DbGetRoots(nullptr), MDB_ERR_PARA);
    EXPECT_EQ(list(), std::vector<std::string>{entry(usb, "/mnt/usb1_1")}) << "no connection: list kept";

    MdbSetAllocator([](size_t) -> void * { return nullptr; });
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_ERR_MEM);
    EXPECT_EQ(g_pstRootPaths, nullptr);
    EXPECT_EQ(g_ulRootPathNum, 0u);
    MdbSetAllocator(nullptr);

    catalogue.exec("drop view DLNA; drop view AV_INFO; drop table ITEM");
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_ERR_DB);
    EXPECT_EQ(g_pstRootPaths, nullptr);
}

class FolderFlags : public ::testing::Test {
protected:
    std::string flagsOf(long long id) { return catalogue.scalar("select flags from ITEM where id=" + std::to_string(id)); }
    mdbtest::Catalogue catalogue;
};

TEST_F(FolderFlags, UpdateAddsBitsUnlessAlreadyPresent) {
    struct Case {
        int32_t start;
        uint32_t bits;
        int32_t expected;
        bool writes;
    };
    const Case cases[] = {
        {2, 0x800, 2050, true},
        {2050, 0x800, 2050, false},     // already there: no write
        {3, 1, 3, true},                // an overlap in bit 0 alone does not count
        {0x802, 0x1800, 0x802, false},  // any other overlap does
        {2, 0x3000, 0x3002, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::to_string(c.start) + " + " + std::to_string(c.bits));
        long long folder = catalogue.addFolder(0, "f");
        catalogue.exec("update ITEM set flags=" + std::to_string(c.start) + " where id=" + std::to_string(folder));
        storetest::StatementHook statements(catalogue.db());
        EXPECT_STATUS(QRV_MDB_UpdateFolderFlags(catalogue.db(), folder, c.bits), MDB_OK);
        EXPECT_EQ(statements.count(), c.writes ? 2 : 1);
        EXPECT_EQ(flagsOf(folder), std::to_string(c.expected));
    }
    EXPECT_STATUS(QRV_MDB_UpdateFolderFlags(catalogue.db(), 999, 0x800), MDB_OK) << "a missing row reads as 0";
}

TEST_F(FolderFlags, SetReplacesTheWholeWord) {
    long long parent = catalogue.addFolder(0, "/mnt/usb1_1");
    long long child = catalogue.addFolder(parent, "hidden", 0x800);
    EXPECT_EQ(QRV_MDB_IsFolderEmpty(parent), 0);
    EXPECT_STATUS(QRV_MDB_SetFolderFlags(catalogue.db(), child, 130), MDB_OK);
    EXPECT_EQ(flagsOf(child), "130");
    EXPECT_EQ(QRV_MDB_IsFolderEmpty(parent), 1) << "a restricted folder without bits hides";
}

enum class OnDisk { Nothing, Directory, File };

// The first component of the new root below the base ends in one or two digits, '_' and more: the
// plain folder rows with the same beginning (without those digits) and the same ending whose
// directory is gone are pointed at the new root.
TEST(ReplaceRoot, CutRulesOnRealDirectories) {
    mdbtest::Catalogue catalogue;
    struct Row {
        std::string component;  // below the scratch folder
        OnDisk onDisk;
        int32_t flags;
        bool rewritten;
    };
    const std::pair<const char *, std::vector<Row>> cases[] = {
        {"usb2_1",
         {{"usb1_1", OnDisk::Nothing, 2, true},
          {"usb3_1", OnDisk::Directory, 2, false},   // still mounted
          {"usb4_1", OnDisk::File, 2, true},         // a file is not a mounted directory
          {"usb1_2", OnDisk::Nothing, 2, false},     // other ending
          {"usb5_1", OnDisk::Nothing, 2050, false},  // not a plain folder
          {"usc1_1", OnDisk::Nothing, 2, false},     // only the digit is cut, not the 'b'
          {"USB6_1", OnDisk::Nothing, 2, true}}},    // LIKE ignores ASCII case
        {"usb12_1", {{"usb9_1", OnDisk::Nothing, 2, true}, {"usb34_1", OnDisk::Nothing, 2, true}}},
        {"usb10_1", {{"usb9_1", OnDisk::Nothing, 2, true}}},  // "10" is cut, not just the '0'
        {"usb01_1",
         {{"usb07_1", OnDisk::Nothing, 2, true},     // a '0' two places before the '_' is no device
          {"usb17_1", OnDisk::Nothing, 2, false}}},  // digit: only the '1' is cut
        {"disk_1",
         {{"disc_1", OnDisk::Nothing, 2, true},  // the 'k' is cut
          {"disk_1", OnDisk::Directory, 2, false},
          {"dia_1", OnDisk::Nothing, 2, false}}},  // the 's' stays
    };
    for (const auto &[newComponent, rows] : cases) {
        SCOPED_TRACE(newComponent);
        catalogue.exec("delete from ITEM");
        mdbtest::TempDir scratch;
        std::vector<long long> ids;
        for (const Row &row : rows) {
            if (row.onDisk == OnDisk::Directory) {
                scratch.mkdir(row.component);
            } else if (row.onDisk == OnDisk::File) {
                scratch.write(row.component, "not a directory");
            }
            ItemValues v;
            v.flags = row.flags;
            v.title = row.component;
            v.fileName = scratch.file(row.component);
            ids.push_back(catalogue.addItem(v));
        }
        const std::string newRoot = scratch.file(newComponent);
        EXPECT_STATUS(QRV_MDB_ReplaceRoot(catalogue.db(), scratch.path().c_str(), newRoot.c_str()), MDB_OK);
        for (size_t i = 0; i < rows.size(); ++i) {
            SCOPED_TRACE(rows[i].component);
            // The scratch path has '/' after its fifth character: titles stay.
            EXPECT_EQ(catalogue.scalar("select fileName||'|'||title from ITEM where id=" + std::to_string(ids[i])),
                      (rows[i].rewritten ? newRoot : scratch.file(rows[i].component)) + "|" + rows[i].component);
        }
    }
}

// The title follows the new root only when the root is longer than five characters and has no '/'
// after the fifth. Refused and ignored roots change nothing. These paths must not exist here.
TEST(ReplaceRoot, TitlesAndRefusedRoots) {
    mdbtest::Catalogue catalogue;
    struct Case {
        const char *base;
        const char *oldRoot;
        const char *newRoot;
        uint32_t status;
        const char *expected;  // fileName|title afterwards
    };
    const Case cases[] = {
        {"/nxd", "/nxd/usb1_1", "/nxd/usb2_1", MDB_OK, "/nxd/usb2_1|usb2_1"},
        {"/nxd", "/nxd/it's1_1", "/nxd/it's2_1", MDB_OK, "/nxd/it's2_1|it's2_1"},
        {"/nxd", "/nxd/usb1_1/media", "/nxd/usb2_1/media", MDB_OK, "/nxd/usb2_1/media|old"},
        {"/", "/a7_1", "/a2_1", MDB_OK, "/a2_1|old"},  // five characters only
        {"/nxd/usb", "/nxd/usb1_1", "/nxd/usb", MDB_OK, "/nxd/usb1_1|old"},  // not longer than the base
        {"/nxd", "/nxd/usb1_1", "/nxd/usb", MDB_ERR_PARA, "/nxd/usb1_1|old"},  // no '_' in the component
        {"/nxd", "/nxd/usb1_1", "/nxd/usb/a_1", MDB_ERR_PARA, "/nxd/usb1_1|old"},  // '_' only below it
        {"/nxd", "/nxd/usb1_1", "/nxd/", MDB_ERR_PARA, "/nxd/usb1_1|old"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.newRoot);
        struct stat st;
        if (stat(c.oldRoot, &st) == 0) {
            GTEST_SKIP() << c.oldRoot << " exists on this machine";
        }
        catalogue.exec("delete from ITEM");
        ItemValues v;
        v.flags = 2;
        v.title = "old";
        v.fileName = c.oldRoot;
        long long id = catalogue.addItem(v);
        EXPECT_STATUS(QRV_MDB_ReplaceRoot(catalogue.db(), c.base, c.newRoot), c.status);
        EXPECT_EQ(catalogue.scalar("select fileName||'|'||title from ITEM where id=" + std::to_string(id)), c.expected);
    }
}

}  // namespace
