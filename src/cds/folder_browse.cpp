// Folder containers (music, video and picture folders): the shared root folders, and below them
// the scanned directory tree restricted to the container's media class. Rows are written by
// MdbBuildItemCallback; statements run through MdbExecSql on the process-wide connection.
#include "cds/container_answer.h"
#include "cds/folder_browse.h"

#include <mdb_platform.h>

#include "cds/item_writer.h"
#include "common/paged_select.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// The UPnP ContentDirectory error for an object that does not exist, and its text.
constexpr int32_t kUpnpErrNoSuchObject = 701;
const char kNoSuchObjectText[] = "No such object.";
// The number at the front of the trace line of a missing object; fixed so that the line never
// changes with the source.
constexpr int kNoSuchObjectTraceNumber = 120;


}  // namespace

uint32_t MdbBrowseRootFolders(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    if (ulBrowseFlag == 0) {
        return MdbAnswerWithContainer(pstNode, nullptr, nullptr, pstAction);
    }
    pstAction->ulNumberReturned = 0;
    pstAction->ulTotalMatches = 0;
    uint32_t ulStatus = MDB_OK;
    while (pstAction->ulTotalMatches < g_ulRootPathNum && g_pstRootPaths != nullptr) {
        const MdbRootPath &root = g_pstRootPaths[pstAction->ulTotalMatches];
        if (pstAction->ulTotalMatches < pstAction->ulRequestedCount) {
            char acSuffix[64];
            std::snprintf(acSuffix, sizeof acSuffix, "%c%lld", '|', root.llId);
            ulStatus = QRV_MDB_BuildMetadataForStaticContainer(pstNode, root.pcTitle, acSuffix, pstAction);
            if (ulStatus != MDB_OK) {
                return ulStatus;
            }
            ++pstAction->ulNumberReturned;
        }
        ++pstAction->ulTotalMatches;
    }
    return ulStatus;
}

/* Without a sub-id the root folders; with one, the folder or item row it names (browse flag 0)
 * or that row's children of the container's class (any other flag), listed under the
 * container's own id. */
extern "C" MDB_API uint32_t QRV_MDB_BrowseFolder(const MdbStaticContainer *pstNode, const char *pcSubId,
                                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass) {
    if (pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    if (pcSubId == nullptr) {
        return MdbBrowseRootFolders(pstNode, ulBrowseFlag, pstAction);
    }
    const long long llRowId = std::atoll(pcSubId);
    pstAction->ulTotalMatches = 0;
    char acBaseId[256] = {0};
    MdbItemBuildCtx stCtx = MdbMakeItemBuildCtx(pstNode, pstAction, acBaseId, 0);
    const uint32_t ulStatus = QRV_MDB_StaticContainerGetObjId(pstNode, acBaseId, sizeof acBaseId);
    if (ulStatus != MDB_OK) {
        return ulStatus;
    }
    return QRV_MDB_DbBrowseObject(g_pstMdbCtx, pstAction, llRowId, ulClass, ulBrowseFlag, MdbBuildItemCallback, &stCtx,
                                  &pstAction->ulTotalMatches);
}

/* Children (browse flag non-zero): the sub-folders of row llRowId that hold items of ulClass and
 * its items of ulClass, counted whole into *pulTotal and fetched one page at a time in the sort
 * order of the action. Metadata (flag 0): the row itself; with a total place its existence is
 * tested first, and a missing row sets UPnP error 701 "No such object." and MDB_ERR_NOT_FOUND.
 * A children statement that would not fit its 512 bytes (a sort text too long) is refused with
 * MDB_ERR_PARA before anything runs. A failed row statement is reported on standard output and
 * gives MDB_ERR_DB. The error text is
 * copied only when the server provided a buffer for it (the code and the line are set anyway). */
extern "C" MDB_API uint32_t QRV_MDB_DbBrowseObject(sqlite3 *pstDb, MdbActionCtx *pstAction, long long llRowId,
                                                   uint32_t ulClass, uint32_t ulBrowseFlag, MdbRowCallback pfnCallback,
                                                   void *pvArg, uint32_t *pulTotal) {
    if (pstDb == nullptr || pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    char acSql[512] = {0};
    if (ulBrowseFlag != 0) {
        // The folder bit of the class; classes of 32 and more have none, so no folder qualifies.
        const int lFolderBit = ulClass < 32 ? static_cast<int>(1u << ulClass) : 0;
        const int lClass = static_cast<int>(ulClass);
        std::snprintf(acSql, sizeof acSql,
                      "select * from DLNA where parentID=%lld and (((flags & %d) =%d and (flags & %d) >1) or "
                      "(flags & %d) =%d)",
                      llRowId, MDB_FLAGS_CLASS_MASK, static_cast<int>(MDB_CLASS_FOLDER), lFolderBit, MDB_FLAGS_CLASS_MASK, lClass);
        if (!MdbAppendPage(acSql, sizeof acSql, *pstAction, MdbSortSlot::kWhenSorted)) {
            return MDB_ERR_PARA;
        }
        if (pulTotal != nullptr) {
            char acCount[256];
            std::snprintf(acCount, sizeof acCount,
                          "select count(distinct id) from ITEM where parentID=%lld and (((flags & %d) =%d and "
                          "(flags & %d) >1) or (flags & %d) =%d)",
                          llRowId, MDB_FLAGS_CLASS_MASK, static_cast<int>(MDB_CLASS_FOLDER), lFolderBit, MDB_FLAGS_CLASS_MASK, lClass);
            MdbExecSql(pstDb, acCount, MdbGetCountCallback, pulTotal, nullptr);
        }
    } else {
        if (pulTotal != nullptr) {
            std::snprintf(acSql, sizeof acSql, "select count(*) from DLNA where id=%lld", llRowId);
            MdbExecSql(pstDb, acSql, MdbGetCountCallback, pulTotal, nullptr);
            if (*pulTotal == 0) {
                pstAction->lUpnpErrCode = kUpnpErrNoSuchObject;
                if (pstAction->pcErrStr != nullptr) {
                    std::memcpy(pstAction->pcErrStr, kNoSuchObjectText, sizeof kNoSuchObjectText);
                }
                std::printf("%d:ctx->lUpnpErrCode=[%d],ctx->pcErrStr=[%s]\n", kNoSuchObjectTraceNumber,
                            static_cast<int>(pstAction->lUpnpErrCode),
                            pstAction->pcErrStr != nullptr ? pstAction->pcErrStr : kNoSuchObjectText);
                return MDB_ERR_NOT_FOUND;
            }
        }
        std::snprintf(acSql, sizeof acSql, "select * from DLNA where id=%lld LIMIT %u OFFSET %u", llRowId,
                      pstAction->ulRequestedCount, pstAction->ulStartingIndex);
    }
    const int lResult = static_cast<int>(MdbExecSql(pstDb, acSql, pfnCallback, pvArg, nullptr));
    if (lResult != 0) {
        std::printf("SQL executing [%s] failed with code %d.\n", acSql, lResult);
        return MDB_ERR_DB;
    }
    return MDB_OK;
}
