// The translations of single search expressions into SQL conditions, shared by the criteria
// check that walks the skeleton. Each appends its condition to the WHERE text whole, or refuses.
// Internal to the search subsystem.
#pragma once

#include <mdb.h>

#include <cstdint>

// Everything one check works on: the search container id (read only), its writable copy, where the
// result class and the separator flag go, and the WHERE text being built.
struct MdbTranslation {
    const char *pcContainerId;
    char *pcCopy;
    uint32_t ulCopySize;
    uint32_t *pulResultClass;
    uint32_t *pulCommaSep;
    char *pcWhere;
    uint32_t ulWhereSize;
};

// Size of the buffers that a value and most conditions are built in.
constexpr uint32_t kMdbConditionSize = 256;
// Size of the buffers of comparison, resolution and category conditions.
constexpr uint32_t kMdbShortConditionSize = 128;

// The value of an expression: the text between the first double quote at or after pcFrom and the
// closing quote that ends the expression, copied into acValue. false (refuse the expression) when
// there is no such pair, a quote stands inside it, or it does not fit.
bool MdbExpressionValue(const char *pcFrom, char (&acValue)[kMdbConditionSize]);

// Containment: "<column> like '%<value>%'", the value's single quotes doubled; "%", "_" and "\" of
// the value escaped with "\" and followed by ESCAPE '\' when it holds any of them.
uint32_t MdbTranslateContainment(MdbTranslation &stT, const MdbDlnaCol &stCol, const char *pcValue);

// Class "=" or "derivedfrom": the item classes the value names, or the category class it asks for.
uint32_t MdbTranslateClass(MdbTranslation &stT, const char *pcValue);

// Resolution: pcOp at the operator; the "WxH" value compared as height << 32 + width.
uint32_t MdbTranslateResolution(MdbTranslation &stT, const MdbDlnaCol &stCol, const char *pcOp,
                                const char *pcValue);

// Relational comparison: pcOp at the operator, the value behind it up to the end of the
// expression. The value is written as a single-quoted SQL literal, except for a duration
// (bDuration), which is written in microseconds. Without a relational operator the expression keeps every row ("1").
uint32_t MdbTranslateComparison(MdbTranslation &stT, const MdbDlnaCol &stCol, bool bDuration,
                                const char *pcOp);

// A duration "H:MM:SS" or "H:MM:SS.F" (F whole milliseconds) in microseconds; 0 when the text does
// not read so or is out of range.
long long MdbParseDuration(const char *pcText);

// protocolInfo: the items of the media family or DLNA profile that the value names.
uint32_t MdbTranslateProtocolInfo(MdbTranslation &stT, const char *pcValue);

// Object id: the object that the value names below the search container.
uint32_t MdbTranslateObjectId(MdbTranslation &stT, const char *pcValue);

// The first of the six relational operators that pcOp begins with, as an index into
// g_apcSearchOpStrings, or -1.
int32_t MdbRelationalOperator(const char *pcOp);
