// The root folder list: the rows with parentID 0, read into g_pstRootPaths/g_ulRootPathNum for the
// folder browse. Only QRV_MDB_DbGetRoots writes the list; the server decides when to rebuild it.
#include <mdb.h>

#include "store/store_alloc.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

MDB_API MdbRootPath *g_pstRootPaths = nullptr;
MDB_API uint32_t g_ulRootPathNum = 0;

namespace {

// The fill position in the new list and the number of entries still free behind it.
struct RootFillCursor {
    MdbRootPath *pstNext;
    uint32_t ulRoomLeft;
};

// Columns id, title: one root into the entry at the cursor (a NULL title stays NULL). Rows beyond
// the counted room are dropped.
int MdbGetRootsCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    RootFillCursor *pstCursor = static_cast<RootFillCursor *>(pvArg);
    if (pstCursor == nullptr || pstCursor->ulRoomLeft == 0 || lColNum < 2 || ppcValues == nullptr) {
        return 0;
    }
    pstCursor->pstNext->llId = ppcValues[0] != nullptr ? std::atoll(ppcValues[0]) : 0;
    pstCursor->pstNext->pcTitle = ppcValues[1] != nullptr ? strdup(ppcValues[1]) : nullptr;
    ++pstCursor->pstNext;
    --pstCursor->ulRoomLeft;
    return 0;
}

// Frees every title and the array of the current list and leaves no list.
void ReleaseRootList() {
    if (g_pstRootPaths != nullptr) {
        for (uint32_t ulIdx = 0; ulIdx < g_ulRootPathNum; ++ulIdx) {
            std::free(g_pstRootPaths[ulIdx].pcTitle);
            g_pstRootPaths[ulIdx].pcTitle = nullptr;
        }
        std::free(g_pstRootPaths);
        g_pstRootPaths = nullptr;
    }
    g_ulRootPathNum = 0;
}

}  // namespace

/* Rebuild the root list from the rows with parentID 0: the old list is released first, then the
 * roots are counted, an array of that many entries allocated (zeroed) and filled with id and a
 * copy of the title. Roots added between count and fill are left for the next rebuild; entries the
 * fill does not reach keep a NULL title and id 0. No roots: MDB_OK, no list. MDB_ERR_PARA for a
 * NULL connection (the old list stays); MDB_ERR_DB when a statement fails (after a failed fill
 * the partly filled list stays); MDB_ERR_MEM when the array cannot be allocated (no list). */
uint32_t QRV_MDB_DbGetRoots(sqlite3 *pstDb) {
    if (pstDb == nullptr) {
        return MDB_ERR_PARA;
    }
    ReleaseRootList();

    uint32_t ulCount = 0;
    if (MdbExecSql(pstDb, "select count(*) from ITEM where parentID=0", MdbGetCountCallback, &ulCount, nullptr) !=
        SQLITE_OK) {
        return MDB_ERR_DB;
    }
    if (ulCount == 0) {
        return MDB_OK;
    }
    MdbRootPath *pstList = static_cast<MdbRootPath *>(MdbAllocArray(ulCount, sizeof(MdbRootPath)));
    if (pstList == nullptr) {
        return MDB_ERR_MEM;
    }
    std::memset(pstList, 0, ulCount * sizeof(MdbRootPath));
    g_pstRootPaths = pstList;
    g_ulRootPathNum = ulCount;

    RootFillCursor stCursor{pstList, ulCount};
    if (MdbExecSql(pstDb, "select id,title from ITEM where parentID=0", MdbGetRootsCallback, &stCursor, nullptr) !=
        SQLITE_OK) {
        return MDB_ERR_DB;
    }
    return MDB_OK;
}
