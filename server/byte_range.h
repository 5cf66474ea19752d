// The Range header of a GET, as the file server honours it: one byte range ("bytes=FIRST-LAST",
// "bytes=FIRST-", "bytes=-SUFFIX"), which gives 206; a range that begins past the end gives 416;
// anything else (several ranges, another unit, a text that does not read) is ignored and the whole
// file goes out with 200, as HTTP allows.
#pragma once

#include <cstdint>

namespace mdbd {

struct ByteRange {
    enum Kind { kWhole, kPart, kUnsatisfiable } kind = kWhole;
    uint64_t offset = 0;
    uint64_t length = 0;  // the whole file's size for kWhole
};

// The range that header (may be NULL) asks for in a file of size bytes.
ByteRange ReadByteRange(const char *header, uint64_t size);

}  // namespace mdbd
