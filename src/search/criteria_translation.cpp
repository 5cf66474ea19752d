// The criteria check of a Search: builds the WHERE text of a select over the DLNA view from the
// class of the search container, the row or category named after the "|" of its id, and the parsed
// criteria, whose skeleton it walks while each expression is translated by its property's kind.
// Everything here is text building: no statement runs. Values from the client are written only as
// single-quoted literals with their quotes doubled or as numbers, and no text is cut: a
// text that would not fit its buffer is refused.
#include "common/text.h"
#include "search/expression_translation.h"
#include "search/search_categories.h"
#include "search/search_words.h"
#include "search/sql_join.h"
#include "store/sql_text.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// Existence kinds of MdbDlnaCol.usSearchType below the class sets.
constexpr uint16_t kExistsUnknown = MDB_EXISTS_UNKNOWN;
constexpr uint16_t kExistsEveryRow = MDB_EXISTS_EVERY_ROW;
constexpr uint16_t kExistsNoRow = MDB_EXISTS_NO_ROW;

// The class sets: which bit of an existence kind stands for which item class.
struct ExistenceClass {
    uint16_t usBit;
    int lClass;
};
constexpr ExistenceClass kExistenceClasses[] = {
    {MDB_EXISTS_MUSIC, MDB_CLASS_MUSIC}, {MDB_EXISTS_VIDEO, MDB_CLASS_VIDEO}, {MDB_EXISTS_PICTURE, MDB_CLASS_PICTURE}};

enum class Mode { kExistsTrue, kExistsFalse, kComparison };

/* The condition of an existence kind of 3 and above: one "(flags & 127) op N" per class of the set,
 * joined by " or " (true) or, with "!=", by " and " (false), in parentheses. A set without any of
 * the three classes has no row: "(0)" when it must exist, "(1)" when it must not. */
uint32_t ClassSetCondition(uint16_t usKind, bool bExists, char (&acCond)[kMdbConditionSize]) {
    char acContent[kMdbConditionSize - 2] = "";  // room for the parentheses
    for (const ExistenceClass &stEntry : kExistenceClasses) {
        if ((usKind & stEntry.usBit) == 0) {
            continue;
        }
        char acPiece[64];
        std::snprintf(acPiece, sizeof(acPiece), "(flags & 127) %s %d", bExists ? "=" : "!=", stEntry.lClass);
        uint32_t ulStatus = MdbSqlJoin(acContent, acPiece,
                                       g_apcSearchOpStrings[bExists ? MDB_WORD_OR : MDB_WORD_AND],
                                       sizeof(acContent));
        if (ulStatus != MDB_OK) {
            return ulStatus;
        }
    }
    if (acContent[0] == '\0') {
        std::strcpy(acContent, bExists ? "0" : "1");
    }
    std::snprintf(acCond, sizeof(acCond), "(%s)", acContent);
    return MDB_OK;
}

/* Append what the existence kind of a property says for the mode: a condition of its own for an
 * existence test, or a restriction to the property's classes before a comparison. A kind that
 * makes no statement cannot restrict an existence test, so it keeps every row ("1"). */
uint32_t AppendExistence(MdbTranslation &stT, uint16_t usKind, Mode eMode) {
    const char *pcText = nullptr;
    char acGroup[kMdbConditionSize];
    switch (usKind) {
    case kExistsUnknown:
        pcText = (eMode == Mode::kComparison) ? nullptr : "1";
        break;
    case kExistsEveryRow:
        pcText = (eMode == Mode::kComparison) ? nullptr : (eMode == Mode::kExistsTrue ? "1" : "0");
        break;
    case kExistsNoRow:
        pcText = (eMode == Mode::kComparison) ? nullptr : (eMode == Mode::kExistsTrue ? "0" : "1");
        break;
    default: {
        uint32_t ulStatus = ClassSetCondition(usKind, eMode != Mode::kExistsFalse, acGroup);
        if (ulStatus != MDB_OK) {
            return ulStatus;
        }
        pcText = acGroup;
        break;
    }
    }
    if (pcText == nullptr) {
        return MDB_OK;
    }
    uint32_t ulStatus = MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, pcText);
    if (ulStatus == MDB_OK && eMode == Mode::kComparison) {
        ulStatus = MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, " and ");
    }
    return ulStatus;
}

