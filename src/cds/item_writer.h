// The pieces of the row-to-DIDL-Lite writer (MdbBuildItemCallback): object ids of database rows,
// title and class, one property, and the "res" element with its URL and protocolInfo.
// Internal to the library.
#pragma once

#include <mdb_platform.h>

// Positions of a "select * from DLNA" row that the writer reads directly.
enum MdbDlnaRowPosition : int {
    MDB_ROW_ID = 0,
    MDB_ROW_FLAGS = 2,
    MDB_ROW_TITLE = 3,
    MDB_ROW_FILE_NAME = 21,
    MDB_ROW_MIN_VALUES = 22  // a row with fewer values is not a DLNA view row
};

// The first property that the writer looks at in table order (0 to 3 come first, for every row).
constexpr uint32_t kMdbFirstTableProperty = MDB_COL_IDX_TITLE + 1;

/* The context of one statement run: zeroed, then the container, the action, the base id and the
 * separator flag set and llLastId -1, as every caller starts it. */
inline MdbItemBuildCtx MdbMakeItemBuildCtx(const MdbStaticContainer *pstContainer, MdbActionCtx *pstAction,
                                           const char *pcBaseId, uint32_t ulCommaSep) {
    MdbItemBuildCtx stCtx{};
    stCtx.pstContainer = pstContainer;
    stCtx.pstAction = pstAction;
    stCtx.pcBaseId = pcBaseId;
    stCtx.llLastId = -1;
    stCtx.ulCommaSep = ulCommaSep;
    return stCtx;
}

/* Set the id and parentID attributes of pstCtx->pstItem for the row: the listing's base id and
 * the row id joined with "|" (or "," when ulCommaSep is set), parentID the base; with an empty or
 * "0" base the base comes from the row's class and folder bits. Does nothing without an element. */
void MdbSetObjectIds(MdbItemBuildCtx *pstCtx, char **ppcValues, uint32_t ulFlags);

/* Append the title element (the row's title) and the class element (the class text of ulFlags)
 * to pstCtx->pstItem. */
void MdbAppendTitleAndClass(MdbItemBuildCtx *pstCtx, char **ppcValues, uint32_t ulFlags);

/* Write property ulColIdx of the row onto pstItem (element or attribute) or pstRes (attribute),
 * or through QRV_MDB_AdaptColItemBuilder when the property asks for it. Values at positions
 * beyond lColNum read as NULL. Returns MDB_OK, MDB_ERR_PARA when there is nothing to write on
 * (no element, no value for an attribute) or MDB_ERR_MEM when ixml refuses. */
uint32_t MdbBuildColumn(MdbItemBuildCtx *pstCtx, int lColNum, char **ppcValues, char **ppcNames, uint32_t ulFlags,
                        uint32_t ulColIdx, IXML_Element *pstItem, IXML_Element *pstRes);

/* Write the protocolInfo of a resource of profile pstProfile whose flags word is ulFlags into
 * pcBuf (ulSize bytes, cut there): "http-get:*:<mime>:" followed by the DLNA parameters of the
 * profile and of the media family in bits 8-15 of ulFlags. */
void MdbFormatProtocolInfo(const MdbDlnaProfile *pstProfile, uint32_t ulFlags, char *pcBuf, uint32_t ulSize);

/* Append the "res" element of the row to pstCtx->pstItem and remember it in pstCtx->pstRes: its
 * text the resource URL (empty while an upload note exists), its protocolInfo from the profile
 * and the media family of ulFlags, and its importUri while the unrestricted object is being
 * uploaded. pcUrlBase is the file server's base. */
void MdbAppendResElement(MdbItemBuildCtx *pstCtx, char **ppcValues, uint32_t ulFlags,
                         const MdbDlnaProfile *pstProfile, const char *pcUrlBase);
