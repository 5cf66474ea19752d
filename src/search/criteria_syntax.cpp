// The SearchCriteria checker: one left-to-right pass over a criteria text that accepts the subset
// of the UPnP ContentDirectory search language this library serves, stores a copy of every
// relational or existence expression, and builds the skeleton of parentheses and logical operators
// that the SQL translation walks. Which operators a property accepts is decided by the property
// table's recognizers, not here.
#include "common/text.h"
#include "search/search_words.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace {

// Longest expression text that is accepted (it must fit a 256-byte text with its NUL).
constexpr size_t kMaxExprLen = 255;

// Deepest nesting of parentheses that is accepted. The SQL translation keeps every parenthesis,
// and SQLite parses with a bounded stack: about 90 bare levels, or about 17 when each level holds
// "x or y and (", overflow it and the statement fails. 16 levels with the most demanding mix that
// 32 expressions allow still leave room; clients nest a few levels at most.
constexpr int32_t kMaxParenDepth = 16;

// The outcome of one parser step: go on, or stop the whole check with a status.
struct Step {
    bool bOk;
    uint32_t ulStatus;
};
constexpr Step kGoOn{true, MDB_OK};
constexpr Step kReject{false, MDB_ERR_PARA};

/* Release every stored expression text and clear the record's results. */
void DropResults(MdbSearchSyntax *pstSyntax) {
    for (int32_t i = 0; i < pstSyntax->lExprNum; ++i) {
        std::free(pstSyntax->apcExpr[i]);
        pstSyntax->apcExpr[i] = nullptr;
    }
    pstSyntax->lExprNum = 0;
    std::memset(pstSyntax->acSkeleton, 0, sizeof(pstSyntax->acSkeleton));
}

/* "(" or ")" at *ppc: append it, check the state and the depth, move past it. */
Step ParenthesisStep(MdbSearchSyntax *pstSyntax, const char **ppc) {
    char acChar[2] = {**ppc, '\0'};
    if (MdbAppendWhole(pstSyntax->acSkeleton, sizeof(pstSyntax->acSkeleton), acChar) != MDB_OK) {
        return kReject;
    }
    if (acChar[0] == '(') {
        if (pstSyntax->ulState == MDB_SYN_EXPR || pstSyntax->ulState == MDB_SYN_CLOSE) {
            return kReject;
        }
        pstSyntax->ulState = MDB_SYN_OPEN;
        if (++pstSyntax->lParenDepth > kMaxParenDepth) {
            return kReject;
        }
    } else {
        if (pstSyntax->ulState == MDB_SYN_START || pstSyntax->ulState == MDB_SYN_OPEN ||
            pstSyntax->ulState == MDB_SYN_LOGIC) {
            return kReject;
        }
        pstSyntax->ulState = MDB_SYN_CLOSE;
        if (--pstSyntax->lParenDepth < 0) {
            return kReject;
        }
    }
    ++*ppc;
    return kGoOn;
}

/* The first property whose name the text begins with, as an index into g_astDlnaCols, or -1.
 * Entries without a name are passed over (an empty name would hide every later entry). */
int32_t FindProperty(const char *pc) {
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const char *pcName = g_astDlnaCols[i].pcPropName;
        if (pcName != nullptr && pcName[0] != '\0' && MdbStartsWith(pc, pcName)) {
            return static_cast<int32_t>(i);
        }
    }
    return -1;
}

/* Find where the expression that begins at the operator position pcOp ends: the last letter of
 * "true"/"false" of an existence test, or the closing quote of a relational test. NULL rejects. */
const char *FindExpressionEnd(const MdbDlnaCol &stCol, const char *pcOp) {
    const char *pc = pcOp;
    if (MdbStartsWith(pc, g_apcSearchOpStrings[MDB_WORD_EXISTS])) {
        pc += std::strlen(g_apcSearchOpStrings[MDB_WORD_EXISTS]);
        if (!MdbIsSpace(*pc)) {
            return nullptr;
        }
        MdbSkipSpace(&pc);
        for (uint32_t w : {MDB_WORD_TRUE, MDB_WORD_FALSE}) {
            if (MdbStartsWith(pc, g_apcSearchOpStrings[w])) {
                return pc + std::strlen(g_apcSearchOpStrings[w]) - 1;
            }
        }
        return nullptr;
    }
    if (stCol.pfnSearchValue == nullptr || stCol.pfnSearchValue(&pc) != 0) {
        return nullptr;
    }
    if (!MdbIsSpace(*pc)) {
        return nullptr;
    }
    MdbSkipSpace(&pc);
    if (*pc != '"') {
        return nullptr;
    }
    // No escape character: the value ends at the very next double quote.
    return std::strchr(pc + 1, '"');
}

/* A property name at *ppc (entry lIndex): read the whole expression, store its copy and append
 * "_<index>" to the skeleton. */