/* Translate expression text pcExpr of property ulIndex and append its condition. */
uint32_t TranslateExpression(MdbTranslation &stT, uint32_t ulIndex, const char *pcExpr) {
    if (ulIndex >= g_ulNumOfDlnaCols || pcExpr == nullptr) {
        return MDB_ERR_PARA;
    }
    const MdbDlnaCol &stCol = g_astDlnaCols[ulIndex];
    size_t ulNameLen = stCol.pcPropName != nullptr ? std::strlen(stCol.pcPropName) : 0;
    if (std::strlen(pcExpr) < ulNameLen) {
        return MDB_ERR_PARA;
    }
    const char *p = pcExpr + ulNameLen;
    MdbSkipSpace(&p);

    Mode eMode = Mode::kComparison;
    if (MdbStartsWith(p, g_apcSearchOpStrings[MDB_WORD_EXISTS])) {
        p += std::strlen(g_apcSearchOpStrings[MDB_WORD_EXISTS]);
        MdbSkipSpace(&p);
        eMode = MdbStartsWith(p, g_apcSearchOpStrings[MDB_WORD_TRUE]) ? Mode::kExistsTrue : Mode::kExistsFalse;
    }
    uint32_t ulStatus = AppendExistence(stT, stCol.usSearchType, eMode);
    if (ulStatus != MDB_OK || eMode != Mode::kComparison) {
        return ulStatus;
    }

    char acValue[kMdbConditionSize];
    const char *pcOp = p;
    if (ulIndex == MDB_COL_IDX_PROTOCOL_INFO) {
        return MdbExpressionValue(p, acValue) ? MdbTranslateProtocolInfo(stT, acValue) : MDB_ERR_PARA;
    }
    if (MdbStartsWith(p, g_apcSearchOpStrings[MDB_WORD_CONTAINS])) {
        return MdbExpressionValue(p, acValue) ? MdbTranslateContainment(stT, stCol, acValue) : MDB_ERR_PARA;
    }
    if (ulIndex == MDB_COL_IDX_CLASS && MdbCmpDerivedOp(&p) == 0) {
        return MdbExpressionValue(p, acValue) ? MdbTranslateClass(stT, acValue) : MDB_ERR_PARA;
    }
    if (ulIndex == MDB_COL_IDX_RESOLUTION) {
        return MdbExpressionValue(p, acValue) ? MdbTranslateResolution(stT, stCol, pcOp, acValue)
                                              : MDB_ERR_PARA;
    }
    if (ulIndex == MDB_COL_IDX_ID) {
        return MdbExpressionValue(p, acValue) ? MdbTranslateObjectId(stT, acValue) : MDB_ERR_PARA;
    }
    return MdbTranslateComparison(stT, stCol, ulIndex == MDB_COL_IDX_DURATION, pcOp);
}

/* Walk the skeleton: "(" and ")" are copied, "A" and "O" become " and " and " or ", each "_N" is
 * the next expression text translated as property N. Anything else is skipped. */
uint32_t TranslateSkeleton(MdbTranslation &stT, const MdbSearchSyntax &stSyntax) {
    int32_t lNext = 0;
    const char *pcEnd = stSyntax.acSkeleton + strnlen(stSyntax.acSkeleton, sizeof(stSyntax.acSkeleton));
    for (const char *pc = stSyntax.acSkeleton; pc < pcEnd; ++pc) {
        const char *pcText = nullptr;
        switch (*pc) {
        case '(':
            pcText = "(";
            break;
        case ')':
            pcText = ")";
            break;
        case 'A':
            pcText = " and ";
            break;
        case 'O':
            pcText = " or ";
            break;
        case '_': {
            if (lNext >= stSyntax.lExprNum || lNext >= MDB_SEARCH_MAX_EXPR) {
                return MDB_ERR_PARA;
            }
            uint32_t ulIndex = 0;
            for (const char *pcDigit = pc + 1; pcDigit < pcEnd && std::isdigit(static_cast<unsigned char>(*pcDigit));
                 ++pcDigit) {
                ulIndex = ulIndex * 10 + static_cast<uint32_t>(*pcDigit - '0');
                if (ulIndex >= g_ulNumOfDlnaCols) {
                    return MDB_ERR_PARA;
                }
            }
            uint32_t ulStatus = TranslateExpression(stT, ulIndex, stSyntax.apcExpr[lNext++]);
            if (ulStatus != MDB_OK) {
                return ulStatus;
            }
            continue;
        }
        default:
            continue;
        }
        uint32_t ulStatus = MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, pcText);
        if (ulStatus != MDB_OK) {
            return ulStatus;
        }
    }
    return MDB_OK;
}

/* The class of the search container: "(flags & 127) = k", or for a folder view the pair with the
 * folder class 2 in parentheses. Nothing for an id without media class. */
uint32_t AppendContainerClass(MdbTranslation &stT) {
    uint32_t ulClass = MdbContainerMediaClass(stT.pcContainerId);
    if (ulClass == 0) {
        return MDB_OK;
    }
    char acCond[kMdbConditionSize];
    if (MdbIsFolderContainer(stT.pcContainerId)) {
        std::snprintf(acCond, sizeof(acCond), "((flags & 127) = %d or (flags & 127) = %d)",
                      static_cast<int>(ulClass), static_cast<int>(MDB_CLASS_FOLDER));
    } else {
        std::snprintf(acCond, sizeof(acCond), "(flags & 127) = %d", static_cast<int>(ulClass));
    }
    return MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, acCond);
}

