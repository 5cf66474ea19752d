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

// The current root list as "id:title" texts ("id:NULL" for a missing title), sorted: the list
// comes in whatever order SQLite delivers the rows.
std::vector<std::string> RootList() {
    std::vector<std::string> out;
    for (uint32_t i = 0; i < g_ulRootPathNum; ++i) {
        const MdbRootPath &root = g_pstRootPaths[i];
        out.push_back(std::to_string(root.llId) + ":" + (root.pcTitle != nullptr ? root.pcTitle : "NULL"));
    }
    std::sort(out.begin(), out.end());
    return out;
}

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
    std::string entry(long long id, const std::string &title) { return std::to_string(id) + ":" + title; }
    mdbtest::Catalogue catalogue;
};

TEST_F(RootPaths, CatalogueWithoutRootsHasNoList) {
    catalogue.addFolder(7, "not a root");
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_EQ(g_ulRootPathNum, 0u);
    EXPECT_EQ(g_pstRootPaths, nullptr);
}

TEST_F(RootPaths, ListsTheRowsWithParentZero) {
    long long usb = catalogue.addFolder(0, "/mnt/usb1_1");
    catalogue.addFolder(usb, "music");
    long long disk = catalogue.addFolder(0, "/mnt/disk_1");
    long long untitled = catalogue.addFolder(0, "/mnt/sd_1");
    catalogue.exec("update ITEM set title=NULL where id=" + std::to_string(untitled));

    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_EQ(RootList(), (std::vector<std::string>{entry(usb, "/mnt/usb1_1"), entry(disk, "/mnt/disk_1"),
                                                     entry(untitled, "NULL")}));

    // A second rebuild replaces the list (the first one's titles are released: LeakSanitizer).
    catalogue.exec("delete from ITEM where id=" + std::to_string(usb));
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_EQ(RootList(), (std::vector<std::string>{entry(disk, "/mnt/disk_1"), entry(untitled, "NULL")}));

    // A rebuild on a catalogue that lost its roots leaves no list.
    catalogue.exec("delete from ITEM where parentID=0");
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_EQ(g_pstRootPaths, nullptr);
    EXPECT_EQ(g_ulRootPathNum, 0u);
}

TEST_F(RootPaths, RootAddedBetweenCountAndFillWaitsForTheNextRebuild) {
    long long usb = catalogue.addFolder(0, "/mnt/usb1_1");
    storetest::SecondConnection other(catalogue.dbPath());
    {
        storetest::BeforeStatement hook(catalogue.db(), "select id,title from ITEM where parentID=0", [&] {
            EXPECT_EQ(other.exec("insert into ITEM (parentID, flags, title, fileName) values (0, 2, 'late', '/late')"),
                      SQLITE_OK);
        });
        EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
        ASSERT_TRUE(hook.fired());
    }
    EXPECT_EQ(RootList(), std::vector<std::string>{entry(usb, "/mnt/usb1_1")});

    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_EQ(g_ulRootPathNum, 2u);
}

TEST_F(RootPaths, FailuresLeaveTheDocumentedList) {
    long long usb = catalogue.addFolder(0, "/mnt/usb1_1");
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);

    EXPECT_STATUS(QRV_MDB_DbGetRoots(nullptr), MDB_ERR_PARA);
    EXPECT_EQ(RootList(), std::vector<std::string>{entry(usb, "/mnt/usb1_1")}) << "no connection: list kept";

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
        const char *what;
        int32_t start;
        uint32_t bits;
        int32_t expected;
        bool writes;
    };
    const Case cases[] = {
        {"music bit on a plain folder", 2, 0x800, 2050, true},
        {"music bit already there", 2050, 0x800, 2050, false},
        {"bit 0 alone does not count as present", 3, 1, 3, true},
        {"second class added", 0x802, 0x1000, 0x1802, true},
        {"any overlap beyond bit 0 counts as present", 0x802, 0x1800, 0x802, false},
        {"two bits at once", 2, 0x3000, 0x3002, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        long long folder = catalogue.addFolder(0, c.what, c.start & ~2);
        catalogue.exec("update ITEM set flags=" + std::to_string(c.start) + " where id=" + std::to_string(folder));
        storetest::StatementCounter statements(catalogue.db());
        EXPECT_STATUS(QRV_MDB_UpdateFolderFlags(catalogue.db(), folder, c.bits), MDB_OK);
        EXPECT_EQ(statements.count(), c.writes ? 2 : 1);
        EXPECT_EQ(flagsOf(folder), std::to_string(c.expected));
    }
    EXPECT_STATUS(QRV_MDB_UpdateFolderFlags(catalogue.db(), 999, 0x800), MDB_OK) << "missing row";
    EXPECT_EQ(catalogue.scalar("select count(*) from ITEM where id=999"), "0");
    EXPECT_STATUS(QRV_MDB_UpdateFolderFlags(nullptr, 1, 0x800), MDB_ERR_PARA);
}

