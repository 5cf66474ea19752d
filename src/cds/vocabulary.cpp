// Lookups in the adaptation library's vocabulary: upnp:class texts by number and by text, and
// properties by exact name. The tables are small and unsorted: each lookup is a linear scan from
// index 0 that stops at the first match.
#include <mdb.h>
#include <mdb_platform.h>

#include <cstring>

/* The class text of the class number in bits 0-6 of ulFlags (a whole flags word may be passed), or
 * NULL when that number is 0 or beyond the table. */
extern "C" MDB_API const char *QRV_MDB_GetMediaClassById(uint32_t ulFlags) {
    uint32_t number = ulFlags & MDB_FLAGS_CLASS_MASK;
    if (number == 0 || number > g_ulObjClassStringLen) {
        return nullptr;
    }
    return g_apcObjClassStrings[number - 1];
}

/* The 1-based number of the first class text equal to pcClass (case matters), or 0. */
extern "C" MDB_API uint32_t QRV_MDB_GetMediaClassByStr(const char *pcClass) {
    if (pcClass == nullptr) {
        return 0;
    }
    for (uint32_t i = 0; i < g_ulObjClassStringLen; ++i) {
        if (g_apcObjClassStrings[i] != nullptr && std::strcmp(g_apcObjClassStrings[i], pcClass) == 0) {
            return i + 1;
        }
    }
    return 0;
}

/* The index of the first property whose name equals pcPropName, or 0xFFFFFFFF, which fails every
 * comparison with g_ulNumOfDlnaCols. */
extern "C" MDB_API uint32_t QRV_MDB_GetFilterIdx(const char *pcPropName) {
    if (pcPropName == nullptr) {
        return 0xFFFFFFFFu;
    }
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        if (g_astDlnaCols[i].pcPropName != nullptr && std::strcmp(g_astDlnaCols[i].pcPropName, pcPropName) == 0) {
            return i;
        }
    }
    return 0xFFFFFFFFu;
}
