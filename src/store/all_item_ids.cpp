// The list of every ITEM id: counted, allocated, then filled by a second statement. The two run
// without a transaction, so rows may come or go in between; the fill never writes past the count.
#include "store/all_item_ids.h"

#include <mdb.h>

#include "store/store_alloc.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

MDB_API long long *g_pllIDArray = nullptr;
MDB_API uint32_t g_ulIDArrayCount = 0;

int MdbGetBoundedIdListCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    MdbIdListBound *pstBound = static_cast<MdbIdListBound *>(pvArg);
    if (pstBound == nullptr || pstBound->ulRoomLeft == 0 || pstBound->pllNext == nullptr || lColNum < 1 ||
        ppcValues == nullptr) {
        return 0;
    }
    *pstBound->pllNext = ppcValues[0] != nullptr ? std::atoll(ppcValues[0]) : -1;
    ++pstBound->pllNext;
    --pstBound->ulRoomLeft;
    return 0;
}

/* Count the ITEM rows into g_ulIDArrayCount, allocate g_pllIDArray (zeroed) for them and fill it
 * with the ids in SQLite's order. Ids that appear after the count are dropped; entries the fill
 * does not reach stay 0. A count of 0 allocates nothing and leaves g_pllIDArray as it was. An
 * earlier array is not released: that and the new one are the caller's to free. On allocation
 * failure g_pllIDArray is NULL and g_ulIDArrayCount 0 (MDB_ERR_MEM). A NULL connection: MDB_OK,
 * nothing changed. */
uint32_t QRV_MDB_DbGetAllItemID(sqlite3 *pstDb) {
    if (pstDb == nullptr) {
        return MDB_OK;
    }
    if (MdbExecSql(pstDb, "select count(*) from ITEM", MdbGetCountCallback, &g_ulIDArrayCount, nullptr) !=
        SQLITE_OK) {
        return MDB_ERR_DB;
    }
    const uint32_t ulCount = g_ulIDArrayCount;
    if (ulCount == 0) {
        return MDB_OK;
    }
    long long *pllArray = static_cast<long long *>(MdbAllocArray(ulCount, sizeof(long long)));
    g_pllIDArray = pllArray;
    if (pllArray == nullptr) {
        g_ulIDArrayCount = 0;
        return MDB_ERR_MEM;
    }
    std::memset(pllArray, 0, ulCount * sizeof(long long));

    MdbIdListBound stBound{pllArray, ulCount};
    if (MdbExecSql(pstDb, "select id from ITEM", MdbGetBoundedIdListCallback, &stBound, nullptr) != SQLITE_OK) {
        return MDB_ERR_DB;
    }
    return MDB_OK;
}
