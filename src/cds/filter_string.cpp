// The UPnP Filter argument turned into the filter array: one byte per property of the table,
// 1 when the client asked for that property. The array is malloc'ed and the caller's to free.
#include "cds/property_prefix.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>

/* NULL gives all zeros, exactly "*" all ones, anything else the bytes of the names it lists.
 * Names are separated by "," without blanks; unknown names are skipped silently.
 * Returns NULL only when the array cannot be allocated. */
extern "C" MDB_API unsigned char *QRV_MDB_ParseFilterString(const char *pcFilter) {
    const size_t size = g_ulNumOfDlnaCols;
    // malloc(0) may answer NULL, which would read as a failure: ask for at least one byte.
    unsigned char *pucFilter = static_cast<unsigned char *>(std::malloc(size > 0 ? size : 1));
    if (pucFilter == nullptr) {
        return nullptr;
    }
    if (pcFilter != nullptr && std::strcmp(pcFilter, "*") == 0) {
        std::memset(pucFilter, 1, size);
        return pucFilter;
    }
    std::memset(pucFilter, 0, size);
    if (pcFilter == nullptr) {
        return pucFilter;
    }
    for (const char *pcName = pcFilter;;) {
        const int32_t lIdx = MdbGetFilterIdxByPrefix(pcName);
        if (lIdx >= 0) {
            pucFilter[lIdx] = 1;
        }
        const char *pcComma = std::strchr(pcName, ',');
        if (pcComma == nullptr) {
            break;
        }
        pcName = pcComma + 1;
    }
    return pucFilter;
}
