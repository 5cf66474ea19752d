// The value lists of category containers (all genres; the artists and albums that have items of
// the container's class) and the row callbacks that write each value as a container: one for
// Browse, one for the category results of Search.
#include "cds/container_answer.h"
#include "cds/category_browse.h"

#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>

namespace {


/* Shared by the three lists: flag 0 writes the node itself, any other flag runs the value list
 * pcSql with MdbBuildCategoryCallback. */
uint32_t BrowseValueList(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction,
                         const char *pcSql) {
    if (ulBrowseFlag == 0) {
        return MdbAnswerWithContainer(pstNode, nullptr, nullptr, pstAction);
    }
    pstAction->ulNumberReturned = 0;
    pstAction->ulTotalMatches = 0;
    if (g_pstMdbCtx == nullptr) {
        return MDB_ERR_PARA;
    }
    MdbCategoryListCtx stCtx{pstNode, pstAction};
    return static_cast<uint32_t>(MdbExecSql(g_pstMdbCtx, pcSql, MdbBuildCategoryCallback, &stCtx, nullptr));
}

/* The values of lookup table pcTable that items of ulClass point at through column pcColumn. */
uint32_t BrowseValuesWithItems(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction,
                               const char *pcTable, const char *pcColumn, uint32_t ulClass) {
    char acSql[512] = {0};
    std::snprintf(acSql, sizeof acSql,
                  "select exID,name from %s where exID in(select distinct ITEM.%s from ITEM where ITEM.flags&%d=%d)",
                  pcTable, pcColumn, MDB_FLAGS_CLASS_MASK, static_cast<int>(ulClass));
    return BrowseValueList(pstNode, ulBrowseFlag, pstAction, acSql);
}

const char *ValueName(int lColNum, char **ppcValues) { return lColNum > 1 ? ppcValues[1] : nullptr; }

}  // namespace

int MdbBuildCategoryCallback(void *pvArg, int lColNum, char **ppcValues, char ** /*ppcNames*/) {
    MdbCategoryListCtx *pstCtx = static_cast<MdbCategoryListCtx *>(pvArg);
    if (pstCtx == nullptr || pstCtx->pstAction == nullptr || ppcValues == nullptr || lColNum < 1) {
        return 0;
    }
    MdbActionCtx *pstAction = pstCtx->pstAction;
    if (pstAction->ulTotalMatches < pstAction->ulRequestedCount) {
        char acSuffix[64];
        std::snprintf(acSuffix, sizeof acSuffix, "%c%lld", '|', ppcValues[0] != nullptr ? std::atoll(ppcValues[0]) : 0);
        QRV_MDB_BuildMetadataForStaticContainer(pstCtx->pstNode, ValueName(lColNum, ppcValues), acSuffix, pstAction);
        ++pstAction->ulNumberReturned;
    }
    ++pstAction->ulTotalMatches;
    return 0;
}

/* Row callback of Search over (category id, name) rows; pvArg is the Search's MdbItemBuildCtx.
 * The first ulRequestedCount values are written as containers of the container that the action's
 * ObjectID names ("|" and the category id as suffix); every value counts in ulTotalMatches.
 * A ObjectID that does not resolve stops the statement with its status. */
extern "C" MDB_API int MdbBuildSearchCategoryCallback(void *pvArg, int lColNum, char **ppcValues, char ** /*ppcNames*/) {
    MdbItemBuildCtx *pstCtx = static_cast<MdbItemBuildCtx *>(pvArg);
    if (pstCtx == nullptr || pstCtx->pstAction == nullptr || ppcValues == nullptr || lColNum < 1) {
        return 0;
    }
    MdbActionCtx *pstAction = pstCtx->pstAction;
    if (pstAction->ulTotalMatches < pstAction->ulRequestedCount) {
        const MdbStaticContainer *pstNode = nullptr;
        const uint32_t ulStatus = MdbLocateStaticContainerById(pstAction->pcObjectId, &pstNode, nullptr);
        if (ulStatus != MDB_OK) {
            return static_cast<int>(ulStatus);
        }
        char acSuffix[64];
        std::snprintf(acSuffix, sizeof acSuffix, "|%lld", ppcValues[0] != nullptr ? std::atoll(ppcValues[0]) : 0);
        QRV_MDB_BuildMetadataForStaticContainer(pstNode, ValueName(lColNum, ppcValues), acSuffix, pstAction);
        ++pstAction->ulNumberReturned;
    }
    ++pstAction->ulTotalMatches;
    return 0;
}

uint32_t MdbBrowseGenreList(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return BrowseValueList(pstNode, ulBrowseFlag, pstAction, "select exID,name from GENRES");
}

uint32_t MdbBrowseArtistList(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction,
                             uint32_t ulClass) {
    return BrowseValuesWithItems(pstNode, ulBrowseFlag, pstAction, "ARTISTS", "exID_ARTIST", ulClass);
}

uint32_t MdbBrowseAlbumList(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction,
                            uint32_t ulClass) {
    return BrowseValuesWithItems(pstNode, ulBrowseFlag, pstAction, "ALBUMS", "exID_ALBUM", ulClass);
}
