// Browse handlers of the database containers of the static tree. QRV_MDB_Browse calls a handler
// with four arguments; the library's database handlers take the container's media class as a
// fifth. Each wrapper supplies it from the node's usAdaptData (11 music, 12 video, 13 pictures).
#pragma once

#include <mdb.h>

namespace mdbadapt {

uint32_t BrowseFolderWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                             uint32_t ulBrowseFlag, MdbActionCtx *pstAction);
uint32_t BrowseAllWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                          uint32_t ulBrowseFlag, MdbActionCtx *pstAction);
uint32_t BrowseMusicGenreWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction);
uint32_t BrowseMusicArtistWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                  uint32_t ulBrowseFlag, MdbActionCtx *pstAction);
uint32_t BrowseMusicAlbumWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction);
uint32_t BrowseVideoCreatorWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                   uint32_t ulBrowseFlag, MdbActionCtx *pstAction);
uint32_t BrowseVideoAlbumWrapper(const MdbStaticContainer *pstNode, const char *pcSubId,
                                 uint32_t ulBrowseFlag, MdbActionCtx *pstAction);

} // namespace mdbadapt
