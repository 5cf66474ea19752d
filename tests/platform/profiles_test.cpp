// Media families and DLNA profiles: the layout the library enumerates (family code + j<<16, no
// gaps), the transfer parameters it writes into protocolInfo, and the upload mapping of a MIME
// type and profile name to a flags word and file suffix.
#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <strings.h>

#include <cstring>
#include <set>
#include <string>

namespace {

const MdbDlnaProfile *Profile(uint32_t code, uint32_t j) { return QRV_DLNA_GetProfileByProfileId(code + (j << 16)); }

// Each family: an item class in bits 0-6 and its index in bits 8-15; OP and 32-hex-digit FLAGS
// texts; fewer than 60 profiles (the search translation's bound) without gaps, of its media type,
// each found again from its MIME type and name; the restricted bit says nothing about the format.
TEST(Profiles, EveryFamilyEnumeratesWithoutGapsAndMapsBack) {
    std::set<uint32_t> classes;
    for (uint32_t i = 0; i < g_ulNumOfMediaClasses; ++i) {
        const uint32_t code = g_astMediaClasses[i].ulFlagsCode;
        const MdbTransferParams *t = g_astMediaClasses[i].pstTransfer;
        ASSERT_TRUE((code & 127u) >= 11 && (code & 127u) <= 13 && (code & ~0xFF7Fu) == 0 && code >> 8 == i && t) << code;
        const std::string top = code % 128 == 11 ? "audio/" : code % 128 == 12 ? "video/" : "image/";
        classes.insert(code & 127u);
        EXPECT_TRUE(std::set<std::string>({"00", "01", "10", "11"}).count(t->pcOpValue)) << t->pcOpValue;
        EXPECT_TRUE(std::strlen(t->pcFlagsValue) == 32 && std::strspn(t->pcFlagsValue, "0123456789abcdefABCDEF") == 32);
        EXPECT_EQ(std::string(t->pcDefaultMime).rfind(top, 0), 0u);
        uint32_t count = 0;
        while (count < 60 && Profile(code, count) != nullptr) ++count;
        EXPECT_TRUE(count >= 1 && count < 60) << count;
        for (uint32_t j = count; j < 0x10000u; j += (j < 256 ? 1 : 997)) ASSERT_EQ(Profile(code, j), nullptr) << j;
        EXPECT_EQ(Profile(code | 128u, 0), Profile(code, 0));
        for (uint32_t j = 0; j < count; ++j) {
            const MdbDlnaProfile *p = Profile(code, j);
            const char *suffix = nullptr;
            EXPECT_EQ(Profile(QRV_MDB_PNtoFix(p->pcMimeType, p->pcProfileName, &suffix), 0), p) << p->pcProfileName;
            EXPECT_TRUE(std::string(p->pcMimeType).rfind(top, 0) == 0 && p->pcProfileName[0] && suffix == p->pcSuffix &&
                        p->pcSuffix[0] && !std::strchr(p->pcSuffix, '.')) << p->pcProfileName;
        }
    }
    EXPECT_EQ(classes, (std::set<uint32_t>{11, 12, 13}));
    for (uint32_t word : {0u, 2u, 2u | 0x800u | 0x1000u, 11u | (77u << 8), 0xFFFFFFFFu}) {
        EXPECT_EQ(QRV_DLNA_GetProfileByProfileId(word), nullptr) << "folder or unknown family " << word;
    }
}

// Files without a usable profile name get the Unknown profile of their type, else the first
// profile of the MIME type (whose case does not matter); without a MIME type a known name decides;
// types this platform does not serve get nothing. An uploaded item is not restricted.
TEST(Profiles, UploadsMapToRealProfiles) {
    const char *const cases[][3] = {  // MIME type, profile name, the profile the upload gets
        {"audio/mpeg", "MP3", "MP3"}, {"audio/L16", "LPCM", "LPCM"}, {"audio/x-flac", "", "Unknown"},
        {"video/x-matroska", nullptr, "Unknown"}, {"video/vnd.dlna.mpeg-tts", "MPEG_TS_HD_NA", "MPEG_TS_HD_NA"},
        {"image/jpeg", "JPEG_SM", "JPEG_SM"}, {"audio/mpeg", "NO_SUCH_PN", "MP3"}, {"AUDIO/MPEG", nullptr, "MP3"},
        {"image/jpeg", "", "JPEG_LRG"}, {"video/mpeg", "Unknown", "MPEG_PS_PAL"}, {nullptr, "MP3", "MP3"},
        {"audio/x-unknown", "", nullptr}, {"text/plain", "", nullptr}, {"", "", nullptr},
    };
    for (const auto &[mime, name, expected] : cases) {
        const char *suffix = "untouched";
        const uint32_t flags = QRV_MDB_PNtoFix(mime, name, &suffix);
        const MdbDlnaProfile *p = QRV_DLNA_GetProfileByProfileId(flags);
        EXPECT_STREQ(p != nullptr ? p->pcProfileName : nullptr, expected) << (mime ? mime : "NULL");
        EXPECT_TRUE(suffix == (p ? p->pcSuffix : nullptr) && (flags & 128u) == 0 &&
                    (!p || !mime || strcasecmp(p->pcMimeType, mime) == 0)) << (mime ? mime : "NULL");
    }
    EXPECT_NE(QRV_MDB_PNtoFix("audio/mpeg", "MP3", nullptr), 0u);  // no place for the suffix
}

}  // namespace
