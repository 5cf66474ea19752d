// The small text helpers the whole library (and the reference platform) build their texts with:
// appends to fixed buffers, a cut copy, and the one reader of decimal numbers. Internal; of these
// only MdbStrAppend is exported (mdb.h).
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <string_view>

/* Append pcPiece to the text in pcDst (ulSize bytes in all) only when all of it fits with the NUL:
 * texts built so, SQL above all, are never cut. MDB_OK; MDB_ERR_PARA, with pcDst unchanged, when
 * the piece does not fit; MDB_ERR_FAIL for a NULL text or piece. (MdbStrAppend, in mdb.h, cuts.) */
uint32_t MdbAppendWhole(char *pcDst, size_t ulSize, const char *pcPiece);

/* Copy as much of svText as fits into the ulSize-byte buffer pcDst, terminated; nothing happens
 * for a NULL buffer or a size of 0. */
void MdbCopyCut(char *pcDst, size_t ulSize, std::string_view svText);

/* A decimal number as atoi reads it: whitespace, an optional sign, then digits; reading stops at
 * the first other character. Each reader takes the form it needs: saturated to a range, wrapped
 * around, or refused when it overflows. Inline, so that the reference platform reads numbers the
 * same way without linking to the library's internals. */
struct MdbDecimal {
    const char *pcEnd = nullptr;        // the character behind the digits (the start: no digits)
    bool bDigits = false;               // at least one digit was read
    bool bNegative = false;
    bool bBeyond64 = false;             // the digits do not fit 64 bits
    unsigned long long ullDigits = 0;   // the digits' value modulo 2^64

    /* True when the number is a long long (no overflow). */
    bool FitsSigned() const {
        const unsigned long long ullLimit = bNegative ? static_cast<unsigned long long>(LLONG_MAX) + 1 : LLONG_MAX;
        return !bBeyond64 && ullDigits <= ullLimit;
    }
    /* The number, clamped to the range of long long. */
    long long Saturated() const {
        if (!FitsSigned()) {
            return bNegative ? LLONG_MIN : LLONG_MAX;
        }
        return bNegative ? static_cast<long long>(0ULL - ullDigits) : static_cast<long long>(ullDigits);
    }
    /* The number as strtoull gives it: ULLONG_MAX beyond 64 bits, a negative one modulo 2^64. */
    unsigned long long Unsigned() const { return bBeyond64 ? ULLONG_MAX : bNegative ? 0ULL - ullDigits : ullDigits; }
    /* The number modulo 2^32, so that numbers of any length have a defined value. */
    uint32_t Wrapped32() const {
        const uint32_t ulLow = static_cast<uint32_t>(ullDigits);
        return bNegative ? 0u - ulLow : ulLow;
    }
};

inline MdbDecimal MdbReadDecimal(const char *pcText) {
    MdbDecimal stNumber;
    stNumber.pcEnd = pcText;
    if (pcText == nullptr) {
        return stNumber;
    }
    const char *pc = pcText;
    while (*pc == ' ' || (*pc >= '\t' && *pc <= '\r')) {
        ++pc;
    }
    if (*pc == '+' || *pc == '-') {
        stNumber.bNegative = *pc == '-';
        ++pc;
    }
    for (; *pc >= '0' && *pc <= '9'; ++pc) {
        const unsigned digit = static_cast<unsigned>(*pc - '0');
        stNumber.bBeyond64 = stNumber.bBeyond64 || stNumber.ullDigits > (ULLONG_MAX - digit) / 10;
        stNumber.ullDigits = stNumber.ullDigits * 10 + digit;
        stNumber.bDigits = true;
    }
    if (stNumber.bDigits) {
        stNumber.pcEnd = pc;
    }
    return stNumber;
}
