// Validating UTF-8 for XML and replacing what does not belong there.
#include "common/xml_text.h"

#include <mdb.h>

#include <string_view>

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD

/* The character at the front of svText: the length of its UTF-8 sequence (0 for a byte that
 * begins no valid sequence), and whether XML 1.0 allows it. */
struct Utf8Char {
    size_t len;
    bool allowed;
};

Utf8Char FrontChar(std::string_view svText) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(svText[i]); };
    const unsigned char c = byte(0);
    if (c < 0x80) {
        return {1, c >= 0x20 || c == '\t' || c == '\n' || c == '\r'};
    }
    size_t len;
    uint32_t code;
    if (c >= 0xC2 && c <= 0xDF) {
        len = 2;
        code = c & 0x1Fu;
    } else if (c >= 0xE0 && c <= 0xEF) {
        len = 3;
        code = c & 0x0Fu;
    } else if (c >= 0xF0 && c <= 0xF4) {
        len = 4;
        code = c & 0x07u;
    } else {
        return {0, false};  // a continuation byte, an overlong lead (C0, C1) or beyond U+10FFFF
    }
    if (svText.size() < len) {
        return {0, false};
    }
    for (size_t i = 1; i < len; ++i) {
        if ((byte(i) & 0xC0u) != 0x80u) {
            return {0, false};
        }
        code = (code << 6) | (byte(i) & 0x3Fu);
    }
    const bool overlong = (len == 3 && code < 0x800) || (len == 4 && code < 0x10000);
    if (overlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF) {
        return {0, false};
    }
    return {len, code != 0xFFFE && code != 0xFFFF};
}

}  // namespace

const char *MdbXmlSafeText(const char *pcText, std::string &rSafe) {
    if (pcText == nullptr) {
        return nullptr;
    }
    const std::string_view svText(pcText);
    bool bCopied = false;  // rSafe holds the text up to i once the first replacement was needed
    for (size_t i = 0; i < svText.size();) {
        const Utf8Char ch = FrontChar(svText.substr(i));
        if (ch.allowed) {
            if (bCopied) {
                rSafe.append(svText.substr(i, ch.len));
            }
            i += ch.len;
            continue;
        }
        if (!bCopied) {
            rSafe.assign(svText.substr(0, i));
            bCopied = true;
        }
        // A forbidden character is replaced whole, a stray byte by itself.
        rSafe += kReplacement;
        i += ch.len > 0 ? ch.len : 1;
    }
    return bCopied ? rSafe.c_str() : pcText;
}

uint32_t MdbXmlSetAttribute(IXML_Element *pstElement, const char *pcName, const char *pcValue) {
    if (pstElement == nullptr || pcName == nullptr || pcValue == nullptr) {
        return MDB_ERR_PARA;
    }
    std::string safe;
    return ixmlElement_setAttribute(pstElement, pcName, MdbXmlSafeText(pcValue, safe)) == IXML_SUCCESS ? MDB_OK
                                                                                                      : MDB_ERR_MEM;
}
