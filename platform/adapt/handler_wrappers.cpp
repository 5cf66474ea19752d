// The four-argument browse handlers of the database containers (see handler_wrappers.h).
//
// Until the library's database browse handlers exist, every wrapper answers MDB_ERR_NOT_FOUND,
// the status of a container that cannot be browsed; each one is then a single call of its
// handler with the node's media class (pstNode->usAdaptData) as the fifth argument.
#include "handler_wrappers.h"

namespace mdbadapt {

namespace {

/* Stand-in for a database handler that the library does not provide yet. */
uint32_t NotYetBrowsable(const MdbStaticContainer *pstNode, const char *pcSubId, uint32_t ulBrowseFlag,
                         MdbActionCtx *pstAction) {
    (void)pstNode;
    (void)pcSubId;
    (void)ulBrowseFlag;
    (void)pstAction;
    return MDB_ERR_NOT_FOUND;
}

} // namespace

/* Folder views (0.1.264, 0.2.516, 0.3.771): the shared roots and the scanned directory tree. */
uint32_t BrowseFolderWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                             uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return NotYetBrowsable(pstNode, pcSubId, ulBrowseFlag, pstAction);
}

/* All items of one class (0.1.256, 0.2.512, 0.3.768). */
uint32_t BrowseAllWrapper(const MdbStaticContainer *pstNode, const char *pcSubId, uint32_t ulBrowseFlag,
                          MdbActionCtx *pstAction) {
    return NotYetBrowsable(pstNode, pcSubId, ulBrowseFlag, pstAction);
}

/* Music genres (0.1.257). */
uint32_t BrowseMusicGenreWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return NotYetBrowsable(pstNode, pcSubId, ulBrowseFlag, pstAction);
}

/* Music artists (0.1.258). */
uint32_t BrowseMusicArtistWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                  uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return NotYetBrowsable(pstNode, pcSubId, ulBrowseFlag, pstAction);
}

/* Music albums (0.1.262). */
uint32_t BrowseMusicAlbumWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return NotYetBrowsable(pstNode, pcSubId, ulBrowseFlag, pstAction);
}

/* Video creators (0.2.513). */
uint32_t BrowseVideoCreatorWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                   uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return NotYetBrowsable(pstNode, pcSubId, ulBrowseFlag, pstAction);
}

/* Video albums (0.2.514). */
uint32_t BrowseVideoAlbumWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return NotYetBrowsable(pstNode, pcSubId, ulBrowseFlag, pstAction);
}

} // namespace mdbadapt
