/* MDB: the media catalogue library of a DLNA Digital Media Server.
 *
 * The library keeps the catalogue of shared media files in one SQLite database and answers the
 * UPnP ContentDirectory actions of the server: Browse, Search, CreateObject and DestroyObject, plus
 * the maintenance operations of the disk scanner and the Filter/SortCriteria conversions. What it
 * imports (adaptation tables, DLNA profile functions, media-server symbols) is declared in
 * mdb_platform.h.
 *
 * Status. Every operation returns a status word: MDB_OK (0) on success, else one of the codes of
 * MDB_STATUS_MAP below; callers test for zero. An operation on a connection answers MDB_ERR_PARA
 * for a NULL connection, MDB_ERR_MEM when its SQL text cannot be formatted and MDB_ERR_DB when a
 * statement fails; the comments below say only what differs. These answer otherwise:
 *  - 0 or -1 (0xFFFFFFFF as uint32_t): QRV_MDB_ParseElements, QRV_MDB_CreateObject, and the
 *    upload notes (int32_t; QRV_MDB_DelUploadNote and QRV_MDB_FreeUploadList always 0);
 *  - 711 (MDB_UPNP_ERR_RESTRICTED_OBJECT) for a restricted object: QRV_MDB_DestroyObject, and
 *    QRV_MDB_AutoDestroyObject, which passes its result on;
 *  - 1: QRV_MDB_GetFileInfoById when the id names no file; QRV_MDB_CheckUploadComplete,
 *    QRV_MDB_IsFolderEmpty and QRV_MDB_DbDLNATest answer 1 (yes) or 0 (no);
 *  - an SQLite result code, passed through: MdbExecSql, and the genre, artist and album lists of
 *    the category handlers (BrowseDirectChildren without a sub-id);
 *  - MDB_ERR_FAIL for NULL arguments: MDBSearchCriteriaCheck;
 *  - the sum of the statuses of its element writes (only zero or not means anything):
 *    QRV_MDB_BuildMetadataForStaticContainer;
 *  - no status: the row callbacks (0 goes on), the operator recognizers (0 or -1), the busy
 *    handler and MdbSetBusyTimeout (0).
 *
 * Ownership. The server owns the action record, the ixml document, the MdbNewObject and what they
 * point to; the library frees only what it allocates (upload notes, the root list, the id array,
 * its own SQL texts). The filter bytes, the sort text and looked-up paths are handed to the
 * caller, who releases them with free().
 *
 * Texts are built in fixed buffers and cut at their size, never overrun (256 bytes for object
 * ids, titles and URL bases, 512 bytes for resource URLs and protocolInfo); SQL texts are never
 * cut: a statement that would not fit is refused. Everything the library writes into a DIDL-Lite
 * answer is well-formed XML in UTF-8.
 *
 * Threads. Nothing is thread-safe by itself: the server calls the request operations from one
 * thread at a time. SQLite's locking arbitrates between connections and processes.
 *
 * Names. Everything declared here is exported: QRV_MDB_ names the operations, MDB_ the macros,
 * Mdb the records, callbacks and helpers the contract names. The library's internal helpers (also
 * named Mdb...) are declared in its own headers under src/ and are not exported. */
#ifndef MDB_H
#define MDB_H

#include <stdint.h>
#include <sqlite3.h>
#include <ixml.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(MDB_BUILDING_LIBRARY)
#define MDB_API __attribute__((visibility("default")))
#else
#define MDB_API
#endif

/* ---------------------------------------------------------------------------------------------
 * Status codes */
#define MDB_OK            0x000000u
#define MDB_ERR_PARA      0xf00000u
#define MDB_ERR_MEM       0xf00001u
#define MDB_ERR_FAIL      0xf00003u
#define MDB_ERR_NOT_FOUND 0xf00004u
#define MDB_ERR_DB        0xf00005u
/* The UPnP ContentDirectory error that DestroyObject answers for a restricted object. */
#define MDB_UPNP_ERR_RESTRICTED_OBJECT 711u

/* Every status word with what it means: X(name, sentence). QRV_MDB_StatusName and
 * QRV_MDB_StatusText read this list; a program can expand it for its own messages. */
#define MDB_STATUS_MAP(X)                                                                              \
    X(MDB_OK, "success")                                                                               \
    X(MDB_ERR_PARA, "an argument is missing or invalid, or the request is one the library refuses")    \
    X(MDB_ERR_MEM, "memory ran out, or a text did not fit its buffer")                                 \
    X(MDB_ERR_FAIL, "a file could not be opened or written, or a search expression could not be "     \
                    "translated")                                                                      \
    X(MDB_ERR_NOT_FOUND, "the object id does not resolve, or the object does not exist")               \
    X(MDB_ERR_DB, "an SQL statement failed, or the file is not a catalogue")                            \
    X(MDB_UPNP_ERR_RESTRICTED_OBJECT, "the object is restricted and cannot be destroyed (UPnP error 711)")

/* The name of a status word ("MDB_ERR_NOT_FOUND"), or "MDB_UNKNOWN_STATUS" for other values. */
MDB_API const char *QRV_MDB_StatusName(uint32_t ulStatus);
/* What a status word means, as a sentence without a full stop; a sentence for unknown values too. */
MDB_API const char *QRV_MDB_StatusText(uint32_t ulStatus);

/* ---------------------------------------------------------------------------------------------
 * Records shared with the adaptation library and the server */

typedef struct MdbStaticContainer MdbStaticContainer;
typedef struct MdbActionCtx MdbActionCtx;

/* A browse handler: node, sub-id (NULL without "|"), browse flag (0 BrowseMetadata,
 * 1 BrowseDirectChildren) and the action record. */
typedef uint32_t (*MdbContainerHandler)(const MdbStaticContainer *pstNode, const char *pcSubId,
                                        uint32_t ulBrowseFlag, MdbActionCtx *pstAction);

