// The items inside one category value (a genre, artist or album) and the one item that an id of
// the form "value,row" names: a count over ITEM and a page of DLNA view rows in the action's
// sort order, written by the caller's row callback.
#include "cds/category_browse.h"

#include <mdb_platform.h>

#include <cstdio>

namespace {

constexpr int kClassMask = static_cast<int>(MDB_FLAGS_CLASS_MASK);

const char *SortText(const MdbActionCtx *pstAction) {
    return pstAction->pcSortStr != nullptr ? pstAction->pcSortStr : "";
}

/* Runs the count statement into *pulTotal (when given; its result is not tested), then the row
 * statement with the callback. */
uint32_t RunCountAndRows(sqlite3 *pstDb, const char *pcCountSql, const char *pcRowsSql, MdbRowCallback pfnCallback,
                         void *pvArg, uint32_t *pulTotal) {
    if (pulTotal != nullptr) {
        MdbExecSql(pstDb, pcCountSql, MdbGetCountCallback, pulTotal, nullptr);
    }
    return MdbExecSql(pstDb, pcRowsSql, pfnCallback, pvArg, nullptr) != 0 ? MDB_ERR_DB : MDB_OK;
}

}  // namespace

uint32_t MdbBrowseGenreItems(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lId, uint32_t ulClass,
                             MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal) {
    if (pstDb == nullptr || pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    const int lClass = static_cast<int>(ulClass);
    char acCount[512] = {0};
    char acRows[512] = {0};
    std::snprintf(acCount, sizeof acCount,
                  "select count(distinct ITEM.id) from ITEM where ITEM.exID_GENRE=%d and (flags & %d)=%d",
                  static_cast<int>(lId), kClassMask, lClass);
    std::snprintf(acRows, sizeof acRows,
                  "select * from DLNA where DLNA.genre_id=%d and (DLNA.flags & %d)=%d %s LIMIT %u OFFSET %u",
                  static_cast<int>(lId), kClassMask, lClass, SortText(pstAction), pstAction->ulRequestedCount,
                  pstAction->ulStartingIndex);
    return RunCountAndRows(pstDb, acCount, acRows, pfnCallback, pvArg, pulTotal);
}

uint32_t MdbBrowseArtistItems(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lId, uint32_t ulClass,
                              MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal) {
    if (pstDb == nullptr || pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    const int lClass = static_cast<int>(ulClass);
    char acCount[512] = {0};
    char acRows[512] = {0};
    std::snprintf(acCount, sizeof acCount,
                  "select count(distinct ITEM.id) from ITEM where ITEM.exID_ARTIST=%d and (flags & %d)=%d",
                  static_cast<int>(lId), kClassMask, lClass);
    std::snprintf(acRows, sizeof acRows,
                  "select * from DLNA where DLNA.artist_id=%d and (flags & %d)=%d %s LIMIT %u OFFSET %u",
                  static_cast<int>(lId), kClassMask, lClass, SortText(pstAction), pstAction->ulRequestedCount,
                  pstAction->ulStartingIndex);
    return RunCountAndRows(pstDb, acCount, acRows, pfnCallback, pvArg, pulTotal);
}

uint32_t MdbBrowseAlbumItems(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lId, uint32_t ulClass,
                             MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal) {
    if (pstDb == nullptr || pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    const int lClass = static_cast<int>(ulClass);
    char acCount[512] = {0};
    char acRows[512] = {0};
    std::snprintf(acCount, sizeof acCount,
                  "select count(distinct ITEM.id) from ITEM where ITEM.exID_ALBUM=%d and (flags & %d)=%d",
                  static_cast<int>(lId), kClassMask, lClass);
    std::snprintf(acRows, sizeof acRows,
                  "select * from DLNA where DLNA.album_id=%d and (flags & %d)=%d %s LIMIT %u OFFSET %u",
                  static_cast<int>(lId), kClassMask, lClass, SortText(pstAction), pstAction->ulRequestedCount,
                  pstAction->ulStartingIndex);
    return RunCountAndRows(pstDb, acCount, acRows, pfnCallback, pvArg, pulTotal);
}

uint32_t MdbBrowseCategoryItem(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lRowId, uint32_t ulClass,
                               MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal) {
    if (pstDb == nullptr || pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    const int lClass = static_cast<int>(ulClass);
    char acCount[512] = {0};
    char acRows[512] = {0};
    std::snprintf(acCount, sizeof acCount, "select count(id) from ITEM where id=%d and (flags & %d)=%d",
                  static_cast<int>(lRowId), kClassMask, lClass);
    std::snprintf(acRows, sizeof acRows, "select * from DLNA where id=%d and (flags & %d)=%d %s LIMIT %u OFFSET %u",
                  static_cast<int>(lRowId), kClassMask, lClass, SortText(pstAction), pstAction->ulRequestedCount,
                  pstAction->ulStartingIndex);
    return RunCountAndRows(pstDb, acCount, acRows, pfnCallback, pvArg, pulTotal);
}