TEST_F(FolderFlags, SetReplacesTheWholeWord) {
    long long parent = catalogue.addFolder(0, "/mnt/usb1_1");
    long long child = catalogue.addFolder(parent, "hidden", 0x800);
    EXPECT_EQ(QRV_MDB_IsFolderEmpty(parent), 0);
    EXPECT_STATUS(QRV_MDB_SetFolderFlags(catalogue.db(), child, 130), MDB_OK);
    EXPECT_EQ(flagsOf(child), "130");
    EXPECT_EQ(QRV_MDB_IsFolderEmpty(parent), 1) << "a restricted folder without bits hides";
    EXPECT_STATUS(QRV_MDB_SetFolderFlags(catalogue.db(), child, -1), MDB_OK);
    EXPECT_EQ(flagsOf(child), "-1");
    EXPECT_STATUS(QRV_MDB_SetFolderFlags(nullptr, child, 2), MDB_ERR_PARA);
}

// What a row is on disk when the re-pointing looks at it.
enum class OnDisk { Nothing, Directory, File };

struct RowCase {
    std::string component;  // below the scratch folder
    OnDisk onDisk;
    int32_t flags;
    bool rewritten;
};

struct CutCase {
    const char *newComponent;
    std::vector<RowCase> rows;
};

class ReplaceRoot : public ::testing::Test {
protected:
    mdbtest::Catalogue catalogue;
};

// The first component of the new root ends in one or two digits, '_' and more: the rows with the
// same beginning (without those digits) and the same ending are candidates.
TEST_F(ReplaceRoot, CutRulesOnRealDirectories) {
    const CutCase cases[] = {
        {"usb2_1",
         {{"usb1_1", OnDisk::Nothing, 2, true},
          {"usb3_1", OnDisk::Directory, 2, false},   // still mounted
          {"usb4_1", OnDisk::File, 2, true},         // a file is not a mounted directory
          {"usb1_2", OnDisk::Nothing, 2, false},     // other ending
          {"usb5_1", OnDisk::Nothing, 2050, false},  // not a plain folder
          {"usc1_1", OnDisk::Nothing, 2, false},     // only the digit is cut, not the 'b'
          {"USB6_1", OnDisk::Nothing, 2, true}}},    // LIKE ignores ASCII case
        {"usb12_1",
         {{"usb9_1", OnDisk::Nothing, 2, true},  // both digits cut
          {"usb34_1", OnDisk::Nothing, 2, true},
          {"usb3_1", OnDisk::Directory, 2, false}}},
        {"usb10_1",
         {{"usb9_1", OnDisk::Nothing, 2, true},  // "10" cut, not just the '0'
          {"usb1_2", OnDisk::Nothing, 2, false}}},
        {"usb01_1",
         {{"usb07_1", OnDisk::Nothing, 2, true},    // a '0' two places before the '_' is no
          {"usb17_1", OnDisk::Nothing, 2, false}}},  // device digit: only the '1' is cut
        {"disk_1",
         {{"disc_1", OnDisk::Nothing, 2, true},  // the 'k' is cut
          {"disk_1", OnDisk::Directory, 2, false},
          {"dia_1", OnDisk::Nothing, 2, false},  // the 's' stays
          {"dist_2", OnDisk::Nothing, 2, false}}},
    };
    for (const CutCase &c : cases) {
        SCOPED_TRACE(c.newComponent);
        catalogue.exec("delete from ITEM");
        mdbtest::TempDir scratch;  // fresh files for each case, under its own folder
        const std::string caseBase = scratch.path();
        std::vector<long long> ids;
        for (const RowCase &row : c.rows) {
            std::string path = caseBase + "/" + row.component;
            if (row.onDisk == OnDisk::Directory) {
                scratch.mkdir(row.component);
            } else if (row.onDisk == OnDisk::File) {
                scratch.write(row.component, "not a directory");
            }
            ItemValues v;
            v.flags = row.flags;
            v.title = row.component;
            v.fileName = path;
            ids.push_back(catalogue.addItem(v));
        }
        const std::string newRoot = caseBase + "/" + c.newComponent;
        EXPECT_STATUS(QRV_MDB_ReplaceRoot(catalogue.db(), caseBase.c_str(), newRoot.c_str()), MDB_OK);
        for (size_t i = 0; i < c.rows.size(); ++i) {
            SCOPED_TRACE(c.rows[i].component);
            std::string id = std::to_string(ids[i]);
            EXPECT_EQ(catalogue.scalar("select fileName from ITEM where id=" + id),
                      c.rows[i].rewritten ? newRoot : caseBase + "/" + c.rows[i].component);
            EXPECT_EQ(catalogue.scalar("select title from ITEM where id=" + id), c.rows[i].component)
                << "a new root with '/' after its fifth character keeps the title";
        }
    }
}

