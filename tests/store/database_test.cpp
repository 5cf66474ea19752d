// The catalogue connection and file: the busy handler and what MdbSetBusyTimeout installs, a write
// through MdbExecSql that waits out another thread's transaction, creation with the schema script
// (through the script path seam), the read-only and read-write opens, and copying the file.
#include "store_test_util.h"

#include "catalogue.h"


#include <atomic>
#include <chrono>
#include <thread>

namespace {

using namespace std::chrono_literals;
using mdbtest::readFile;
using mdbtest::TempDir;
using storetest::Join;
using storetest::resetSleepCount;
using storetest::sleepCount;

TEST(BusyHandler, SleepsAsOftenAsTenGoesIntoTheBudget) {
    for (const auto &[budget, sleeps] : {std::pair{80, 8}, {9, 0}, {10, 1}, {25, 2}, {0, 0}, {-40, 0}}) {
        int32_t value = budget;
        resetSleepCount();
        int count = 0;  // the retry count at which the handler gives up
        while (count < 1000 && MdbSqliteBusyCallback(&value, count) == 1) {
            ++count;
        }
        EXPECT_EQ(Join(count, sleepCount()), Join(sleeps, sleeps)) << "budget " << budget;
    }
}

// A second connection holds the write lock: a plain sqlite3_exec write on the first one shows how
// often the installed handler sleeps before SQLITE_BUSY.
TEST(BusyHandler, SetBusyTimeoutInstallsOrRemovesIt) {
    mdbtest::Catalogue catalogue;
    storetest::Connection holder = storetest::openSecond(catalogue.dbPath());
    ASSERT_EQ(sqlite3_exec(holder.get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    auto sleepsBeforeBusy = [&] {
        resetSleepCount();
        EXPECT_EQ(sqlite3_exec(catalogue.db(), "insert into GENRES values (NULL, 'x')", nullptr, nullptr, nullptr),
                  SQLITE_BUSY);
        return sleepCount();
    };
    for (int32_t none : {0, -20}) {
        EXPECT_EQ(MdbSetBusyTimeout(catalogue.db(), 30), 0);
        EXPECT_EQ(Join(g_mdbTimeout, sleepsBeforeBusy()), "30|3");
        g_mdbTimeout = 50;
        EXPECT_EQ(sleepsBeforeBusy(), 5) << "the handler reads the budget at every wait";
        EXPECT_EQ(MdbSetBusyTimeout(catalogue.db(), none), 0);
        EXPECT_EQ(Join(g_mdbTimeout, sleepsBeforeBusy()), "50|0") << "no handler; the budget keeps its value";
    }
}

// Another thread's connection writes a row in a transaction and holds it until this thread's busy
// handler has slept 20 times (more than two budgets of 80 ms: only the runner's re-runs can
// succeed), then commits. Every wait is bounded.
TEST(StatementRunner, WaitsOutAnotherConnectionsTransaction) {
    mdbtest::Catalogue catalogue;
    std::atomic<bool> locked{false};
    std::atomic<int> sleepsWhileHeld{0}, commitRc{-1};
    resetSleepCount();
    std::thread holder([&, path = catalogue.dbPath()] {
        storetest::Connection conn = storetest::openSecond(path);
        auto exec = [&](const char *sql) { return sqlite3_exec(conn.get(), sql, nullptr, nullptr, nullptr); };
        locked = exec("BEGIN IMMEDIATE; insert into GENRES values (NULL, 'held')") == SQLITE_OK;
        for (auto end = std::chrono::steady_clock::now() + 20s;
             locked && sleepCount() < 20 && std::chrono::steady_clock::now() < end;) {
            std::this_thread::sleep_for(1ms);
        }
        sleepsWhileHeld = sleepCount();
        // The waiting writer holds a shared lock for an instant while it reads: retry, bounded.
        for (int attempt = 0; attempt < 20000 && (commitRc = exec("COMMIT")) == SQLITE_BUSY; ++attempt) {
            std::this_thread::sleep_for(1ms);
        }
        locked = true;  // release the main thread even when BEGIN failed
    });
    for (auto end = std::chrono::steady_clock::now() + 20s; !locked && std::chrono::steady_clock::now() < end;) {
        std::this_thread::sleep_for(1ms);
    }
    int reads = 0;  // the batch reads, then writes: each busy run starts again from the read
    auto countRow = [](void *arg, int, char **, char **) { return ++*static_cast<int *>(arg), 0; };
    int rc = MdbExecSql(catalogue.db(), "select count(*) from GENRES; insert into GENRES values (NULL, 'waiting')",
                        countRow, &reads, nullptr);
    holder.join();
    EXPECT_EQ(Join(rc, commitRc), Join(SQLITE_OK, SQLITE_OK));
    EXPECT_GE(sleepsWhileHeld, 20) << "the write did not wait on the held lock";
    EXPECT_GE(reads, 2) << "a busy batch runs again from its first statement";
    EXPECT_EQ(storetest::rows(catalogue.db(), "select name from GENRES order by exID"), "held,waiting");
    // SQLite would run a null text as an empty one and report success.
    EXPECT_EQ(MdbExecSql(nullptr, "select 1", nullptr, nullptr, nullptr), SQLITE_MISUSE);
    EXPECT_EQ(MdbExecSql(catalogue.db(), nullptr, nullptr, nullptr, nullptr), SQLITE_MISUSE);
}

// A failed creation returns NULL with the connection closed (LeakSanitizer reports one left open)
// and leaves the created file with whatever the script made before it failed.
TEST(DatabaseOpen, SchemaScriptRunsOnlyOnANewFile) {
    // existing: a file's contents (nullptr: none); script: "" the shipped one, nullptr none;
    // expected: opened|existed|the tables ITEM, DLNA, A afterwards.
    const struct {
        const char *what, *existing, *script, *expected;
    } cases[] = {
        {"new", nullptr, "", "1|0|DLNA,ITEM"},
        {"empty", "", "create table A(x)", "1|1|"},
        {"missing", nullptr, nullptr, "0|0|"},
        {"failing", nullptr, "create table A(x); create tabel B(y); create table C(z);", "0|0|A"},
    };
    TempDir dir;
    for (const auto &c : cases) {
        const std::string name = c.what, path = dir.file(name + ".db");
        if (c.existing != nullptr) {
            dir.write(name + ".db", c.existing);
        }
        const std::string script = !c.script ? dir.file("none.sql")
                                   : *c.script ? dir.write(name + ".sql", c.script) : MDB_TEST_SCHEMA_SCRIPT;
        QRV_MDB_SetSchemaScriptPath(script.c_str());
        g_mdbTimeout = 7;
        int existed = -1;
        sqlite3 *db = QRV_MDB_DbInit(path.c_str(), &existed);
        QRV_MDB_SetSchemaScriptPath(nullptr);
        if (db != nullptr) {
            EXPECT_EQ(g_mdbTimeout, 80) << c.what << ": every open sets the budget";
        }
        sqlite3_close(db);
        const std::string tables = storetest::rows(storetest::openSecond(path).get(),
                                                   "select name from sqlite_master where name in ('ITEM','DLNA','A') "
                                                   "order by name");
        EXPECT_EQ(Join(db != nullptr, existed, tables), c.expected) << c.what;
    }
}

TEST(DatabaseOpen, ReadOnlyAndReadWriteOpens) {
    TempDir dir;
    EXPECT_EQ(QRV_MDB_DbInit(nullptr, nullptr), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadOnly(nullptr), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadWrite(nullptr), nullptr);
    // Read-write creates an empty file without the schema; read-only then opens it, refusing writes.
    const std::string path = dir.file("rw.db"), missing = dir.file("missing.db"), unreachable = dir.file("no/rw.db");
    for (auto open : {QRV_MDB_DbInitReadWrite, QRV_MDB_DbInitReadOnly}) {
        g_mdbTimeout = 3;
        sqlite3 *db = open(path.c_str());
        ASSERT_NE(db, nullptr);
        EXPECT_EQ(Join(g_mdbTimeout, storetest::rows(db, "select count(*) from sqlite_master")), "80|0");
        EXPECT_EQ(MdbExecSql(db, "create table A(x); drop table A", nullptr, nullptr, nullptr),
                  open == QRV_MDB_DbInitReadOnly ? SQLITE_READONLY : SQLITE_OK);
        sqlite3_close(db);
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRV_MDB_DbInitReadOnly(missing.c_str()), nullptr);
    EXPECT_EQ(QRV_MDB_DbInitReadWrite(unreachable.c_str()), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), missing + " read fail\n" + unreachable + " open fail\n");
    EXPECT_FALSE(mdbtest::fileExists(missing)) << "a read-only open must not create the file";
}

std::string Bytes(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 131 + 7) % 256);  // every byte value, NULs included
    }
    return bytes;
}

