// Telling what a container lists by its handler (see handler_wrappers.h). The handlers are those
// the tree of this library holds, so their addresses are compared here, in the same library.
#include "handler_wrappers.h"

namespace mdbadapt {

HandlerKind KindOfHandler(MdbContainerHandler pfnBrowse) {
    const struct {
        MdbContainerHandler pfn;
        HandlerKind kind;
    } kKinds[] = {
        {QRV_MDB_BrowseStaticContainer, HandlerKind::kStatic},
        {WithMediaClass<QRV_MDB_BrowseFolder>, HandlerKind::kFolders},
        {WithMediaClass<QRV_MDB_BrowseAll>, HandlerKind::kAllItems},
        {WithMediaClass<QRV_MDB_BrowseMusicGenre>, HandlerKind::kGenres},
        {WithMediaClass<QRV_MDB_BrowseMusicArtist>, HandlerKind::kArtists},
        {WithMediaClass<QRV_MDB_BrowseVideoCreator>, HandlerKind::kArtists},
        {WithMediaClass<QRV_MDB_BrowseMusicAlbum>, HandlerKind::kAlbums},
        {WithMediaClass<QRV_MDB_BrowseVideoAlbum>, HandlerKind::kAlbums},
    };
    for (const auto &entry : kKinds) {
        if (entry.pfn == pfnBrowse) {
            return entry.kind;
        }
    }
    return HandlerKind::kNone;
}

} // namespace mdbadapt