/* A row callback in the sqlite3_exec form: argument, column count, values (NULL for SQL NULL), names.
 * Returning non-zero stops the statement. */
typedef int (*MdbRowCallback)(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);

/* An operator recognizer for search criteria: on success moves the cursor behind the operator and
 * returns 0, else leaves it and returns -1. */
typedef int32_t (*MdbSearchValueFn)(const char **ppcCursor);

/* One node of the static container tree; the children of a node are one contiguous array. */
struct MdbStaticContainer {
    const char *pcTitle;                   /* dc:title of the container */
    uint16_t usId;                         /* this node's number in the dotted id */
    uint8_t ucClass;                       /* upnp:class number (1-based into g_apcObjClassStrings) */
    uint8_t ucSearchClass;                 /* 0 none, 1..L one class, 128 and above a class set */
    uint16_t usAdaptData;                  /* the adaptation library's own; never read here */
    uint16_t usChildNum;                   /* number of children */
    MdbContainerHandler pfnBrowse;         /* NULL when the container cannot be browsed */
    const MdbStaticContainer *pstParent;   /* NULL for the root */
    const MdbStaticContainer *pstChildren; /* first of usChildNum children */
};

/* usFlags bits of an MdbDlnaCol. */
#define MDB_COL_ALWAYS         0x01u /* written for every row, whatever the filter */
#define MDB_COL_ADAPT_BUILDER  0x02u /* written by QRV_MDB_AdaptColItemBuilder */
#define MDB_COL_ELEMENT        0x04u /* a child element; when clear, an attribute of the object */
#define MDB_COL_RES_ATTRIBUTE  0x08u /* an attribute of the "res" element (wins over 0x04) */
#define MDB_COL_CONTAINER_ONLY 0x10u /* containers only; when clear, items only; never a sort key */
#define MDB_COL_NOT_FILTERED   0x20u /* never written on behalf of the filter */

/* Existence kinds (MdbDlnaCol.usSearchType): for which rows a property exists in "exists" criteria.
 * From 3 up a kind is a set of item classes made of the class bits below. */
#define MDB_EXISTS_UNKNOWN   0u  /* no statement possible */
#define MDB_EXISTS_EVERY_ROW 1u
#define MDB_EXISTS_NO_ROW    2u
#define MDB_EXISTS_MUSIC     4u  /* items of class 11 */
#define MDB_EXISTS_VIDEO     8u  /* items of class 12 */
#define MDB_EXISTS_PICTURE   16u /* items of class 13 */

/* One DIDL-Lite property the server can write, and the DLNA view column it is filled from. */
typedef struct MdbDlnaCol {
    const char *pcColName;           /* DLNA view column; also the attribute name */
    const char *pcPropName;          /* DIDL-Lite property name; also the element name */
    uint16_t usFlags;                /* MDB_COL_ bits */
    uint16_t usColIdx;               /* index of the value in a "select * from DLNA" row */
    MdbSearchValueFn pfnSearchValue; /* operator recognizer, NULL for "exists" only */
    uint16_t usSearchType;           /* existence kind: 0 unknown, 1 all, 2 none, >=3 class set */
} MdbDlnaCol;

/* DLNA transfer parameters of a media format family. The library reads the OP and FLAGS texts. */
typedef struct MdbTransferParams {
    const char *pcFamilyName;   /* "audio", "video", "image" */
    const char *pcDefaultMime;  /* MIME type used when a profile gives none */
    const char *pcPlaySpeed;    /* DLNA.ORG_PS value, or NULL */
    const char *pcOpValue;      /* DLNA.ORG_OP value */
    const char *pcFlagsValue;   /* DLNA.ORG_FLAGS value */
} MdbTransferParams;

/* One media format family: low 16 bits of its items' flags word, and its transfer parameters. */
typedef struct MdbMediaClass {
    uint32_t ulFlagsCode;
    const MdbTransferParams *pstTransfer;
} MdbMediaClass;

/* A DLNA profile as the profile library answers it. The library reads the first two fields. */
typedef struct MdbDlnaProfile {
    const char *pcProfileName; /* DLNA.ORG_PN value, or "Unknown" */
    const char *pcMimeType;
    const char *pcSuffix;      /* file name suffix without the dot */
} MdbDlnaProfile;

/* Bits of an ITEM row's flags word. */
#define MDB_FLAGS_CLASS_MASK  127u      /* class number */
#define MDB_FLAGS_RESTRICTED  0x80u     /* DestroyObject refuses it; no importUri */
#define MDB_FLAGS_FOLDER_MUSIC   0x800u /* folder holds music (class 11) */
#define MDB_FLAGS_FOLDER_VIDEO   0x1000u
#define MDB_FLAGS_FOLDER_PICTURE 0x2000u

/* Class numbers the library names itself. */
#define MDB_CLASS_FOLDER  2u
#define MDB_CLASS_MUSIC   11u
#define MDB_CLASS_VIDEO   12u
#define MDB_CLASS_PICTURE 13u

/* The record of one Browse or Search, owned by the server. */
struct MdbActionCtx {
    char *pcObjectId;            /* ObjectID/ContainerID; writable, at least 256 bytes for Search */
    uint32_t ulServerWord1;      /* the server's own */
    uint32_t ulServerWord2;      /* the server's own */
    uint32_t ulStartingIndex;
    uint32_t ulRequestedCount;
    uint32_t ulAddrFamily;       /* 2 IPv4, 10 IPv6: selects the resource URL form */
    unsigned char *pucFilter;    /* one byte per g_astDlnaCols entry; never NULL */
    char *pcSortStr;             /* "ORDER BY ..." or NULL */
    uint32_t ulNumberReturned;   /* answer */
    uint32_t ulTotalMatches;     /* answer */
    IXML_Document *pstDoc;       /* the answer document */
    IXML_Element *pstDidlRoot;   /* the DIDL-Lite root; objects are appended under it */
    int32_t lUpnpErrCode;        /* answer on failure (701) */
    char *pcErrStr;              /* at least 16 bytes; receives the UPnP error text */
};

