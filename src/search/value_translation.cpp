// Translations of expressions whose value is compared with one DLNA view column: containment (SQL
// LIKE), relational comparison (the value as an SQL string literal, or a duration in
// microseconds) and resolution ("WxH" as the column's packed number); and the two readers every
// translation takes an expression apart with (its quoted value, its relational operator).
//
// A client's value is only ever written as a single-quoted literal with its quotes doubled, never
// in double quotes: SQLite reads a double-quoted text that names a column as that column, so
// dc:title = "title" would compare every row's title with itself.
#include "common/text.h"
#include "search/expression_translation.h"
#include "search/search_words.h"
#include "store/sql_text.h"

#include <mdb.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// The escape character of LIKE patterns that hold a wildcard character of the client's value.
constexpr char kLikeEscape = '\\';

/* Append a condition built in a buffer of ulSize bytes: refused when it would not fit it. */
uint32_t AppendCondition(MdbTranslation &stT, const char *pcCond, uint32_t ulSize) {
    if (std::strlen(pcCond) >= ulSize) {
        return MDB_ERR_PARA;
    }
    return MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, pcCond);
}

/* Read a decimal int as "%d" does (blanks, sign, digits) at *ppc and move past it. false when no
 * digit is there or the number does not fit an int. */
bool ReadInt(const char **ppc, int *plValue) {
    const MdbDecimal stNumber = MdbReadDecimal(*ppc);
    const long long llValue = stNumber.Saturated();
    if (!stNumber.bDigits || !stNumber.FitsSigned() || llValue > INT_MAX || llValue < INT_MIN) {
        return false;
    }
    *plValue = static_cast<int>(llValue);
    *ppc = stNumber.pcEnd;
    return true;
}

/* Read an unsigned decimal as "%llu" does (blanks, sign, digits; a minus sign negates modulo 2^64)
 * at *ppc and move past it. */
bool ReadUnsigned(const char **ppc, unsigned long long *pullValue) {
    const MdbDecimal stNumber = MdbReadDecimal(*ppc);
    if (!stNumber.bDigits) {
        return false;
    }
    *pullValue = stNumber.Unsigned();
    *ppc = stNumber.pcEnd;
    return true;
}

}  // namespace

bool MdbExpressionValue(const char *pcFrom, char (&acValue)[kMdbConditionSize]) {
    acValue[0] = '\0';
    const char *pcOpen = pcFrom != nullptr ? std::strchr(pcFrom, '"') : nullptr;
    if (pcOpen == nullptr) {
        return false;
    }
    const char *pcValue = pcOpen + 1;
    const char *pcClose = std::strchr(pcValue, '"');
    if (pcClose == nullptr || pcClose[1] != '\0') {
        return false;
    }
    size_t len = static_cast<size_t>(pcClose - pcValue);
    if (len >= sizeof(acValue)) {
        return false;
    }
    std::memcpy(acValue, pcValue, len);
    acValue[len] = '\0';
    return true;
}

int32_t MdbRelationalOperator(const char *pcOp) {
    for (uint32_t w = MDB_WORD_EQ; w <= MDB_WORD_GT; ++w) {
        if (MdbStartsWith(pcOp, g_apcSearchOpStrings[w])) {
            return static_cast<int32_t>(w);
        }
    }
    return -1;
}

uint32_t MdbTranslateContainment(MdbTranslation &stT, const MdbDlnaCol &stCol, const char *pcValue) {
    // "%" and "_" of the value match themselves: they, and the escape character, are escaped, and
    // the ESCAPE clause is added only when the value holds one of them, so that ordinary values
    // keep the plain "col like '%value%'" form.
    std::string pattern;
    bool bEscaped = false;
    for (const char *pc = pcValue; *pc != '\0'; ++pc) {
        if (*pc == '%' || *pc == '_' || *pc == kLikeEscape) {
            pattern += kLikeEscape;
            bEscaped = true;
        }
        pattern += *pc;
    }
    const char *pcColumn = stCol.pcColName != nullptr ? stCol.pcColName : "";
    MdbSqlText pcCond(bEscaped ? sqlite3_mprintf("%s like '%%%q%%' ESCAPE '%c'", pcColumn, pattern.c_str(), kLikeEscape)
                               : sqlite3_mprintf("%s like '%%%q%%'", pcColumn, pattern.c_str()));
    if (!pcCond) {
        return MDB_ERR_MEM;
    }
    return AppendCondition(stT, pcCond.get(), kMdbConditionSize);
}

long long MdbParseDuration(const char *pcText) {
    const char *pc = pcText;
    int lHours, lMinutes, lSeconds, lFraction = 0;
    if (!ReadInt(&pc, &lHours) || *pc++ != ':' || !ReadInt(&pc, &lMinutes) || *pc++ != ':' ||
        !ReadInt(&pc, &lSeconds)) {
        return 0;
    }
    if (*pc == '.') {
        ++pc;
        if (!ReadInt(&pc, &lFraction)) {
            lFraction = 0;
        }
    }
    if (lHours < 0 || lMinutes < 0 || lMinutes > 59 || lSeconds < 0 || lSeconds > 59 || lFraction < 0 ||
        lFraction > 999) {
        return 0;
    }
    return lHours * 3600000000LL + lMinutes * 60000000LL + lSeconds * 1000000LL + lFraction * 1000LL;
}

uint32_t MdbTranslateResolution(MdbTranslation &stT, const MdbDlnaCol &stCol, const char *pcOp,
                                const char *pcValue) {
    int32_t lOp = MdbRelationalOperator(pcOp);
    if (lOp < 0) {
        return MDB_ERR_PARA;
    }
    const char *pc = pcValue;
    unsigned long long ullWidth = 0, ullHeight = 0;
    char acCond[kMdbShortConditionSize];
    if (ReadUnsigned(&pc, &ullWidth) && *pc++ == 'x' && ReadUnsigned(&pc, &ullHeight)) {
        unsigned long long ullPacked = ((ullHeight & 0xffffffffULL) << 32) + ullWidth;
        char acNumber[32];
        std::snprintf(acNumber, sizeof(acNumber), "%llu", ullPacked);
        if (std::snprintf(acCond, sizeof(acCond), "%s %s %s", stCol.pcColName != nullptr ? stCol.pcColName : "",
                          g_apcSearchOpStrings[lOp], acNumber) >= static_cast<int>(sizeof(acCond))) {
            return MDB_ERR_PARA;
        }
    } else {
        std::strcpy(acCond, "0");
    }
    return AppendCondition(stT, acCond, sizeof(acCond));
}

uint32_t MdbTranslateComparison(MdbTranslation &stT, const MdbDlnaCol &stCol, bool bDuration,
                                const char *pcOp) {
    int32_t lOp = MdbRelationalOperator(pcOp);
    if (lOp < 0) {
        // Not one of the six relational operators: the expression cannot restrict, keep every row.
        return MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, "1");
    }
    char acValue[kMdbConditionSize];
    if (!MdbExpressionValue(pcOp, acValue)) {
        return MDB_ERR_PARA;
    }
    const char *pcColumn = stCol.pcColName != nullptr ? stCol.pcColName : "";
    MdbSqlText pcCond(bDuration ? sqlite3_mprintf("%s %s %lld", pcColumn, g_apcSearchOpStrings[lOp],
                                                  MdbParseDuration(acValue))
                                : sqlite3_mprintf("%s %s '%q'", pcColumn, g_apcSearchOpStrings[lOp], acValue));
    if (!pcCond) {
        return MDB_ERR_MEM;
    }
    return AppendCondition(stT, pcCond.get(), kMdbShortConditionSize);
}
