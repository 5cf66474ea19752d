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

const uint32_t kMaxProfiles = 60; // the search translation's enumeration bound

const MdbDlnaProfile *Profile(uint32_t code, uint32_t j) { return QRV_DLNA_GetProfileByProfileId(code + (j << 16)); }

const char *const kTopTypes[] = {"audio/", "video/", "image/"}; // of item classes 11, 12, 13

TEST(Profiles, EveryFamilyEnumeratesWithoutGapsAndMapsBack) {
    std::set<uint32_t> classes;
    for (uint32_t i = 0; i < g_ulNumOfMediaClasses; ++i) {
        const uint32_t code = g_astMediaClasses[i].ulFlagsCode;
        const MdbTransferParams *transfer = g_astMediaClasses[i].pstTransfer;
        SCOPED_TRACE("family code " + std::to_string(code));
        // an item class in bits 0-6, the family index in bits 8-15, nothing else
        EXPECT_EQ(code & ~0xFF7Fu, 0u);
        EXPECT_EQ(code >> 8, i);
        ASSERT_TRUE((code & 127u) >= 11 && (code & 127u) <= 13);
        const std::string top = kTopTypes[(code & 127u) - 11];
        classes.insert(code & 127u);
        ASSERT_NE(transfer, nullptr);
        EXPECT_TRUE(std::set<std::string>({"00", "01", "10", "11"}).count(transfer->pcOpValue)) << transfer->pcOpValue;
        const char *flags = transfer->pcFlagsValue; // DLNA.ORG_FLAGS: 32 hex digits
        EXPECT_TRUE(std::strlen(flags) == 32 && std::strspn(flags, "0123456789abcdefABCDEF") == 32) << flags;
        EXPECT_EQ(std::string(transfer->pcDefaultMime).rfind(top, 0), 0u);

        uint32_t count = 0;
        while (count < kMaxProfiles && Profile(code, count) != nullptr) ++count;
        EXPECT_TRUE(count >= 1 && count < kMaxProfiles) << count;
        for (uint32_t j = count; j < 0x10000u; j += (j < 256 ? 1 : 997)) ASSERT_EQ(Profile(code, j), nullptr) << j;
        // the restricted bit says nothing about the format
        EXPECT_EQ(Profile(code | 128u, 0), Profile(code, 0));
        for (uint32_t j = 0; j < count; ++j) {
            const MdbDlnaProfile *p = Profile(code, j);
            SCOPED_TRACE(std::string(p->pcProfileName) + " " + p->pcMimeType);
            EXPECT_NE(p->pcProfileName[0], '\0');
            EXPECT_EQ(std::string(p->pcMimeType).rfind(top, 0), 0u);
            EXPECT_TRUE(p->pcSuffix[0] != '\0' && std::strchr(p->pcSuffix, '.') == nullptr) << p->pcSuffix;
            // an upload naming this profile and its MIME type gets exactly this profile
            const char *suffix = nullptr;
            EXPECT_EQ(Profile(QRV_MDB_PNtoFix(p->pcMimeType, p->pcProfileName, &suffix), 0), p);
            EXPECT_EQ(suffix, p->pcSuffix);
        }
    }
    EXPECT_EQ(classes, (std::set<uint32_t>{11, 12, 13}));
    for (uint32_t word : {0u, 2u, 2u | 0x800u | 0x1000u, 11u | (77u << 8), 0xFFFFFFFFu}) {
        EXPECT_EQ(QRV_DLNA_GetProfileByProfileId(word), nullptr) << "folder or unknown family " << word;
    }
}

TEST(Profiles, UploadsMapToRealProfiles) {
    // expected: the profile an upload gets, nullptr for none
    const struct { const char *mime, *name, *expected; uint32_t itemClass; } cases[] = {
        // real profiles of each family by name and MIME type; files without one get the Unknown profile
        {"audio/mpeg", "MP3", "MP3", 11}, {"audio/L16", "LPCM", "LPCM", 11}, {"audio/x-flac", "", "Unknown", 11},
        {"audio/mp4", "AAC_ISO_320", "AAC_ISO_320", 11}, {"audio/x-ms-wma", "WMABASE", "WMABASE", 11},
        {"video/mpeg", "MPEG_PS_PAL", "MPEG_PS_PAL", 12}, {"video/x-matroska", nullptr, "Unknown", 12},
        {"video/vnd.dlna.mpeg-tts", "MPEG_TS_HD_NA", "MPEG_TS_HD_NA", 12}, {"image/png", "PNG_LRG", "PNG_LRG", 13},
        {"video/mp4", "AVC_MP4_MP_SD_AAC_MULT5", "AVC_MP4_MP_SD_AAC_MULT5", 12},
        {"image/jpeg", "JPEG_TN", "JPEG_TN", 13}, {"image/jpeg", "JPEG_SM", "JPEG_SM", 13},
        {"image/jpeg", "JPEG_MED", "JPEG_MED", 13}, {"image/jpeg", "JPEG_LRG", "JPEG_LRG", 13},
        // no usable name: the first profile of the MIME type, whose case does not matter
        {"audio/mpeg", "NO_SUCH_PN", "MP3", 11}, {"AUDIO/MPEG", nullptr, "MP3", 11}, {"image/jpeg", "", "JPEG_LRG", 13},
        {"video/mpeg", "Unknown", "MPEG_PS_PAL", 12},
        // without a MIME type a known name decides; types this platform does not serve get nothing
        {nullptr, "MP3", "MP3", 11}, {"audio/x-unknown", "", nullptr, 0}, {"text/plain", "", nullptr, 0},
        {"", "", nullptr, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.mime ? c.mime : "NULL") + " " + (c.name ? c.name : "NULL"));
        const char *suffix = "untouched";
        uint32_t flags = QRV_MDB_PNtoFix(c.mime, c.name, &suffix);
        EXPECT_EQ(flags & 255u, c.itemClass); // an uploaded item is not restricted
        const MdbDlnaProfile *p = QRV_DLNA_GetProfileByProfileId(flags);
        ASSERT_EQ(p != nullptr, c.expected != nullptr);
        EXPECT_EQ(suffix, p != nullptr ? p->pcSuffix : nullptr);
        if (p == nullptr) continue;
        EXPECT_STREQ(p->pcProfileName, c.expected);
        if (c.mime != nullptr) { EXPECT_EQ(strcasecmp(p->pcMimeType, c.mime), 0) << p->pcMimeType; }
    }
    EXPECT_NE(QRV_MDB_PNtoFix("audio/mpeg", "MP3", nullptr), 0u); // no place for the suffix
}

} // namespace
