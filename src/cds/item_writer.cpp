// The row callback that writes rows of the DLNA view as DIDL-Lite objects: an "item" for class
// numbers above 10, a "container" (folders) otherwise, with ids, title, class, the properties the
// filter asks for and, for items, the "res" element. Consecutive rows with the same id make one
// object.
#include "cds/item_writer.h"
#include "common/url_base.h"
#include "common/xml_text.h"

#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>

namespace {

// Class numbers up to this one are containers.
constexpr uint32_t kLastContainerClass = 10;

const char *RowValue(int lColNum, char **ppcValues, uint32_t ulIdx) {
    return ulIdx < static_cast<uint32_t>(lColNum) ? ppcValues[ulIdx] : nullptr;
}

/* Whether property ulIdx (flags usFlags) is written for an object of class ulClass on behalf of
 * the filter: asked for, not excluded from the filter, and of the object's kind (container-only
 * properties on containers, the others on items). */
bool FilterAsksFor(const MdbActionCtx *pstAction, uint32_t ulIdx, uint16_t usFlags, uint32_t ulClass) {
    // The server must always hand in filter bytes; an action without them asks for nothing
    // instead of crashing the writer.
    if (pstAction->pucFilter == nullptr || pstAction->pucFilter[ulIdx] == 0 || (usFlags & MDB_COL_NOT_FILTERED) != 0) {
        return false;
    }
    const bool bContainerOnly = (usFlags & MDB_COL_CONTAINER_ONLY) != 0;
    const bool bContainer = ulClass <= kLastContainerClass;
    return bContainerOnly == bContainer;
}

}  // namespace

/* The title element is named by entry 3's property name, the class element by entry 2's; a
 * NULL title gives an element without text. */
void MdbAppendTitleAndClass(MdbItemBuildCtx *pstCtx, char **ppcValues, uint32_t ulFlags) {
    if (pstCtx == nullptr || pstCtx->pstAction == nullptr || pstCtx->pstItem == nullptr || ppcValues == nullptr ||
        g_ulNumOfDlnaCols <= MDB_COL_IDX_TITLE) {
        return;
    }
    IXML_Document *pstDoc = pstCtx->pstAction->pstDoc;
    QRV_MDB_XmlAppendChildElement(pstDoc, pstCtx->pstItem, g_astDlnaCols[MDB_COL_IDX_TITLE].pcPropName,
                                  ppcValues[MDB_ROW_TITLE], nullptr);
    QRV_MDB_XmlAppendChildElement(pstDoc, pstCtx->pstItem, g_astDlnaCols[MDB_COL_IDX_CLASS].pcPropName,
                                  QRV_MDB_GetMediaClassById(ulFlags), nullptr);
}

/* The value is the row id for entry 30, "STANDARD" for entry 32, else the row value at the
 * entry's column index. Element properties without a value read "[Unknown]". */
uint32_t MdbBuildColumn(MdbItemBuildCtx *pstCtx, int lColNum, char **ppcValues, char ** /*ppcNames*/,
                        uint32_t ulFlags, uint32_t ulColIdx, IXML_Element *pstItem, IXML_Element *pstRes) {
    if (pstCtx == nullptr || pstCtx->pstAction == nullptr || ppcValues == nullptr || ulColIdx >= g_ulNumOfDlnaCols) {
        return MDB_ERR_PARA;
    }
    const MdbDlnaCol &col = g_astDlnaCols[ulColIdx];
    const char *pcValue = nullptr;
    if (ulColIdx == MDB_COL_IDX_MANAGED) {
        pcValue = RowValue(lColNum, ppcValues, g_astDlnaCols[MDB_COL_IDX_ID].usColIdx);
    } else if (ulColIdx == MDB_COL_IDX_STANDARD) {
        pcValue = "STANDARD";
    } else {
        pcValue = RowValue(lColNum, ppcValues, col.usColIdx);
    }

    if ((col.usFlags & MDB_COL_ADAPT_BUILDER) != 0) {
        return QRV_MDB_AdaptColItemBuilder(pstCtx->pstContainer, pstCtx->pstAction, pstItem, pstRes, ulFlags, ulColIdx,
                                           pcValue);
    }
    if ((col.usFlags & (MDB_COL_RES_ATTRIBUTE | MDB_COL_ELEMENT)) != MDB_COL_ELEMENT) {
        // An attribute, of the res element or of the object: dropped when there is no element to
        // carry it or no value (ixml takes no NULL value).
        IXML_Element *pstOwner = (col.usFlags & MDB_COL_RES_ATTRIBUTE) != 0 ? pstRes : pstItem;
        if (pstOwner == nullptr || pcValue == nullptr || col.pcColName == nullptr) {
            return MDB_ERR_PARA;
        }
        return MdbXmlSetAttribute(pstOwner, col.pcColName, pcValue);
    }
    if (pstItem == nullptr) {
        return MDB_ERR_PARA;
    }
    const char *pcText = (pcValue == nullptr || pcValue[0] == '\0') ? "[Unknown]" : pcValue;
    return QRV_MDB_XmlAppendChildElement(pstCtx->pstAction->pstDoc, pstItem, col.pcPropName, pcText, nullptr);
}

