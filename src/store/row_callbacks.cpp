// The four small row callbacks that statements all over the library share. Each converts column 0
// of a row into the caller's storage; each does nothing for a null argument or a row without
// columns, and each row overwrites what the previous one stored (the list callback appends).
#include <mdb.h>

#include <cstdlib>
#include <cstring>

namespace {
// Column 0 of a row, or null when the row has no columns or the value is SQL NULL.
const char *FirstColumn(int lColNum, char **ppcValues) {
    return (lColNum >= 1 && ppcValues != nullptr) ? ppcValues[0] : nullptr;
}
}  // namespace

/* pvArg: uint32_t *. Stores column 0 as an unsigned decimal (SQL NULL stores 0). */
int MdbGetCountCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    if (pvArg == nullptr || lColNum < 1) {
        return 0;
    }
    const char *pcValue = FirstColumn(lColNum, ppcValues);
    *static_cast<uint32_t *>(pvArg) =
        pcValue != nullptr ? static_cast<uint32_t>(std::strtoul(pcValue, nullptr, 10)) : 0;
    return 0;
}

/* pvArg: char[256]. Copies column 0, at most 255 characters and a NUL (SQL NULL copies ""). */
int MdbGetNameCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    if (pvArg == nullptr || lColNum < 1) {
        return 0;
    }
    const char *pcValue = FirstColumn(lColNum, ppcValues);
    char *pcName = static_cast<char *>(pvArg);
    size_t ulLen = pcValue != nullptr ? std::strlen(pcValue) : 0;
    if (ulLen > 255) {
        ulLen = 255;
    }
    if (ulLen > 0) {
        std::memcpy(pcName, pcValue, ulLen);
    }
    pcName[ulLen] = '\0';
    return 0;
}

/* pvArg: long long *. Stores column 0 as a signed decimal; SQL NULL stores -1. */
int MdbGetIdCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    if (pvArg == nullptr || lColNum < 1) {
        return 0;
    }
    const char *pcValue = FirstColumn(lColNum, ppcValues);
    *static_cast<long long *>(pvArg) = pcValue != nullptr ? std::atoll(pcValue) : -1;
    return 0;
}

/* pvArg: long long ** (a cursor into the caller's array). Stores column 0 at the cursor (SQL NULL
 * stores -1) and advances it by one. Checks no bound: the array must have room for every row. A
 * null cursor stores nothing. */
int MdbGetIdListCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    if (pvArg == nullptr || lColNum < 1) {
        return 0;
    }
    long long **ppllCursor = static_cast<long long **>(pvArg);
    if (*ppllCursor == nullptr) {
        return 0;
    }
    const char *pcValue = FirstColumn(lColNum, ppcValues);
    **ppllCursor = pcValue != nullptr ? std::atoll(pcValue) : -1;
    ++*ppllCursor;
    return 0;
}
