// Writing log lines whole, one thread at a time.
#include "log.h"

#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <string>

namespace mdbd {

namespace {

std::mutex g_logMutex;
int g_verbosity = 0;

void Write(const char *kind, const char *format, va_list args) {
    char text[2048];
    vsnprintf(text, sizeof text, format, args);
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    struct tm local;
    localtime_r(&now.tv_sec, &local);
    char stamp[32];
    strftime(stamp, sizeof stamp, "%H:%M:%S", &local);
    std::lock_guard<std::mutex> guard(g_logMutex);
    fprintf(stderr, "%s.%03ld mdbd: %s%s\n", stamp, now.tv_nsec / 1000000, kind, text);
    fflush(stderr);
}

}  // namespace

void SetLogVerbosity(int verbosity) { g_verbosity = verbosity; }
int LogVerbosity() { return g_verbosity; }

#define MDBD_LOG_FUNCTION(name, kind, level)       \
    void name(const char *format, ...) {            \
        if (g_verbosity < (level)) {                \
            return;                                 \
        }                                           \
        va_list args;                               \
        va_start(args, format);                     \
        Write(kind, format, args);                  \
        va_end(args);                               \
    }

MDBD_LOG_FUNCTION(LogError, "error: ", 0)
MDBD_LOG_FUNCTION(LogNote, "", 0)
MDBD_LOG_FUNCTION(LogRequest, "", 1)
MDBD_LOG_FUNCTION(LogChange, "", 2)

#undef MDBD_LOG_FUNCTION

namespace {

// The unfinished line of the note stream; its FILE lock serialises the writes.
std::string g_noteLine;

ssize_t WriteNotes(void *, const char *data, size_t size) {
    g_noteLine.append(data, size);
    size_t end;
    while ((end = g_noteLine.find('\n')) != std::string::npos) {
        LogNote("%s", g_noteLine.substr(0, end).c_str());
        g_noteLine.erase(0, end + 1);
    }
    return static_cast<ssize_t>(size);
}

}  // namespace

FILE *LogNoteStream() {
    static FILE *stream = [] {
        FILE *made = fopencookie(nullptr, "w", cookie_io_functions_t{nullptr, WriteNotes, nullptr, nullptr});
        if (made != nullptr) {
            setvbuf(made, nullptr, _IOLBF, 0);
        }
        return made != nullptr ? made : stderr;
    }();
    return stream;
}

}  // namespace mdbd
