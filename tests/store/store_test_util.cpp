// Helpers shared by the store tests (see store_test_util.h), and the test program's usleep.
#include "store_test_util.h"

#include <time.h>
#include <unistd.h>

#include <atomic>
#include <thread>

namespace {
std::atomic<int> g_sleepCalls{0};
std::atomic<std::thread::id> g_countedThread{};
}  // namespace

// The library's busy handler sleeps through usleep: count the calls of the counted thread, then
// sleep for real so that lock holders in other threads make progress.
extern "C" int usleep(useconds_t usec) {
    if (std::this_thread::get_id() == g_countedThread.load()) {
        ++g_sleepCalls;
    }
    struct timespec ts;
    ts.tv_sec = static_cast<time_t>(usec / 1000000);
    ts.tv_nsec = static_cast<long>(usec % 1000000) * 1000;
    while (nanosleep(&ts, &ts) != 0) {
    }
    return 0;
}

namespace storetest {

int sleepCount() { return g_sleepCalls.load(); }

void resetSleepCount() {
    g_countedThread.store(std::this_thread::get_id());
    g_sleepCalls.store(0);
}

SecondConnection::SecondConnection(const std::string &path) {
    EXPECT_EQ(sqlite3_open_v2(path.c_str(), &m_db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK) << path;
}

SecondConnection::~SecondConnection() { sqlite3_close(m_db); }

int SecondConnection::exec(const std::string &sql) { return sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr); }

StatementHook::StatementHook(sqlite3 *db, std::string sql, std::function<void()> action)
    : m_db(db), m_sql(std::move(sql)), m_action(std::move(action)) {
    sqlite3_trace_v2(m_db, SQLITE_TRACE_STMT, &StatementHook::onTrace, this);
}

StatementHook::~StatementHook() { sqlite3_trace_v2(m_db, 0, nullptr, nullptr); }

int StatementHook::onTrace(unsigned type, void *ctx, void *, void *text) {
    auto *self = static_cast<StatementHook *>(ctx);
    if (type != SQLITE_TRACE_STMT) {
        return 0;
    }
    ++self->m_count;
    if (self->m_action && !self->m_fired && text != nullptr && self->m_sql == static_cast<const char *>(text)) {
        self->m_fired = true;
        self->m_action();
    }
    return 0;
}

std::vector<std::string> rows(sqlite3 *db, const std::string &sql) {
    std::vector<std::string> out;
    sqlite3_stmt *stmt = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr), SQLITE_OK) << sql << ": " << sqlite3_errmsg(db);
    while (stmt != nullptr && sqlite3_step(stmt) == SQLITE_ROW) {
        std::string row;
        for (int col = 0; col < sqlite3_column_count(stmt); ++col) {
            const unsigned char *text = sqlite3_column_text(stmt, col);
            row += (col ? "|" : "") + std::string(text != nullptr ? reinterpret_cast<const char *>(text) : "NULL");
        }
        out.push_back(row);
    }
    sqlite3_finalize(stmt);
    return out;
}

}  // namespace storetest