/* The context of the row-to-DIDL-Lite writer for one statement run; zero it first. */
typedef struct MdbItemBuildCtx {
    const MdbStaticContainer *pstContainer; /* browsed container, NULL in Search */
    MdbActionCtx *pstAction;
    const char *pcBaseId;     /* listing base id; "" or "0" derives the base from each row */
    long long llLastId;       /* previous row id; start at -1 */
    IXML_Element *pstItem;    /* element of the object being written */
    IXML_Element *pstRes;     /* its "res" element */
    uint32_t ulCommaSep;      /* non-zero: ids are base "," row id */
} MdbItemBuildCtx;

/* ---------------------------------------------------------------------------------------------
 * Object ids and the static container tree */

/* Resolve pcId to its static container and the sub-id behind the first '|'. Both out-places are
 * cleared first; the sub-id place is written as soon as the '|' is found.
 * Returns MDB_OK, or MDB_ERR_NOT_FOUND for any id that does not resolve. */
MDB_API uint32_t MdbLocateStaticContainerById(const char *pcId, const MdbStaticContainer **ppstNode,
                                              const char **ppcSubId);

/* Write the dotted id of pstNode ("-1" for NULL) into pcBuf. MDB_ERR_PARA for no buffer,
 * MDB_ERR_MEM when the id does not fit (the buffer then holds a cut, terminated prefix). */
MDB_API uint32_t QRV_MDB_StaticContainerGetObjId(const MdbStaticContainer *pstNode, char *pcBuf,
                                                 uint32_t ulSize);

/* ---------------------------------------------------------------------------------------------
 * Vocabulary lookups */

/* The class text of the class number in bits 0-6, or NULL. */
MDB_API const char *QRV_MDB_GetMediaClassById(uint32_t ulFlags);
/* The 1-based class number of the exact text, or 0. */
MDB_API uint32_t QRV_MDB_GetMediaClassByStr(const char *pcClass);
/* Index of the first property named exactly pcPropName, or 0xFFFFFFFF. */
MDB_API uint32_t QRV_MDB_GetFilterIdx(const char *pcPropName);

/* ---------------------------------------------------------------------------------------------
 * DIDL-Lite writers: elements, containers, database rows */

/* Append element pcName (with text pcText, made safe for XML, when not NULL) as last child of
 * pstParent; *ppstNew (may be NULL) receives it. MDB_ERR_PARA for a NULL document, parent or name. */
MDB_API uint32_t QRV_MDB_XmlAppendChildElement(IXML_Document *pstDoc, IXML_Element *pstParent,
                                               const char *pcName, const char *pcText,
                                               IXML_Element **ppstNew);
/* Append upnp:searchClass elements for a search class value to pstContainer. */
MDB_API uint32_t QRV_MDB_AppendSearchClass(MdbActionCtx *pstAction, IXML_Element *pstContainer,
                                           uint32_t ulSearchClass);
/* Write a "container" element for pstNode, or for a database value below it when pcSuffix is given. */
MDB_API uint32_t QRV_MDB_BuildMetadataForStaticContainer(const MdbStaticContainer *pstNode,
                                                         const char *pcTitle, const char *pcSuffix,
                                                         MdbActionCtx *pstAction);
/* Row callback over "select * from DLNA" rows (pvArg an MdbItemBuildCtx): appends one DIDL-Lite
 * "item" (class above 10) or "container" per row id with ids, title, class, the filtered
 * properties and the "res" element; counts ulNumberReturned up to ulRequestedCount. Returns 0. */
MDB_API int MdbBuildItemCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);

/* The protocolInfo that an item's res element carries, for its flags word (its DLNA profile and
 * media family), into pcBuf (ulSize bytes, cut there): what a file server says of the same item
 * in contentFeatures.dlna.org. MDB_ERR_NOT_FOUND (and an empty text) when no profile has that id,
 * MDB_ERR_PARA without a buffer. */
MDB_API uint32_t QRV_MDB_GetProtocolInfo(uint32_t ulFlags, char *pcBuf, uint32_t ulSize);

/* Row callback of Search over (category id, name) rows (pvArg the Search's MdbItemBuildCtx):
 * writes values as containers of the action's ObjectID container, counts every value. */
MDB_API int MdbBuildSearchCategoryCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);

/* ---------------------------------------------------------------------------------------------
 * Browse: the entry, the static containers and the database containers */

/* Handler of containers whose children are all static nodes. */
MDB_API uint32_t QRV_MDB_BrowseStaticContainer(const MdbStaticContainer *pstNode, const char *pcSubId,
                                               uint32_t ulBrowseFlag, MdbActionCtx *pstAction);
/* Browse entry: resolve pcObjectId and call its container's handler. */
MDB_API uint32_t QRV_MDB_Browse(const char *pcObjectId, uint32_t ulBrowseFlag, MdbActionCtx *pstAction);

/* Handlers of database containers (the five-argument form; ulClass 11 music, 12 video, 13
 * pictures restricts the rows). They set ulTotalMatches and count ulNumberReturned; a list whose
 * statement would not fit (a sort text longer than MDB_BROWSE_SORT_MAX) is MDB_ERR_PARA.
 * Folders: no sub-id lists the shared root folders; a row id sub-id is that row (flag 0) or its
 * sub-folders and items of the class. A missing row on flag 0: UPnP error 701, MDB_ERR_NOT_FOUND. */
