// Media families and DLNA profiles: the layout the library enumerates (family code + j<<16, no
// gaps), the transfer parameters it writes into protocolInfo, and the upload mapping of a MIME
// type and profile name to a flags word and file suffix.
#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <string>

namespace {

const uint32_t kMaxProfiles = 60; // the search translation's enumeration bound

uint32_t ProfileCount(uint32_t familyCode) {
    uint32_t j = 0;
    while (j < kMaxProfiles && QRV_DLNA_GetProfileByProfileId(familyCode + (j << 16)) != nullptr) {
        ++j;
    }
    return j;
}

std::string TopType(uint32_t itemClass) {
    switch (itemClass) {
    case 11: return "audio/";
    case 12: return "video/";
    case 13: return "image/";
    default: return "?";
    }
}

bool IsHex(const std::string &s) {
    for (char c : s) {
        if (!std::isxdigit(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

TEST(MediaFamilies, CodesAndTransferParameters) {
    ASSERT_GE(g_ulNumOfMediaClasses, 3u);
    std::set<uint32_t> classes;
    for (uint32_t i = 0; i < g_ulNumOfMediaClasses; ++i) {
        const MdbMediaClass &family = g_astMediaClasses[i];
        SCOPED_TRACE("family " + std::to_string(i));
        EXPECT_EQ(family.ulFlagsCode >> 16, 0u);
        EXPECT_EQ((family.ulFlagsCode >> 8) & 255u, i);
        EXPECT_EQ(family.ulFlagsCode & 128u, 0u);
        uint32_t itemClass = family.ulFlagsCode & 127u;
        EXPECT_GE(itemClass, 11u);
        EXPECT_LE(itemClass, 13u);
        classes.insert(itemClass);
        ASSERT_NE(family.pstTransfer, nullptr);
        std::string op = family.pstTransfer->pcOpValue, flags = family.pstTransfer->pcFlagsValue;
        EXPECT_TRUE(op == "00" || op == "01" || op == "10" || op == "11") << op;
        EXPECT_EQ(flags.size(), 32u);
        EXPECT_TRUE(IsHex(flags)) << flags;
        EXPECT_EQ(std::string(family.pstTransfer->pcDefaultMime).rfind(TopType(itemClass), 0), 0u);
    }
    EXPECT_EQ(classes, (std::set<uint32_t>{11, 12, 13}));
}

TEST(Profiles, EveryFamilyEnumeratesWithoutGaps) {
    for (uint32_t i = 0; i < g_ulNumOfMediaClasses; ++i) {
        uint32_t code = g_astMediaClasses[i].ulFlagsCode;
        uint32_t count = ProfileCount(code);
        SCOPED_TRACE("family code " + std::to_string(code));
        EXPECT_GE(count, 1u);
        EXPECT_LT(count, kMaxProfiles);
        // nothing after the first missing number, up to 16 bits of profile number
        for (uint32_t j = count; j < 0x10000u; j += (j < 256 ? 1 : 997)) {
            ASSERT_EQ(QRV_DLNA_GetProfileByProfileId(code + (j << 16)), nullptr) << j;
        }
        for (uint32_t j = 0; j < count; ++j) {
            const MdbDlnaProfile *p = QRV_DLNA_GetProfileByProfileId(code + (j << 16));
            std::string mime = p->pcMimeType, suffix = p->pcSuffix;
            EXPECT_FALSE(std::string(p->pcProfileName).empty());
            EXPECT_EQ(mime.rfind(TopType(code & 127u), 0), 0u) << p->pcProfileName << " " << mime;
            EXPECT_FALSE(suffix.empty());
            EXPECT_EQ(suffix.find('.'), std::string::npos);
        }
    }
}

TEST(Profiles, RealProfilesArePresentInTheirFamily) {
    const struct {
        uint32_t itemClass;
        const char *name;
        const char *mime;
    } expected[] = {
        {11, "MP3", "audio/mpeg"},        {11, "LPCM", "audio/L16"},
        {11, "AAC_ISO_320", "audio/mp4"}, {11, "WMABASE", "audio/x-ms-wma"},
        {12, "MPEG_PS_PAL", "video/mpeg"}, {12, "MPEG_TS_HD_NA", "video/vnd.dlna.mpeg-tts"},
        {12, "AVC_MP4_MP_SD_AAC_MULT5", "video/mp4"},
        {13, "JPEG_TN", "image/jpeg"},     {13, "JPEG_SM", "image/jpeg"},
        {13, "JPEG_MED", "image/jpeg"},    {13, "JPEG_LRG", "image/jpeg"},
        {13, "PNG_LRG", "image/png"},      {11, "Unknown", "audio/x-flac"},
        {12, "Unknown", "video/x-matroska"},
    };
    for (const auto &e : expected) {
        bool found = false;
        for (uint32_t i = 0; i < g_ulNumOfMediaClasses && !found; ++i) {
            uint32_t code = g_astMediaClasses[i].ulFlagsCode;
            if ((code & 127u) != e.itemClass) continue;
            for (uint32_t j = 0; j < ProfileCount(code) && !found; ++j) {
                const MdbDlnaProfile *p = QRV_DLNA_GetProfileByProfileId(code + (j << 16));
                found = std::string(p->pcProfileName) == e.name && std::string(p->pcMimeType) == e.mime;
            }
        }
        EXPECT_TRUE(found) << e.name << " " << e.mime;
    }
}

TEST(Profiles, WordsThatNameNoProfile) {
    uint32_t audio = g_astMediaClasses[0].ulFlagsCode;
    EXPECT_EQ(QRV_DLNA_GetProfileByProfileId(0), nullptr);
    EXPECT_EQ(QRV_DLNA_GetProfileByProfileId(2), nullptr);            // a folder
    EXPECT_EQ(QRV_DLNA_GetProfileByProfileId(2 | 0x800 | 0x1000), nullptr); // a folder with its bits
    EXPECT_EQ(QRV_DLNA_GetProfileByProfileId(11 | (77u << 8)), nullptr);     // no such family
    EXPECT_EQ(QRV_DLNA_GetProfileByProfileId(0xFFFFFFFFu), nullptr);
    // the restricted bit says nothing about the format
    EXPECT_EQ(QRV_DLNA_GetProfileByProfileId(audio | 128u), QRV_DLNA_GetProfileByProfileId(audio));
}

TEST(PNtoFix, EveryProfileMapsBackToItself) {
    for (uint32_t i = 0; i < g_ulNumOfMediaClasses; ++i) {
        uint32_t code = g_astMediaClasses[i].ulFlagsCode;
        for (uint32_t j = 0; j < ProfileCount(code); ++j) {
            const MdbDlnaProfile *p = QRV_DLNA_GetProfileByProfileId(code + (j << 16));
            const char *suffix = nullptr;
            uint32_t flags = QRV_MDB_PNtoFix(p->pcMimeType, p->pcProfileName, &suffix);
            EXPECT_EQ(QRV_DLNA_GetProfileByProfileId(flags), p) << p->pcProfileName << " " << p->pcMimeType;
            EXPECT_EQ(suffix, p->pcSuffix);
        }
    }
}

TEST(PNtoFix, ByTable) {
    const struct {
        const char *mime;
        const char *profile;
        const char *expectName; // nullptr: no profile, no suffix
        const char *expectSuffix;
        uint32_t expectClass;
        const char *why;
    } cases[] = {
        {"audio/mpeg", "MP3", "MP3", "mp3", 11, "name and MIME"},
        {"audio/mpeg", "", "MP3", "mp3", 11, "no name: first profile of the MIME type"},
        {"audio/mpeg", nullptr, "MP3", "mp3", 11, "NULL name reads as empty"},
        {"AUDIO/MPEG", "", "MP3", "mp3", 11, "MIME types ignore case"},
        {"audio/L16", "LPCM", "LPCM", "pcm", 11, "LPCM"},
        {"audio/mp4", "AAC_ISO_320", "AAC_ISO_320", "m4a", 11, "AAC in MP4"},
        {"audio/x-flac", "", "Unknown", "flac", 11, "no DLNA profile: the Unknown profile of the MIME"},
        {"video/mpeg", "MPEG_TS_HD_NA_ISO", "MPEG_TS_HD_NA_ISO", "ts", 12, "later profile of a shared MIME"},
        {"video/vnd.dlna.mpeg-tts", "MPEG_TS_HD_NA", "MPEG_TS_HD_NA", "m2ts", 12, "timestamped TS"},
        {"video/x-matroska", "", "Unknown", "mkv", 12, "Unknown video"},
        {"image/jpeg", "JPEG_TN", "JPEG_TN", "jpg", 13, "thumbnail"},
        {"image/jpeg", "", "JPEG_LRG", "jpg", 13, "no name: the general JPEG profile"},
        {"image/png", "PNG_LRG", "PNG_LRG", "png", 13, "PNG"},
        {"audio/x-mpeg", "MP3", "MP3", "mp3", 11, "known name with another MIME spelling"},
        {"audio/mpeg", "NO_SUCH_PN", "MP3", "mp3", 11, "unknown name: the MIME decides"},
        {"video/mpeg", "Unknown", "MPEG_PS_PAL", "mpg", 12, "\"Unknown\" is no name of its own"},
        {"audio/x-unknown", "", nullptr, nullptr, 0, "an audio type this platform does not serve"},
        {"text/plain", "", nullptr, nullptr, 0, "not a media type"},
        {"", "", nullptr, nullptr, 0, "empty"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.why);
        const char *suffix = "untouched";
        uint32_t flags = QRV_MDB_PNtoFix(c.mime, c.profile, &suffix);
        EXPECT_EQ(flags & 127u, c.expectClass);
        if (c.expectName == nullptr) {
            EXPECT_EQ(suffix, nullptr);
            continue;
        }
        const MdbDlnaProfile *p = QRV_DLNA_GetProfileByProfileId(flags);
        ASSERT_NE(p, nullptr);
        EXPECT_STREQ(p->pcProfileName, c.expectName);
        ASSERT_NE(suffix, nullptr);
        EXPECT_STREQ(suffix, c.expectSuffix);
        EXPECT_EQ(flags & 128u, 0u);
    }
    EXPECT_NE(QRV_MDB_PNtoFix(nullptr, "MP3", nullptr), 0u); // no suffix place, no MIME
}

} // namespace