/* Row callback of the statement runner over "select * from DLNA ..." rows; pvArg is an
 * MdbItemBuildCtx. Rows beyond the action's RequestedCount, item rows without a DLNA profile
 * (reported on standard output, not counted) and rows that are not DLNA view rows are skipped.
 * Always returns 0, so that a bad row never stops the statement. SQL NULLs are never
 * dereferenced: a NULL id or flags value reads as 0, and a NULL flags text prints as empty. */
extern "C" MDB_API int MdbBuildItemCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    MdbItemBuildCtx *pstCtx = static_cast<MdbItemBuildCtx *>(pvArg);
    if (pstCtx == nullptr || pstCtx->pstAction == nullptr || ppcValues == nullptr || lColNum < MDB_ROW_MIN_VALUES) {
        return 0;
    }
    MdbActionCtx *pstAction = pstCtx->pstAction;
    if (pstAction->ulNumberReturned >= pstAction->ulRequestedCount) {
        return 0;
    }

    const char *pcRowId = ppcValues[MDB_ROW_ID];
    const long long llRowId = pcRowId != nullptr ? std::atoll(pcRowId) : 0;
    const bool bNewObject = llRowId != pstCtx->llLastId;
    if (bNewObject) {
        pstCtx->pstItem = nullptr;
        pstCtx->pstRes = nullptr;
        ++pstAction->ulNumberReturned;
    }

    char acUrlBase[256];
    MdbFormatUrlBase(pstAction->ulAddrFamily, acUrlBase, sizeof acUrlBase);

    const char *pcFlags = ppcValues[MDB_ROW_FLAGS];
    const uint32_t ulFlags = pcFlags != nullptr ? static_cast<uint32_t>(std::strtoul(pcFlags, nullptr, 10)) : 0;
    const uint32_t ulClass = ulFlags & MDB_FLAGS_CLASS_MASK;
    const MdbDlnaProfile *pstProfile = QRV_DLNA_GetProfileByProfileId(ulFlags);

    if (pstCtx->pstItem == nullptr) {
        const char *pcElement = "container";
        if (ulClass > kLastContainerClass) {
            if (pstProfile == nullptr) {
                std::printf("item %s-%d can't find profile\n", pcFlags != nullptr ? pcFlags : "",
                            static_cast<int>(ulFlags));
                if (bNewObject) {
                    --pstAction->ulNumberReturned;
                }
                return 0;
            }
            pcElement = "item";
        }
        QRV_MDB_XmlAppendChildElement(pstAction->pstDoc, pstAction->pstDidlRoot, pcElement, nullptr,
                                      &pstCtx->pstItem);
    }

    MdbSetObjectIds(pstCtx, ppcValues, ulFlags);
    MdbAppendTitleAndClass(pstCtx, ppcValues, ulFlags);

    for (uint32_t i = kMdbFirstTableProperty; i < g_ulNumOfDlnaCols; ++i) {
        const uint16_t usFlags = g_astDlnaCols[i].usFlags;
        if ((usFlags & MDB_COL_ALWAYS) != 0 || i == MDB_COL_IDX_MANAGED) {
            MdbBuildColumn(pstCtx, lColNum, ppcValues, ppcNames, ulFlags, i, pstCtx->pstItem, pstCtx->pstRes);
            continue;
        }
        if (!FilterAsksFor(pstAction, i, usFlags, ulClass)) {
            continue;
        }
        if ((usFlags & MDB_COL_RES_ATTRIBUTE) != 0 && pstCtx->pstRes == nullptr && pstProfile != nullptr) {
            MdbAppendResElement(pstCtx, ppcValues, ulFlags, pstProfile, acUrlBase);
        }
        MdbBuildColumn(pstCtx, lColNum, ppcValues, ppcNames, ulFlags, i, pstCtx->pstItem, pstCtx->pstRes);
    }

    pstCtx->llLastId = llRowId;
    return 0;
}
