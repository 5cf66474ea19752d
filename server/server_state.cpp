// Reading and writing the state file.
#include "server_state.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace mdbd {

namespace {

// SystemUpdateID rises with every committed batch, and a crash can lose at most a few seconds
// of them; far more than that is skipped after one.
constexpr uint32_t kUnsavedMargin = 10000;

/* A random (version 4) UUID from the kernel's random source. */
std::string NewUdn() {
    unsigned char bytes[16] = {};
    const int fd = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (fd < 0 || read(fd, bytes, sizeof bytes) != static_cast<ssize_t>(sizeof bytes)) {
        // No random source: the time and the process id still tell servers apart.
        const unsigned long long seed = static_cast<unsigned long long>(time(nullptr)) ^ getpid();
        for (size_t i = 0; i < sizeof bytes; ++i) {
            bytes[i] = static_cast<unsigned char>(seed >> (8 * (i % 8)));
        }
    }
    if (fd >= 0) {
        close(fd);
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);
    char text[64];
    snprintf(text, sizeof text, "uuid:%02x%02x%02x%02x-%02x%02x-%02x%02x-%02x%02x-%02x%02x%02x%02x%02x%02x",
             bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5], bytes[6], bytes[7], bytes[8], bytes[9],
             bytes[10], bytes[11], bytes[12], bytes[13], bytes[14], bytes[15]);
    return text;
}

}  // namespace

ServerState LoadServerState(const std::string &path) {
    ServerState state;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        const std::string::size_type eq = line.find('=');
        if (eq == std::string::npos) {
            continue;
        }
        const std::string key = line.substr(0, eq), value = line.substr(eq + 1);
        if (key == "udn" && value.rfind("uuid:", 0) == 0 && value.size() < 100) {
            state.udn = value;
        } else if (key == "system_update_id") {
            state.systemUpdateId = static_cast<uint32_t>(strtoul(value.c_str(), nullptr, 10));
        } else if (key == "running") {
            state.running = value == "1";
        }
    }
    // A server that did not stop cleanly may have answered with ids it had not saved yet (they
    // rise with every change, the file only with every event): the next ones must be new.
    if (state.running) {
        state.systemUpdateId += kUnsavedMargin;
        state.running = false;
    }
    if (state.udn.empty()) {
        state.udn = NewUdn();
    }
    return state;
}

bool SaveServerState(const std::string &path, const ServerState &state) {
    const std::string temporary = path + ".new";
    FILE *file = fopen(temporary.c_str(), "w");
    if (file == nullptr) {
        return false;
    }
    const bool written = fprintf(file, "udn=%s\nsystem_update_id=%u\nrunning=%d\n", state.udn.c_str(),
                                 state.systemUpdateId, state.running ? 1 : 0) > 0;
    const bool synced = fflush(file) == 0 && fsync(fileno(file)) == 0;
    const bool closed = fclose(file) == 0;
    if (!written || !synced || !closed || rename(temporary.c_str(), path.c_str()) != 0) {
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

}  // namespace mdbd
