// Lookups in the category containers that Search can list (genres, artists, albums of music and
// video; the table is common/tree_ids.h), and the tests that read a media class or a container
// kind from the fixed positions of a container id. Internal to the search subsystem.
#pragma once

#include "common/tree_ids.h"

#include <cstdint>

// The media class of the first category record of class ulClass (compared as 16 bits) whose
// container id pcContainerId begins with; 0 when there is none.
uint32_t MdbSearchCategoryMediaClass(uint32_t ulClass, const char *pcContainerId);

// The category record whose container id equals pcContainerId (over at most 16 characters), or NULL.
const MdbSearchCategory *MdbFindSearchCategoryContainer(const char *pcContainerId);

// The DLNA column that holds the id of the database objects below container pcContainerId:
// "parentID" for a folder view, the category column for a category container, else NULL.
const char *MdbSearchContainerColumn(const char *pcContainerId);

// The media class (11 music, 12 video, 13 pictures) of a container id: the number at its third
// character plus 10; 0 for any other value or an id too short to have that position.
uint32_t MdbContainerMediaClass(const char *pcContainerId);

// True for the folder views "0.1.264", "0.2.516", "0.3.771" (the number at the fifth character),
// with or without a "|" part.
bool MdbIsFolderContainer(const char *pcContainerId);

// True for the top media containers "0.1.256", "0.2.512", "0.3.768" (the number at the fifth
// character).
bool MdbIsTopMediaContainer(const char *pcContainerId);