MDB_API uint32_t QRV_MDB_BrowseFolder(const MdbStaticContainer *pstNode, const char *pcSubId, uint32_t ulBrowseFlag,
                                      MdbActionCtx *pstAction, uint32_t ulClass);
/* All items of the class; a row id sub-id answers that row's metadata whatever the flag. */
MDB_API uint32_t QRV_MDB_BrowseAll(const MdbStaticContainer *pstNode, const char *pcSubId, uint32_t ulBrowseFlag,
                                   MdbActionCtx *pstAction, uint32_t ulClass);
/* Category containers: no sub-id lists the values, "k" is a value container, "k,r" the item r
 * inside it (BrowseMetadata only, else MDB_ERR_PARA). Artist/creator and album lists show only
 * values with items of the class. */
MDB_API uint32_t QRV_MDB_BrowseMusicGenre(const MdbStaticContainer *pstNode, const char *pcSubId,
                                          uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass);
MDB_API uint32_t QRV_MDB_BrowseMusicArtist(const MdbStaticContainer *pstNode, const char *pcSubId,
                                           uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass);
MDB_API uint32_t QRV_MDB_BrowseMusicAlbum(const MdbStaticContainer *pstNode, const char *pcSubId,
                                          uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass);
MDB_API uint32_t QRV_MDB_BrowseVideoCreator(const MdbStaticContainer *pstNode, const char *pcSubId,
                                            uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass);
MDB_API uint32_t QRV_MDB_BrowseVideoAlbum(const MdbStaticContainer *pstNode, const char *pcSubId,
                                          uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass);

/* Rows below folder row llRowId (flag non-zero: sub-folders holding the class and items of the
 * class, counted into *pulTotal and paged) or the row itself (flag 0; with pulTotal a missing row
 * sets UPnP error 701 and gives MDB_ERR_NOT_FOUND). MDB_ERR_PARA without an action. */
MDB_API uint32_t QRV_MDB_DbBrowseObject(sqlite3 *pstDb, MdbActionCtx *pstAction, long long llRowId, uint32_t ulClass,
                                        uint32_t ulBrowseFlag, MdbRowCallback pfnCallback, void *pvArg,
                                        uint32_t *pulTotal);
/* All rows of the class (flag non-zero, counted and paged) or row llRowId (flag 0, total 1,
 * existence not tested). MDB_ERR_PARA without an action. */
MDB_API uint32_t QRV_MDB_DbBrowseByType(sqlite3 *pstDb, MdbActionCtx *pstAction, long long llRowId, uint32_t ulClass,
                                        uint32_t ulBrowseFlag, MdbRowCallback pfnCallback, void *pvArg,
                                        uint32_t *pulTotal);

/* ---------------------------------------------------------------------------------------------
 * Filter and SortCriteria */

/* The filter array for a UPnP Filter text: one byte per property of the table, 1 when asked for.
 * NULL gives all zeros, exactly "*" all ones. malloc'ed, the caller frees it; NULL only when the
 * allocation fails. */
MDB_API unsigned char *QRV_MDB_ParseFilterString(const char *pcFilter);
/* The "ORDER BY col[ desc],..." text for a UPnP SortCriteria text, malloc'ed for the caller to
 * free; NULL for a NULL text, a failed allocation, or when no key names a sortable property. */
MDB_API char *QRV_MDB_BuildSortStr(const char *pcSortCriteria);

/* A sort text of at most this many characters fits every Browse statement, whatever the other
 * arguments; a Browse whose statement would not fit its 512 bytes is refused with MDB_ERR_PARA
 * (never cut), so a server refuses a longer text itself (UPnP error 709) before it calls Browse.
 * Search statements hold the criteria's WHERE text too, and may refuse a shorter sort text. */
#define MDB_BROWSE_SORT_MAX 300u

/* ---------------------------------------------------------------------------------------------
 * Search */

/* Parsed search criteria. */
#define MDB_SEARCH_MAX_EXPR 32
#define MDB_SEARCH_SKELETON_SIZE 1024
typedef struct MdbSearchSyntax {
    int32_t lExprNum;
    char *apcExpr[MDB_SEARCH_MAX_EXPR];
    char acSkeleton[MDB_SEARCH_SKELETON_SIZE];
    int32_t lParenDepth;
    uint32_t ulState;
} MdbSearchSyntax;

/* Parser states of MdbSearchSyntax.ulState. */
#define MDB_SYN_START 0u
#define MDB_SYN_EXPR  1u
#define MDB_SYN_OPEN  2u
#define MDB_SYN_CLOSE 3u
#define MDB_SYN_LOGIC 4u

/* Operator recognizers for the property table: on success move the cursor behind the operator and
 * return 0; otherwise leave it and return -1 (also for NULL). The first word that the text begins
 * with is taken. MdbCmpRelOp: "=", "!=", "<=", "<", ">=", ">". MdbCmpEqualOp: "=".
 * MdbCmpStringOp: "contains", "=". MdbCmpDerivedOp: "=", "derivedfrom". */
MDB_API int32_t MdbCmpRelOp(const char **ppcCursor);
MDB_API int32_t MdbCmpEqualOp(const char **ppcCursor);
MDB_API int32_t MdbCmpStringOp(const char **ppcCursor);
MDB_API int32_t MdbCmpDerivedOp(const char **ppcCursor);

/* Check a SearchCriteria text and split it into expression texts (strdup'ed, released by
 * MDBSearchCriteriaCheck) and a skeleton of parentheses, " A ", " O " and "_<property index>".
 * "*" gives the skeleton "*". MDB_OK when accepted; MDB_ERR_PARA for NULL, empty or rejected text,
 * also for more than 32 expressions, an expression over 255 characters, parentheses nested more
 * than 16 deep or a skeleton over 1023;
 * MDB_ERR_MEM when an expression cannot be copied. A rejected text leaves no expression behind. */
