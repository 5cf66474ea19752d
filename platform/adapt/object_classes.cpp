// The upnp:class vocabulary of the reference platform and its search class sets.
//
// Class numbers 1-10 are containers, 11-13 items (see adapt_ids.h for the names). The category
// containers carry the class of their values, so that a genre written below "Genres" reads as a
// musicGenre; the class texts that search criteria compare by prefix are chosen so that no
// container class is a prefix of another container's or item's class it must not match.
#include <mdb_platform.h>

#include "adapt_ids.h"

using namespace mdbadapt;

extern "C" {

const char *const g_apcObjClassStrings[] = {
    "object.container",                   /* 1 */
    "object.container.storageFolder",     /* 2 */
    "object.container.album.photoAlbum",  /* 3 */
    "object.container.genre.musicGenre",  /* 4 */
    "object.container.person.musicArtist",/* 5 */
    "object.container.album.musicAlbum",  /* 6 */
    "object.container.person",            /* 7 */
    "object.container.genre.movieGenre",  /* 8 */
    "object.container.album",             /* 9 */
    "object.container.playlistContainer", /* 10 */
    "object.item.audioItem.musicTrack",   /* 11 */
    "object.item.videoItem",              /* 12 */
    "object.item.imageItem.photo",        /* 13 */
};

const uint32_t g_ulObjClassStringLen = sizeof(g_apcObjClassStrings) / sizeof(g_apcObjClassStrings[0]);

} // extern "C"

static_assert(sizeof(g_apcObjClassStrings) / sizeof(g_apcObjClassStrings[0]) == kClassCount,
              "class numbers in adapt_ids.h and the class texts disagree");

namespace {

constexpr uint32_t Bit(uint32_t objClass) { return 1u << objClass; }

// Members of each set, one bit per class number, indexed by set value - kSearchAllMedia.
constexpr uint32_t kSearchSetMembers[kSearchSetEnd - kSearchAllMedia] = {
    Bit(kClassMusicTrack) | Bit(kClassVideoItem) | Bit(kClassPhoto),                      // all media
    Bit(kClassMusicGenre) | Bit(kClassMusicTrack),                                        // genres
    Bit(kClassMusicArtist) | Bit(kClassMusicTrack),                                       // artists
    Bit(kClassMusicAlbum) | Bit(kClassMusicTrack),                                        // albums
    Bit(kClassPerson) | Bit(kClassVideoItem),                                             // creators
    Bit(kClassAlbum) | Bit(kClassVideoItem),                                              // video albums
    Bit(kClassStorageFolder) | Bit(kClassMusicTrack),                                     // music folders
    Bit(kClassStorageFolder) | Bit(kClassVideoItem),                                      // video folders
    Bit(kClassStorageFolder) | Bit(kClassPhoto),                                          // picture folders
};

} // namespace

/* Non-zero when class number ulClass belongs to the search class set ulSearchClass. Values below
 * 128 are single classes, not sets, and match nothing here; so do unknown set values and class
 * numbers outside the class table. */
extern "C" int32_t QRV_MDB_AdaptIsSearchClassMatched(uint32_t ulClass, uint32_t ulSearchClass) {
    if (ulSearchClass < kSearchAllMedia || ulSearchClass >= kSearchSetEnd) {
        return 0;
    }
    if (ulClass == 0 || ulClass > kClassCount) {
        return 0;
    }
    return (kSearchSetMembers[ulSearchClass - kSearchAllMedia] & Bit(ulClass)) != 0 ? 1 : 0;
}
