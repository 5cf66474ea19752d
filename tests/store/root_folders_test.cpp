// The root list, folder flags and emptiness, and root re-pointing on a real catalogue;
// re-pointing runs against real directories and files in a scratch folder.
#include "store_test_util.h"

#include <mdb_platform.h>

#include "store/store_alloc.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

using storetest::Join;

// The list as sorted "id:title" texts ("id:NULL" for no title): SQLite chooses the row order.
std::vector<std::string> RootList() {
    std::vector<std::string> out;
    for (uint32_t i = 0; i < g_ulRootPathNum; ++i) {
        const char *title = g_pstRootPaths[i].pcTitle;
        out.push_back(Join(g_pstRootPaths[i].llId) + ":" + (title ? title : "NULL"));
    }
    std::sort(out.begin(), out.end());
    return out;
}

// A root that another connection adds between count and fill waits for the next rebuild, which
// replaces the list (LeakSanitizer sees the first list's titles released); no connection keeps the
// list; a failed allocation or statement leaves none.
TEST(RootPaths, RebuildListsTheRowsWithParentZero) {
    mdbtest::Catalogue catalogue;
    const long long usb = catalogue.addFolder(0, "/mnt/usb1_1"), untitled = catalogue.addFolder(0, "/mnt/sd_1");
    catalogue.addFolder(usb, "music");
    catalogue.exec("update ITEM set title=NULL where id=" + Join(untitled));
    std::vector<std::string> expected = {Join(usb) + ":/mnt/usb1_1", Join(untitled) + ":NULL"};
    storetest::InsertBefore late(catalogue.db(), catalogue.dbPath(), "select id,title from ITEM where parentID=0",
                                 "insert into ITEM (id, parentID, flags, title, fileName) values "
                                 "(90, 0, 2, 'late', 'l')");
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    ASSERT_EQ(late.rc(), SQLITE_OK);
    EXPECT_EQ(RootList(), expected);
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    expected.push_back("90:late");
    EXPECT_EQ(RootList(), expected);
    EXPECT_STATUS(QRV_MDB_DbGetRoots(nullptr), MDB_ERR_PARA);
    EXPECT_EQ(RootList(), expected);
    MdbSetAllocator([](size_t) -> void * { return nullptr; });
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_ERR_MEM);
    MdbSetAllocator(nullptr);
    EXPECT_EQ(Join(g_pstRootPaths == nullptr, g_ulRootPathNum), "1|0");
    catalogue.exec("delete from ITEM where parentID=0");
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_OK);
    EXPECT_EQ(g_pstRootPaths, nullptr) << "no roots: no list";
    catalogue.exec("drop view DLNA; drop view AV_INFO; drop table ITEM");
    EXPECT_STATUS(QRV_MDB_DbGetRoots(catalogue.db()), MDB_ERR_DB);
}

// Set replaces the whole word (0x4000 goes); update adds bits unless they overlap what is there in
// more than bit 0. Empty: no children, or only restricted folders without folder bits (flags 130);
// a failing query or no connection answers not empty.
TEST(FolderFlags, UpdateSetAndEmptiness) {
    mdbtest::Catalogue catalogue;
    for (const auto &[start, bits, expected] :
         {std::tuple{2, 0x800u, 2050}, {2050, 0x1000u, 0x1802}, {3, 0x801u, 0x803}, {0x802, 0x1800u, 0x802}}) {
        const long long folder = catalogue.addFolder(0, "f", 0x4000);
        EXPECT_STATUS(QRV_MDB_SetFolderFlags(catalogue.db(), folder, start), MDB_OK);
        EXPECT_STATUS(QRV_MDB_UpdateFolderFlags(catalogue.db(), folder, bits), MDB_OK);
        EXPECT_EQ(catalogue.rows("select flags from ITEM where id=" + Join(folder)), Join(expected)) << start;
    }
    for (const auto &[childFlags, expected] : {std::pair{std::vector<int32_t>{}, 1}, {{130, 130}, 1}, {{130, 2}, 0},
                                               {{11}, 0}, {{130 | 0x800}, 0}}) {
        const long long folder = catalogue.addFolder(0, "f");
        for (int32_t flags : childFlags) catalogue.addFolder(folder, "child", flags);
        EXPECT_EQ(QRV_MDB_IsFolderEmpty(folder), expected) << childFlags.size() << " children";
    }
    g_pstMdbCtx = nullptr;
    EXPECT_EQ(QRV_MDB_IsFolderEmpty(12345), 0);
    g_pstMdbCtx = catalogue.db();
    catalogue.exec("drop view DLNA; drop view AV_INFO; drop table ITEM");
    EXPECT_EQ(QRV_MDB_IsFolderEmpty(12345), 0);
}

