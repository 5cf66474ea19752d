// The five category handlers. Below a category container N the ids are "N|k" for the value k
// (a GENRES, ARTISTS or ALBUMS row) and "N|k,r" for the item r inside it. All five follow one
// pattern; what differs is the value list, the item statements and the name lookup.
#include "cds/category_browse.h"
#include "cds/container_answer.h"
#include "cds/item_writer.h"

#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// One category: its value list, its items and the lookup of a value's name.
struct CategoryKind {
    uint32_t (*pfnList)(const MdbStaticContainer *, uint32_t, MdbActionCtx *, uint32_t);
    uint32_t (*pfnItems)(sqlite3 *, MdbActionCtx *, int32_t, uint32_t, MdbRowCallback, void *, uint32_t *);
    uint32_t (*pfnName)(sqlite3 *, int32_t, char *);
};

uint32_t GenreList(const MdbStaticContainer *pstNode, uint32_t ulFlag, MdbActionCtx *pstAction, uint32_t) {
    return MdbBrowseGenreList(pstNode, ulFlag, pstAction);
}
uint32_t GenreName(sqlite3 *pstDb, int32_t lId, char *pcName) { return QRV_MDB_GetGenre(pstDb, lId, pcName); }
uint32_t ArtistName(sqlite3 *pstDb, int32_t lId, char *pcName) { return QRV_MDB_GetArtist(pstDb, lId, pcName); }
uint32_t AlbumName(sqlite3 *pstDb, int32_t lId, char *pcName) { return QRV_MDB_GetAlbum(pstDb, lId, pcName); }

const CategoryKind kGenre = {GenreList, MdbBrowseGenreItems, GenreName};
const CategoryKind kArtist = {MdbBrowseArtistList, MdbBrowseArtistItems, ArtistName};
const CategoryKind kAlbum = {MdbBrowseAlbumList, MdbBrowseAlbumItems, AlbumName};

/* pcBaseId for the rows of value pcValue (ulValueLen characters of it): N's id, "|", the value,
 * cut at 256 bytes. */
uint32_t FormatValueId(const MdbStaticContainer *pstNode, const char *pcValue, size_t ulValueLen, char (&acId)[256]) {
    const uint32_t ulStatus = QRV_MDB_StaticContainerGetObjId(pstNode, acId, sizeof acId);
    if (ulStatus != MDB_OK) {
        return ulStatus;
    }
    const size_t ulUsed = std::strlen(acId);
    std::snprintf(acId + ulUsed, sizeof acId - ulUsed, "%c%.*s", '|', static_cast<int>(ulValueLen), pcValue);
    return MDB_OK;
}

/* Without a sub-id: the value list (browse flag 1) or the node itself (any other flag).
 * "k,r": the item r of the node's class (BrowseMetadata only; the value k does not restrict it).
 * "k": the value container (any flag but 1) or its items (flag 1). */
uint32_t BrowseCategory(const CategoryKind &kind, const MdbStaticContainer *pstNode, const char *pcSubId,
                        uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass) {
    char acId[256] = {0};
    char acSuffix[64] = {0};
    char acTitle[256] = {0};
    if (pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    if (pcSubId == nullptr) {
        if (ulBrowseFlag == 1) {
            return kind.pfnList(pstNode, ulBrowseFlag, pstAction, ulClass);
        }
        return MdbAnswerWithContainer(pstNode, nullptr, nullptr, pstAction);
    }

    MdbItemBuildCtx stCtx = MdbMakeItemBuildCtx(pstNode, pstAction, acId, 1);

    const char *pcComma = std::strchr(pcSubId, ',');
    if (pcComma != nullptr) {
        if (ulBrowseFlag != 0) {
            return MDB_ERR_PARA;
        }
        const int32_t lRowId = std::atoi(pcComma + 1);
        pstAction->ulTotalMatches = 0;
        const uint32_t ulStatus = FormatValueId(pstNode, pcSubId, static_cast<size_t>(pcComma - pcSubId), acId);
        if (ulStatus != MDB_OK) {
            return ulStatus;
        }
        return MdbBrowseCategoryItem(g_pstMdbCtx, pstAction, lRowId, ulClass, MdbBuildItemCallback, &stCtx,
                                     &pstAction->ulTotalMatches);
    }

    if (ulBrowseFlag != 1) {
        std::snprintf(acSuffix, sizeof acSuffix, "%c%s", '|', pcSubId);
        kind.pfnName(g_pstMdbCtx, std::atoi(pcSubId), acTitle);
        return MdbAnswerWithContainer(pstNode, acTitle, acSuffix, pstAction);
    }
    const int32_t lValueId = std::atoi(pcSubId);
    pstAction->ulTotalMatches = 0;
    const uint32_t ulStatus = FormatValueId(pstNode, pcSubId, std::strlen(pcSubId), acId);
    if (ulStatus != MDB_OK) {
        return ulStatus;
    }
    return kind.pfnItems(g_pstMdbCtx, pstAction, lValueId, ulClass, MdbBuildItemCallback, &stCtx,
                         &pstAction->ulTotalMatches);
}

}  // namespace

/* Music genres: all genres (the class does not restrict the list), a genre's items of ulClass. */
extern "C" MDB_API uint32_t QRV_MDB_BrowseMusicGenre(const MdbStaticContainer *pstNode, const char *pcSubId,
                                                     uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass) {
    return BrowseCategory(kGenre, pstNode, pcSubId, ulBrowseFlag, pstAction, ulClass);
}

/* Music artists: the artists that have items of ulClass, and an artist's items of ulClass. */
extern "C" MDB_API uint32_t QRV_MDB_BrowseMusicArtist(const MdbStaticContainer *pstNode, const char *pcSubId,
                                                      uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass) {
    return BrowseCategory(kArtist, pstNode, pcSubId, ulBrowseFlag, pstAction, ulClass);
}

/* Video creators: the same as music artists, over the video class that the container passes. */
extern "C" MDB_API uint32_t QRV_MDB_BrowseVideoCreator(const MdbStaticContainer *pstNode, const char *pcSubId,
                                                       uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass) {
    return BrowseCategory(kArtist, pstNode, pcSubId, ulBrowseFlag, pstAction, ulClass);
}

/* Music albums: the albums that have items of ulClass, and an album's items of ulClass. */
extern "C" MDB_API uint32_t QRV_MDB_BrowseMusicAlbum(const MdbStaticContainer *pstNode, const char *pcSubId,
                                                     uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass) {
    return BrowseCategory(kAlbum, pstNode, pcSubId, ulBrowseFlag, pstAction, ulClass);
}

/* Video albums: the same as music albums, over the video class that the container passes. */
extern "C" MDB_API uint32_t QRV_MDB_BrowseVideoAlbum(const MdbStaticContainer *pstNode, const char *pcSubId,
                                                     uint32_t ulBrowseFlag, MdbActionCtx *pstAction, uint32_t ulClass) {
    return BrowseCategory(kAlbum, pstNode, pcSubId, ulBrowseFlag, pstAction, ulClass);
}
