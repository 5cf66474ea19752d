// The file formats the scanner takes as media: the file name extensions with the kind each one
// announces, and the reader libraries this build has.
#include "media_info.h"

#include <strings.h>

#include <cstring>

namespace mdbscan {

namespace {

struct ExtensionKind {
    const char *extension;  // without the dot
    MediaKind kind;
};

// Formats that the reference profile library can describe; anything else is not media here.
const ExtensionKind kExtensions[] = {
    {"mp3", MediaKind::kAudio},  {"flac", MediaKind::kAudio}, {"wav", MediaKind::kAudio},
    {"m4a", MediaKind::kAudio},  {"ogg", MediaKind::kAudio},  {"oga", MediaKind::kAudio},
    {"wma", MediaKind::kAudio},  {"aif", MediaKind::kAudio},  {"aiff", MediaKind::kAudio},
    {"mp4", MediaKind::kVideo},  {"m4v", MediaKind::kVideo},  {"mov", MediaKind::kVideo},
    {"mkv", MediaKind::kVideo},  {"avi", MediaKind::kVideo},  {"mpg", MediaKind::kVideo},
    {"mpeg", MediaKind::kVideo}, {"ts", MediaKind::kVideo},   {"m2ts", MediaKind::kVideo},
    {"mts", MediaKind::kVideo},  {"wmv", MediaKind::kVideo},  {"jpg", MediaKind::kImage},
    {"jpeg", MediaKind::kImage}, {"png", MediaKind::kImage},  {"gif", MediaKind::kImage},
    {"bmp", MediaKind::kImage},
};

}  // namespace

/* The kind of the file's extension (the text after its last '.'), or kNone for names without one,
 * names that are only an extension (".mp3") and unknown extensions. */
MediaKind KindOfFileName(const std::string &fileName) {
    std::string::size_type dot = fileName.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == fileName.size()) {
        return MediaKind::kNone;
    }
    const char *extension = fileName.c_str() + dot + 1;
    for (const ExtensionKind &entry : kExtensions) {
        if (strcasecmp(entry.extension, extension) == 0) {
            return entry.kind;
        }
    }
    return MediaKind::kNone;
}

/* Names of the reader libraries compiled in, from the build's MDB_HAVE_ definitions. */
std::string ReaderLibraries() {
    std::string names;
#ifdef MDB_HAVE_TAGLIB
    names += " TagLib";
#endif
#ifdef MDB_HAVE_LIBEXIF
    names += " libexif";
#endif
#ifdef MDB_HAVE_LIBJPEG
    names += " libjpeg";
#endif
#ifdef MDB_HAVE_LIBPNG
    names += " libpng";
#endif
#ifdef MDB_HAVE_LIBAVFORMAT
    names += " libavformat";
#endif
    return names.empty() ? std::string("none") : names.substr(1);
}

}  // namespace mdbscan