// The first component of the new root below the base ends in one or two digits, '_' and more: the
// plain folder rows with the same beginning (without those digits) and the same ending whose
// directory is gone are pointed at the new root; titles stay (the scratch path has a '/' after its
// fifth character).
TEST(ReplaceRoot, CutRulesOnRealDirectories) {
    mdbtest::Catalogue catalogue;
    struct Row {
        const char *component;  // below the scratch folder
        char onDisk;            // 'd' a directory, 'f' a file, '-' nothing
        bool rewritten;
        int32_t flags = 2;
    };
    const std::pair<const char *, std::vector<Row>> cases[] = {
        {"usb2_1", {{"usb1_1", '-', true}, {"usb3_1", 'd', false},  // still mounted
                    {"usb4_1", 'f', true},                            // a file is not a mounted directory
                    {"usb1_2", '-', false}, {"usb5_1", '-', false, 2050},  // other ending; not a plain folder
                    {"usc1_1", '-', false}, {"USB6_1", '-', true}}},  // only the digit is cut; LIKE ignores case
        {"usb12_1", {{"usb9_1", '-', true}, {"usb34_1", '-', true}}},
        {"usb10_1", {{"usb9_1", '-', true}}},                            // "10" is cut, not just the '0'
        {"usb01_1", {{"usb07_1", '-', true}, {"usb17_1", '-', false}}},  // a '0' before is no device digit
        {"disk_1", {{"disc_1", '-', true}, {"disk_1", 'd', false}, {"dia_1", '-', false}}},  // the 'k' is cut
    };
    for (const auto &[newComponent, rows] : cases) {
        catalogue.exec("delete from ITEM");
        mdbtest::TempDir scratch;
        std::vector<long long> ids;
        for (const Row &row : rows) {
            if (row.onDisk != '-') {
                row.onDisk == 'd' ? scratch.mkdir(row.component) : scratch.write(row.component, "not a directory");
            }
            ids.push_back(catalogue.addFolder(0, scratch.file(row.component), row.flags));
        }
        const std::string newRoot = scratch.file(newComponent);
        EXPECT_STATUS(QRV_MDB_ReplaceRoot(catalogue.db(), scratch.path().c_str(), newRoot.c_str()), MDB_OK);
        for (size_t i = 0; i < rows.size(); ++i) {
            const std::string old = scratch.file(rows[i].component);
            EXPECT_EQ(catalogue.rows("select fileName||'|'||title from ITEM where id=" + Join(ids[i])),
                      Join(rows[i].rewritten ? newRoot : old, old)) << newComponent << ": " << rows[i].component;
        }
    }
}

// The title follows the new root only when the root is longer than five characters and has no '/'
// after the fifth. Refused and ignored roots change nothing. These paths must not exist here.
TEST(ReplaceRoot, TitlesAndRefusedRoots) {
    mdbtest::Catalogue catalogue;
    const struct { const char *base, *oldRoot, *newRoot; uint32_t status; const char *expected; } cases[] = {
        {"/nxd", "/nxd/usb1_1", "/nxd/usb2_1", MDB_OK, "/nxd/usb2_1|usb2_1"},
        {"/nxd", "/nxd/it's1_1", "/nxd/it's2_1", MDB_OK, "/nxd/it's2_1|it's2_1"},
        {"/nxd", "/nxd/usb1_1/media", "/nxd/usb2_1/media", MDB_OK, "/nxd/usb2_1/media|old"},
        {"/", "/a7_1", "/a2_1", MDB_OK, "/a2_1|old"},                              // five characters only
        {"/nxd/usb", "/nxd/usb1_1", "/nxd/usb", MDB_OK, "/nxd/usb1_1|old"},        // not longer than the base
        {"/nxd", "/nxd/usb1_1", "/nxd/usb", MDB_ERR_PARA, "/nxd/usb1_1|old"},      // no '_' in the component
        {"/nxd", "/nxd/usb1_1", "/nxd/usb/a_1", MDB_ERR_PARA, "/nxd/usb1_1|old"},  // '_' only below it
    };
    for (const auto &c : cases) {
        if (mdbtest::fileExists(c.oldRoot)) GTEST_SKIP() << c.oldRoot << " exists on this machine";
        catalogue.exec("delete from ITEM");
        const long long id = catalogue.addFolder(0, c.oldRoot);
        catalogue.exec("update ITEM set title='old'");
        EXPECT_STATUS(QRV_MDB_ReplaceRoot(catalogue.db(), c.base, c.newRoot), c.status) << c.newRoot;
        EXPECT_EQ(catalogue.rows("select fileName||'|'||title from ITEM where id=" + Join(id)), c.expected);
    }
}

}  // namespace