/* The row or category after the "|" of the copy, when its number is at least 1: cut the copy at
 * the "|", set the separator flag, and restrict to the objects below it ("parentID = '5'",
 * "genre_id = '3'"), the sub-id's quotes doubled. */
uint32_t AppendContainerRow(MdbTranslation &stT) {
    char *pcBar = std::strchr(stT.pcCopy, '|');
    if (pcBar == nullptr || std::strtol(pcBar + 1, nullptr, 10) < 1) {
        return MDB_OK;
    }
    *pcBar = '\0';
    const char *pcSubId = pcBar + 1;
    *stT.pulCommaSep = MdbIsFolderContainer(stT.pcCopy) ? 0 : 1;
    const char *pcColumn = MdbSearchContainerColumn(stT.pcCopy);
    if (pcColumn == nullptr) {
        return MDB_OK;
    }
    MdbSqlText pcCond(sqlite3_mprintf("%s = '%q'", pcColumn, pcSubId));
    if (!pcCond) {
        return MDB_ERR_MEM;
    }
    return std::strlen(pcCond.get()) < kMdbConditionSize
               ? MdbSqlJoin(stT.pcWhere, pcCond.get(), g_apcSearchOpStrings[MDB_WORD_AND], stT.ulWhereSize)
               : MDB_ERR_PARA;
}

/* The criteria part: "1" for no expression when nothing else restricts, else the translated
 * skeleton, in " and (" ... ")" behind the container's conditions. */
uint32_t AppendCriteria(MdbTranslation &stT, const MdbSearchSyntax &stSyntax) {
    bool bWhereEmpty = stT.pcWhere[0] == '\0';
    if (stSyntax.lExprNum == 0) {
        return bWhereEmpty ? MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, "1") : MDB_OK;
    }
    uint32_t ulStatus = bWhereEmpty ? MDB_OK : MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, " and (");
    if (ulStatus == MDB_OK) {
        ulStatus = TranslateSkeleton(stT, stSyntax);
    }
    if (ulStatus == MDB_OK && !bWhereEmpty) {
        ulStatus = MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, ")");
    }
    return ulStatus;
}

/* Release the expression texts of the record; its count is trusted only within the 32 slots. */
void ReleaseExpressions(MdbSearchSyntax *pstSyntax) {
    int32_t lNum = pstSyntax->lExprNum;
    if (lNum > MDB_SEARCH_MAX_EXPR) {
        lNum = MDB_SEARCH_MAX_EXPR;
    }
    for (int32_t i = 0; i < lNum; ++i) {
        std::free(pstSyntax->apcExpr[i]);
        pstSyntax->apcExpr[i] = nullptr;
    }
    pstSyntax->lExprNum = 0;
}

uint32_t CheckCriteria(MdbTranslation &stT, const MdbSearchSyntax &stSyntax) {
    if (stSyntax.lExprNum < 0 || stSyntax.lExprNum > MDB_SEARCH_MAX_EXPR) {
        return MDB_ERR_PARA;
    }
    *stT.pulResultClass = 0;
    std::memset(stT.pcWhere, 0, stT.ulWhereSize);
    uint32_t ulStatus = MdbLocateStaticContainerById(stT.pcContainerId, nullptr, nullptr);
    if (ulStatus != MDB_OK) {
        return ulStatus;
    }
    ulStatus = AppendContainerClass(stT);
    if (ulStatus == MDB_OK) {
        ulStatus = AppendContainerRow(stT);
    }
    if (ulStatus == MDB_OK) {
        ulStatus = AppendCriteria(stT, stSyntax);
    }
    return ulStatus;
}

}  // namespace

/* The whole check; see mdb.h. The expression texts are released on every path. */
extern "C" MDB_API uint32_t MDBSearchCriteriaCheck(const char *pcContainerId, char *pcCopy, uint32_t ulCopySize,
                                                   uint32_t *pulResultClass, char *pcWhere, uint32_t ulWhereSize,
                                                   uint32_t *pulCommaSep, MdbSearchSyntax *pstSyntax) {
    if (pstSyntax == nullptr) {
        return MDB_ERR_FAIL;
    }
    uint32_t ulStatus = MDB_ERR_FAIL;
    if (pcContainerId != nullptr && pcCopy != nullptr && ulCopySize > 0 && strnlen(pcCopy, ulCopySize) < ulCopySize &&
        pulResultClass != nullptr && pcWhere != nullptr && ulWhereSize > 0 && pulCommaSep != nullptr) {
        MdbTranslation stT{pcContainerId, pcCopy, ulCopySize, pulResultClass, pulCommaSep, pcWhere, ulWhereSize};
        ulStatus = CheckCriteria(stT, *pstSyntax);
    }
    ReleaseExpressions(pstSyntax);
    return ulStatus;
}
