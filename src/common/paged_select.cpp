// Appending the page of an action to a select statement, whole or not at all.
#include "common/paged_select.h"

#include <cstdio>
#include <cstring>

bool MdbAppendPage(char *pcSql, size_t ulSize, const MdbActionCtx &stAction, MdbSortSlot eSlot) {
    const size_t ulUsed = strnlen(pcSql, ulSize);
    if (ulUsed >= ulSize) {
        return false;
    }
    const char *pcSort = stAction.pcSortStr != nullptr ? stAction.pcSortStr : "";
    const bool bSlot = stAction.pcSortStr != nullptr || eSlot == MdbSortSlot::kAlways;
    const int lLen = std::snprintf(pcSql + ulUsed, ulSize - ulUsed, "%s%s LIMIT %u OFFSET %u", bSlot ? " " : "",
                                   pcSort, stAction.ulRequestedCount, stAction.ulStartingIndex);
    if (lLen < 0 || static_cast<size_t>(lLen) >= ulSize - ulUsed) {
        pcSql[ulUsed] = '\0';
        return false;
    }
    return true;
}
