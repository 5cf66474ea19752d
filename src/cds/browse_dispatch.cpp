// The Browse entry point: resolve the ObjectID against the static container tree and hand the
// request to the browse handler stored in the container.
#include <mdb.h>

/* MDB_ERR_PARA for a NULL action record (tested first); MDB_ERR_NOT_FOUND for an ObjectID that
 * does not resolve or a container without handler; otherwise what the handler returns. */
extern "C" MDB_API uint32_t QRV_MDB_Browse(const char *pcObjectId, uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    if (pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    const MdbStaticContainer *pstNode = nullptr;
    const char *pcSubId = nullptr;
    uint32_t status = MdbLocateStaticContainerById(pcObjectId, &pstNode, &pcSubId);
    if (status != MDB_OK) {
        return status;
    }
    if (pstNode->pfnBrowse == nullptr) {
        return MDB_ERR_NOT_FOUND;
    }
    return pstNode->pfnBrowse(pstNode, pcSubId, ulBrowseFlag, pstAction);
}