Step ExpressionStep(MdbSearchSyntax *pstSyntax, const char **ppc, int32_t lIndex) {
    const MdbDlnaCol &stCol = g_astDlnaCols[lIndex];
    const char *pcStart = *ppc;
    const char *pc = pcStart + std::strlen(stCol.pcPropName);
    if (!MdbIsSpace(*pc)) {
        return kReject;
    }
    MdbSkipSpace(&pc);
    const char *pcLast = FindExpressionEnd(stCol, pc);
    if (pcLast == nullptr) {
        return kReject;
    }
    size_t len = static_cast<size_t>(pcLast - pcStart) + 1;
    if (len > kMaxExprLen || pstSyntax->lExprNum >= MDB_SEARCH_MAX_EXPR) {
        return kReject;
    }
    char acRef[16];
    std::snprintf(acRef, sizeof(acRef), "_%d", lIndex);
    if (MdbAppendWhole(pstSyntax->acSkeleton, sizeof(pstSyntax->acSkeleton), acRef) != MDB_OK) {
        return kReject;
    }
    char acExpr[kMaxExprLen + 1];
    std::memcpy(acExpr, pcStart, len);
    acExpr[len] = '\0';
    char *pcCopy = strdup(acExpr);
    if (pcCopy == nullptr) {
        return Step{false, MDB_ERR_MEM};
    }
    // Stored at once so that a later rejection releases it with the others.
    pstSyntax->apcExpr[pstSyntax->lExprNum] = pcCopy;
    ++pstSyntax->lExprNum;

    pc = pcLast + 1;
    if (*pc != '\0' && *pc != ')' && !MdbIsSpace(*pc)) {
        return kReject;
    }
    if (pstSyntax->ulState == MDB_SYN_EXPR || pstSyntax->ulState == MDB_SYN_CLOSE) {
        return kReject;
    }
    pstSyntax->ulState = MDB_SYN_EXPR;
    *ppc = pc;
    return kGoOn;
}

/* "and" or "or" at *ppc: append " A " or " O "; whitespace must follow, and an expression or ")"
 * must come before. */
Step LogicalStep(MdbSearchSyntax *pstSyntax, const char **ppc) {
    bool bAnd = MdbStartsWith(*ppc, g_apcSearchOpStrings[MDB_WORD_AND]);
    uint32_t ulWord = bAnd ? MDB_WORD_AND : MDB_WORD_OR;
    *ppc += std::strlen(g_apcSearchOpStrings[ulWord]);
    if (MdbAppendWhole(pstSyntax->acSkeleton, sizeof(pstSyntax->acSkeleton), bAnd ? " A " : " O ") != MDB_OK) {
        return kReject;
    }
    if (!MdbIsSpace(**ppc) ||
        (pstSyntax->ulState != MDB_SYN_EXPR && pstSyntax->ulState != MDB_SYN_CLOSE)) {
        return kReject;
    }
    pstSyntax->ulState = MDB_SYN_LOGIC;
    return kGoOn;
}

/* The parser: one pass, one cursor. Returns MDB_OK when the whole text reads without rejection. */
uint32_t Parse(MdbSearchSyntax *pstSyntax, const char *pcCriteria) {
    const char *pc = pcCriteria;
    while (*pc != '\0') {
        MdbSkipSpace(&pc);
        if (*pc == '\0') {
            break;
        }
        Step stStep;
        int32_t lIndex;
        if (*pc == '(' || *pc == ')') {
            stStep = ParenthesisStep(pstSyntax, &pc);
        } else if ((lIndex = FindProperty(pc)) >= 0) {
            stStep = ExpressionStep(pstSyntax, &pc, lIndex);
        } else if (MdbStartsWith(pc, g_apcSearchOpStrings[MDB_WORD_AND]) ||
                   MdbStartsWith(pc, g_apcSearchOpStrings[MDB_WORD_OR])) {
            stStep = LogicalStep(pstSyntax, &pc);
        } else {
            stStep = kReject;
        }
        if (!stStep.bOk) {
            return stStep.ulStatus;
        }
    }
    bool bEndState = pstSyntax->ulState == MDB_SYN_START || pstSyntax->ulState == MDB_SYN_EXPR ||
                     pstSyntax->ulState == MDB_SYN_CLOSE;
    return (bEndState && pstSyntax->lParenDepth == 0) ? MDB_OK : MDB_ERR_PARA;
}

}  // namespace

/* Check pcCriteria and fill pstSyntax. NULL or empty text: MDB_ERR_PARA, record untouched. "*" as
 * first character: the wildcard, skeleton "*". Otherwise parse; on rejection (MDB_ERR_PARA) or a
 * failed copy (MDB_ERR_MEM) the record holds no expression and an empty skeleton. */
extern "C" MDB_API uint32_t MDBSearchCriteriaSyntax(const char *pcCriteria, MdbSearchSyntax *pstSyntax) {
    if (pcCriteria == nullptr || pcCriteria[0] == '\0' || pstSyntax == nullptr) {
        return MDB_ERR_PARA;
    }
    pstSyntax->lParenDepth = 0;
    pstSyntax->ulState = MDB_SYN_START;
    pstSyntax->lExprNum = 0;
    std::memset(pstSyntax->acSkeleton, 0, sizeof(pstSyntax->acSkeleton));
    if (pcCriteria[0] == '*') {
        pstSyntax->acSkeleton[0] = '*';
        return MDB_OK;
    }
    uint32_t ulStatus = Parse(pstSyntax, pcCriteria);
    if (ulStatus != MDB_OK) {
        DropResults(pstSyntax);
    }
    return ulStatus;
}
