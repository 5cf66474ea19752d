// Choosing the DLNA media format profile of a scanned file. The limits are those of the DLNA
// profiles the reference profile library serves: picture sizes for JPEG_TN/SM/MED/LRG and
// PNG_TN/LRG, sample rates and bitrates for MP3, AAC and WMA, and the frame sizes that tell SD
// from HD video. Formats without a DLNA profile get an empty name, which the profile library
// answers with its "Unknown" profile of the MIME type.
#include "dlna_choice.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <algorithm>
#include <cstring>

namespace mdbscan {

namespace {

// Whether a w x h picture fits a box of boxW x boxH in either orientation.
bool FitsBox(uint32_t w, uint32_t h, uint32_t boxW, uint32_t boxH) {
    uint32_t longSide = std::max(w, h);
    uint32_t shortSide = std::min(w, h);
    return longSide <= std::max(boxW, boxH) && shortSide <= std::min(boxW, boxH);
}

void ChooseAudio(MediaInfo &info) {
    const std::string &f = info.format;
    const int32_t kbps = info.bitrate * 8 / 1000;
    const bool stereoAtMost = info.nrAudioChannels <= 2;
    if (f == "mp3") {
        info.mimeType = "audio/mpeg";
        const int32_t sr = info.sampleFrequency;
        info.profileName = (sr == 32000 || sr == 44100 || sr == 48000) && stereoAtMost ? "MP3" : "MP3X";
    } else if (f == "m4a") {
        info.mimeType = "audio/mp4";
        info.profileName = kbps <= 320 && stereoAtMost && info.sampleFrequency <= 48000 ? "AAC_ISO_320" : "AAC_ISO";
    } else if (f == "wma") {
        info.mimeType = "audio/x-ms-wma";
        info.profileName = kbps <= 192 && stereoAtMost && info.sampleFrequency <= 48000 ? "WMABASE" : "WMAFULL";
    } else if (f == "flac") {
        info.mimeType = "audio/x-flac";
    } else if (f == "wav") {
        info.mimeType = "audio/x-wav";
    } else if (f == "ogg") {
        info.mimeType = "audio/ogg";
    } else if (f == "aiff") {
        info.mimeType = "audio/x-aiff";
    }
}

void ChooseImage(MediaInfo &info) {
    const std::string &f = info.format;
    const uint32_t w = info.width;
    const uint32_t h = info.height;
    if (f == "jpeg") {
        info.mimeType = "image/jpeg";
        if (FitsBox(w, h, 160, 160)) {
            info.profileName = "JPEG_TN";
        } else if (FitsBox(w, h, 640, 480)) {
            info.profileName = "JPEG_SM";
        } else if (FitsBox(w, h, 1024, 768)) {
            info.profileName = "JPEG_MED";
        } else {
            info.profileName = "JPEG_LRG";
        }
    } else if (f == "png") {
        info.mimeType = "image/png";
        info.profileName = FitsBox(w, h, 160, 160) ? "PNG_TN" : "PNG_LRG";
    } else if (f == "gif") {
        info.mimeType = "image/gif";
        info.profileName = "GIF_LRG";
    } else if (f == "bmp") {
        info.mimeType = "image/bmp";
    }
}

void ChooseVideo(MediaInfo &info) {
    const std::string &f = info.format;
    const bool hd = info.height > 576;
    if (f == "mpeg") {
        info.mimeType = "video/mpeg";
        if (info.videoCodec == "mpeg1video") {
            info.profileName = "MPEG1";
        } else {
            const bool pal = info.height == 576 || (info.frameRate > 24.5 && info.frameRate < 25.5);
            info.profileName = pal ? "MPEG_PS_PAL" : "MPEG_PS_NTSC";
        }
    } else if (f == "mpegts") {
        info.mimeType = "video/mpeg";
        info.profileName = hd ? "MPEG_TS_HD_NA_ISO" : "MPEG_TS_SD_EU_ISO";
    } else if (f == "m2ts") {
        info.mimeType = "video/vnd.dlna.mpeg-tts";
        info.profileName = hd ? "MPEG_TS_HD_NA" : "MPEG_TS_SD_EU";
    } else if (f == "mp4") {
        info.mimeType = "video/mp4";
        if (info.videoCodec == "h264") {
            if (hd) {
                info.profileName = "AVC_MP4_HP_HD_AAC";
            } else if (FitsBox(info.width, info.height, 352, 288)) {
                info.profileName = "AVC_MP4_BL_CIF15_AAC_520";
            } else {
                info.profileName = "AVC_MP4_MP_SD_AAC_MULT5";
            }
        }
    } else if (f == "mov") {
        info.mimeType = "video/quicktime";
    } else if (f == "matroska") {
        info.mimeType = "video/x-matroska";
    } else if (f == "avi") {
        info.mimeType = "video/x-msvideo";
    } else if (f == "asf") {
        info.mimeType = "video/x-ms-wmv";
        info.profileName = hd ? "WMVHIGH_FULL" : FitsBox(info.width, info.height, 352, 288) ? "WMVMED_BASE"
                                                                                              : "WMVMED_FULL";
    }
}

}  // namespace

uint32_t ItemClassOfKind(MediaKind kind) {
    switch (kind) {
    case MediaKind::kAudio:
        return MDB_CLASS_MUSIC;
    case MediaKind::kVideo:
        return MDB_CLASS_VIDEO;
    case MediaKind::kImage:
        return MDB_CLASS_PICTURE;
    case MediaKind::kNone:
        break;
    }
    return 0;
}

/* Fill in MIME type and profile name; a reader may have set the MIME type already, which then
 * stays unless the format names a better one. */
void ChooseDlnaProfile(MediaKind kind, MediaInfo &info) {
    info.profileName.clear();
    switch (kind) {
    case MediaKind::kAudio:
        ChooseAudio(info);
        break;
    case MediaKind::kImage:
        ChooseImage(info);
        break;
    case MediaKind::kVideo:
        ChooseVideo(info);
        break;
    case MediaKind::kNone:
        break;
    }
}

/* Ask the profile library; it answers a NULL suffix when it knows nothing of the MIME type. */
bool ResolveItemFlags(MediaKind kind, const MediaInfo &info, uint32_t &flags, std::string &error) {
    if (info.mimeType.empty()) {
        error = "format " + (info.format.empty() ? std::string("unknown") : info.format) + " has no MIME type here";
        return false;
    }
    const char *suffix = nullptr;
    uint32_t word = QRV_MDB_PNtoFix(info.mimeType.c_str(), info.profileName.c_str(), &suffix);
    if (suffix == nullptr) {
        error = "no DLNA profile for MIME type " + info.mimeType;
        return false;
    }
    if ((word & MDB_FLAGS_CLASS_MASK) != ItemClassOfKind(kind)) {
        error = "the DLNA profile of MIME type " + info.mimeType + " belongs to another media class";
        return false;
    }
    flags = word & ~MDB_FLAGS_RESTRICTED;
    return true;
}

}  // namespace mdbscan
