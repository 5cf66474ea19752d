// The category table of Search and the container-id tests that the translation to SQL uses to
// find a container's media class, its kind (folder view, top media container, category
// container) and the DLNA column that names the objects below it.
#include "search/search_categories.h"

#include <climits>
#include <cstdlib>
#include <cstring>

const MdbSearchCategory g_astSearchCategories[] = {
    {4, 11, "0.1.257", "genre_id"},
    {5, 11, "0.1.258", "artist_id"},
    {6, 11, "0.1.262", "album_id"},
    {7, 12, "0.2.513", "artist_id"},
    {9, 12, "0.2.514", "album_id"},
};
const uint32_t g_ulSearchCategoryNum = sizeof(g_astSearchCategories) / sizeof(g_astSearchCategories[0]);

namespace {

/* The number at character position ulPos of pcId, read like atoi (leading blanks, a sign, leading
 * digits; anything else reads 0) but saturated instead of overflowing. false when the id is too
 * short to have that position. */
bool NumberAt(const char *pcId, size_t ulPos, long *plNumber) {
    if (pcId == nullptr || std::strlen(pcId) <= ulPos) {
        return false;
    }
    long lValue = std::strtol(pcId + ulPos, nullptr, 10);
    if (lValue > INT_MAX) {
        lValue = INT_MAX;
    } else if (lValue < INT_MIN) {
        lValue = INT_MIN;
    }
    *plNumber = lValue;
    return true;
}

bool BeginsWith(const char *pcText, const char *pcPrefix) {
    return std::strncmp(pcText, pcPrefix, std::strlen(pcPrefix)) == 0;
}

}  // namespace

uint32_t MdbSearchCategoryMediaClass(uint32_t ulClass, const char *pcContainerId) {
    if (pcContainerId == nullptr) {
        return 0;
    }
    for (uint32_t i = 0; i < g_ulSearchCategoryNum; ++i) {
        const MdbSearchCategory &stCat = g_astSearchCategories[i];
        if (static_cast<uint16_t>(stCat.ulClass) == static_cast<uint16_t>(ulClass) &&
            BeginsWith(pcContainerId, stCat.acContainerId)) {
            return stCat.ulMediaClass;
        }
    }
    return 0;
}

const MdbSearchCategory *MdbFindSearchCategoryContainer(const char *pcContainerId) {
    if (pcContainerId == nullptr) {
        return nullptr;
    }
    for (uint32_t i = 0; i < g_ulSearchCategoryNum; ++i) {
        if (std::strncmp(g_astSearchCategories[i].acContainerId, pcContainerId,
                         sizeof(g_astSearchCategories[i].acContainerId)) == 0) {
            return &g_astSearchCategories[i];
        }
    }
    return nullptr;
}

const char *MdbSearchContainerColumn(const char *pcContainerId) {
    if (pcContainerId == nullptr) {
        return nullptr;
    }
    if (MdbIsFolderContainer(pcContainerId)) {
        return "parentID";
    }
    for (uint32_t i = 0; i < g_ulSearchCategoryNum; ++i) {
        if (BeginsWith(pcContainerId, g_astSearchCategories[i].acContainerId)) {
            return g_astSearchCategories[i].acColumn;
        }
    }
    return nullptr;
}

uint32_t MdbContainerMediaClass(const char *pcContainerId) {
    long lNumber;
    if (!NumberAt(pcContainerId, 2, &lNumber)) {
        return 0;
    }
    long lClass = lNumber + 10;
    return (lClass >= 11 && lClass <= 13) ? static_cast<uint32_t>(lClass) : 0;
}

bool MdbIsFolderContainer(const char *pcContainerId) {
    long lNumber;
    return NumberAt(pcContainerId, 4, &lNumber) && (lNumber == 264 || lNumber == 516 || lNumber == 771);
}

bool MdbIsTopMediaContainer(const char *pcContainerId) {
    long lNumber;
    return NumberAt(pcContainerId, 4, &lNumber) && (lNumber == 256 || lNumber == 512 || lNumber == 768);
}
