// The containers of the static tree whose ids the library itself writes or recognises. The tree
// belongs to the adaptation library; these are the few ids the library's own contract names:
// where database rows are listed when nothing else says, where CreateObject lists an upload, and
// the category containers whose values Search can list. This is their one home. Internal.
#pragma once

#include <cstdint>

// The containers of one media class.
struct MdbMediaContainers {
    uint32_t ulClass;      // 11 music, 12 video, 13 pictures
    uint32_t ulFolderBit;  // the class's bit in a folder row's flags
    char acAllItems[16];   // all items of the class: the base of its items listed without one
    char acFolders[16];    // the folder view: the base of folders that hold the class
    char acUploads[16];    // the base of an object CreateObject makes of the class
};

// Music, video and pictures, in that order.
extern const MdbMediaContainers g_astMdbMediaContainers[3];

/* The containers of item class ulClass, or NULL for any other class. */
const MdbMediaContainers *MdbMediaContainersOfClass(uint32_t ulClass);

// A category container: the class of the category objects it lists, the class of the items they
// group, its id, the DLNA view column that holds an item's category id and the one that holds its
// name.
struct MdbSearchCategory {
    uint32_t ulClass;
    uint32_t ulMediaClass;
    char acContainerId[16];
    char acColumn[16];
    char acNameColumn[16];
};

// Music genres, artists and albums, video creators and albums.
extern const MdbSearchCategory g_astSearchCategories[];
extern const uint32_t g_ulSearchCategoryNum;
