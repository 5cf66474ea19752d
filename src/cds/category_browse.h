// Category containers (music genres, artists and albums, video creators and albums): the list
// routines that write one container per value, the item routines that list a value's items, and
// the row callback of the value lists. Internal to the library.
#pragma once

#include <mdb.h>

// The argument of MdbBuildCategoryCallback: the category container and the action.
typedef struct MdbCategoryListCtx {
    const MdbStaticContainer *pstNode;
    MdbActionCtx *pstAction;
} MdbCategoryListCtx;

/* Row callback over (exID, name) rows: writes the first ulRequestedCount values as containers of
 * the node (suffix "|" and exID, the name as title) and counts every value in ulTotalMatches.
 * ulStartingIndex does not apply. A NULL argument is ignored. Always returns 0. */
int MdbBuildCategoryCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);

/* Browse flag 0: the node's own metadata with both counters 1. Otherwise the values of the
 * category as containers of the node, in the database's natural order; the result is the
 * statement runner's SQLite result code, passed on (MDB_ERR_PARA without a connection).
 * The artist and album lists show only values that have items of ulClass. */
uint32_t MdbBrowseGenreList(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction);
uint32_t MdbBrowseArtistList(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction,
                             uint32_t ulClass);
uint32_t MdbBrowseAlbumList(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction,
                            uint32_t ulClass);

/* The items of class ulClass that carry category value lId: counted into *pulTotal when given,
 * one page fetched in the action's sort order with pfnCallback. MDB_ERR_PARA without connection
 * or action, MDB_ERR_DB when the row statement fails, else MDB_OK. */
uint32_t MdbBrowseGenreItems(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lId, uint32_t ulClass,
                             MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal);
uint32_t MdbBrowseArtistItems(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lId, uint32_t ulClass,
                              MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal);
uint32_t MdbBrowseAlbumItems(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lId, uint32_t ulClass,
                             MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal);
/* The same for the one row lRowId, when it has class ulClass (a missing row gives MDB_OK and a
 * total of 0). */
uint32_t MdbBrowseCategoryItem(sqlite3 *pstDb, MdbActionCtx *pstAction, int32_t lRowId, uint32_t ulClass,
                               MdbRowCallback pfnCallback, void *pvArg, uint32_t *pulTotal);
