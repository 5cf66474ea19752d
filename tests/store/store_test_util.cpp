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

// Counts the calls of the counted thread, then sleeps for real so that lock holders in other
// connections make progress.
extern "C" int usleep(useconds_t usec) {
    if (std::this_thread::get_id() == g_countedThread.load()) ++g_sleepCalls;
    struct timespec ts = {static_cast<time_t>(usec / 1000000), static_cast<long>(usec % 1000000) * 1000};
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

Connection openSecond(const std::string &path) {
    sqlite3 *db = nullptr;
    EXPECT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK) << path;
    return Connection(db, sqlite3_close);
}

InsertBefore::InsertBefore(sqlite3 *db, const std::string &path, std::string sql, std::string insert)
    : m_db(db), m_other(openSecond(path)), m_sql(std::move(sql)), m_insert(std::move(insert)) {
    auto onStatement = [](unsigned, void *ctx, void *, void *text) {
        auto *self = static_cast<InsertBefore *>(ctx);
        if (self->m_rc == -1 && text != nullptr && self->m_sql == static_cast<const char *>(text)) {
            self->m_rc = sqlite3_exec(self->m_other.get(), self->m_insert.c_str(), nullptr, nullptr, nullptr);
        }
        return 0;
    };
    sqlite3_trace_v2(m_db, SQLITE_TRACE_STMT, onStatement, this);
}

}  // namespace storetest
