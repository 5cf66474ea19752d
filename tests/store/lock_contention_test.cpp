// Real lock contention: another thread's connection holds a write transaction on the catalogue
// file while the first connection writes through MdbExecSql. The runner must wait (busy handler,
// then immediate re-runs) and succeed once the lock is released, losing nothing.
#include "store_test_util.h"

#include "catalogue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using namespace std::chrono_literals;
using storetest::resetSleepCount;
using storetest::sleepCount;

// More than two busy budgets of 80 ms (8 sleeps each): the lock outlasts the handler, so only the
// runner's re-runs can make the statement succeed.
constexpr int kSleepsWhileHeld = 20;
constexpr auto kGiveUpAfter = 20s;  // bound on every wait; a healthy run takes a few hundred ms

// Holds "BEGIN IMMEDIATE; insert 'held'" on a second connection from another thread until the
// first thread's busy handler has slept kSleepsWhileHeld times, then commits.
class LockHolder {
public:
    explicit LockHolder(const std::string &path) {
        m_thread = std::thread([this, path] {
            storetest::SecondConnection conn(path);
            m_beginRc = conn.exec("BEGIN IMMEDIATE; insert into GENRES values (NULL, 'held')");
            m_locked = true;
            auto deadline = std::chrono::steady_clock::now() + kGiveUpAfter;
            while (sleepCount() < kSleepsWhileHeld && std::chrono::steady_clock::now() < deadline) {
                std::this_thread::sleep_for(1ms);
            }
            m_sleepsSeenWhileHeld = sleepCount();
            // The writer may hold a shared lock for an instant: retry the commit, bounded.
            for (int attempt = 0; attempt < 20000; ++attempt) {
                m_commitRc = conn.exec("COMMIT");
                if (m_commitRc != SQLITE_BUSY) {
                    break;
                }
                std::this_thread::sleep_for(1ms);
            }
        });
        auto deadline = std::chrono::steady_clock::now() + kGiveUpAfter;
        while (!m_locked && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(1ms);
        }
    }
    ~LockHolder() { join(); }
    void join() {
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }
    bool locked() const { return m_locked; }
    int beginRc() const { return m_beginRc; }
    int commitRc() const { return m_commitRc; }
    int sleepsSeenWhileHeld() const { return m_sleepsSeenWhileHeld; }

private:
    std::thread m_thread;
    std::atomic<bool> m_locked{false};
    std::atomic<int> m_beginRc{-1};
    std::atomic<int> m_commitRc{-1};
    std::atomic<int> m_sleepsSeenWhileHeld{0};
};

int CountRows(void *arg, int, char **, char **) {
    ++*static_cast<int *>(arg);
    return 0;
}

TEST(LockContention, WriteWaitsForAnotherConnectionsTransaction) {
    mdbtest::Catalogue catalogue;
    resetSleepCount();
    LockHolder holder(catalogue.dbPath());
    ASSERT_TRUE(holder.locked());
    ASSERT_EQ(holder.beginRc(), SQLITE_OK);

    int rc = MdbExecSql(catalogue.db(), "insert into GENRES values (NULL, 'waiting')", nullptr, nullptr, nullptr);
    holder.join();

    EXPECT_EQ(rc, SQLITE_OK);
    EXPECT_EQ(holder.commitRc(), SQLITE_OK);
    EXPECT_GE(holder.sleepsSeenWhileHeld(), kSleepsWhileHeld) << "the writer did not wait on the held lock";
    EXPECT_EQ(storetest::column(catalogue.db(), "select name from GENRES order by exID"),
              (std::vector<std::string>{"held", "waiting"}));
}

// A batch whose first statement reads and whose second writes: every busy run starts the whole
// text again, so the read's callback runs once per run; the write lands exactly once.
TEST(LockContention, BusyBatchIsRunAgainFromItsFirstStatement) {
    mdbtest::Catalogue catalogue;
    resetSleepCount();
    LockHolder holder(catalogue.dbPath());
    ASSERT_TRUE(holder.locked());

    int readRows = 0;
    int rc = MdbExecSql(catalogue.db(),
                        "select count(*) from GENRES; insert into GENRES values (NULL, 'batch')", CountRows,
                        &readRows, nullptr);
    holder.join();

    EXPECT_EQ(rc, SQLITE_OK);
    EXPECT_GE(readRows, 2) << "the runner must re-run the batch from its first statement";
    EXPECT_EQ(catalogue.scalar("select count(*) from GENRES where name='batch'"), "1");
    EXPECT_EQ(catalogue.scalar("select count(*) from GENRES where name='held'"), "1");
}

}  // namespace
