// The items inside one category value (a genre, artist or album) and the one item that an id of
// the form "value,row" names: a count over ITEM and a page of DLNA view rows in the action's
// sort order, written by the caller's row callback.
#include "cds/category_browse.h"
#include "common/paged_select.h"

#include <mdb_platform.h>

#include <cstdio>

namespace {


/* The count and row statements of one kind of category listing. Both formats take the category
 * (or row) id, the class mask and the class; the row statement is followed by the page, whose
 * sort text always has its place (an empty text without a sort). */
struct CategoryStatements {
    const char *pcCount;
    const char *pcRows;
};

constexpr CategoryStatements kGenreItems = {
    "select count(distinct ITEM.id) from ITEM where ITEM.exID_GENRE=%d and (flags & %d)=%d",
    "select * from DLNA where DLNA.genre_id=%d and (DLNA.flags & %d)=%d"};
constexpr CategoryStatements kArtistItems = {
    "select count(distinct ITEM.id) from ITEM where ITEM.exID_ARTIST=%d and (flags & %d)=%d",
    "select * from DLNA where DLNA.artist_id=%d and (flags & %d)=%d"};
constexpr CategoryStatements kAlbumItems = {
    "select count(distinct ITEM.id) from ITEM where ITEM.exID_ALBUM=%d and (flags & %d)=%d",
    "select * from DLNA where DLNA.album_id=%d and (flags & %d)=%d"};
constexpr CategoryStatements kOneItem = {
    "select count(id) from ITEM where id=%d and (flags & %d)=%d",
    "select * from DLNA where id=%d and (flags & %d)=%d"};

/* Runs the count statement into *pulTotal (when given; its result is not tested), then the row
 * statement with the callback. MDB_ERR_PARA without connection or action, or when the row
 * statement would not fit (nothing runs then); MDB_ERR_DB when it fails, else MDB_OK. */
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
uint32_t RunCategoryStatements(const CategoryStatements &stStatements, sqlite3 *pstDb, MdbActionCtx *pstAction,
                               int32_t lId, uint32_t ulClass, MdbRowCallback pfnCallback, void *pvArg,
                               uint32_t *pulTotal) {
    if (pstDb == nullptr || pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    const int lClass = static_cast<int>(ulClass);
    char acRows[512] = {0};
    std::snprintf(acRows, sizeof acRows, stStatements.pcRows, static_cast<int>(lId), MDB_FLAGS_CLASS_MASK, lClass);
    if (!MdbAppendPage(acRows, sizeof acRows, *pstAction, MdbSortSlot::kAlways)) {
        return MDB_ERR_PARA;
    }
    if (pulTotal != nullptr) {
        char acCount[512] = {0};
        std::snprintf(acCount, sizeof acCount, stStatements.pcCount, static_cast<int>(lId), MDB_FLAGS_CLASS_MASK, lClass);
        MdbExecSql(pstDb, acCount, MdbGetCountCallback, pulTotal, nullptr);
    }
    return MdbExecSql(pstDb, acRows, pfnCallback, pvArg, nullptr) != 0 ? MDB_ERR_DB : MDB_OK;
}
#pragma GCC diagnostic pop

}  // namespace

uint32_t MdbBrowseGenreItems(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lId, uint32_t ulClass,
                             MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal) {
    return RunCategoryStatements(kGenreItems, pstDb, pstAction, lId, ulClass, pfnCallback, pvArg, pulTotal);
}

uint32_t MdbBrowseArtistItems(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lId, uint32_t ulClass,
                              MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal) {
    return RunCategoryStatements(kArtistItems, pstDb, pstAction, lId, ulClass, pfnCallback, pvArg, pulTotal);
}

uint32_t MdbBrowseAlbumItems(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lId, uint32_t ulClass,
                             MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal) {
    return RunCategoryStatements(kAlbumItems, pstDb, pstAction, lId, ulClass, pfnCallback, pvArg, pulTotal);
}

uint32_t MdbBrowseCategoryItem(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lRowId, uint32_t ulClass,
                               MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal) {
    return RunCategoryStatements(kOneItem, pstDb, pstAction, lRowId, ulClass, pfnCallback, pvArg, pulTotal);
}
