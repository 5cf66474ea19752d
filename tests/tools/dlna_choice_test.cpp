// The DLNA profile the scanner chooses from what a reader found, at the limits of each profile,
// the flags word the profile library gives for it, and which file names are media at all.
#include <dlna_choice.h>

#include <mdb_platform.h>

#include <gtest/gtest.h>

namespace mdbtest {
namespace {

using mdbscan::MediaInfo;
using mdbscan::MediaKind;
constexpr MediaKind kA = MediaKind::kAudio, kV = MediaKind::kVideo, kI = MediaKind::kImage, kNo = MediaKind::kNone;

// The limits of each profile; the common case of each family is in the scan of the sample tree.
TEST(DlnaChoice, ChoosesTheProfileThatFitsAndTheLibraryAgrees) {
    const struct {  // profile: as the flags word's profile names it
        const char *what; MediaKind kind; const char *format; uint32_t width, height;
        int32_t sampleFrequency, channels, bitrateBytes; const char *videoCodec; double frameRate;
        const char *mime, *profile;
    } cases[] = {
        {"MP3 at 22.05 kHz is MP3X", kA, "mp3", 0, 0, 22050, 2, 8000, "", 0, "audio/mpeg", "MP3X"},
        {"AAC up to 320 kb/s", kA, "m4a", 0, 0, 48000, 2, 40000, "", 0, "audio/mp4", "AAC_ISO_320"},
        {"AAC above 320 kb/s", kA, "m4a", 0, 0, 48000, 2, 40125, "", 0, "audio/mp4", "AAC_ISO"},
        {"AAC with 6 channels", kA, "m4a", 0, 0, 48000, 6, 30000, "", 0, "audio/mp4", "AAC_ISO"},
        {"WMA up to 192 kb/s", kA, "wma", 0, 0, 44100, 2, 24000, "", 0, "audio/x-ms-wma", "WMABASE"},
        {"JPEG 160x160 is a thumbnail", kI, "jpeg", 160, 160, 0, 0, 0, "", 0, "image/jpeg", "JPEG_TN"},
        {"JPEG 161x100 is small", kI, "jpeg", 161, 100, 0, 0, 0, "", 0, "image/jpeg", "JPEG_SM"},
        {"JPEG 640x480 is small", kI, "jpeg", 640, 480, 0, 0, 0, "", 0, "image/jpeg", "JPEG_SM"},
        {"JPEG 480x640 (portrait) is small", kI, "jpeg", 480, 640, 0, 0, 0, "", 0, "image/jpeg", "JPEG_SM"},
        {"JPEG 641x480 is medium", kI, "jpeg", 641, 480, 0, 0, 0, "", 0, "image/jpeg", "JPEG_MED"},
        {"JPEG 1025x768 is large", kI, "jpeg", 1025, 768, 0, 0, 0, "", 0, "image/jpeg", "JPEG_LRG"},
        {"PNG 160x160 is a thumbnail", kI, "png", 160, 160, 0, 0, 0, "", 0, "image/png", "PNG_TN"},
        {"PNG 161x160 is large", kI, "png", 161, 160, 0, 0, 0, "", 0, "image/png", "PNG_LRG"},
        {"BMP has no profile", kI, "bmp", 10, 10, 0, 0, 0, "", 0, "image/bmp", "Unknown"},
        {"MPEG-2 PS, 576 lines: PAL", kV, "mpeg", 720, 576, 48000, 2, 0, "mpeg2video", 25, "video/mpeg", "MPEG_PS_PAL"},
        {"MPEG-2 PS, 480 lines, 29.97 fps: NTSC", kV, "mpeg", 720, 480, 48000, 2, 0, "mpeg2video", 29.97, "video/mpeg",
         "MPEG_PS_NTSC"},
        {"MPEG-1 PS", kV, "mpeg", 352, 288, 44100, 2, 0, "mpeg1video", 25, "video/mpeg", "MPEG1"},
        {"TS, 576 lines: SD", kV, "mpegts", 720, 576, 48000, 2, 0, "mpeg2video", 25, "video/mpeg", "MPEG_TS_SD_EU_ISO"},
        {"m2ts, 1080 lines", kV, "m2ts", 1920, 1080, 48000, 2, 0, "h264", 25, "video/vnd.dlna.mpeg-tts", "MPEG_TS_HD_NA"},
        {"H.264 MP4 at SD", kV, "mp4", 720, 576, 48000, 2, 0, "h264", 25, "video/mp4", "AVC_MP4_MP_SD_AAC_MULT5"},
        {"H.264 MP4 at HD", kV, "mp4", 1920, 1080, 48000, 2, 0, "h264", 25, "video/mp4", "AVC_MP4_HP_HD_AAC"},
        {"Matroska has no profile", kV, "matroska", 640, 360, 48000, 2, 0, "h264", 25, "video/x-matroska", "Unknown"},
    };
    for (const auto &c : cases) {
        MediaInfo info;
        info.format = c.format, info.width = c.width, info.height = c.height, info.sampleFrequency = c.sampleFrequency;
        info.nrAudioChannels = c.channels, info.bitrate = c.bitrateBytes, info.videoCodec = c.videoCodec;
        info.frameRate = c.frameRate;
        mdbscan::ChooseDlnaProfile(c.kind, info);
        uint32_t flags = 0;
        std::string error;
        ASSERT_TRUE(mdbscan::ResolveItemFlags(c.kind, info, flags, error)) << c.what << ": " << error;
        const MdbDlnaProfile *profile = QRV_DLNA_GetProfileByProfileId(flags);
        ASSERT_NE(profile, nullptr) << c.what;
        EXPECT_EQ(info.mimeType + " " + profile->pcMimeType + " " + profile->pcProfileName + " " +
                      std::to_string(flags & MDB_FLAGS_CLASS_MASK),
                  std::string(c.mime) + " " + c.mime + " " + c.profile + " " +
                      std::to_string(mdbscan::ItemClassOfKind(c.kind))) << c.what;
    }
}

// Formats the profile library does not know are refused with a reason; file extensions decide
// what is media.
TEST(DlnaChoice, UnknownFormatsAreRefusedAndExtensionsDecideWhatIsMedia) {
    for (const auto &[kind, mime] : {std::pair{kV, "video/webm"}, {kA, ""}, {kA, "image/png"}}) {
        MediaInfo info;
        info.mimeType = mime;
        uint32_t flags = 0;
        std::string error;
        EXPECT_FALSE(mdbscan::ResolveItemFlags(kind, info, flags, error)) << mime;
        EXPECT_FALSE(error.empty()) << mime;
    }
    const std::pair<const char *, MediaKind> names[] = {
        {"song.mp3", kA}, {"SONG.FLAC", kA}, {"a.b.wav", kA}, {"clip.MP4", kV}, {"tape.mpg", kV}, {"show.m2ts", kV},
        {"photo.JPeG", kI}, {"icon.png", kI}, {"notes.txt", kNo}, {"mp3", kNo}, {".mp3", kNo}, {"song.", kNo},
        {"song.mp3.part", kNo},
    };
    for (const auto &[name, kind] : names) EXPECT_EQ(mdbscan::KindOfFileName(name), kind) << name;
}

}  // namespace
}  // namespace mdbtest
