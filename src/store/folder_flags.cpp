// Folder flags: the bits a folder row carries for each class of items found below it, and whether
// a folder holds anything worth showing. The flags operations read and write in two statements
// without a transaction of their own.
#include <mdb.h>
#include <mdb_platform.h>

#include "store/sql_text.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr size_t kSqlSize = 512;
// A folder with the restricted mark and no folder bit: it does not make its parent non-empty.
constexpr unsigned long kHiddenFolderFlags = MDB_CLASS_FOLDER | MDB_FLAGS_RESTRICTED;

// pvArg: uint32_t *. Stores column 0 (atol; SQL NULL 0).
int MdbGetFlagsCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    if (pvArg == nullptr || lColNum < 1 || ppcValues == nullptr) {
        return 0;
    }
    *static_cast<uint32_t *>(pvArg) = ppcValues[0] != nullptr ? static_cast<uint32_t>(std::atol(ppcValues[0])) : 0;
    return 0;
}

uint32_t WriteFlags(sqlite3 *pstDb, long long llId, int32_t lFlags) {
    char acSql[kSqlSize];
    std::snprintf(acSql, sizeof acSql, "update ITEM set flags = %d where id=%lld", lFlags, llId);
    return MdbExecSql(pstDb, acSql, nullptr, nullptr, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB;
}

}  // namespace

/* Add ulBits to the flags of folder llId, unless (flags AND ulBits) is already greater than 1 (an
 * overlap in bit 0 alone does not count). A missing row reads as flags 0; its update changes
 * nothing. */
uint32_t QRV_MDB_UpdateFolderFlags(sqlite3 *pstDb, long long llId, uint32_t ulBits) {
    if (pstDb == nullptr) {
        return MDB_ERR_PARA;
    }
    char acSql[kSqlSize];
    std::snprintf(acSql, sizeof acSql, "select flags from ITEM where id=%lld", llId);
    uint32_t ulFlags = 0;
    if (MdbExecSql(pstDb, acSql, MdbGetFlagsCallback, &ulFlags, nullptr) != SQLITE_OK) {
        return MDB_ERR_DB;
    }
    if ((ulFlags & ulBits) > 1) {
        return MDB_OK;
    }
    return WriteFlags(pstDb, llId, static_cast<int32_t>(ulFlags | ulBits));
}

/* Replace the whole flags word of row llId, class bits included. */
uint32_t QRV_MDB_SetFolderFlags(sqlite3 *pstDb, long long llId, int32_t lFlags) {
    if (pstDb == nullptr) {
        return MDB_ERR_PARA;
    }
    return WriteFlags(pstDb, llId, lFlags);
}

/* 1 when folder llId has no children, or only children with flags exactly 130 (restricted folders
 * without folder bits); 0 otherwise, and 0 when no connection is open at g_pstMdbCtx or the query
 * fails. */
int32_t QRV_MDB_IsFolderEmpty(long long llId) {
    sqlite3 *pstDb = g_pstMdbCtx;
    if (pstDb == nullptr) {
        return 0;
    }
    char acSql[kSqlSize] = {0};
    std::snprintf(acSql, sizeof acSql, "select distinct flags from ITEM where parentID = %lld", llId);
    MdbResultTable stTable;
    int lRows = 0;
    int lCols = 0;
    if (sqlite3_get_table(pstDb, acSql, stTable.out(), &lRows, &lCols, nullptr) != SQLITE_OK) {
        return 0;
    }
    for (int lRow = 1; lRow <= lRows; ++lRow) {
        const char *pcValue = stTable.get()[lRow * lCols];
        if (pcValue == nullptr || std::strtoul(pcValue, nullptr, 10) != kHiddenFolderFlags) {
            return 0;
        }
    }
    return 1;
}
