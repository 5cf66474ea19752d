// The container-id tests that the translation to SQL uses to find a container's media class, its
// kind (folder view, top media container, category container) and the DLNA column that names the
// objects below it; the ids themselves come from the one table of common/tree_ids.h.
#include "search/search_categories.h"

#include "common/text.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

/* The number at character position ulPos of pcId, read like atoi but saturated to an int instead
 * of overflowing. false when the id is too short to have that position. */
bool NumberAt(const char *pcId, size_t ulPos, long *plNumber) {
    if (pcId == nullptr || std::strlen(pcId) <= ulPos) {
        return false;
    }
    const long long llValue = MdbReadDecimal(pcId + ulPos).Saturated();
    *plNumber = llValue > INT_MAX ? INT_MAX : llValue < INT_MIN ? INT_MIN : static_cast<long>(llValue);
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
    if (!NumberAt(pcContainerId, 2, &lNumber) || lNumber < 0 || lNumber > 100) {
        return 0;
    }
    const uint32_t ulClass = static_cast<uint32_t>(lNumber) + 10;
    return MdbMediaContainersOfClass(ulClass) != nullptr ? ulClass : 0;
}

namespace {

/* True when the number at the fifth character of pcContainerId is the one at the same place of
 * the id that pcMember picks from one of the media containers. */
bool IsOneOf(const char *pcContainerId, const char *(*pfnMember)(const MdbMediaContainers &)) {
    long lNumber;
    if (!NumberAt(pcContainerId, 4, &lNumber)) {
        return false;
    }
    for (const MdbMediaContainers &stContainers : g_astMdbMediaContainers) {
        if (MdbReadDecimal(pfnMember(stContainers) + 4).Saturated() == lNumber) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool MdbIsFolderContainer(const char *pcContainerId) {
    return IsOneOf(pcContainerId, [](const MdbMediaContainers &c) -> const char * { return c.acFolders; });
}

bool MdbIsTopMediaContainer(const char *pcContainerId) {
    return IsOneOf(pcContainerId, [](const MdbMediaContainers &c) -> const char * { return c.acAllItems; });
}
