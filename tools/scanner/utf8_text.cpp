// Latin-1 bytes in otherwise UTF-8 texts, converted.
#include "utf8_text.h"

#include <cstdint>

namespace mdbscan {

namespace {

/* The length of the valid UTF-8 sequence at the front of text, or 0 (overlong forms, surrogates
 * and values beyond U+10FFFF are not valid). */
size_t SequenceLength(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    const size_t len = lead >= 0xC2 && lead <= 0xDF ? 2 : lead >= 0xE0 && lead <= 0xEF ? 3 : lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
    if (len == 0 || text.size() < len) {
        return 0;
    }
    uint32_t code = lead & (0x7Fu >> len);
    for (size_t i = 1; i < len; ++i) {
        if ((byte(i) & 0xC0u) != 0x80u) {
            return 0;
        }
        code = (code << 6) | (byte(i) & 0x3Fu);
    }
    const bool overlong = (len == 3 && code < 0x800) || (len == 4 && code < 0x10000);
    return overlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF ? 0 : len;
}

}  // namespace

std::string ValidUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const size_t len = SequenceLength(text.substr(i));
        if (len > 0) {
            out.append(text.substr(i, len));
            i += len;
            continue;
        }
        const unsigned char latin1 = static_cast<unsigned char>(text[i++]);
        out += static_cast<char>(0xC0 | (latin1 >> 6));
        out += static_cast<char>(0x80 | (latin1 & 0x3F));
    }
    return out;
}

}  // namespace mdbscan
