// Opening catalogues: creation with the schema script (through the script path seam), reuse of an
// existing file, the read-only and read-write opens with their messages, and the budget every open
// sets.
#include "store_test_util.h"

#include "catalogue.h"
#include "temp_dir.h"

#include "store/schema_script.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using mdbtest::TempDir;
using storetest::rows;

const char kSchemaQuery[] = "select name from sqlite_master where type in ('table','view') order by name";

// Points the schema script at a path for one scope, then back at the default.
struct ScriptPath {
    explicit ScriptPath(const std::string &path) { MdbSetSchemaScriptPath(path.c_str()); }
    ~ScriptPath() { MdbSetSchemaScriptPath(nullptr); }
};

TEST(DatabaseOpen, NewFileGetsTheSchemaAndAnExistingEmptyFileIsLeftAlone) {
    TempDir dir;
    ScriptPath script(MDB_TEST_SCHEMA_SCRIPT);
    g_mdbTimeout = 7;
    int existed = -1;
    sqlite3 *db = QRV_MDB_DbInit(dir.file("new.db").c_str(), &existed);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(existed, 0);
    EXPECT_EQ(g_mdbTimeout, 80);
    EXPECT_EQ(rows(db, "select count(*) from sqlite_master where name in "
                       "('ITEM','GENRES','ARTISTS','ALBUMS','AV_INFO','DLNA')"),
              std::vector<std::string>{"6"});
    sqlite3_close(db);

    std::string empty = dir.write("empty.db", "");
    existed = -1;
    db = QRV_MDB_DbInit(empty.c_str(), &existed);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(existed, 1);
    EXPECT_TRUE(rows(db, kSchemaQuery).empty()) << "the script ran on an existing file";
    sqlite3_close(db);
}

// A failed creation returns NULL with the connection closed (LeakSanitizer reports one left open)
// and leaves the created file, which the next open takes as existing: the script does not run again.
TEST(DatabaseOpen, MissingOrFailingScriptGivesNull) {
    TempDir dir;
    struct Case {
        const char *what;
        const char *scriptText;  // nullptr: no script file
        std::vector<std::string> leftBehind;
    };
    const Case cases[] = {
        {"missing", nullptr, {}},
        {"failing", "create table A(x); create tabel B(y); create table C(z);", {"A"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        ScriptPath path(c.scriptText ? dir.write(std::string(c.what) + ".sql", c.scriptText) : dir.file("none.sql"));
        std::string dbPath = dir.file(std::string(c.what) + ".db");
        int existed = -1;
        EXPECT_EQ(QRV_MDB_DbInit(dbPath.c_str(), &existed), nullptr);
        EXPECT_EQ(existed, 0);
        sqlite3 *again = QRV_MDB_DbInit(dbPath.c_str(), &existed);
        ASSERT_NE(again, nullptr);
        EXPECT_EQ(existed, 1);
        EXPECT_EQ(rows(again, kSchemaQuery), c.leftBehind);
        sqlite3_close(again);
    }
}

TEST(DatabaseOpen, ReadOnlyAndReadWriteOpens) {
    TempDir dir;
    EXPECT_EQ(QRV_MDB_DbInit(nullptr, nullptr), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadOnly(nullptr), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadWrite(nullptr), nullptr);

    // Read-write creates an empty file without the schema; read-only then opens it, refusing writes.
    std::string path = dir.file("rw.db");
    for (auto open : {QRV_MDB_DbInitReadWrite, QRV_MDB_DbInitReadOnly}) {
        g_mdbTimeout = 3;
        sqlite3 *db = open(path.c_str());
        ASSERT_NE(db, nullptr);
        EXPECT_EQ(g_mdbTimeout, 80);
        EXPECT_TRUE(rows(db, kSchemaQuery).empty());
        EXPECT_EQ(MdbExecSql(db, "create table A(x); drop table A", nullptr, nullptr, nullptr),
                  open == QRV_MDB_DbInitReadOnly ? SQLITE_READONLY : SQLITE_OK);
        sqlite3_close(db);
    }

    std::string missing = dir.file("missing.db");
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRV_MDB_DbInitReadOnly(missing.c_str()), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), missing + " read fail\n");
    EXPECT_FALSE(mdbtest::fileExists(missing)) << "a read-only open must not create the file";

    std::string unreachable = dir.file("no-such-dir/rw.db");
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRV_MDB_DbInitReadWrite(unreachable.c_str()), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), unreachable + " open fail\n");
}

}  // namespace
