// Opening catalogues: creation with the schema script (through the script path seam), reuse of
// existing files, the read-only and read-write opens and their messages, and the busy budget that
// every open sets.
#include "store_test_util.h"

#include "catalogue.h"
#include "temp_dir.h"

#include "store/schema_script.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using mdbtest::TempDir;
using storetest::column;

namespace {

const char *const kSchemaObjects[] = {"ITEM",    "GENRES",  "ARTISTS",  "ALBUMS",   "ACTORS",     "AUTHORS",
                                      "CREATORS", "DIRECTORS", "PRODUCERS", "PUBLISHERS", "AV_INFO", "DLNA"};

// Names of the tables and views in a database.
std::vector<std::string> SchemaNames(sqlite3 *db) {
    return column(db, "select name from sqlite_master where type in ('table','view') order by name");
}

// Points the schema script at a test script for one scope, then back at the default.
class ScriptPath {
public:
    explicit ScriptPath(const std::string &path) { MdbSetSchemaScriptPath(path.c_str()); }
    ~ScriptPath() { MdbSetSchemaScriptPath(nullptr); }
};

class DatabaseOpen : public ::testing::Test {
protected:
    TempDir dir;
};

TEST_F(DatabaseOpen, NewFileGetsTheShippedSchema) {
    ScriptPath script(MDB_TEST_SCHEMA_SCRIPT);
    g_mdbTimeout = 7;
    int existed = -1;
    sqlite3 *db = QRV_MDB_DbInit(dir.file("new.db").c_str(), &existed);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(existed, 0);
    EXPECT_EQ(g_mdbTimeout, 80);
    std::vector<std::string> names = SchemaNames(db);
    for (const char *object : kSchemaObjects) {
        EXPECT_NE(std::find(names.begin(), names.end(), object), names.end()) << object << " missing";
    }
    // The connection is usable for the store operations at once.
    long long id = 0;
    EXPECT_STATUS(QRV_MDB_DbAddItem(db, 0, 2, "root", "/mnt/usb1_1", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0,
                                    0, 0, 0, 0, 0, &id),
                  MDB_OK);
    EXPECT_EQ(column(db, "select count(*) from DLNA"), std::vector<std::string>{"1"});
    sqlite3_close(db);
}

TEST_F(DatabaseOpen, ExistingFileIsUsedUnchanged) {
    ScriptPath script(MDB_TEST_SCHEMA_SCRIPT);
    struct Case {
        const char *what;
        bool makeCatalogueFirst;  // else an empty file
    };
    for (const Case &c : {Case{"empty file", false}, Case{"catalogue with a row", true}}) {
        SCOPED_TRACE(c.what);
        std::string path = dir.file(std::string(c.what) + ".db");
        if (c.makeCatalogueFirst) {
            sqlite3 *first = QRV_MDB_DbInit(path.c_str(), nullptr);
            ASSERT_NE(first, nullptr);
            ASSERT_EQ(MdbExecSql(first, "insert into GENRES values (NULL, 'Jazz')", nullptr, nullptr, nullptr),
                      SQLITE_OK);
            sqlite3_close(first);
        } else {
            dir.write(std::string(c.what) + ".db", "");
        }
        int existed = -1;
        sqlite3 *db = QRV_MDB_DbInit(path.c_str(), &existed);
        ASSERT_NE(db, nullptr);
        EXPECT_EQ(existed, 1);
        if (c.makeCatalogueFirst) {
            EXPECT_EQ(column(db, "select name from GENRES"), std::vector<std::string>{"Jazz"});
        } else {
            EXPECT_TRUE(SchemaNames(db).empty()) << "the script ran on an existing empty file";
        }
        sqlite3_close(db);
    }
}

TEST_F(DatabaseOpen, ScriptRunsAllStatementsAsOneBatch) {
    std::string script = dir.write("three.sql",
                                   "create table A(x);\ninsert into A values (1);\n"
                                   "insert into A values (2); create view V as select x from A;");
    ScriptPath path(script);
    sqlite3 *db = QRV_MDB_DbInit(dir.file("batch.db").c_str(), nullptr);
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(column(db, "select x from V order by x"), (std::vector<std::string>{"1", "2"}));
    sqlite3_close(db);
}

// A failed creation returns NULL with the connection closed (LeakSanitizer reports a connection
// left open) and leaves the created file, which the next open takes as existing.
TEST_F(DatabaseOpen, MissingOrFailingScriptGivesNull) {
    struct Case {
        const char *what;
        bool writeScript;
        const char *scriptText;
        const char *tableLeftBehind;  // what the script did before it failed, or nullptr
    };
    const Case cases[] = {
        {"missing script", false, "", nullptr},
        {"failing second statement", true, "create table A(x); create tabel B(y); create table C(z);", "A"},
        {"failing first statement", true, "insert into NOWHERE values (1);", nullptr},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        std::string script = c.writeScript ? dir.write(std::string(c.what) + ".sql", c.scriptText)
                                           : dir.file("no-such-script.sql");
        ScriptPath path(script);
        std::string dbPath = dir.file(std::string(c.what) + ".db");
        int existed = -1;
        EXPECT_EQ(QRV_MDB_DbInit(dbPath.c_str(), &existed), nullptr);
        EXPECT_EQ(existed, 0);
        ASSERT_TRUE(mdbtest::fileExists(dbPath)) << "the file the open created stays";

        sqlite3 *again = QRV_MDB_DbInit(dbPath.c_str(), &existed);
        ASSERT_NE(again, nullptr);
        EXPECT_EQ(existed, 1);
        std::vector<std::string> expected;
        if (c.tableLeftBehind != nullptr) {
            expected.push_back(c.tableLeftBehind);
        }
        EXPECT_EQ(SchemaNames(again), expected);
        sqlite3_close(again);
    }
}

TEST_F(DatabaseOpen, NullPathGivesNullEverywhere) {
    int existed = 5;
    EXPECT_EQ(QRV_MDB_DbInit(nullptr, &existed), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadOnly(nullptr), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadWrite(nullptr), nullptr);
}

TEST_F(DatabaseOpen, ReadOnlyOpen) {
    mdbtest::Catalogue catalogue;
    catalogue.addFolder(0, "/mnt/usb1_1");
    std::string path = catalogue.dbPath();

    g_mdbTimeout = 3;
    sqlite3 *db = QRV_MDB_DbInitReadOnly(path.c_str());
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(g_mdbTimeout, 80);
    EXPECT_EQ(column(db, "select fileName from ITEM"), std::vector<std::string>{"/mnt/usb1_1"});
    EXPECT_EQ(MdbExecSql(db, "delete from ITEM", nullptr, nullptr, nullptr), SQLITE_READONLY);
    EXPECT_STATUS(QRV_MDB_DbDelItem(db, 1), MDB_ERR_DB);
    sqlite3_close(db);

    std::string missing = dir.file("missing.db");
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRV_MDB_DbInitReadOnly(missing.c_str()), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), missing + " read fail\n");
    EXPECT_FALSE(mdbtest::fileExists(missing)) << "a read-only open must not create the file";
}

TEST_F(DatabaseOpen, ReadWriteOpenCreatesAnEmptyFileWithoutSchema) {
    ScriptPath script(MDB_TEST_SCHEMA_SCRIPT);
    std::string path = dir.file("rw.db");
    g_mdbTimeout = 3;
    sqlite3 *db = QRV_MDB_DbInitReadWrite(path.c_str());
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(g_mdbTimeout, 80);
    EXPECT_TRUE(SchemaNames(db).empty());
    EXPECT_EQ(MdbExecSql(db, "create table A(x); insert into A values (1)", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    EXPECT_TRUE(mdbtest::fileExists(path));

    std::string unreachable = dir.file("no-such-dir/rw.db");
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRV_MDB_DbInitReadWrite(unreachable.c_str()), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), unreachable + " open fail\n");
}

TEST_F(DatabaseOpen, ScriptPathSeam) {
    std::string defaultPath = MdbSchemaScriptPath();
    EXPECT_FALSE(defaultPath.empty());
    {
        ScriptPath path("/elsewhere/x.sql");
        EXPECT_STREQ(MdbSchemaScriptPath(), "/elsewhere/x.sql");
    }
    EXPECT_EQ(MdbSchemaScriptPath(), defaultPath);
}

}  // namespace
