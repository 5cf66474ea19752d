// Row callbacks of the single-item queries and the output records they fill. Internal to the store;
// the queries themselves are exported through mdb.h.
#pragma once

#include <mdb.h>

/* Output slots of QRV_MDB_GetItemInfo; each pointer may be NULL. */
struct MdbItemInfoOut {
    char *pcFileName;          /* file name buffer */
    long long *pllParentId;    /* parent id */
    uint32_t ulFileNameSize;   /* size of the file name buffer in bytes */
    uint32_t *pulFlags;        /* flags word */
};

/* Output slots of QRV_MDB_GetChannelAndSampleFrequency; each pointer may be NULL. */
struct MdbAvInfoOut {
    uint32_t *pulSampleFrequency;
    uint32_t *pulChannels;
};

/* Columns fileName, flags, parentID into an MdbItemInfoOut. The file name is cut to size - 1
 * characters (SQL NULL gives ""); flags and parent are set to 0 first, then to a non-NULL value. */
int MdbGetItemInfoCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);

/* All 24 ITEM columns into an MdbItemDetail: the record is cleared, then every non-NULL column is
 * converted at its field's width; texts are cut to their buffers. */
int MdbGetItemDetailCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);

/* Columns sampleFrequency, nrAudioChannels into an MdbAvInfoOut: each given slot is set to 0, then
 * to its column's value when that is not NULL. */
int MdbGetAvInfoCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);
