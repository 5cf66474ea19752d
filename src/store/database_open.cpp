// Opening the catalogue: with creation (running the schema script on a new file), read-only and
// read-write. Every connection gets the busy policy with a budget of 80 ms. Closing is the caller's.
#include <mdb.h>

#include "store/schema_script.h"

#include <cstdio>
#include <cstdlib>

namespace {
constexpr int32_t kBusyBudgetMillis = 80;
}

/* Open (creating if needed) the catalogue at pcPath. *plExisted (optional) becomes 1 when the file
 * already existed, else 0. An existing file, even an empty one, is used as it is; a new one gets
 * the schema script run as one batch. NULL when the open, the script or its run fails; the
 * connection is then closed (a file the open created stays on disk). */
sqlite3 *QRV_MDB_DbInit(const char *pcPath, int *plExisted) {
    if (pcPath == nullptr) {
        return nullptr;
    }
    if (plExisted != nullptr) {
        *plExisted = 0;
    }

    // Probe whether the file exists: a read-only open does not create it.
    sqlite3 *pstProbe = nullptr;
    bool bExisted = sqlite3_open_v2(pcPath, &pstProbe, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK;
    sqlite3_close(pstProbe);
    if (bExisted && plExisted != nullptr) {
        *plExisted = 1;
    }

    sqlite3 *pstDb = nullptr;
    if (sqlite3_open(pcPath, &pstDb) != SQLITE_OK) {
        sqlite3_close(pstDb);
        return nullptr;
    }
    MdbSetBusyTimeout(pstDb, kBusyBudgetMillis);
    if (bExisted) {
        return pstDb;
    }

    char *pcScript = MdbReadSchemaScript();
    if (pcScript == nullptr) {
        sqlite3_close(pstDb);
        return nullptr;
    }
    int lRc = MdbExecSql(pstDb, pcScript, nullptr, nullptr, nullptr);
    std::free(pcScript);
    if (lRc != SQLITE_OK) {
        sqlite3_close(pstDb);
        return nullptr;
    }
    return pstDb;
}

/* Open an existing catalogue read-only. On failure prints "<path> read fail" and returns NULL. */
sqlite3 *QRV_MDB_DbInitReadOnly(const char *pcPath) {
    if (pcPath == nullptr) {
        return nullptr;
    }
    sqlite3 *pstDb = nullptr;
    if (sqlite3_open_v2(pcPath, &pstDb, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close(pstDb);
        printf("%s read fail\n", pcPath);
        return nullptr;
    }
    MdbSetBusyTimeout(pstDb, kBusyBudgetMillis);
    return pstDb;
}

/* Open the catalogue read-write, creating an empty file if there is none (no schema script).
 * On failure prints "<path> open fail" and returns NULL. */
sqlite3 *QRV_MDB_DbInitReadWrite(const char *pcPath) {
    if (pcPath == nullptr) {
        return nullptr;
    }
    sqlite3 *pstDb = nullptr;
    if (sqlite3_open(pcPath, &pstDb) != SQLITE_OK) {
        sqlite3_close(pstDb);
        printf("%s open fail\n", pcPath);
        return nullptr;
    }
    MdbSetBusyTimeout(pstDb, kBusyBudgetMillis);
    return pstDb;
}
