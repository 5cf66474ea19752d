// Object ids of database rows: a row listed under a base id is "base|row" (or "base,row" inside a
// category value), with the base as its parentID. Rows listed without a base (Search below the
// root) take the base of the all-items or folder container of their class.
#include "cds/item_writer.h"
#include "common/tree_ids.h"
#include "common/xml_text.h"

#include <mdb_platform.h>

#include <cstdio>
#include <cstring>

namespace {

// The base of a row listed without one: items go below their all-items container, folders below
// the folder container of the first class they hold. NULL when the row belongs to none.
const char *BaseOfRowClass(uint32_t ulFlags) {
    const uint32_t ulClass = ulFlags & MDB_FLAGS_CLASS_MASK;
    for (const MdbMediaContainers &stContainers : g_astMdbMediaContainers) {
        if (ulClass == stContainers.ulClass) {
            return stContainers.acAllItems;
        }
        if (ulClass == MDB_CLASS_FOLDER && (ulFlags & stContainers.ulFolderBit) != 0) {
            return stContainers.acFolders;
        }
    }
    return nullptr;
}

}  // namespace

/* Forms id and parentID into 256-byte buffers (cut beyond 255 characters) and sets them, in that
 * order, as the attributes named by the column names of property entries 0 and 1. A row without
 * a base of its own gets both as empty texts. */
void MdbSetObjectIds(MdbItemBuildCtx *pstCtx, char **ppcValues, uint32_t ulFlags) {
    if (pstCtx == nullptr || pstCtx->pstItem == nullptr || ppcValues == nullptr ||
        g_ulNumOfDlnaCols <= MDB_COL_IDX_PARENT) {
        return;
    }
    const char *pcRowId = ppcValues[MDB_ROW_ID] != nullptr ? ppcValues[MDB_ROW_ID] : "";
    const char *pcBase = pstCtx->pcBaseId != nullptr ? pstCtx->pcBaseId : "";
    char cSeparator = '|';
    if (pstCtx->ulCommaSep != 0) {
        cSeparator = ',';
    } else if (pcBase[0] == '\0' || std::strcmp(pcBase, "0") == 0) {
        pcBase = BaseOfRowClass(ulFlags);
    }

    char acId[256] = {0};
    char acParentId[256] = {0};
    if (pcBase != nullptr) {
        std::snprintf(acId, sizeof acId, "%s%c%s", pcBase, cSeparator, pcRowId);
        std::snprintf(acParentId, sizeof acParentId, "%s", pcBase);
    }
    const char *pcIdName = g_astDlnaCols[MDB_COL_IDX_ID].pcColName;
    const char *pcParentName = g_astDlnaCols[MDB_COL_IDX_PARENT].pcColName;
    if (pcIdName != nullptr) {
        MdbXmlSetAttribute(pstCtx->pstItem, pcIdName, acId);
    }
    if (pcParentName != nullptr) {
        MdbXmlSetAttribute(pstCtx->pstItem, pcParentName, acParentId);
    }
}