MDB_API uint32_t MDBSearchCriteriaSyntax(const char *pcCriteria, MdbSearchSyntax *pstSyntax);

/* Translate a Search into the WHERE text of a select over the DLNA view: the class of the search
 * container pcContainerId, the row or category named by the sub-id of its copy pcCopy (which may be
 * cut at its "|" or rewritten), and the parsed criteria. *pulResultClass receives 0 for items or
 * the container class the criteria ask for; *pulCommaSep the separator flag of the item writer.
 * The expression texts of pstSyntax are released in every case. Returns MDB_OK; MDB_ERR_FAIL for
 * NULL arguments and a protocolInfo value without MIME type or profile; the resolver's status for
 * an unknown container; MDB_ERR_PARA for an expression that cannot be translated or a text that
 * would not fit its buffer (nothing is cut); MDB_ERR_MEM when an SQL text cannot be formatted or a
 * static container's id does not fit the copy. */
MDB_API uint32_t MDBSearchCriteriaCheck(const char *pcContainerId, char *pcCopy, uint32_t ulCopySize,
                                        uint32_t *pulResultClass, char *pcWhere, uint32_t ulWhereSize,
                                        uint32_t *pulCommaSep, MdbSearchSyntax *pstSyntax);

/* Answer a Search: ContainerID (NULL for none), SearchCriteria, and the action record whose
 * pcObjectId holds the same ContainerID in a writable buffer of at least 256 bytes. Writes items or
 * category containers into the action's document and sets ulTotalMatches. MDB_OK, MDB_ERR_PARA
 * (no action, no database, rejected or untranslatable criteria, unknown container) or MDB_ERR_DB. */
MDB_API uint32_t QRV_MDB_Search(const char *pcContainerId, const char *pcCriteria, MdbActionCtx *pstAction);

/* The worker of QRV_MDB_Search on connection pstDb: checks and translates pcCriteria with the
 * container copy pcCopy (ulCopySize bytes), runs the count statement into *pulTotal (when given, for
 * item results only) and the paged select with pfnItemCallback/pvArg, or with the category writer for
 * genre, artist and album results. pvArg must be an MdbItemBuildCtx. The two reserved words are
 * ignored. MDB_OK, MDB_ERR_PARA or MDB_ERR_DB as QRV_MDB_Search. */
MDB_API uint32_t QRV_MDB_DbSearch(sqlite3 *pstDb, MdbActionCtx *pstAction, uint32_t ulReserved1,
                                  uint32_t ulReserved2, const char *pcCriteria, char *pcCopy,
                                  uint32_t ulCopySize, MdbRowCallback pfnItemCallback, void *pvArg,
                                  uint32_t *pulTotal);

/* ---------------------------------------------------------------------------------------------
 * Text helpers */

/* Append as much of pcSrc as fits into the ulSize-byte text pcDst, always leaving a NUL; nothing
 * happens for NULL texts or when pcDst is already not shorter than ulSize. Returns pcDst. */
MDB_API char *MdbStrAppend(char *pcDst, uint32_t ulSize, const char *pcSrc);

/* ---------------------------------------------------------------------------------------------
 * Catalogue database: schema, opening, busy policy, statement runner, shared row callbacks */

/* The busy budget in milliseconds that every connection's busy handler reads; the openers set 80. */
MDB_API extern int32_t g_mdbTimeout;

/* The schema script a new catalogue is made with: the path fixed at build time (/etc/create_db.sql
 * on a device) unless a program has pointed it at another file (NULL: back to that path). */
MDB_API const char *QRV_MDB_SchemaScriptPath(void);
MDB_API void QRV_MDB_SetSchemaScriptPath(const char *pcPath);
/* Open the catalogue at pcPath, creating it if needed: a new file gets the schema script
 * (QRV_MDB_SchemaScriptPath) run as one batch; an existing file, even an empty one, is used unchanged.
 * *plExisted (may be NULL) becomes 1 when the file existed, else 0. NULL on any failure. */
MDB_API sqlite3 *QRV_MDB_DbInit(const char *pcPath, int *plExisted);
/* Open an existing catalogue read-only; NULL (and "<path> read fail" on stdout) on failure. */
MDB_API sqlite3 *QRV_MDB_DbInitReadOnly(const char *pcPath);
/* Open read-write, creating an empty file without schema if needed; NULL (and "<path> open fail"
 * on stdout) on failure. */
MDB_API sqlite3 *QRV_MDB_DbInitReadWrite(const char *pcPath);

/* Budget >= 1: store it in g_mdbTimeout and register MdbSqliteBusyCallback on pstDb. Budget <= 0:
 * remove the busy handler, g_mdbTimeout unchanged. Returns 0. */
MDB_API int32_t MdbSetBusyTimeout(sqlite3 *pstDb, int32_t lMillis);
/* Busy handler: pvBudget points at the budget in ms, lCount counts earlier calls for this wait.
 * Sleeps 10 ms and returns 1 while (lCount + 1) x 10 ms fits the budget, else returns 0. */
MDB_API int MdbSqliteBusyCallback(void *pvBudget, int lCount);
/* Run pcSql with sqlite3_exec, again at once for as long as it answers SQLITE_BUSY. Returns the
 * SQLite result code (SQLITE_MISUSE for a NULL connection or text). */
MDB_API int MdbExecSql(sqlite3 *pstDb, const char *pcSql, MdbRowCallback pfnCallback, void *pvArg,
                       char **ppcErrMsg);

/* Shared row callbacks: each converts column 0 of every row into *pvArg (nothing for NULL pvArg);
 * the last row wins except for the list. */
