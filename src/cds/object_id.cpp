// Object ids: resolving a dotted id against the static container tree, and writing a node's id.
// Nothing here allocates: the static part and each number are copied into stack buffers.
#include "cds/object_id.h"
#include "common/text.h"

#include <mdb_platform.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr size_t kStaticPartSize = 256; // static part before "|": at most 255 characters
constexpr size_t kNumberSize = 32;      // a number followed by ".": at most 31 characters

/* Write one piece of an id behind the bytes used so far. The piece must have a positive length and
 * fit, with its NUL, in the room left; else MDB_ERR_MEM with the buffer holding a cut prefix. */
uint32_t AppendIdPiece(char *pcBuf, uint32_t ulSize, uint32_t *pulUsed, const char *pcFormat, ...)
    __attribute__((format(printf, 4, 5)));

uint32_t AppendIdPiece(char *pcBuf, uint32_t ulSize, uint32_t *pulUsed, const char *pcFormat, ...) {
    if (*pulUsed >= ulSize) {
        return MDB_ERR_MEM;
    }
    uint32_t room = ulSize - *pulUsed;
    va_list args;
    va_start(args, pcFormat);
    int written = vsnprintf(pcBuf + *pulUsed, room, pcFormat, args);
    va_end(args);
    if (written <= 0 || static_cast<uint32_t>(written) >= room) {
        return MDB_ERR_MEM;
    }
    *pulUsed += static_cast<uint32_t>(written);
    return MDB_OK;
}

}  // namespace

uint32_t MdbParseIdSegment(const char *pcText, const char **ppcRest, uint32_t *pulNumber) {
    if (pcText == nullptr) {
        return MDB_ERR_NOT_FOUND;
    }
    const char *dot = std::strchr(pcText, '.');
    if (dot == nullptr) {
        *ppcRest = nullptr;
        *pulNumber = MdbReadDecimal(pcText).Wrapped32();
        return MDB_OK;
    }
    size_t len = static_cast<size_t>(dot - pcText);
    if (len >= kNumberSize) {
        return MDB_ERR_NOT_FOUND;
    }
    char number[kNumberSize];
    std::memcpy(number, pcText, len);
    number[len] = '\0';
    *pulNumber = MdbReadDecimal(number).Wrapped32();
    *ppcRest = dot + 1;
    return MDB_OK;
}

const MdbStaticContainer *MdbFindChildContainer(const MdbStaticContainer *pstNode, const char *pcRest) {
    // Iterative form of the descent: one level per dotted number.
    while (pstNode != nullptr && pcRest != nullptr) {
        uint32_t number = 0;
        const char *next = nullptr;
        if (MdbParseIdSegment(pcRest, &next, &number) != MDB_OK) {
            return nullptr;
        }
        const MdbStaticContainer *found = nullptr;
        // A node that counts children but has no array has none: never read through NULL.
        for (uint16_t i = 0; pstNode->pstChildren != nullptr && i < pstNode->usChildNum; ++i) {
            if (pstNode->pstChildren[i].usId == static_cast<uint16_t>(number)) {
                found = &pstNode->pstChildren[i];
                break;
            }
        }
        pstNode = found;
        pcRest = next;
    }
    return pstNode;
}

uint32_t MdbFormatContainerId(const MdbStaticContainer *pstNode, char *pcBuf, uint32_t ulSize,
                              uint32_t *pulUsed) {
    if (pstNode->pstParent == nullptr) {
        return AppendIdPiece(pcBuf, ulSize, pulUsed, "%d", pstNode->usId);
    }
    uint32_t status = MdbFormatContainerId(pstNode->pstParent, pcBuf, ulSize, pulUsed);
    if (status != MDB_OK) {
        return status;
    }
    return AppendIdPiece(pcBuf, ulSize, pulUsed, "%c%d", '.', pstNode->usId);
}

extern "C" MDB_API uint32_t MdbLocateStaticContainerById(const char *pcId, const MdbStaticContainer **ppstNode,
                                                         const char **ppcSubId) {
    if (ppstNode != nullptr) {
        *ppstNode = nullptr;
    }
    if (ppcSubId != nullptr) {
        *ppcSubId = nullptr;
    }
    if (pcId == nullptr) {
        return MDB_ERR_NOT_FOUND;
    }

    char staticPart[kStaticPartSize];
    const char *pcStatic = pcId;
    const char *bar = std::strchr(pcId, '|');
    if (bar != nullptr) {
        size_t len = static_cast<size_t>(bar - pcId);
        if (len >= kStaticPartSize) {
            return MDB_ERR_NOT_FOUND;
        }
        std::memcpy(staticPart, pcId, len);
        staticPart[len] = '\0';
        pcStatic = staticPart;
        if (ppcSubId != nullptr) {
            *ppcSubId = bar + 1;
        }
    }

    uint32_t number = 0;
    const char *rest = nullptr;
    uint32_t status = MdbParseIdSegment(pcStatic, &rest, &number);
    if (status != MDB_OK) {
        return status;
    }
    if (static_cast<uint16_t>(number) != g_stRootContainer.usId) {
        return MDB_ERR_NOT_FOUND;
    }
    const MdbStaticContainer *node = MdbFindChildContainer(&g_stRootContainer, rest);
    if (node == nullptr) {
        return MDB_ERR_NOT_FOUND;
    }
    if (ppstNode != nullptr) {
        *ppstNode = node;
    }
    return MDB_OK;
}

extern "C" MDB_API uint32_t QRV_MDB_StaticContainerGetObjId(const MdbStaticContainer *pstNode, char *pcBuf,
                                                            uint32_t ulSize) {
    if (pcBuf == nullptr || ulSize == 0) {
        return MDB_ERR_PARA;
    }
    pcBuf[0] = '\0';
    uint32_t used = 0;
    if (pstNode == nullptr) {
        return AppendIdPiece(pcBuf, ulSize, &used, "%s", "-1");
    }
    return MdbFormatContainerId(pstNode, pcBuf, ulSize, &used);
}
