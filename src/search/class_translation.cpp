// Translation of class criteria ("=" and "derivedfrom" on the class property): the value selects
// the item classes whose texts it shares a prefix with, or, inside a category container, asks for
// the category objects themselves (genres, artists, albums), which the result class reports.
#include "common/text.h"
#include "search/expression_translation.h"
#include "search/search_categories.h"
#include "search/search_words.h"
#include "search/sql_join.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

// The class numbers a class value is compared with.
constexpr uint32_t kFirstClass = 1;
constexpr uint32_t kLastClass = 13;
// Container classes up to this number; the folder class is the only one searched as rows.
constexpr uint32_t kLastContainerClass = 10;

/* True when the value and the class text agree over the length of the shorter of the two. */
bool ClassMatches(const char *pcValue, const char *pcClassText) {
    size_t len = std::min(std::strlen(pcValue), std::strlen(pcClassText));
    return std::strncmp(pcValue, pcClassText, len) == 0;
}

}  // namespace

/* Scan the classes 1 to 13: matching item classes and the folder class are collected as
 * "(flags & 127) = c" joined by " or "; a matching container class becomes the result class and,
 * when it is a category of the container copy, replaces the group by that category's item class
 * and ends the scan. An empty group is "0". The group is appended in parentheses. */
uint32_t MdbTranslateClass(MdbTranslation &stT, const char *pcValue) {
    char acContent[kMdbConditionSize - 2] = "";
    uint32_t ulLast = std::min(kLastClass, g_ulObjClassStringLen);
    for (uint32_t c = kFirstClass; c <= ulLast; ++c) {
        const char *pcText = g_apcObjClassStrings[c - 1];
        if (pcText == nullptr || !ClassMatches(pcValue, pcText)) {
            continue;
        }
        char acPiece[32];
        if (c == MDB_CLASS_FOLDER || c > kLastContainerClass) {
            std::snprintf(acPiece, sizeof(acPiece), "(flags & 127) = %d", static_cast<int>(c));
            uint32_t ulStatus = MdbSqlJoin(acContent, acPiece, g_apcSearchOpStrings[MDB_WORD_OR], sizeof(acContent));
            if (ulStatus != MDB_OK) {
                return ulStatus;
            }
            continue;
        }
        *stT.pulResultClass = c;
        uint32_t ulMediaClass = MdbSearchCategoryMediaClass(c, stT.pcCopy);
        if (ulMediaClass != 0) {
            std::snprintf(acContent, sizeof(acContent), "(flags & 127) = %d", static_cast<int>(ulMediaClass));
            break;
        }
    }
    if (acContent[0] == '\0') {
        std::strcpy(acContent, "0");
    }
    char acGroup[kMdbConditionSize];
    std::snprintf(acGroup, sizeof(acGroup), "(%s)", acContent);
    return MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, acGroup);
}
