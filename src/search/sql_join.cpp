// Joining conditions of a WHERE text: an SQL text is never cut, since a cut text could leave a
// quoted literal open or drop a condition.
#include "search/sql_join.h"

#include "common/text.h"
#include "search/search_words.h"

#include <mdb.h>

#include <cstring>
#include <string>

uint32_t MdbSqlJoin(char *pcDst, const char *pcPiece, const char *pcWord, uint32_t ulSize) {
    if (pcDst == nullptr || pcPiece == nullptr || pcWord == nullptr) {
        return MDB_ERR_FAIL;
    }
    const bool bLogical = std::strcmp(pcWord, g_apcSearchOpStrings[MDB_WORD_AND]) == 0 ||
                          std::strcmp(pcWord, g_apcSearchOpStrings[MDB_WORD_OR]) == 0;
    if (!bLogical || ulSize == 0 || pcDst[0] == '\0') {
        return MdbAppendWhole(pcDst, ulSize, pcPiece);
    }
    return MdbAppendWhole(pcDst, ulSize, (std::string(" ") + pcWord + " " + pcPiece).c_str());
}