/* uint32_t *: strtoul of the value (SQL NULL: 0). */
MDB_API int MdbGetCountCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);
/* char[256]: the text, at most 255 characters and a NUL (SQL NULL: ""). */
MDB_API int MdbGetNameCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);
/* long long *: atoll of the value; SQL NULL stores -1. */
MDB_API int MdbGetIdCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);
/* long long ** (cursor): stores atoll of the value at the cursor and advances it; no bound check. */
MDB_API int MdbGetIdListCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);

/* ---------------------------------------------------------------------------------------------
 * Item records: every text value goes through %q; a NULL date or lastModify is stored as
 * SQLite's "(NULL)" text */

/* The template QRV_MDB_DbUpdateItemValues formats: the 23 values and the id, in column order. The
 * server may point it at another template with the same 24 conversions. */
MDB_API extern const char *mdb_updateitem_sql;

/* Insert an ITEM row with the 23 values (title and file name required); *pllNewId (may be NULL)
 * receives the id SQLite assigned. */
MDB_API uint32_t QRV_MDB_DbAddItem(sqlite3 *pstDb, long long llParentId, int32_t lFlags,
                                   const char *pcTitle, const char *pcFileName, long long llSize,
                                   const char *pcDate, int32_t lBitsPerSample, long long llDuration,
                                   int32_t lNrAudioChannels, long long llResolution,
                                   int32_t lSampleFrequency, int32_t lBitrate,
                                   const char *pcLastModify, int32_t lOriginalTrackNumber,
                                   long long llActor, long long llAlbum, long long llArtist,
                                   long long llAuthor, long long llCreator, long long llDirector,
                                   long long llGenre, long long llProducer, long long llPublisher,
                                   long long *pllNewId);
/* Overwrite all values of row llId (not 0) through mdb_updateitem_sql; a missing row is no error. */
MDB_API uint32_t QRV_MDB_DbUpdateItemValues(sqlite3 *pstDb, long long llParentId, int32_t lFlags,
                                            const char *pcTitle, const char *pcFileName,
                                            long long llSize, const char *pcDate,
                                            int32_t lBitsPerSample, long long llDuration,
                                            int32_t lNrAudioChannels, long long llResolution,
                                            int32_t lSampleFrequency, int32_t lBitrate,
                                            const char *pcLastModify, int32_t lOriginalTrackNumber,
                                            long long llActor, long long llAlbum, long long llArtist,
                                            long long llAuthor, long long llCreator,
                                            long long llDirector, long long llGenre,
                                            long long llProducer, long long llPublisher,
                                            long long llId);
/* Give row llId (not 0) a new parent, title and file name. */
MDB_API uint32_t QRV_MDB_DbUpdateItemParentIDandName(sqlite3 *pstDb, long long llId,
                                                     long long llParentId, const char *pcTitle,
                                                     const char *pcFileName);
/* Change row llId's (not 0) own id to *pllNewId; a NULL pointer or new id <= 0 runs nothing and
 * returns MDB_OK. Failure prints "SQL executing [...] failed with code N." on stdout. */
MDB_API uint32_t QRV_MDB_DbUpdateItem(sqlite3 *pstDb, long long llId, const long long *pllNewId);
/* Delete row llId only (no children, no file). */
MDB_API uint32_t QRV_MDB_DbDelItem(sqlite3 *pstDb, long long llId);
/* Delete the direct children of folder llParentId. */
MDB_API uint32_t QRV_MDB_DbDelSubItem(sqlite3 *pstDb, long long llParentId);
/* Id of llParentId's child named pcFileName into *pllId (untouched when none); with a NULL name the
 * smallest child id, or -1 when the folder has no children. */
MDB_API uint32_t QRV_MDB_DbGetItemIdByName(sqlite3 *pstDb, long long llParentId,
                                           const char *pcFileName, long long *pllId);
/* Find or create the entry pcName (NULL is "") of lookup table pcTable; *pllId (required) receives
 * its exID, or 0. MDB_ERR_PARA for a NULL or empty table name or a NULL pllId. */
MDB_API uint32_t QRV_MDB_DbAddItemExtraInfo(sqlite3 *pstDb, long long *pllId, const char *pcTable,
                                            const char *pcName);

/* ---------------------------------------------------------------------------------------------
 * Item queries: a query that finds no row leaves the caller's storage as it was */

/* One whole ITEM row. */
typedef struct MdbItemDetail {
    long long llId;
    long long llParentId;
    uint32_t ulFlags;
    char acTitle[256];
    char acFileName[4096];
    uint64_t ullSize;
    char acDate[64];
    uint32_t ulBitsPerSample;
    uint64_t ullDuration;
    uint32_t ulNrAudioChannels;
    uint64_t ullResolution;
    uint32_t ulSampleFrequency;
    uint32_t ulBitrate;
    char acLastModify[64];
    uint32_t ulOriginalTrackNumber;
    long long llExIdActor;
    long long llExIdAlbum;
    long long llExIdArtist;
    long long llExIdAuthor;
    long long llExIdCreator;
    long long llExIdDirector;
    long long llExIdGenre;
    long long llExIdProducer;
    long long llExIdPublisher;
} MdbItemDetail;

/* All ITEM ids as QRV_MDB_DbGetAllItemID found them (malloc'ed; the caller frees it), and their
 * number. */
MDB_API extern long long *g_pllIDArray;
MDB_API extern uint32_t g_ulIDArrayCount;

/* File name (cut to ulFileNameSize - 1 characters), flags and parent id of row llId; each output
 * may be NULL. */
MDB_API uint32_t QRV_MDB_GetItemInfo(sqlite3 *pstDb, long long llId, long long *pllParentId,
                                     char *pcFileName, uint32_t ulFileNameSize, uint32_t *pulFlags);
