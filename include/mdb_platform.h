/* What libmdb imports from its platform. These symbols stay undefined in libmdb.so and are resolved
 * when the media server loads it, so that a device build can supply its own libraries:
 *
 *  - the adaptation library: the static container tree, the upnp:class texts, the property table
 *    that binds DIDL-Lite properties to DLNA view columns, the media format families, and two
 *    functions the library calls back;
 *  - the DLNA profile library: profile lookup by flags word, and MIME type/profile to flags word;
 *  - the media server: the process-wide database connection, the eventing hook and the ports of
 *    its HTTP file server.
 *
 * The project ships reference implementations of all three (libmdbadapt, libmdbdlna, libmdbserver). */
#ifndef MDB_PLATFORM_H
#define MDB_PLATFORM_H

#include "mdb.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------
 * Adaptation library */

/* The root of the static container tree; read-only for the life of the process. */
extern const MdbStaticContainer g_stRootContainer;

/* upnp:class texts: class number n (1..g_ulObjClassStringLen) is the text at index n - 1.
 * Numbers up to 10 are container classes, from 11 up item classes. At least 13 texts. */
extern const char *const g_apcObjClassStrings[];
extern const uint32_t g_ulObjClassStringLen;

/* The property table. */
extern const MdbDlnaCol g_astDlnaCols[];
extern const uint32_t g_ulNumOfDlnaCols;

/* The positions of the property table that the library gives a meaning of its own; the table
 * must keep them. Indexes 0 to 3 are written for every row before the others. */
#define MDB_COL_IDX_ID            0u  /* object id: its column name is the id attribute, its column the row id */
#define MDB_COL_IDX_PARENT        1u  /* its column name is the parentID attribute */
#define MDB_COL_IDX_CLASS         2u  /* its property name is the class element; class criteria */
#define MDB_COL_IDX_TITLE         3u  /* its property name is the title element */
#define MDB_COL_IDX_DURATION      8u  /* criteria values read as "H:MM:SS[.mmm]" */
#define MDB_COL_IDX_RESOLUTION    11u /* criteria values read as "WIDTHxHEIGHT" */
#define MDB_COL_IDX_RESTRICTED    23u /* CreateObject's answer sets this attribute to "0" */
#define MDB_COL_IDX_PROTOCOL_INFO 28u /* criteria values name a MIME type or DLNA profile */
#define MDB_COL_IDX_MANAGED       30u /* always written, with the row id as its value; "4" on CreateObject's answer */
#define MDB_COL_IDX_STANDARD      32u /* written with the constant text "STANDARD" */

/* Media format families; family i has index i in bits 8-15 of its items' flags words. */
extern const MdbMediaClass g_astMediaClasses[];
extern const uint32_t g_ulNumOfMediaClasses;

/* Write property ulColIdx of a row (pcValue may be NULL) in whatever form the adaptation chooses.
 * pstRes may be NULL. Returns a status. */
uint32_t QRV_MDB_AdaptColItemBuilder(const MdbStaticContainer *pstContainer, MdbActionCtx *pstAction,
                                     IXML_Element *pstItem, IXML_Element *pstRes, uint32_t ulFlags,
                                     uint32_t ulColIdx, const char *pcValue);

/* Non-zero when class number ulClass belongs to the class set ulSearchClass (128 and above). */
int32_t QRV_MDB_AdaptIsSearchClassMatched(uint32_t ulClass, uint32_t ulSearchClass);

/* ---------------------------------------------------------------------------------------------
 * DLNA profile library */

/* The profile whose id is the whole flags word (family code + (j << 16)), or NULL. The record
 * belongs to the profile library. */
const MdbDlnaProfile *QRV_DLNA_GetProfileByProfileId(uint32_t ulProfileId);

/* Flags word for a file of MIME type pcMimeType and DLNA profile pcProfileName (may be empty).
 * *ppcSuffix receives the file suffix without the dot, or NULL when none is known; the text is
 * owned by the profile library. */
uint32_t QRV_MDB_PNtoFix(const char *pcMimeType, const char *pcProfileName, const char **ppcSuffix);

/* ---------------------------------------------------------------------------------------------
 * Media server */

/* The process-wide database connection (NULL when none is open); the server stores it here. */
extern sqlite3 *g_pstMdbCtx;

/* Called once per successful CreateObject with the new item's flags word; result ignored. */
int QRV_DMS_NOTIFY_SUBSCRIPTION(uint32_t ulFlags);

/* Ports of the server's HTTP file server for IPv4 and IPv6. */
unsigned short UpnpGetFileServerPort(void);
unsigned short UpnpGetFileServerPort6(void);

#ifdef __cplusplus
}
#endif

#endif /* MDB_PLATFORM_H */
