// Building SQL texts in fixed buffers without ever cutting them: a cut text could leave a quoted
// literal open or drop a condition, so a piece that does not fit is refused instead.
#include "search/sql_join.h"

#include "search/search_words.h"

#include <mdb.h>

#include <cstring>

uint32_t MdbSqlAppend(char *pcDst, uint32_t ulSize, const char *pcPiece) {
    if (pcDst == nullptr || pcPiece == nullptr) {
        return MDB_ERR_FAIL;
    }
    size_t used = strnlen(pcDst, ulSize);
    size_t len = std::strlen(pcPiece);
    if (used >= ulSize || len >= ulSize - used) {
        return MDB_ERR_PARA;
    }
    std::memcpy(pcDst + used, pcPiece, len + 1);
    return MDB_OK;
}

uint32_t MdbSqlJoin(char *pcDst, const char *pcPiece, const char *pcWord, uint32_t ulSize) {
    if (pcDst == nullptr || pcPiece == nullptr || pcWord == nullptr) {
        return MDB_ERR_FAIL;
    }
    bool bLogical = std::strcmp(pcWord, g_apcSearchOpStrings[MDB_WORD_AND]) == 0 ||
                    std::strcmp(pcWord, g_apcSearchOpStrings[MDB_WORD_OR]) == 0;
    size_t used = strnlen(pcDst, ulSize);
    size_t need = std::strlen(pcPiece);
    bool bSeparate = bLogical && used > 0;
    if (bSeparate) {
        need += std::strlen(pcWord) + 2;
    }
    if (used >= ulSize || need >= ulSize - used) {
        return MDB_ERR_PARA;
    }
    if (bSeparate) {
        MdbStrAppend(pcDst, ulSize, " ");
        MdbStrAppend(pcDst, ulSize, pcWord);
        MdbStrAppend(pcDst, ulSize, " ");
    }
    MdbStrAppend(pcDst, ulSize, pcPiece);
    return MDB_OK;
}
