// Video files (and GIF/BMP pictures): container, streams and metadata through FFmpeg's
// libavformat. Opening probes the container; the stream information step reads a little of the
// streams to learn codecs, frame size, sample rate and channels. FFmpeg's own log is silenced:
// a broken file is reported once, by the scanner.
#include "media_info.h"

#include <strings.h>

#include <string>

#ifdef MDB_HAVE_LIBAVFORMAT
extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/log.h>
}
#endif

namespace mdbscan {

namespace {

std::string LowerExtension(const std::string &path) {
    std::string::size_type dot = path.rfind('.');
    std::string ext = dot == std::string::npos ? std::string() : path.substr(dot + 1);
    for (char &c : ext) {
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    return ext;
}

#ifdef MDB_HAVE_LIBAVFORMAT
// Closes the input on every return path.
class InputGuard {
public:
    explicit InputGuard(AVFormatContext **context) : m_context(context) {}
    ~InputGuard() { avformat_close_input(m_context); }
    InputGuard(const InputGuard &) = delete;
    InputGuard &operator=(const InputGuard &) = delete;

private:
    AVFormatContext **m_context;
};

std::string Metadata(const AVFormatContext *context, const char *key) {
    const AVDictionaryEntry *entry = av_dict_get(context->metadata, key, nullptr, 0);
    return entry != nullptr && entry->value != nullptr ? std::string(entry->value) : std::string();
}

// Opens the file and reads its stream information; context stays NULL on failure.
bool OpenMedia(const std::string &path, AVFormatContext *&context, std::string &error) {
    static const bool silenced = (av_log_set_level(AV_LOG_QUIET), true);
    (void)silenced;
    context = nullptr;
    if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) < 0) {
        error = "not a file FFmpeg can read";
        context = nullptr;
        return false;
    }
    if (avformat_find_stream_info(context, nullptr) < 0) {
        avformat_close_input(&context);
        error = "no readable streams";
        return false;
    }
    return true;
}

// Short format name from FFmpeg's demuxer name and, where one demuxer serves several, the
// extension: "mp4" or "mov", "mpegts" or "m2ts", "matroska", "mpeg", "avi", "asf".
std::string VideoFormat(const AVFormatContext *context, const std::string &ext) {
    std::string demuxer = context->iformat != nullptr && context->iformat->name != nullptr ? context->iformat->name : "";
    if (demuxer.rfind("mov,", 0) == 0) {
        return ext == "mov" ? "mov" : "mp4";
    }
    if (demuxer == "mpegts") {
        return ext == "m2ts" || ext == "mts" ? "m2ts" : "mpegts";
    }
    if (demuxer.rfind("matroska", 0) == 0) {
        return "matroska";
    }
    return demuxer;
}
#endif

}  // namespace

/* Duration, bitrate, frame size and rate, codecs, audio parameters and the container's title,
 * artist, album, genre and date. Fails when FFmpeg can't open the file or it has no video. */
bool ReadVideoInfo(const std::string &path, MediaInfo &info, std::string &error) {
    const std::string ext = LowerExtension(path);
#ifdef MDB_HAVE_LIBAVFORMAT
    AVFormatContext *context = nullptr;
    if (!OpenMedia(path, context, error)) {
        return false;
    }
    InputGuard guard(&context);
    int videoIndex = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (videoIndex < 0) {
        error = "no video stream";
        return false;
    }
    const AVStream *video = context->streams[videoIndex];
    info.format = VideoFormat(context, ext);
    info.width = static_cast<uint32_t>(video->codecpar->width > 0 ? video->codecpar->width : 0);
    info.height = static_cast<uint32_t>(video->codecpar->height > 0 ? video->codecpar->height : 0);
    info.videoCodec = avcodec_get_name(video->codecpar->codec_id);
    AVRational rate = video->avg_frame_rate.num > 0 ? video->avg_frame_rate : video->r_frame_rate;
    info.frameRate = rate.den > 0 ? av_q2d(rate) : 0;
    int audioIndex = av_find_best_stream(context, AVMEDIA_TYPE_AUDIO, -1, videoIndex, nullptr, 0);
    if (audioIndex >= 0) {
        const AVCodecParameters *audio = context->streams[audioIndex]->codecpar;
        info.audioCodec = avcodec_get_name(audio->codec_id);
        info.sampleFrequency = audio->sample_rate;
        info.nrAudioChannels = audio->ch_layout.nb_channels;
    }
    if (context->duration != AV_NOPTS_VALUE && context->duration > 0) {
        info.durationUs = context->duration * 1000000 / AV_TIME_BASE;
    }
    if (context->bit_rate > 0) {
        info.bitrate = static_cast<int32_t>(context->bit_rate / 8);
    }
    info.title = Metadata(context, "title");
    info.artist = Metadata(context, "artist");
    info.album = Metadata(context, "album");
    info.genre = Metadata(context, "genre");
    info.creator = info.artist;
    std::string date = Metadata(context, "creation_time");
    if (date.empty()) {
        date = Metadata(context, "date");
    }
    if (date.size() >= 19 && date[10] == 'T') {
        info.date = date.substr(0, 19);
    } else if (date.size() >= 10 && date[4] == '-' && date[7] == '-') {
        info.date = date.substr(0, 10);
    }
    return true;
#else
    info.format = ext == "mpg" || ext == "mpeg" ? "mpeg" : ext == "ts" ? "mpegts" : ext == "mkv" ? "matroska" : ext;
    (void)error;
    return true;
#endif
}

/* Size of a GIF or BMP picture from FFmpeg's image decoders. */
bool ReadPictureSizeWithAvformat(const std::string &path, MediaInfo &info, std::string &error) {
#ifdef MDB_HAVE_LIBAVFORMAT
    AVFormatContext *context = nullptr;
    if (!OpenMedia(path, context, error)) {
        return false;
    }
    InputGuard guard(&context);
    int index = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0 || context->streams[index]->codecpar->width <= 0) {
        error = "not a readable picture";
        return false;
    }
    info.width = static_cast<uint32_t>(context->streams[index]->codecpar->width);
    info.height = static_cast<uint32_t>(context->streams[index]->codecpar->height);
    return true;
#else
    (void)path;
    (void)info;
    (void)error;
    return true;
#endif
}

}  // namespace mdbscan
