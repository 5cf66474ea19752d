// The Search request: checks the criteria, translates them with the search container into a WHERE
// clause, and runs the count and the paged select on the DLNA view, whose rows the item writer or,
// for genre, artist and album results, the category writer turn into DIDL-Lite objects.
#include "cds/item_writer.h"
#include "common/paged_select.h"
#include "common/tree_ids.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr uint32_t kContainerCopySize = 256;
constexpr uint32_t kWhereSize = 512;
constexpr uint32_t kStatementSize = 512;

/* The column pair that a category result of class ulResultClass lists ("genre_id,genre"), or NULL
 * for item results. */
const char *CategoryColumns(uint32_t ulResultClass, char (&acColumns)[40]) {
    for (uint32_t i = 0; i < g_ulSearchCategoryNum; ++i) {
        const MdbSearchCategory &stCat = g_astSearchCategories[i];
        if (stCat.ulClass == ulResultClass) {
            std::snprintf(acColumns, sizeof(acColumns), "%s,%s", stCat.acColumn, stCat.acNameColumn);
            return acColumns;
        }
    }
    return nullptr;
}

/* Format the paged select into acSql; false when it would not fit (it is never cut). */
bool FormatSelect(char (&acSql)[kStatementSize], const char *pcColumns, bool bDistinct, const char *pcWhere,
                  const MdbActionCtx &stAction) {
    const int lLen = std::snprintf(acSql, sizeof(acSql), "select %s%s from DLNA where %s", bDistinct ? "distinct " : "",
                                   pcColumns, pcWhere);
    return lLen >= 0 && lLen < static_cast<int>(sizeof(acSql)) &&
           MdbAppendPage(acSql, sizeof(acSql), stAction, MdbSortSlot::kWhenSorted);
}

}  // namespace

/* Check and translate the criteria, then run the statements; see mdb.h. */
extern "C" MDB_API uint32_t QRV_MDB_DbSearch(sqlite3 *pstDb, MdbActionCtx *pstAction, uint32_t ulReserved1,
                                             uint32_t ulReserved2, const char *pcCriteria, char *pcCopy,
                                             uint32_t ulCopySize, MdbRowCallback pfnItemCallback, void *pvArg,
                                             uint32_t *pulTotal) {
    (void)ulReserved1;
    (void)ulReserved2;
    if (pstDb == nullptr || pstAction == nullptr || pcCriteria == nullptr) {
        return MDB_ERR_PARA;
    }
    MdbSearchSyntax stSyntax;
    std::memset(&stSyntax, 0, sizeof(stSyntax));
    if (MDBSearchCriteriaSyntax(pcCriteria, &stSyntax) != MDB_OK) {
        return MDB_ERR_PARA;
    }
    // The separator flag belongs to the item build context; without one it goes nowhere.
    uint32_t ulUnusedCommaSep = 0;
    MdbItemBuildCtx *pstBuild = static_cast<MdbItemBuildCtx *>(pvArg);
    uint32_t *pulCommaSep = pstBuild != nullptr ? &pstBuild->ulCommaSep : &ulUnusedCommaSep;
    uint32_t ulResultClass = 0;
    char acWhere[kWhereSize];
    if (MDBSearchCriteriaCheck(pstAction->pcObjectId, pcCopy, ulCopySize, &ulResultClass, acWhere, sizeof(acWhere),
                               pulCommaSep, &stSyntax) != MDB_OK) {
        return MDB_ERR_PARA;
    }
    if (ulResultClass != 0) {
        std::snprintf(pstAction->pcObjectId, kContainerCopySize, "%s", pcCopy);
    }

    char acColumns[40];
    const char *pcCategory = CategoryColumns(ulResultClass, acColumns);
    char acSql[kStatementSize];
    if (!FormatSelect(acSql, pcCategory != nullptr ? pcCategory : "*", pcCategory != nullptr, acWhere, *pstAction)) {
        return MDB_ERR_PARA;
    }
    if (pcCategory != nullptr) {
        return MdbExecSql(pstDb, acSql, MdbBuildSearchCategoryCallback, pvArg, nullptr) == SQLITE_OK ? MDB_OK
                                                                                                      : MDB_ERR_DB;
    }
    if (pulTotal != nullptr) {
        char acCount[kStatementSize];
        int lLen = std::snprintf(acCount, sizeof(acCount), "select count(*) from DLNA where %s", acWhere);
        if (lLen < 0 || lLen >= static_cast<int>(sizeof(acCount))) {
            return MDB_ERR_PARA;
        }
        // A failing count leaves the total as it was; the select still runs.
        (void)MdbExecSql(pstDb, acCount, MdbGetCountCallback, pulTotal, nullptr);
    }
    return MdbExecSql(pstDb, acSql, pfnItemCallback, pvArg, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB;
}

/* Set up one Search on the process-wide connection; see mdb.h. A ContainerID longer than the
 * 255 characters of the container copy is refused rather than cut, since its sub-id goes into SQL. */
extern "C" MDB_API uint32_t QRV_MDB_Search(const char *pcContainerId, const char *pcCriteria, MdbActionCtx *pstAction) {
    if (pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    pstAction->ulTotalMatches = 0;
    char acCopy[kContainerCopySize] = "";
    if (pcContainerId != nullptr &&
        std::snprintf(acCopy, sizeof(acCopy), "%s", pcContainerId) >= static_cast<int>(sizeof(acCopy))) {
        return MDB_ERR_PARA;
    }
    MdbItemBuildCtx stBuild = MdbMakeItemBuildCtx(nullptr, pstAction, acCopy, 0);
    return QRV_MDB_DbSearch(g_pstMdbCtx, pstAction, 0, 0, pcCriteria, acCopy, sizeof(acCopy), MdbBuildItemCallback,
                            &stBuild, &pstAction->ulTotalMatches);
}
