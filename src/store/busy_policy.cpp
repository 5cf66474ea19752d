// The busy policy every connection gets: a process-wide budget in milliseconds and a busy handler
// that sleeps in 10 ms steps until the budget is spent. Together with the immediate retry of the
// statement runner it makes statements wait for a lock instead of failing.
#include <mdb.h>

#include <unistd.h>

#include <cstdint>

MDB_API int32_t g_mdbTimeout = 0;

namespace {
constexpr int64_t kSleepMicros = 10000;
}

/* Give pstDb the busy handler with a budget of lMillis ms (stored in g_mdbTimeout, which the
 * handler reads at every call). A budget of 0 or less removes the handler and leaves g_mdbTimeout
 * as it was. Returns 0. */
int32_t MdbSetBusyTimeout(sqlite3 *pstDb, int32_t lMillis) {
    if (lMillis >= 1) {
        g_mdbTimeout = lMillis;
        sqlite3_busy_handler(pstDb, MdbSqliteBusyCallback, &g_mdbTimeout);
    } else {
        sqlite3_busy_handler(pstDb, nullptr, nullptr);
    }
    return 0;
}

/* SQLite's busy handler. lCount is the number of earlier calls for the same lock wait. Gives up
 * (0) once (lCount + 1) x 10 ms would exceed the budget at pvBudget; otherwise sleeps 10 ms and
 * asks SQLite to try again (1). Budget b ms thus allows b / 10 sleeps. The products are formed in
 * 64 bits so that large budgets and counts cannot overflow. No budget pointer: give up. */
int MdbSqliteBusyCallback(void *pvBudget, int lCount) {
    if (pvBudget == nullptr) {
        return 0;
    }
    const int64_t llBudgetMicros = static_cast<int64_t>(*static_cast<const int32_t *>(pvBudget)) * 1000;
    if ((static_cast<int64_t>(lCount) + 1) * kSleepMicros > llBudgetMicros) {
        return 0;
    }
    usleep(static_cast<useconds_t>(kSleepMicros));
    return 1;
}
