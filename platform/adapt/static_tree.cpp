// The static container tree of the reference platform:
//
//   0 Root
//   ├── 0.1 Music:    0.1.256 All Music, 0.1.257 Genres, 0.1.258 Artists, 0.1.262 Albums, 0.1.264 Folders
//   ├── 0.2 Video:    0.2.512 All Video, 0.2.513 Creators, 0.2.514 Albums, 0.2.516 Folders
//   └── 0.3 Pictures: 0.3.768 All Pictures, 0.3.771 Folders
//
// The root and the three media containers hold only static children and are browsed by the
// library's static handler. The others show database content through the wrappers of
// handler_wrappers.cpp, which read the container's media class from usAdaptData.
// Category containers carry the class of the values they list (a genre is written with the class
// of "Genres"), and every container names the classes a Search below it can answer with.
#include <mdb_platform.h>

#include "adapt_ids.h"
#include "handler_wrappers.h"

using namespace mdbadapt;

namespace {

constexpr uint16_t kStatic = 0; // usAdaptData of containers without a media class

extern const MdbStaticContainer kRootChildren[3];
extern const MdbStaticContainer kMusicChildren[5];
extern const MdbStaticContainer kVideoChildren[4];
extern const MdbStaticContainer kPictureChildren[2];

/* One node; the helper keeps the field order of MdbStaticContainer in one place. */
constexpr MdbStaticContainer Node(const char *pcTitle, uint16_t usId, uint32_t ulClass, uint32_t ulSearchClass,
                                  uint16_t usMediaClass, uint16_t usChildNum, MdbContainerHandler pfnBrowse,
                                  const MdbStaticContainer *pstParent, const MdbStaticContainer *pstChildren) {
    return MdbStaticContainer{pcTitle,
                              usId,
                              static_cast<uint8_t>(ulClass),
                              static_cast<uint8_t>(ulSearchClass),
                              usMediaClass,
                              usChildNum,
                              pfnBrowse,
                              pstParent,
                              pstChildren};
}

const MdbStaticContainer kRootChildren[3] = {
    Node("Music", kIdMusic, kClassContainer, kClassMusicTrack, kStatic, 5, QRV_MDB_BrowseStaticContainer,
         &g_stRootContainer, kMusicChildren),
    Node("Video", kIdVideo, kClassContainer, kClassVideoItem, kStatic, 4, QRV_MDB_BrowseStaticContainer,
         &g_stRootContainer, kVideoChildren),
    Node("Pictures", kIdPictures, kClassContainer, kClassPhoto, kStatic, 2, QRV_MDB_BrowseStaticContainer,
         &g_stRootContainer, kPictureChildren),
};

const MdbStaticContainer kMusicChildren[5] = {
    Node("All Music", kIdAllMusic, kClassContainer, kClassMusicTrack, kClassMusicTrack, 0, WithMediaClass<QRV_MDB_BrowseAll>,
         &kRootChildren[0], nullptr),
    Node("Genres", kIdMusicGenres, kClassMusicGenre, kSearchMusicGenres, kClassMusicTrack, 0,
         WithMediaClass<QRV_MDB_BrowseMusicGenre>, &kRootChildren[0], nullptr),
    Node("Artists", kIdMusicArtists, kClassMusicArtist, kSearchMusicArtists, kClassMusicTrack, 0,
         WithMediaClass<QRV_MDB_BrowseMusicArtist>, &kRootChildren[0], nullptr),
    Node("Albums", kIdMusicAlbums, kClassMusicAlbum, kSearchMusicAlbums, kClassMusicTrack, 0,
         WithMediaClass<QRV_MDB_BrowseMusicAlbum>, &kRootChildren[0], nullptr),
    Node("Folders", kIdMusicFolders, kClassStorageFolder, kSearchMusicFolders, kClassMusicTrack, 0,
         WithMediaClass<QRV_MDB_BrowseFolder>, &kRootChildren[0], nullptr),
};

const MdbStaticContainer kVideoChildren[4] = {
    Node("All Video", kIdAllVideo, kClassContainer, kClassVideoItem, kClassVideoItem, 0, WithMediaClass<QRV_MDB_BrowseAll>,
         &kRootChildren[1], nullptr),
    Node("Creators", kIdVideoCreators, kClassPerson, kSearchVideoCreators, kClassVideoItem, 0,
         WithMediaClass<QRV_MDB_BrowseVideoCreator>, &kRootChildren[1], nullptr),
    Node("Albums", kIdVideoAlbums, kClassAlbum, kSearchVideoAlbums, kClassVideoItem, 0, WithMediaClass<QRV_MDB_BrowseVideoAlbum>,
         &kRootChildren[1], nullptr),
    Node("Folders", kIdVideoFolders, kClassStorageFolder, kSearchVideoFolders, kClassVideoItem, 0,
         WithMediaClass<QRV_MDB_BrowseFolder>, &kRootChildren[1], nullptr),
};

const MdbStaticContainer kPictureChildren[2] = {
    Node("All Pictures", kIdAllPictures, kClassContainer, kClassPhoto, kClassPhoto, 0, WithMediaClass<QRV_MDB_BrowseAll>,
         &kRootChildren[2], nullptr),
    Node("Folders", kIdPictureFolders, kClassStorageFolder, kSearchPictureFolders, kClassPhoto, 0,
         WithMediaClass<QRV_MDB_BrowseFolder>, &kRootChildren[2], nullptr),
};

} // namespace

extern "C" const MdbStaticContainer g_stRootContainer =
    Node("Root", kIdRoot, kClassContainer, kSearchAllMedia, kStatic, 3, QRV_MDB_BrowseStaticContainer, nullptr,
         kRootChildren);
