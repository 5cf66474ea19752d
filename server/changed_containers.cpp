// Changed folders to the containers that list them.
#include "changed_containers.h"

#include <adapt/handler_wrappers.h>
#include <mdb_platform.h>

namespace mdbd {

namespace {

/* Calls fn for every node of the static tree with its handler kind and id. */
template <typename Fn>
void ForEachContainer(const MdbStaticContainer *node, Fn fn) {
    char id[256];
    if (QRV_MDB_StaticContainerGetObjId(node, id, sizeof id) == MDB_OK) {
        fn(mdbadapt::KindOfHandler(node->pfnBrowse), std::string(id));
    }
    for (uint16_t i = 0; node->pstChildren != nullptr && i < node->usChildNum; ++i) {
        ForEachContainer(&node->pstChildren[i], fn);
    }
}

}  // namespace

std::set<std::string> ContainersOfFolders(const std::set<long long> &folders) {
    std::set<std::string> containers;
    ForEachContainer(&g_stRootContainer, [&](mdbadapt::HandlerKind kind, const std::string &id) {
        switch (kind) {
        case mdbadapt::HandlerKind::kFolders:
            for (long long folder : folders) {
                containers.insert(folder == 0 ? id : id + "|" + std::to_string(folder));
            }
            break;
        case mdbadapt::HandlerKind::kAllItems:
        case mdbadapt::HandlerKind::kGenres:
        case mdbadapt::HandlerKind::kArtists:
        case mdbadapt::HandlerKind::kAlbums:
            containers.insert(id);
            break;
        default:
            break;
        }
    });
    return containers;
}

}  // namespace mdbd
