// Reading a Range header.
#include "byte_range.h"

#include <cctype>
#include <cstring>

namespace mdbd {

namespace {

/* Reads decimal digits at *pc into value; false without digits or when they overflow 64 bits. */
bool ReadNumber(const char *&pc, uint64_t &value, bool &present) {
    present = false;
    value = 0;
    for (; std::isdigit(static_cast<unsigned char>(*pc)); ++pc) {
        const uint64_t digit = static_cast<uint64_t>(*pc - '0');
        if (value > (UINT64_MAX - digit) / 10) {
            return false;
        }
        value = value * 10 + digit;
        present = true;
    }
    return true;
}

void SkipBlanks(const char *&pc) {
    while (*pc == ' ' || *pc == '\t') {
        ++pc;
    }
}

}  // namespace

ByteRange ReadByteRange(const char *header, uint64_t size) {
    ByteRange whole;
    whole.length = size;
    if (header == nullptr) {
        return whole;
    }
    const char *pc = header;
    SkipBlanks(pc);
    if (strncasecmp(pc, "bytes=", 6) != 0) {
        return whole;
    }
    pc += 6;
    SkipBlanks(pc);
    uint64_t first = 0, last = 0;
    bool hasFirst = false, hasLast = false;
    if (!ReadNumber(pc, first, hasFirst) || *pc++ != '-' || !ReadNumber(pc, last, hasLast)) {
        return whole;
    }
    SkipBlanks(pc);
    if (*pc != '\0' || (!hasFirst && !hasLast) || (hasFirst && hasLast && last < first)) {
        return whole;  // several ranges, or a range that does not read
    }
    ByteRange range;
    range.kind = ByteRange::kPart;
    if (size == 0) {
        range.kind = ByteRange::kUnsatisfiable;  // no byte of an empty file can be asked for
        return range;
    }
    if (!hasFirst) {
        // The last `last` bytes.
        if (last == 0) {
            range.kind = ByteRange::kUnsatisfiable;
            return range;
        }
        range.length = last < size ? last : size;
        range.offset = size - range.length;
        return range;
    }
    if (first >= size) {
        range.kind = ByteRange::kUnsatisfiable;
        return range;
    }
    range.offset = first;
    range.length = (hasLast && last < size ? last + 1 : size) - first;
    return range;
}

}  // namespace mdbd
