// All-items containers (all music, all video, all pictures): every item of the container's media
// class in one flat list, paged and sorted in SQL, written by MdbBuildItemCallback.
#include "cds/container_answer.h"
#include <mdb.h>
#include <mdb_platform.h>

#include "cds/item_writer.h"
#include "common/paged_select.h"

#include <cstdio>
#include <cstdlib>

/* Without a sub-id: the container's own metadata (browse flag 0) or all items of ulClass. With a
 * sub-id: the metadata of that row, whatever the browse flag; the row is not checked for
 * existence or class. */
extern "C" MDB_API uint32_t QRV_MDB_BrowseAll(const MdbStaticContainer *pstNode, const char *pcSubId,
                                              uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass) {
    if (pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    long long llRowId = 0;
    if (pcSubId != nullptr) {
        ulBrowseFlag = 0;
        llRowId = std::strtoll(pcSubId, nullptr, 10);
    } else if (ulBrowseFlag == 0) {
        return MdbAnswerWithContainer(pstNode, nullptr, nullptr, pstAction);
    }
    char acBaseId[256] = {0};
    const uint32_t ulStatus = QRV_MDB_StaticContainerGetObjId(pstNode, acBaseId, sizeof acBaseId);
    if (ulStatus != MDB_OK) {
        return ulStatus;
    }
    pstAction->ulTotalMatches = 0;
    MdbItemBuildCtx stCtx = MdbMakeItemBuildCtx(pstNode, pstAction, acBaseId, 0);
    return QRV_MDB_DbBrowseByType(g_pstMdbCtx, pstAction, llRowId, ulClass, ulBrowseFlag, MdbBuildItemCallback, &stCtx,
                                  &pstAction->ulTotalMatches);
}

/* Browse flag non-zero: all rows of ulClass, counted whole into *pulTotal, one page in the
 * action's sort order. Flag 0: row llRowId, with a total of 1 whether or not it exists.
 * A statement that would not fit its 512 bytes (a sort text too long) is refused with MDB_ERR_PARA
 * before anything runs; a failed row statement gives MDB_ERR_DB. */
extern "C" MDB_API uint32_t QRV_MDB_DbBrowseByType(sqlite3 *pstDb, MdbActionCtx *pstAction, long long llRowId,
                                                   uint32_t ulClass, uint32_t ulBrowseFlag, MdbRowCallback pfnCallback,
                                                   void *pvArg, uint32_t *pulTotal) {
    if (pstDb == nullptr || pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    char acSql[512] = {0};
    if (ulBrowseFlag != 0) {
        const int lClass = static_cast<int>(ulClass);
        std::snprintf(acSql, sizeof acSql, "select * from DLNA where ((flags & %d) = %d)", MDB_FLAGS_CLASS_MASK, lClass);
        if (!MdbAppendPage(acSql, sizeof acSql, *pstAction, MdbSortSlot::kWhenSorted)) {
            return MDB_ERR_PARA;
        }
        if (pulTotal != nullptr) {
            char acCount[128];
            std::snprintf(acCount, sizeof acCount, "select count(distinct id) from ITEM where ((flags & %d) = %d)",
                          MDB_FLAGS_CLASS_MASK, lClass);
            MdbExecSql(pstDb, acCount, MdbGetCountCallback, pulTotal, nullptr);
        }
    } else {
        std::snprintf(acSql, sizeof acSql, "select * from DLNA where id=%lld LIMIT %u OFFSET %u", llRowId,
                      pstAction->ulRequestedCount, pstAction->ulStartingIndex);
        if (pulTotal != nullptr) {
            *pulTotal = 1;
        }
    }
    if (MdbExecSql(pstDb, acSql, pfnCallback, pvArg, nullptr) != 0) {
        return MDB_ERR_DB;
    }
    return MDB_OK;
}
