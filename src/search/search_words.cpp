// The search language's words and the four operator recognizers that the property table points at.
#include "search/search_words.h"

#include <mdb.h>

#include <cstring>

const char *const g_apcSearchOpStrings[MDB_WORD_COUNT] = {
    "and", "or", "=", "!=", "<=", "<", ">=", ">", "contains", "=", "derivedfrom", "exists", "true", "false",
};

bool MdbIsSpace(char c) {
    static const char kSpaces[] = " \t\n\v\f\r";
    return c != '\0' && std::strchr(kSpaces, c) != nullptr;
}

void MdbSkipSpace(const char **ppcCursor) {
    if (ppcCursor == nullptr || *ppcCursor == nullptr) {
        return;
    }
    while (MdbIsSpace(**ppcCursor)) {
        ++*ppcCursor;
    }
}

bool MdbStartsWith(const char *pcText, const char *pcWord) {
    return std::strncmp(pcText, pcWord, std::strlen(pcWord)) == 0;
}

namespace {

/* Take the first word of g_apcSearchOpStrings[first..last] that the text at the cursor begins with.
 * Returns 0 with the cursor moved behind it, or -1 with the cursor unchanged. */
int32_t MatchWordRange(const char **ppcCursor, uint32_t first, uint32_t last) {
    if (ppcCursor == nullptr || *ppcCursor == nullptr) {
        return -1;
    }
    for (uint32_t i = first; i <= last; ++i) {
        if (MdbStartsWith(*ppcCursor, g_apcSearchOpStrings[i])) {
            *ppcCursor += std::strlen(g_apcSearchOpStrings[i]);
            return 0;
        }
    }
    return -1;
}

}  // namespace

/* Relational operators: "=", "!=", "<=", "<", ">=", ">" in that order. */
extern "C" MDB_API int32_t MdbCmpRelOp(const char **ppcCursor) {
    return MatchWordRange(ppcCursor, MDB_WORD_EQ, MDB_WORD_GT);
}

/* Only "=". */
extern "C" MDB_API int32_t MdbCmpEqualOp(const char **ppcCursor) {
    if (ppcCursor == nullptr || *ppcCursor == nullptr || **ppcCursor != '=') {
        return -1;
    }
    ++*ppcCursor;
    return 0;
}

/* String operators: "contains", then "=". */
extern "C" MDB_API int32_t MdbCmpStringOp(const char **ppcCursor) {
    return MatchWordRange(ppcCursor, MDB_WORD_CONTAINS, MDB_WORD_STRING_EQ);
}

/* Class operators: "=", then "derivedfrom". */
extern "C" MDB_API int32_t MdbCmpDerivedOp(const char **ppcCursor) {
    return MatchWordRange(ppcCursor, MDB_WORD_STRING_EQ, MDB_WORD_DERIVEDFROM);
}
