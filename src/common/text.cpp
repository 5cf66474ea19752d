// Appends to fixed buffers and cut copies.
#include "common/text.h"

#include <mdb.h>

#include <cstring>

uint32_t MdbAppendWhole(char *pcDst, size_t ulSize, const char *pcPiece) {
    if (pcDst == nullptr || pcPiece == nullptr) {
        return MDB_ERR_FAIL;
    }
    const size_t ulUsed = strnlen(pcDst, ulSize);
    const size_t ulLen = std::strlen(pcPiece);
    if (ulUsed >= ulSize || ulLen >= ulSize - ulUsed) {
        return MDB_ERR_PARA;
    }
    std::memcpy(pcDst + ulUsed, pcPiece, ulLen + 1);
    return MDB_OK;
}

/* Append as much of pcSrc to pcDst as fits in ulSize bytes, always leaving a NUL. Nothing happens
 * when either text is NULL or pcDst is already not shorter than ulSize. Returns pcDst. */
extern "C" MDB_API char *MdbStrAppend(char *pcDst, uint32_t ulSize, const char *pcSrc) {
    if (pcDst == nullptr || pcSrc == nullptr) {
        return pcDst;
    }
    const size_t ulUsed = strnlen(pcDst, ulSize);
    if (ulUsed < ulSize) {
        MdbCopyCut(pcDst + ulUsed, ulSize - ulUsed, pcSrc);
    }
    return pcDst;
}

void MdbCopyCut(char *pcDst, size_t ulSize, std::string_view svText) {
    if (pcDst == nullptr || ulSize == 0) {
        return;
    }
    const size_t ulLen = svText.size() < ulSize - 1 ? svText.size() : ulSize - 1;
    if (ulLen > 0) {
        std::memcpy(pcDst, svText.data(), ulLen);
    }
    pcDst[ulLen] = '\0';
}
