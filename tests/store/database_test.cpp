// The catalogue connection and file: what MdbSetBusyTimeout installs, creation with the schema
// script (through the script path seam), the read-only and read-write opens, and copying the file.
// That writes of several processes wait for each other is shown by the tool's concurrency tests.
#include "store_test_util.h"

namespace {

using mdbtest::readFile;
using mdbtest::TempDir;
using storetest::Join;

// A second connection holds the write lock: a plain sqlite3_exec write on the first one shows how
// often the installed handler sleeps (once per 10 ms of the budget, read at every wait) before
// SQLITE_BUSY.
TEST(BusyHandler, SetBusyTimeoutInstallsOrRemovesIt) {
    mdbtest::Catalogue catalogue;
    storetest::Connection holder = storetest::openSecond(catalogue.dbPath());
    ASSERT_EQ(sqlite3_exec(holder.get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    auto sleepsBeforeBusy = [&] {
        storetest::resetSleepCount();
        EXPECT_EQ(sqlite3_exec(catalogue.db(), "insert into GENRES values (NULL, 'x')", nullptr, nullptr, nullptr),
                  SQLITE_BUSY);
        return storetest::sleepCount();
    };
    for (int32_t none : {0, -20}) {
        EXPECT_EQ(MdbSetBusyTimeout(catalogue.db(), 30), 0);
        EXPECT_EQ(Join(g_mdbTimeout, sleepsBeforeBusy()), "30|3");
        g_mdbTimeout = 25;
        EXPECT_EQ(sleepsBeforeBusy(), 2);
        EXPECT_EQ(MdbSetBusyTimeout(catalogue.db(), none), 0);
        EXPECT_EQ(Join(g_mdbTimeout, sleepsBeforeBusy()), "25|0") << "no handler; the budget keeps its value";
    }
}

// A failed creation returns NULL with the connection closed (LeakSanitizer reports one left open)
// and leaves the created file with whatever the script made before it failed.
TEST(DatabaseOpen, SchemaScriptRunsOnlyOnANewFile) {
    // existing: a file's contents (nullptr: none); script: "" the shipped one, nullptr none;
    // expected: opened|existed|the tables ITEM, DLNA, A afterwards.
    const struct { const char *what, *existing, *script, *expected; } cases[] = {
        {"new", nullptr, "", "1|0|DLNA,ITEM"},
        {"empty", "", "create table A(x)", "1|1|"},
        {"missing", nullptr, nullptr, "0|0|"},
        {"failing", nullptr, "create table A(x); create tabel B(y); create table C(z);", "0|0|A"},
    };
    TempDir dir;
    for (const auto &c : cases) {
        const std::string name = c.what, path = dir.file(name + ".db");
        if (c.existing != nullptr) dir.write(name + ".db", c.existing);
        const std::string script = !c.script ? dir.file("none.sql")
                                   : *c.script ? dir.write(name + ".sql", c.script) : MDB_TEST_SCHEMA_SCRIPT;
        QRV_MDB_SetSchemaScriptPath(script.c_str());
        g_mdbTimeout = 7;
        int existed = -1;
        sqlite3 *db = QRV_MDB_DbInit(path.c_str(), &existed);
        QRV_MDB_SetSchemaScriptPath(nullptr);
        EXPECT_TRUE(db == nullptr || g_mdbTimeout == 80) << c.what << ": every open sets the budget";
        sqlite3_close(db);
        const std::string tables = mdbtest::Rows(storetest::openSecond(path).get(),
                                                 "select name from sqlite_master where name in ('ITEM','DLNA','A') "
                                                 "order by name");
        EXPECT_EQ(Join(db != nullptr, existed, tables), c.expected) << c.what;
    }
}

// Read-write creates an empty file without the schema; read-only then opens it, refusing writes,
// and never creates a file.
TEST(DatabaseOpen, ReadOnlyAndReadWriteOpens) {
    TempDir dir;
    EXPECT_EQ(QRV_MDB_DbInit(nullptr, nullptr), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadOnly(nullptr), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadWrite(nullptr), nullptr);
    const std::string path = dir.file("rw.db"), missing = dir.file("missing.db"), unreachable = dir.file("no/rw.db");
    for (auto open : {QRV_MDB_DbInitReadWrite, QRV_MDB_DbInitReadOnly}) {
        g_mdbTimeout = 3;
        sqlite3 *db = open(path.c_str());
        ASSERT_NE(db, nullptr);
        EXPECT_EQ(Join(g_mdbTimeout, mdbtest::Rows(db, "select count(*) from sqlite_master")), "80|0");
        EXPECT_EQ(MdbExecSql(db, "create table A(x); drop table A", nullptr, nullptr, nullptr),
                  open == QRV_MDB_DbInitReadOnly ? SQLITE_READONLY : SQLITE_OK);
        sqlite3_close(db);
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRV_MDB_DbInitReadOnly(missing.c_str()), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadWrite(unreachable.c_str()), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), missing + " read fail\n" + unreachable + " open fail\n");
    EXPECT_FALSE(mdbtest::fileExists(missing));
}

// Copies every byte (NULs included, across 4096-byte steps) onto a truncated target; a copy onto
// itself is refused before the file is truncated; failures say why.
TEST(FileCopy, CopiesEveryByteOrSaysWhyNot) {
    TempDir dir;
    auto bytes = [](size_t size) {
        std::string out(size, '\0');
        for (size_t i = 0; i < size; ++i) out[i] = static_cast<char>((i * 131 + 7) % 256);
        return out;
    };
    const std::string source = dir.write("catalogue.db", "abc"), target = dir.file("copy.db");
    for (size_t size : {size_t{0}, size_t{4096}, size_t{3 * 4096 + 5}}) {
        const std::string big = dir.write("big.db", bytes(size)), old = dir.write("old.db", std::string(20000, 'x'));
        EXPECT_STATUS(QRV_MDB_Copyfile(old.c_str(), big.c_str()), MDB_OK);
        EXPECT_EQ(readFile(old), bytes(size)) << size;
    }
    EXPECT_STATUS(QRV_MDB_Copyfile(nullptr, source.c_str()), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_Copyfile(source.c_str(), source.c_str()), MDB_ERR_PARA);
    EXPECT_EQ(readFile(source), "abc");
    testing::internal::CaptureStdout();
    EXPECT_STATUS(QRV_MDB_Copyfile(target.c_str(), dir.file("missing.db").c_str()), MDB_ERR_FAIL);
    EXPECT_STATUS(QRV_MDB_Copyfile(dir.file("no/copy.db").c_str(), source.c_str()), MDB_ERR_FAIL);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Caution: Source file can not open.\nCaution: Target db file can not open.\n");
    EXPECT_FALSE(mdbtest::fileExists(target)) << "no target without a source";
    if (mdbtest::fileExists("/dev/full")) {  // every write fails there
        testing::internal::CaptureStderr();
        EXPECT_STATUS(QRV_MDB_Copyfile("/dev/full", dir.write("large.db", bytes(4097)).c_str()), MDB_ERR_FAIL);
        EXPECT_EQ(testing::internal::GetCapturedStderr().rfind("Caution:  Target db file write error.\n: ", 0), 0u);
    }
}

}  // namespace
