// The DLNA media format profiles that the reference platform serves, with their MIME types and
// file suffixes. Within a family the order is the profile number (bits 16-31 of an item's flags
// word), so entries are only ever appended. Where two profiles share a MIME type, the first one is
// what an upload that names no profile gets, so the most general profile of a MIME type comes
// first; formats without a DLNA profile appear as "Unknown" with their own MIME type.
#include "profile_table.h"

#include "../common/media_family_codes.h"

#include <cstddef>

using namespace mdbplatform;

namespace mdbdlna {

const char *const g_pcUnknownProfileName = "Unknown";

namespace {

const MdbDlnaProfile kAudioProfiles[] = {
    {"MP3", "audio/mpeg", "mp3"},
    {"MP3X", "audio/mpeg", "mp3"},
    {"LPCM", "audio/L16", "pcm"},
    {"AAC_ISO_320", "audio/mp4", "m4a"},
    {"AAC_ISO", "audio/mp4", "m4a"},
    {"AAC_ADTS_320", "audio/vnd.dlna.adts", "aac"},
    {"AAC_ADTS", "audio/vnd.dlna.adts", "aac"},
    {"WMABASE", "audio/x-ms-wma", "wma"},
    {"WMAFULL", "audio/x-ms-wma", "wma"},
    {"WMAPRO", "audio/x-ms-wma", "wma"},
    {"Unknown", "audio/x-wav", "wav"},
    {"Unknown", "audio/x-flac", "flac"},
    {"Unknown", "audio/ogg", "ogg"},
    {"Unknown", "audio/x-aiff", "aif"},
};

const MdbDlnaProfile kVideoProfiles[] = {
    {"MPEG_PS_PAL", "video/mpeg", "mpg"},
    {"MPEG_PS_NTSC", "video/mpeg", "mpg"},
    {"MPEG1", "video/mpeg", "mpg"},
    {"MPEG_TS_SD_EU_ISO", "video/mpeg", "ts"},
    {"MPEG_TS_HD_NA_ISO", "video/mpeg", "ts"},
    {"MPEG_TS_SD_EU", "video/vnd.dlna.mpeg-tts", "m2ts"},
    {"MPEG_TS_HD_NA", "video/vnd.dlna.mpeg-tts", "m2ts"},
    {"AVC_MP4_MP_SD_AAC_MULT5", "video/mp4", "mp4"},
    {"AVC_MP4_BL_CIF15_AAC_520", "video/mp4", "mp4"},
    {"AVC_MP4_HP_HD_AAC", "video/mp4", "mp4"},
    {"WMVMED_BASE", "video/x-ms-wmv", "wmv"},
    {"WMVMED_FULL", "video/x-ms-wmv", "wmv"},
    {"WMVHIGH_FULL", "video/x-ms-wmv", "wmv"},
    {"Unknown", "video/x-msvideo", "avi"},
    {"Unknown", "video/x-matroska", "mkv"},
    {"Unknown", "video/quicktime", "mov"},
};

const MdbDlnaProfile kImageProfiles[] = {
    {"JPEG_LRG", "image/jpeg", "jpg"},
    {"JPEG_MED", "image/jpeg", "jpg"},
    {"JPEG_SM", "image/jpeg", "jpg"},
    {"JPEG_TN", "image/jpeg", "jpg"},
    {"PNG_LRG", "image/png", "png"},
    {"PNG_TN", "image/png", "png"},
    {"GIF_LRG", "image/gif", "gif"},
    {"Unknown", "image/bmp", "bmp"},
};

template <std::size_t N> constexpr uint32_t Count(const MdbDlnaProfile (&)[N]) { return static_cast<uint32_t>(N); }

} // namespace

const ProfileFamily g_astProfileFamilies[] = {
    {kFamilyCodeAudio, kAudioProfiles, Count(kAudioProfiles)},
    {kFamilyCodeVideo, kVideoProfiles, Count(kVideoProfiles)},
    {kFamilyCodeImage, kImageProfiles, Count(kImageProfiles)},
};

const uint32_t g_ulNumOfProfileFamilies = sizeof(g_astProfileFamilies) / sizeof(g_astProfileFamilies[0]);

// The search translation enumerates at most 60 profiles per family.
static_assert(Count(kAudioProfiles) <= 60 && Count(kVideoProfiles) <= 60 && Count(kImageProfiles) <= 60,
              "a family holds at most 60 profiles");

} // namespace mdbdlna