/* The whole row llId into *pstDetail (required); the record is cleared only when the row exists. */
MDB_API uint32_t QRV_MDB_GetItemDetailInfo(sqlite3 *pstDb, long long llId, MdbItemDetail *pstDetail);
/* Sample frequency and channel count of item llId, on g_pstMdbCtx (MDB_ERR_PARA when NULL). */
MDB_API uint32_t QRV_MDB_GetChannelAndSampleFrequency(long long llId, uint32_t *pulSampleFrequency,
                                                      uint32_t *pulChannels);
/* Name of a genre, album or artist by id into a 256-byte buffer (untouched for an unknown id). */
MDB_API uint32_t QRV_MDB_GetGenre(sqlite3 *pstDb, int32_t lId, char *pcName);
MDB_API uint32_t QRV_MDB_GetAlbum(sqlite3 *pstDb, int32_t lId, char *pcName);
MDB_API uint32_t QRV_MDB_GetArtist(sqlite3 *pstDb, int32_t lId, char *pcName);
/* 1 when folder llId has no children or only children with flags 130, else 0 (also when no
 * connection is open at g_pstMdbCtx or the query fails). */
MDB_API int32_t QRV_MDB_IsFolderEmpty(long long llId);
/* Count the ITEM rows into g_ulIDArrayCount and fill a new g_pllIDArray with their ids (an earlier
 * array is not released). Ids added after the count are dropped. A count of 0 allocates nothing.
 * Allocation failure: MDB_ERR_MEM, g_pllIDArray NULL, g_ulIDArrayCount 0. NULL connection: MDB_OK. */
MDB_API uint32_t QRV_MDB_DbGetAllItemID(sqlite3 *pstDb);
/* 1 when the DLNA view has at least ulExpected rows among the first three ITEM ids, else 0. */
MDB_API int32_t QRV_MDB_DbDLNATest(sqlite3 *pstDb, uint32_t ulExpected);

/* ---------------------------------------------------------------------------------------------
 * Root folders and folder flags */

/* One shared root folder: title (owned by the entry) and row id. */
typedef struct MdbRootPath {
    char *pcTitle;
    long long llId;
} MdbRootPath;

/* The root folders (rows with parentID 0) as QRV_MDB_DbGetRoots read them; owned by the library. */
MDB_API extern MdbRootPath *g_pstRootPaths;
MDB_API extern uint32_t g_ulRootPathNum;

/* Release the root list and read it anew. No roots: MDB_OK and no list. MDB_ERR_MEM when the list
 * cannot be allocated (no list); MDB_ERR_DB when a statement fails. A NULL connection: MDB_ERR_PARA
 * before anything is released. */
MDB_API uint32_t QRV_MDB_DbGetRoots(sqlite3 *pstDb);
/* Add ulBits to folder llId's flags unless (flags AND ulBits) is already greater than 1. */
MDB_API uint32_t QRV_MDB_UpdateFolderFlags(sqlite3 *pstDb, long long llId, uint32_t ulBits);
/* Replace the whole flags word of row llId. */
MDB_API uint32_t QRV_MDB_SetFolderFlags(sqlite3 *pstDb, long long llId, int32_t lFlags);
/* Point the plain folder rows (flags 2) that share pcNewRoot's beginning (up to the device number
 * before the last '_' of its first component below pcBase) and its ending (from that '_'), and whose
 * directory no longer exists, at pcNewRoot. Only strlen(pcBase) is used. MDB_OK and nothing done
 * when pcNewRoot is not longer than pcBase; MDB_ERR_PARA when NULL or the component has no '_'. */
MDB_API uint32_t QRV_MDB_ReplaceRoot(sqlite3 *pstDb, const char *pcBase, const char *pcNewRoot);

/* ---------------------------------------------------------------------------------------------
 * Database file copy */

/* Copy pcSource byte for byte onto pcTarget. MDB_ERR_PARA for a NULL path or the same path text;
 * MDB_ERR_FAIL when a file cannot be opened ("Caution: ..." on stdout) or a write is short (perror). */
MDB_API uint32_t QRV_MDB_Copyfile(const char *pcTarget, const char *pcSource);

/* ---------------------------------------------------------------------------------------------
 * Uploads: CreateObject, the upload notes, DestroyObject, file information, completion, time-out
 *
 * An upload: the server parses the CreateObject Elements (QRV_MDB_ParseElements), then
 * QRV_MDB_CreateObject adds an ITEM row of size 0 below the "upload" folder of the first root
 * folder, answers with the item and its importUri, and opens an upload note. The file arrives at
 * the server's HTTP file server, which finds the path with QRV_MDB_GetFileInfoById and sets the
 * row's size; QRV_MDB_CheckUploadComplete then answers 1. QRV_MDB_AutoDestroyObject, called by the
 * server from time to time, destroys an object whose note still waits 35 s after it was made.
 * Pauses (sleep) and the uptime (sysinfo) are taken from the system library by name. */

/* One CreateObject request; allocated by the server. Allocated texts come from strdup and are the
 * server's to free. */
typedef struct MdbNewObject {
    char *pcContainerId;      /* server: ContainerID */
    char *pcElements;         /* server: the Elements DIDL-Lite text */
    uint32_t ulAddrFamily;    /* server: 2 IPv4, 10 IPv6 */
    char *pcParentId;         /* parse, create */
    uint32_t ulRestricted;    /* parse: 0 when restricted="0" */
    char *pcTitle;            /* parse */
    char *pcDate;             /* parse: year-month-day, or NULL */
    char *pcClass;            /* parse */
    char *pcSize;             /* parse, or NULL */
    char *pcProtocolInfo;     /* parse: without its trailing parameters */
    char *pcIfoFileUri;       /* parse, or NULL */
    const char *pcSuffix;     /* parse: file suffix, owned by the profile library */
    uint32_t ulFlags;         /* parse, create: ITEM flags word */
    char *pcObjectId;         /* create */
    IXML_Document *pstDoc;    /* server: the answer document */
    IXML_Element *pstDidlRoot;/* server, create */
    IXML_Element *pstItem;    /* create */
    IXML_Element *pstRes;     /* create */
} MdbNewObject;

