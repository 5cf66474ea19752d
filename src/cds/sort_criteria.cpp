// The UPnP SortCriteria argument turned into an SQL "ORDER BY " text over the DLNA view's
// columns. The text is malloc'ed and the caller's to free; no usable key gives NULL.
#include "cds/property_prefix.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

/* Each key is an optional "+" or "-" and a property name; keys are separated by "," without
 * blanks. A key is taken when the name is known, not taken before (the first occurrence decides
 * the direction) and not a container-only property. Taken keys are written as the property's
 * column, followed by " desc" when descending, joined with ",".
 * Returns NULL for a NULL text, a failed allocation or when no key was taken. */
extern "C" MDB_API char *QRV_MDB_BuildSortStr(const char *pcSortCriteria) {
    if (pcSortCriteria == nullptr) {
        return nullptr;
    }
    // One marker per property: already taken or not. Allocated with calloc so that a failure can
    // be answered with NULL, as if no sort had been asked for.
    std::unique_ptr<unsigned char, decltype(&std::free)> taken(
        static_cast<unsigned char *>(std::calloc(g_ulNumOfDlnaCols > 0 ? g_ulNumOfDlnaCols : 1, 1)), &std::free);
    if (taken == nullptr) {
        return nullptr;
    }
    std::string sort = "ORDER BY ";
    uint32_t ulKeys = 0;
    for (const char *pcKey = pcSortCriteria;;) {
        bool bDescending = false;
        if (*pcKey == '-') {
            bDescending = true;
            ++pcKey;
        } else if (*pcKey == '+') {
            ++pcKey;
        }
        const int32_t lIdx = MdbGetFilterIdxByPrefix(pcKey);
        if (lIdx >= 0 && taken.get()[lIdx] == 0 && (g_astDlnaCols[lIdx].usFlags & MDB_COL_CONTAINER_ONLY) == 0 &&
            g_astDlnaCols[lIdx].pcColName != nullptr) {
            if (ulKeys > 0) {
                sort += ',';
            }
            sort += g_astDlnaCols[lIdx].pcColName;
            if (bDescending) {
                sort += " desc";
            }
            ++ulKeys;
            taken.get()[lIdx] = 1;
        }
        const char *pcComma = std::strchr(pcKey, ',');
        if (pcComma == nullptr) {
            break;
        }
        pcKey = pcComma + 1;
    }
    if (ulKeys == 0) {
        return nullptr;
    }
    char *pcOut = static_cast<char *>(std::malloc(sort.size() + 1));
    if (pcOut != nullptr) {
        std::memcpy(pcOut, sort.c_str(), sort.size() + 1);
    }
    return pcOut;
}
