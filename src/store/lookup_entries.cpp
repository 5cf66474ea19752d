// Lookup-table entries (genres, artists, albums and the like): find an entry by name or create it,
// and read the name of a genre, album or artist by its id.
#include <mdb.h>

#include "store/sql_text.h"

#include <cstdio>

/* Find the entry named pcName (NULL is "") in table pcTable, inserting it when missing, and store
 * its exID in *pllId (0 when no positive id results). The table name is inserted verbatim. The
 * lookup and the insert are two statements without a transaction of their own. The result pointer
 * is always written, so a NULL one is refused (MDB_ERR_PARA) before anything runs. */
uint32_t QRV_MDB_DbAddItemExtraInfo(sqlite3 *pstDb, long long *pllId, const char *pcTable,
                                    const char *pcName) {
    if (pstDb == nullptr || pllId == nullptr || pcTable == nullptr || pcTable[0] == '\0') {
        return MDB_ERR_PARA;
    }
    if (pcName == nullptr) {
        pcName = "";
    }
    long long llFound = -1;
    {
        MdbSqlText pcSql(sqlite3_mprintf("select exID from %s where name='%q'", pcTable, pcName));
        if (!pcSql) {
            return MDB_ERR_MEM;
        }
        if (MdbExecSql(pstDb, pcSql.get(), MdbGetIdCallback, &llFound, nullptr) != SQLITE_OK) {
            return MDB_ERR_DB;
        }
    }
    if (llFound == -1) {
        MdbSqlText pcSql(sqlite3_mprintf("insert into %s values (NULL, '%q')", pcTable, pcName));
        if (!pcSql) {
            return MDB_ERR_MEM;
        }
        if (MdbExecSql(pstDb, pcSql.get(), nullptr, nullptr, nullptr) != SQLITE_OK) {
            return MDB_ERR_DB;
        }
        llFound = sqlite3_last_insert_rowid(pstDb);
    }
    *pllId = llFound > 0 ? llFound : 0;
    return MDB_OK;
}

namespace {

// Reads "select name from <pcTable> where exId=<lId>" into the 256-byte buffer pcName; an unknown
// id leaves the buffer untouched.
uint32_t GetLookupName(sqlite3 *pstDb, const char *pcTable, int32_t lId, char *pcName) {
    if (pstDb == nullptr) {
        return MDB_ERR_PARA;
    }
    char acSql[512];
    std::snprintf(acSql, sizeof acSql, "select name from %s where exId=%d", pcTable, lId);
    return MdbExecSql(pstDb, acSql, MdbGetNameCallback, pcName, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB;
}

}  // namespace

/* Name of genre lId into the 256-byte buffer pcName (at most 255 characters). */
uint32_t QRV_MDB_GetGenre(sqlite3 *pstDb, int32_t lId, char *pcName) {
    return GetLookupName(pstDb, "GENRES", lId, pcName);
}

/* Name of album lId into the 256-byte buffer pcName (at most 255 characters). */
uint32_t QRV_MDB_GetAlbum(sqlite3 *pstDb, int32_t lId, char *pcName) {
    return GetLookupName(pstDb, "ALBUMS", lId, pcName);
}

/* Name of artist lId into the 256-byte buffer pcName (at most 255 characters). */
uint32_t QRV_MDB_GetArtist(sqlite3 *pstDb, int32_t lId, char *pcName) {
    return GetLookupName(pstDb, "ARTISTS", lId, pcName);
}