// Copies in 4096-byte steps onto a truncated target; refusals and failures print their messages.
TEST(FileCopy, CopiesEveryByteOrSaysWhyNot) {
    TempDir dir;
    const std::string source = dir.write("catalogue.db", "abc"), target = dir.file("copy.db");
    for (size_t size : {size_t{0}, size_t{4096}, size_t{4097}, size_t{3 * 4096 + 5}}) {
        const std::string big = dir.write("big.db", Bytes(size)), old = dir.write("old.db", std::string(20000, 'x'));
        EXPECT_STATUS(QRV_MDB_Copyfile(old.c_str(), big.c_str()), MDB_OK);
        EXPECT_EQ(readFile(old), Bytes(size)) << size;
    }
    EXPECT_STATUS(QRV_MDB_Copyfile(nullptr, source.c_str()), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_Copyfile(source.c_str(), nullptr), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_Copyfile(source.c_str(), source.c_str()), MDB_ERR_PARA);
    EXPECT_EQ(readFile(source), "abc") << "a copy onto itself must not truncate the file";

    testing::internal::CaptureStdout();
    EXPECT_STATUS(QRV_MDB_Copyfile(target.c_str(), dir.file("missing.db").c_str()), MDB_ERR_FAIL);
    EXPECT_STATUS(QRV_MDB_Copyfile(dir.file("no/copy.db").c_str(), source.c_str()), MDB_ERR_FAIL);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Caution: Source file can not open.\nCaution: Target db file can not open.\n");
    EXPECT_FALSE(mdbtest::fileExists(target)) << "no target without a source";
    if (mdbtest::fileExists("/dev/full")) {  // every write fails there
        testing::internal::CaptureStderr();
        EXPECT_STATUS(QRV_MDB_Copyfile("/dev/full", dir.write("large.db", Bytes(4097)).c_str()), MDB_ERR_FAIL);
        EXPECT_EQ(testing::internal::GetCapturedStderr().rfind("Caution:  Target db file write error.\n: ", 0), 0u);
    }
}

}  // namespace
