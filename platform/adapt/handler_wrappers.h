// Browse handlers of the database containers of the static tree. QRV_MDB_Browse calls a handler
// with four arguments; the library's database handlers take the container's media class as a
// fifth. WithMediaClass<handler> supplies it from the node's usAdaptData (11 music, 12 video,
// 13 pictures; 0, no class, for a missing node, which the handlers answer as a container without
// rows).
#pragma once

#include <mdb.h>

namespace mdbadapt {

using DatabaseHandler = uint32_t (*)(const MdbStaticContainer *, const char *, uint32_t, MdbActionCtx *, uint32_t);

template <DatabaseHandler Handler>
uint32_t WithMediaClass(const MdbStaticContainer *pstNode, const char *pcSubId, uint32_t ulBrowseFlag,
                        MdbActionCtx *pstAction) {
    return Handler(pstNode, pcSubId, ulBrowseFlag, pstAction, pstNode != nullptr ? pstNode->usAdaptData : 0);
}

// What a container of the tree lists, told by its handler: for a media server that pages and sorts
// around the library (lists held in memory ignore StartingIndex; a folder's tracks and an album's
// tracks are wanted in different orders).
enum class HandlerKind {
    kNone,      // no handler: cannot be browsed
    kStatic,    // static children only
    kFolders,   // the shared roots, and below them the folder tree
    kAllItems,  // every item of the media class
    kGenres,    // genre values, and the items of a genre
    kArtists,   // artist (creator) values, and the items of one
    kAlbums,    // album values, and the items of one
};

HandlerKind KindOfHandler(MdbContainerHandler pfnBrowse);

} // namespace mdbadapt