/* One upload in progress. */
typedef struct MdbUploadNote {
    long long llObjectId;
    uint32_t ulState;         /* 1 waiting, 0 disabled */
    uint32_t ulStartTime;     /* sysinfo uptime when the note was made */
    struct MdbUploadNote *pstNext;
} MdbUploadNote;

/* The pending uploads in creation order (NULL when none). Not locked: one thread at a time. */
MDB_API extern MdbUploadNote *g_pstUploadList;

/* Append a waiting note for llObjectId, stamped with the sysinfo uptime. 0, or -1 when it cannot
 * be allocated (the list is then unchanged). */
MDB_API int32_t QRV_MDB_AddUploadNote(long long llObjectId);
/* Remove the first note for llObjectId, if any. Always 0. */
MDB_API int32_t QRV_MDB_DelUploadNote(long long llObjectId);
/* 0 when a note for llObjectId exists (waiting or disabled), else -1. */
MDB_API int32_t QRV_MDB_FindUploadNote(long long llObjectId);
/* Disable the first note for llObjectId (never timed out, still found): 0, or -1 when none. */
MDB_API int32_t QRV_MDB_DisableUploadNote(long long llObjectId);
/* Drop every note, deleting each note's ITEM row on g_pstMdbCtx (failures ignored). Always 0. */
MDB_API int32_t QRV_MDB_FreeUploadList(void);

/* Read the CreateObject Elements text (pstObj->pcElements) into the record: pcParentId (warns
 * "warning: the parentID is diffrent with ContainerID!" when it differs from pcContainerId, or when
 * that is NULL), ulRestricted, pcTitle, pcDate ("y-m-d" without leading zeros), pcClass, pcSize,
 * pcIfoFileUri, pcProtocolInfo, and from it ulFlags and pcSuffix (QRV_MDB_PNtoFix). Each value is
 * the text between the first start marker anywhere in Elements and the next end marker, at most
 * 511 characters, not XML-decoded. protocolInfo is cut before the first ";DLNA.ORG_PS=",
 * ";DLNA.ORG_FLAGS=" and the vendor test parameter ";QRV.ORG_TEST=". Stored texts are strdup
 * copies for the server to free, also those stored before a failure. 0, or -1 (0xFFFFFFFF). */
MDB_API uint32_t QRV_MDB_ParseElements(MdbNewObject *pstObj);

/* Enter a parsed request in the catalogue: an ITEM row of size 0 named "<title>.<suffix>" below
 * the "upload" folder of the first root folder (replacing an earlier object of that file name,
 * after a 1 s pause while its upload is pending), the item answer under pstDidlRoot with its
 * importUri "<URL base>/web/upload/<id>.<suffix>", an upload note and the server notification.
 * Refused with -1 before anything is looked up or written: a NULL record, document, DIDL-Lite root,
 * title or suffix; a title that is empty, "." or "..", begins with '.', or holds '/', '\' or a
 * control character (below 0x20 or 0x7f); a suffix with '/', '\' or a control character; a class
 * number (ulFlags & 127) other than 11, 12, 13. -1 too when the row cannot be added (one retry
 * after 2 s). The replaced pcParentId and pcObjectId are not freed. 0 on success. */
MDB_API uint32_t QRV_MDB_CreateObject(MdbNewObject *pstObj);

/* Remove an object: its file (unlink), its ITEM row (one retry after 2 s) and its upload note.
 * 711 (MDB_UPNP_ERR_RESTRICTED_OBJECT) for a restricted row, nothing removed; otherwise 0, also
 * when no file is known (then "the file not find!" is printed). Only the one row is deleted. */
MDB_API uint32_t QRV_MDB_DestroyObject(long long llId);

/* Look up an item's file: full path (root folder path and the file names down to the item,
 * joined with '/'; a malloc'ed copy for the caller to free), MIME type and DLNA.ORG_PN profile
 * name (from the profile library), DLNA.ORG_OP and DLNA.ORG_FLAGS values (from the item's family;
 * NULL for a family index not below g_ulNumOfMediaClasses or without transfer parameters). Each
 * out-place may be NULL; the four description texts are not to be freed. 0 on success; 1 when the
 * id is not a file under a root (no row, flags 0, a root folder, an empty name); MDB_ERR_PARA or
 * MDB_ERR_DB when an ancestor lookup fails, MDB_ERR_NOT_FOUND when an ancestor row is missing or
 * the chain exceeds 64 ancestors, MDB_ERR_MEM when the path cannot be copied: no path then, but
 * the description outputs are already written. */
MDB_API int32_t QRV_MDB_GetFileInfoById(long long llId, char **ppcPath, const char **ppcMimeType,
                                        const char **ppcProfileName, const char **ppcOpValue,
                                        const char **ppcFlagsValue);

/* 1 when the item's row has a non-zero size, else 0 (also for no row and database failures). */
MDB_API int32_t QRV_MDB_CheckUploadComplete(long long llId);

/* The upload time-out: destroy (QRV_MDB_DestroyObject) the first object whose note is waiting
 * (state 1) and was made 35 s of uptime ago or earlier, printing
 * "35 second time out, auto destory item:<id>". At most one object per call. 0 when nothing timed
 * out, else DestroyObject's result. */
MDB_API int32_t QRV_MDB_AutoDestroyObject(void);

/* ---------------------------------------------------------------------------------------------
 * Builds for DLNA certification set this flag to 1 (its initial value); the library never reads it. */
MDB_API extern uint32_t g_ulDlnaCertification;

#ifdef __cplusplus
}
#endif

#endif /* MDB_H */
