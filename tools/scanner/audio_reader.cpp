// Audio files: tags and stream properties through TagLib. The file format is taken from the
// extension, which is also how TagLib picks its parser; a file that TagLib cannot parse as that
// format, or in which it finds no audio stream, is reported as not valid.
#include "media_info.h"

#include <strings.h>

#include <string>

#ifdef MDB_HAVE_TAGLIB
#include <taglib/aifffile.h>
#include <taglib/audioproperties.h>
#include <taglib/fileref.h>
#include <taglib/tfilestream.h>
#include <taglib/flacproperties.h>
#include <taglib/mp4properties.h>
#include <taglib/tag.h>
#include <taglib/wavproperties.h>
#endif

namespace mdbscan {

namespace {

// "mp3", "flac", "wav", "m4a", "ogg", "wma" or "aiff" from the file name's extension.
std::string AudioFormatOfName(const std::string &path) {
    std::string::size_type dot = path.rfind('.');
    std::string ext = dot == std::string::npos ? std::string() : path.substr(dot + 1);
    for (char &c : ext) {
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    if (ext == "oga") {
        return "ogg";
    }
    if (ext == "aif") {
        return "aiff";
    }
    return ext;
}

#ifdef MDB_HAVE_TAGLIB
std::string Trimmed(const TagLib::String &text) {
    std::string s = text.to8Bit(true);
    std::string::size_type first = s.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) {
        return std::string();
    }
    std::string::size_type last = s.find_last_not_of(" \t\r\n");
    return s.substr(first, last - first + 1);
}

// Bits per sample where the format has them (PCM and lossless formats).
int32_t BitsPerSample(const TagLib::AudioProperties *properties) {
    if (auto *wav = dynamic_cast<const TagLib::RIFF::WAV::Properties *>(properties)) {
        return wav->bitsPerSample();
    }
    if (auto *flac = dynamic_cast<const TagLib::FLAC::Properties *>(properties)) {
        return flac->bitsPerSample();
    }
    if (auto *aiff = dynamic_cast<const TagLib::RIFF::AIFF::Properties *>(properties)) {
        return aiff->bitsPerSample();
    }
    if (auto *mp4 = dynamic_cast<const TagLib::MP4::Properties *>(properties)) {
        return mp4->bitsPerSample();
    }
    return 0;
}
#endif

}  // namespace

/* Tags (title, artist, album, genre, year, track) and properties (length, bitrate, sample rate,
 * channels, bits per sample). Fails for files TagLib cannot open or that hold no audio stream. */
bool ReadAudioInfo(const std::string &path, MediaInfo &info, std::string &error) {
    info.format = AudioFormatOfName(path);
#ifdef MDB_HAVE_TAGLIB
    // Read-only: TagLib opens files for writing when it may, and closing a file opened so is a
    // change to whoever watches the folder (inotify's IN_CLOSE_WRITE), which would rescan it.
    TagLib::FileStream stream(path.c_str(), true);
    TagLib::FileRef file(&stream, true, TagLib::AudioProperties::Average);
    if (file.isNull() || !file.file()->isValid()) {
        error = "not a valid " + info.format + " file";
        return false;
    }
    const TagLib::AudioProperties *properties = file.audioProperties();
    if (properties == nullptr || (properties->sampleRate() <= 0 && properties->lengthInMilliseconds() <= 0)) {
        error = "no audio stream in this " + info.format + " file";
        return false;
    }
    info.durationUs = static_cast<long long>(properties->lengthInMilliseconds()) * 1000;
    info.bitrate = properties->bitrate() * 1000 / 8;
    info.sampleFrequency = properties->sampleRate();
    info.nrAudioChannels = properties->channels();
    info.bitsPerSample = BitsPerSample(properties);
    if (const TagLib::Tag *tag = file.tag()) {
        info.title = Trimmed(tag->title());
        info.artist = Trimmed(tag->artist());
        info.album = Trimmed(tag->album());
        info.genre = Trimmed(tag->genre());
        info.trackNumber = static_cast<int32_t>(tag->track());
        if (tag->year() > 0 && tag->year() <= 9999) {
            char date[16];
            snprintf(date, sizeof date, "%04u-01-01", tag->year());
            info.date = date;
        }
    }
    info.creator = info.artist;
    return true;
#else
    (void)error;
    return true;
#endif
}

}  // namespace mdbscan
