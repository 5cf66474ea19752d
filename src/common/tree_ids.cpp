// The container ids the library names, and their lookup by media class.
#include "common/tree_ids.h"

#include <mdb.h>

const MdbMediaContainers g_astMdbMediaContainers[3] = {
    {MDB_CLASS_MUSIC, MDB_FLAGS_FOLDER_MUSIC, "0.1.256", "0.1.264", "0.1.264"},
    // Uploaded video is listed below all video, not below the video folders.
    {MDB_CLASS_VIDEO, MDB_FLAGS_FOLDER_VIDEO, "0.2.512", "0.2.516", "0.2.512"},
    {MDB_CLASS_PICTURE, MDB_FLAGS_FOLDER_PICTURE, "0.3.768", "0.3.771", "0.3.771"},
};

const MdbSearchCategory g_astSearchCategories[] = {
    {4, MDB_CLASS_MUSIC, "0.1.257", "genre_id", "genre"},   {5, MDB_CLASS_MUSIC, "0.1.258", "artist_id", "artist"},
    {6, MDB_CLASS_MUSIC, "0.1.262", "album_id", "album"},   {7, MDB_CLASS_VIDEO, "0.2.513", "artist_id", "artist"},
    {9, MDB_CLASS_VIDEO, "0.2.514", "album_id", "album"},
};
const uint32_t g_ulSearchCategoryNum = sizeof(g_astSearchCategories) / sizeof(g_astSearchCategories[0]);

const MdbMediaContainers *MdbMediaContainersOfClass(uint32_t ulClass) {
    for (const MdbMediaContainers &stContainers : g_astMdbMediaContainers) {
        if (stContainers.ulClass == ulClass) {
            return &stContainers;
        }
    }
    return nullptr;
}
