// Browse handler of the purely static containers (the root and the media containers), whose
// children are all nodes of the static tree.
#include "cds/container_answer.h"
#include <mdb.h>

/* BrowseMetadata writes the node itself with both counters 1. BrowseDirectChildren counts every
 * child in ulTotalMatches and writes children while that count is below ulRequestedCount (always
 * from the first child: static lists ignore ulStartingIndex). A failed child write stops the list
 * with its status; that child is not counted. A sub-id is MDB_ERR_NOT_FOUND: static containers
 * have no database children. */
extern "C" MDB_API uint32_t QRV_MDB_BrowseStaticContainer(const MdbStaticContainer *pstNode, const char *pcSubId,
                                                          uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    if (pstNode == nullptr || pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    if (pcSubId != nullptr) {
        return MDB_ERR_NOT_FOUND;
    }
    if (ulBrowseFlag == 0) {
        return MdbAnswerWithContainer(pstNode, nullptr, nullptr, pstAction);
    }
    pstAction->ulTotalMatches = 0;
    pstAction->ulNumberReturned = 0;
    // A node that counts children but has no array lists none: never read through NULL.
    for (uint16_t i = 0; pstNode->pstChildren != nullptr && i < pstNode->usChildNum; ++i) {
        if (pstAction->ulTotalMatches < pstAction->ulRequestedCount) {
            uint32_t status =
                QRV_MDB_BuildMetadataForStaticContainer(&pstNode->pstChildren[i], nullptr, nullptr, pstAction);
            if (status != MDB_OK) {
                return status;
            }
            pstAction->ulNumberReturned++;
        }
        pstAction->ulTotalMatches++;
    }
    return MDB_OK;
}