// The title follows the new root only when the root is longer than five characters and has no '/'
// after the fifth. These paths must not exist on the machine (they are looked at with stat).
TEST_F(ReplaceRoot, TitleFollowsShortRoots) {
    struct Case {
        const char *base;
        const char *oldRoot;
        const char *newRoot;
        const char *expectedTitle;
    };
    const Case cases[] = {
        {"/nxd", "/nxd/usb1_1", "/nxd/usb2_1", "usb2_1"},
        {"/nxd", "/nxd/it's1_1", "/nxd/it's2_1", "it's2_1"},
        {"/nxd", "/nxd/usb1_1/media", "/nxd/usb2_1/media", "old title"},
        {"/", "/a7_1", "/a2_1", "old title"},  // five characters only
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
        v.title = "old title";
        v.fileName = c.oldRoot;
        long long id = catalogue.addItem(v);
        EXPECT_STATUS(QRV_MDB_ReplaceRoot(catalogue.db(), c.base, c.newRoot), MDB_OK);
        EXPECT_EQ(catalogue.scalar("select fileName||'|'||title from ITEM where id=" + std::to_string(id)),
                  std::string(c.newRoot) + "|" + c.expectedTitle);
    }
}

TEST_F(ReplaceRoot, RefusedOrIgnoredRoots) {
    catalogue.addFolder(0, "/nxd/usb1_1");
    struct Case {
        const char *what;
        const char *base;
        const char *newRoot;
        uint32_t expected;
    };
    const Case cases[] = {
        {"not longer than the base", "/nxd/usb", "/nxd/usb", MDB_OK},
        {"shorter than the base", "/nxd/usb1_1/x", "/nxd/u_1", MDB_OK},
        {"no '_' in the first component", "/nxd", "/nxd/usb", MDB_ERR_PARA},
        {"'_' only below the first component", "/nxd", "/nxd/usb/a_1", MDB_ERR_PARA},
        {"nothing behind the separator", "/nxd", "/nxd/", MDB_ERR_PARA},
        {"no base", nullptr, "/nxd/usb2_1", MDB_ERR_PARA},
        {"no new root", "/nxd", nullptr, MDB_ERR_PARA},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_STATUS(QRV_MDB_ReplaceRoot(catalogue.db(), c.base, c.newRoot), c.expected);
    }
    EXPECT_EQ(catalogue.scalar("select fileName from ITEM"), "/nxd/usb1_1");
    EXPECT_STATUS(QRV_MDB_ReplaceRoot(nullptr, "/nxd", "/nxd/usb2_1"), MDB_ERR_PARA);
}

}  // namespace
