// The words of the search criteria language and the small text helpers that the criteria parser
// and the SQL translation share. Internal to the library.
#pragma once

#include <cstddef>
#include <cstdint>

// Indexes into g_apcSearchOpStrings.
enum MdbSearchWord : uint32_t {
    MDB_WORD_AND = 0,
    MDB_WORD_OR = 1,
    MDB_WORD_EQ = 2,
    MDB_WORD_NE = 3,
    MDB_WORD_LE = 4,
    MDB_WORD_LT = 5,
    MDB_WORD_GE = 6,
    MDB_WORD_GT = 7,
    MDB_WORD_CONTAINS = 8,
    MDB_WORD_STRING_EQ = 9,
    MDB_WORD_DERIVEDFROM = 10,
    MDB_WORD_EXISTS = 11,
    MDB_WORD_TRUE = 12,
    MDB_WORD_FALSE = 13,
    MDB_WORD_COUNT = 14
};

// The 14 words, indexed by MdbSearchWord. Entry 9 is a second "=": the string recognizer scans
// entries 8-9 and the derived-class recognizer entries 9-10.
extern const char *const g_apcSearchOpStrings[MDB_WORD_COUNT];

// True for the six whitespace characters " \t\n\v\f\r"; false for NUL.
bool MdbIsSpace(char c);

// Moves *ppcCursor over whitespace; stops at the first other character or the end. NULL is ignored.
void MdbSkipSpace(const char **ppcCursor);

// True when pcText begins with pcWord (case matters).
bool MdbStartsWith(const char *pcText, const char *pcWord);
