// The four-argument browse handlers of the database containers (see handler_wrappers.h): each is
// a single call of the library's handler with the node's media class (pstNode->usAdaptData) as
// the fifth argument.
#include "handler_wrappers.h"

namespace mdbadapt {

namespace {

/* The media class of a database container; 0 (no class) for a missing node, which the handlers
 * then answer as a container without rows. */
uint32_t MediaClassOf(const MdbStaticContainer *pstNode) { return pstNode != nullptr ? pstNode->usAdaptData : 0; }

} // namespace

/* Folder views (0.1.264, 0.2.516, 0.3.771): the shared roots and the scanned directory tree. */
uint32_t BrowseFolderWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                             uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return QRV_MDB_BrowseFolder(pstNode, pcSubId, ulBrowseFlag, pstAction, MediaClassOf(pstNode));
}

/* All items of one class (0.1.256, 0.2.512, 0.3.768). */
uint32_t BrowseAllWrapper(const MdbStaticContainer *pstNode, const char *pcSubId, uint32_t ulBrowseFlag,
                          MdbActionCtx *pstAction) {
    return QRV_MDB_BrowseAll(pstNode, pcSubId, ulBrowseFlag, pstAction, MediaClassOf(pstNode));
}

/* Music genres (0.1.257). */
uint32_t BrowseMusicGenreWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return QRV_MDB_BrowseMusicGenre(pstNode, pcSubId, ulBrowseFlag, pstAction, MediaClassOf(pstNode));
}

/* Music artists (0.1.258). */
uint32_t BrowseMusicArtistWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                  uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return QRV_MDB_BrowseMusicArtist(pstNode, pcSubId, ulBrowseFlag, pstAction, MediaClassOf(pstNode));
}

/* Music albums (0.1.262). */
uint32_t BrowseMusicAlbumWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return QRV_MDB_BrowseMusicAlbum(pstNode, pcSubId, ulBrowseFlag, pstAction, MediaClassOf(pstNode));
}

/* Video creators (0.2.513). */
uint32_t BrowseVideoCreatorWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                   uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return QRV_MDB_BrowseVideoCreator(pstNode, pcSubId, ulBrowseFlag, pstAction, MediaClassOf(pstNode));
}

/* Video albums (0.2.514). */
uint32_t BrowseVideoAlbumWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction) {
    return QRV_MDB_BrowseVideoAlbum(pstNode, pcSubId, ulBrowseFlag, pstAction, MediaClassOf(pstNode));
}

} // namespace mdbadapt
