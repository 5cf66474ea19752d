// Questions about one ITEM row: its file name, flags and parent; the whole row; the audio
// parameters of an item. Each is one select whose row callback converts the text columns into the
// caller's storage; a query that finds no row leaves that storage as it was.
#include "store/item_queries.h"

#include "common/text.h"

#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t kSqlSize = 512;

// pcValue (NULL is "") into the ulSize-byte buffer, cut to ulSize - 1 characters.
void CopyValue(char *pcDst, size_t ulSize, const char *pcValue) {
    MdbCopyCut(pcDst, ulSize, pcValue != nullptr ? pcValue : "");
}

uint32_t ToU32(const char *pcValue) { return static_cast<uint32_t>(std::strtoul(pcValue, nullptr, 10)); }
uint64_t ToU64(const char *pcValue) { return static_cast<uint64_t>(std::strtoull(pcValue, nullptr, 10)); }
long long ToS64(const char *pcValue) { return std::strtoll(pcValue, nullptr, 10); }

// Runs a read whose rows go to pfnCallback: MDB_OK or MDB_ERR_DB.
uint32_t RunRead(sqlite3 *pstDb, const char *pcSql, MdbRowCallback pfnCallback, void *pvArg) {
    return MdbExecSql(pstDb, pcSql, pfnCallback, pvArg, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB;
}

}  // namespace

int MdbGetItemInfoCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    MdbItemInfoOut *pstOut = static_cast<MdbItemInfoOut *>(pvArg);
    if (pstOut == nullptr || lColNum < 3 || ppcValues == nullptr) {
        return 0;
    }
    CopyValue(pstOut->pcFileName, pstOut->ulFileNameSize, ppcValues[0]);
    if (pstOut->pulFlags != nullptr) {
        *pstOut->pulFlags = ppcValues[1] != nullptr ? ToU32(ppcValues[1]) : 0;
    }
    if (pstOut->pllParentId != nullptr) {
        *pstOut->pllParentId = ppcValues[2] != nullptr ? ToS64(ppcValues[2]) : 0;
    }
    return 0;
}

/* File name (cut to ulFileNameSize - 1 characters), flags and parent id of row llId; every output
 * may be NULL. A missing row leaves all outputs untouched. */
uint32_t QRV_MDB_GetItemInfo(sqlite3 *pstDb, long long llId, long long *pllParentId, char *pcFileName,
                             uint32_t ulFileNameSize, uint32_t *pulFlags) {
    if (pstDb == nullptr) {
        return MDB_ERR_PARA;
    }
    char acSql[kSqlSize];
    std::snprintf(acSql, sizeof acSql, "select fileName, flags, parentID from ITEM where id=%lld", llId);
    MdbItemInfoOut stOut{pcFileName, pllParentId, ulFileNameSize, pulFlags};
    return RunRead(pstDb, acSql, MdbGetItemInfoCallback, &stOut);
}

int MdbGetItemDetailCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    MdbItemDetail *pstDetail = static_cast<MdbItemDetail *>(pvArg);
    if (pstDetail == nullptr || ppcValues == nullptr) {
        return 0;
    }
    std::memset(pstDetail, 0, sizeof *pstDetail);
    long long *const apllExIds[] = {
        &pstDetail->llExIdActor,   &pstDetail->llExIdAlbum,    &pstDetail->llExIdArtist,
        &pstDetail->llExIdAuthor,  &pstDetail->llExIdCreator,  &pstDetail->llExIdDirector,
        &pstDetail->llExIdGenre,   &pstDetail->llExIdProducer, &pstDetail->llExIdPublisher,
    };
    for (int lCol = 0; lCol < lColNum && lCol < 24; ++lCol) {
        const char *pcValue = ppcValues[lCol];
        if (pcValue == nullptr) {
            continue;
        }
        switch (lCol) {
        case 0: pstDetail->llId = ToS64(pcValue); break;
        case 1: pstDetail->llParentId = ToS64(pcValue); break;
        case 2: pstDetail->ulFlags = ToU32(pcValue); break;
        case 3: CopyValue(pstDetail->acTitle, sizeof pstDetail->acTitle, pcValue); break;
        case 4: CopyValue(pstDetail->acFileName, sizeof pstDetail->acFileName, pcValue); break;
        case 5: pstDetail->ullSize = ToU64(pcValue); break;
        case 6: CopyValue(pstDetail->acDate, sizeof pstDetail->acDate, pcValue); break;
        case 7: pstDetail->ulBitsPerSample = ToU32(pcValue); break;
        case 8: pstDetail->ullDuration = ToU64(pcValue); break;
        case 9: pstDetail->ulNrAudioChannels = ToU32(pcValue); break;
        case 10: pstDetail->ullResolution = ToU64(pcValue); break;
        case 11: pstDetail->ulSampleFrequency = ToU32(pcValue); break;
        case 12: pstDetail->ulBitrate = ToU32(pcValue); break;
        case 13: CopyValue(pstDetail->acLastModify, sizeof pstDetail->acLastModify, pcValue); break;
        case 14: pstDetail->ulOriginalTrackNumber = ToU32(pcValue); break;
        default: *apllExIds[lCol - 15] = ToS64(pcValue); break;
        }
    }
    return 0;
}

/* The whole row llId into *pstDetail (required). The record is cleared only when the row exists;
 * without a row it keeps what the caller put there. */
uint32_t QRV_MDB_GetItemDetailInfo(sqlite3 *pstDb, long long llId, MdbItemDetail *pstDetail) {
    if (pstDb == nullptr || pstDetail == nullptr) {
        return MDB_ERR_PARA;
    }
    char acSql[kSqlSize];
    std::snprintf(acSql, sizeof acSql, "select * from ITEM where id=%lld", llId);
    return RunRead(pstDb, acSql, MdbGetItemDetailCallback, pstDetail);
}

int MdbGetAvInfoCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    MdbAvInfoOut *pstOut = static_cast<MdbAvInfoOut *>(pvArg);
    if (pstOut == nullptr || lColNum < 2 || ppcValues == nullptr) {
        return 0;
    }
    if (pstOut->pulSampleFrequency != nullptr) {
        *pstOut->pulSampleFrequency = ppcValues[0] != nullptr ? ToU32(ppcValues[0]) : 0;
    }
    if (pstOut->pulChannels != nullptr) {
        *pstOut->pulChannels = ppcValues[1] != nullptr ? ToU32(ppcValues[1]) : 0;
    }
    return 0;
}

/* Sample frequency and channel count of item llId from AV_INFO, on the connection at g_pstMdbCtx
 * (MDB_ERR_PARA when none is open). Outputs may be NULL; a missing row leaves them untouched. */
uint32_t QRV_MDB_GetChannelAndSampleFrequency(long long llId, uint32_t *pulSampleFrequency,
                                              uint32_t *pulChannels) {
    sqlite3 *pstDb = g_pstMdbCtx;
    if (pstDb == nullptr) {
        return MDB_ERR_PARA;
    }
    char acSql[kSqlSize];
    std::snprintf(acSql, sizeof acSql,
                  "select sampleFrequency, nrAudioChannels from AV_INFO where id=%lld", llId);
    MdbAvInfoOut stOut{pulSampleFrequency, pulChannels};
    return RunRead(pstDb, acSql, MdbGetAvInfoCallback, &stOut);
}
