// What the scanner learns about one media file before it becomes an ITEM row, and the readers that
// learn it. Each reader uses a Debian library made for its format (TagLib for audio, libexif with
// libjpeg/libpng for pictures, FFmpeg's libavformat for video); a reader whose library was not
// found at build time still accepts the file, with only what its name and size tell.
#pragma once

#include <cstdint>
#include <string>

namespace mdbscan {

enum class MediaKind { kNone, kAudio, kVideo, kImage };

// Everything an ITEM row needs beyond the file's place, size and modification time.
struct MediaInfo {
    std::string format;        // short name of the file format ("mp3", "jpeg", "mpegts", ...)
    std::string mimeType;      // chosen with the DLNA profile (dlna_choice.h)
    std::string profileName;   // DLNA.ORG_PN to ask the profile library for; empty for none
    std::string title;         // empty: the scanner uses the file name without its extension
    std::string date;          // dc:date, "YYYY-MM-DD" or "YYYY-MM-DDTHH:MM:SS"; empty: mtime
    std::string artist;
    std::string album;
    std::string genre;
    std::string creator;       // photos: the EXIF artist; audio and video use the artist
    long long durationUs = 0;  // microseconds
    uint32_t width = 0;
    uint32_t height = 0;
    int32_t bitrate = 0;       // bytes per second, as UPnP res@bitrate counts it
    int32_t sampleFrequency = 0;
    int32_t nrAudioChannels = 0;
    int32_t bitsPerSample = 0;
    int32_t trackNumber = 0;
    std::string videoCodec;    // FFmpeg codec names, for the profile choice
    std::string audioCodec;
    double frameRate = 0;

    // The resolution column: height in the high 32 bits, width in the low 32 bits.
    long long Resolution() const { return (static_cast<long long>(height) << 32) | width; }
};

// The kind of media a file name announces by its extension (case does not matter), or kNone.
MediaKind KindOfFileName(const std::string &fileName);

// Readers: fill info from the file at path. On a file that cannot be read or is not a valid file
// of its kind they return false and put a short reason into error; the scanner then skips it.
bool ReadAudioInfo(const std::string &path, MediaInfo &info, std::string &error);
bool ReadImageInfo(const std::string &path, MediaInfo &info, std::string &error);
bool ReadVideoInfo(const std::string &path, MediaInfo &info, std::string &error);

// Which readers have their library in this build ("TagLib", "libexif", "libavformat", ...),
// separated by blanks, for the tool's --help and the scan summary.
std::string ReaderLibraries();

}  // namespace mdbscan
