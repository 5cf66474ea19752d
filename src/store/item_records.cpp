// Writing ITEM rows: add a row with all its values, overwrite all values, move and rename, change
// an id, delete a row or a folder's children, and find a child by its file name. Each operation is
// one statement on the caller's connection; texts go through %q, so quotes are doubled and '%'
// and '_' are stored as they are.
#include <mdb.h>

#include "store/sql_text.h"

#include <cstdio>
#include <cstring>

MDB_API const char *mdb_updateitem_sql =
    "update ITEM set parentID=%lld, flags=%d, title='%q', filename='%q', size=%lld, date='%q', "
    "bitsPerSample=%d, duration=%lld, nrAudioChannels=%d, resolution=%lld, sampleFrequency=%d, "
    "bitrate=%d, lastModify='%q', originalTrackNumber=%d, exID_ACTOR=%lld, exID_ALBUM=%lld, "
    "exID_ARTIST=%lld, exID_AUTHOR=%lld, exID_CREATOR=%lld, exID_DIRECTOR=%lld, exID_GENRE=%lld, "
    "exID_PRODUCER=%lld, exID_PUBLISHER=%lld where id=%lld";

namespace {

constexpr size_t kSqlSize = 512;

const char kInsertItemSql[] =
    "insert into ITEM values (NULL, %lld, %d, '%q', '%q', %lld, '%q', %d, %lld, %d, %lld, %d, %d, "
    "'%q',%d, %lld, %lld, %lld, %lld, %lld, %lld, %lld, %lld, %lld)";

// Runs a statement that changes rows and has no callback: MDB_OK or MDB_ERR_DB.
uint32_t RunChange(sqlite3 *pstDb, const char *pcSql) {
    return MdbExecSql(pstDb, pcSql, nullptr, nullptr, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB;
}

/* "delete from ITEM where <column>=<value>": MDB_ERR_PARA without a connection, else as RunChange. */
uint32_t DeleteWhere(sqlite3 *pstDb, const char *pcColumn, long long llValue) {
    if (pstDb == nullptr) {
        return MDB_ERR_PARA;
    }
    char acSql[kSqlSize];
    std::snprintf(acSql, sizeof acSql, "delete from ITEM where %s=%lld", pcColumn, llValue);
    return RunChange(pstDb, acSql);
}

}  // namespace

/* Insert a row with the 23 values (SQLite assigns the id). Title and file name are required.
 * *pllNewId (optional) receives the new row's id. */
uint32_t QRV_MDB_DbAddItem(sqlite3 *pstDb, long long llParentId, int32_t lFlags, const char *pcTitle,
                           const char *pcFileName, long long llSize, const char *pcDate,
                           int32_t lBitsPerSample, long long llDuration, int32_t lNrAudioChannels,
                           long long llResolution, int32_t lSampleFrequency, int32_t lBitrate,
                           const char *pcLastModify, int32_t lOriginalTrackNumber, long long llActor,
                           long long llAlbum, long long llArtist, long long llAuthor,
                           long long llCreator, long long llDirector, long long llGenre,
                           long long llProducer, long long llPublisher, long long *pllNewId) {
    if (pstDb == nullptr || pcTitle == nullptr || pcFileName == nullptr) {
        return MDB_ERR_PARA;
    }
    MdbSqlText pcSql(sqlite3_mprintf(kInsertItemSql, llParentId, lFlags, pcTitle, pcFileName, llSize,
                                     pcDate, lBitsPerSample, llDuration, lNrAudioChannels,
                                     llResolution, lSampleFrequency, lBitrate, pcLastModify,
                                     lOriginalTrackNumber, llActor, llAlbum, llArtist, llAuthor,
                                     llCreator, llDirector, llGenre, llProducer, llPublisher));
    if (!pcSql) {
        return MDB_ERR_MEM;
    }
    if (RunChange(pstDb, pcSql.get()) != MDB_OK) {
        return MDB_ERR_DB;
    }
    if (pllNewId != nullptr) {
        *pllNewId = sqlite3_last_insert_rowid(pstDb);
    }
    return MDB_OK;
}

/* Overwrite all 23 values of row llId with the template mdb_updateitem_sql points at when called.
 * Title and file name are required; id 0 is refused. A missing row is no error. A server that set
 * the template pointer to NULL gets MDB_ERR_PARA rather than a NULL format handed to SQLite. */
uint32_t QRV_MDB_DbUpdateItemValues(sqlite3 *pstDb, long long llParentId, int32_t lFlags,
                                    const char *pcTitle, const char *pcFileName, long long llSize,
                                    const char *pcDate, int32_t lBitsPerSample, long long llDuration,
                                    int32_t lNrAudioChannels, long long llResolution,
                                    int32_t lSampleFrequency, int32_t lBitrate,
                                    const char *pcLastModify, int32_t lOriginalTrackNumber,
                                    long long llActor, long long llAlbum, long long llArtist,
                                    long long llAuthor, long long llCreator, long long llDirector,
                                    long long llGenre, long long llProducer, long long llPublisher,
                                    long long llId) {
    if (pstDb == nullptr || pcTitle == nullptr || pcFileName == nullptr || llId == 0 ||
        mdb_updateitem_sql == nullptr) {
        return MDB_ERR_PARA;
    }
    MdbSqlText pcSql(sqlite3_mprintf(mdb_updateitem_sql, llParentId, lFlags, pcTitle, pcFileName,
                                     llSize, pcDate, lBitsPerSample, llDuration, lNrAudioChannels,
                                     llResolution, lSampleFrequency, lBitrate, pcLastModify,
                                     lOriginalTrackNumber, llActor, llAlbum, llArtist, llAuthor,
                                     llCreator, llDirector, llGenre, llProducer, llPublisher, llId));
    if (!pcSql) {
        return MDB_ERR_MEM;
    }
    return RunChange(pstDb, pcSql.get());
}

/* Give row llId a new parent, title and file name (texts not checked for NULL). */
uint32_t QRV_MDB_DbUpdateItemParentIDandName(sqlite3 *pstDb, long long llId, long long llParentId,
                                             const char *pcTitle, const char *pcFileName) {
    if (pstDb == nullptr || llId == 0) {
        return MDB_ERR_PARA;
    }
    MdbSqlText pcSql(sqlite3_mprintf("update ITEM set parentID=%lld,title='%q',fileName='%q' where id=%lld",
                                     llParentId, pcTitle, pcFileName, llId));
    if (!pcSql) {
        return MDB_ERR_MEM;
    }
    return RunChange(pstDb, pcSql.get());
}

/* Change the id of row llId to *pllNewId. A null pointer or a new id of 0 or less sets nothing and
 * runs nothing (MDB_OK). Children that point at the old id are not touched. A failure prints the
 * statement and SQLite's code. */
uint32_t QRV_MDB_DbUpdateItem(sqlite3 *pstDb, long long llId, const long long *pllNewId) {
    if (pstDb == nullptr || llId == 0) {
        return MDB_ERR_PARA;
    }
    char acSql[kSqlSize] = "update ITEM set ";
    char acPart[128];
    unsigned uFieldNum = 0;
    if (pllNewId != nullptr && *pllNewId > 0) {
        std::snprintf(acPart, sizeof acPart, " id=%lld", *pllNewId);
        MdbStrAppend(acSql, sizeof acSql, acPart);
        ++uFieldNum;
    }
    std::snprintf(acPart, sizeof acPart, " where id=%lld", llId);
    MdbStrAppend(acSql, sizeof acSql, acPart);
    if (uFieldNum == 0) {
        return MDB_OK;
    }
    int lRc = MdbExecSql(pstDb, acSql, nullptr, nullptr, nullptr);
    if (lRc != SQLITE_OK) {
        printf("SQL executing [%s] failed with code %d.\n", acSql, lRc);
        return MDB_ERR_DB;
    }
    return MDB_OK;
}

/* Delete exactly row llId (not its children, no file). A missing id is no error. */
uint32_t QRV_MDB_DbDelItem(sqlite3 *pstDb, long long llId) { return DeleteWhere(pstDb, "id", llId); }

/* Delete the direct children of folder llParentId (not deeper descendants). */
uint32_t QRV_MDB_DbDelSubItem(sqlite3 *pstDb, long long llParentId) {
    return DeleteWhere(pstDb, "parentID", llParentId);
}

/* Id of the child of llParentId named pcFileName into *pllId (not preset: untouched when no row
 * matches). Without a name: the smallest child id, -1 for a folder without children. A null
 * pllId only runs the query. */
uint32_t QRV_MDB_DbGetItemIdByName(sqlite3 *pstDb, long long llParentId, const char *pcFileName,
                                   long long *pllId) {
    if (pstDb == nullptr) {
        return MDB_ERR_PARA;
    }
    MdbSqlText pcSql(pcFileName != nullptr
                         ? sqlite3_mprintf("select id from ITEM where parentID=%lld and fileName='%q'",
                                           llParentId, pcFileName)
                         : sqlite3_mprintf("select min(id) from ITEM where parentID=%lld", llParentId));
    if (!pcSql) {
        return MDB_ERR_MEM;
    }
    return MdbExecSql(pstDb, pcSql.get(), MdbGetIdCallback, pllId, nullptr) == SQLITE_OK ? MDB_OK
                                                                                        : MDB_ERR_DB;
}
