// Reading the command line of mdbd.
#include "options.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace mdbd {

namespace {

bool ReadPort(const char *text, uint16_t &port) {
    char *end = nullptr;
    errno = 0;
    const unsigned long value = std::strtoul(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || value > 65535) {
        return false;
    }
    port = static_cast<uint16_t>(value);
    return true;
}

bool ReadBytes(const char *text, uint64_t &bytes) {
    char *end = nullptr;
    errno = 0;
    unsigned long long value = std::strtoull(text, &end, 10);
    if (errno != 0 || end == text || text[0] == '-') {
        return false;
    }
    // A suffix K, M or G counts in powers of 1024.
    const std::string suffix = end;
    const unsigned shift = suffix.empty() ? 0 : suffix == "K" ? 10 : suffix == "M" ? 20 : suffix == "G" ? 30 : 64;
    if (shift == 64 || (shift > 0 && value > (~0ull >> shift))) {
        return false;
    }
    bytes = value << shift;
    return bytes > 0;
}

}  // namespace

std::string DefaultDatabasePath() {
    const char *state = getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') {
        return std::string(state) + "/mdbd/catalogue.db";
    }
    const char *home = getenv("HOME");
    if (home != nullptr && home[0] == '/' && geteuid() != 0) {
        return std::string(home) + "/.local/state/mdbd/catalogue.db";
    }
    return "/var/lib/mdbd/catalogue.db";
}

std::string UsageText() {
    return "usage: mdbd [OPTIONS] DIR...\n"
           "\n"
           "A DLNA media server: shares the media files below each DIR with the TVs, phones and\n"
           "players of the network (UPnP MediaServer:1, ContentDirectory Browse and Search), streams\n"
           "them from its own HTTP file server, and keeps its catalogue current while files come and\n"
           "go (inotify, or a periodic rescan where that is not available; SIGHUP rescans at once).\n"
           "Clients may upload into DIR/upload of the first DIR (CreateObject), and destroy only what\n"
           "they uploaded there.\n"
           "\n"
           "  --db FILE          the catalogue (default " + DefaultDatabasePath() + ")\n"
           "  --name NAME        the name clients show (default \"MDB on HOSTNAME\")\n"
           "  --interface IF     answer on the addresses of this interface (default: the first one\n"
           "                     that is up and multicast-capable)\n"
           "  --address ADDR     answer on this IPv4 address only (loopback too, for tests)\n"
           "  --port N           the UPnP port (description, control, eventing; default: any)\n"
           "  --http-port N      the port of the media file server (default: any)\n"
           "  --max-upload N     the largest upload whose size the client does not announce, in bytes\n"
           "                     or with K, M, G (default 4G)\n"
           "  --no-watch         do not follow changes on disk (scan at start and on SIGHUP only)\n"
           "  -v, -vv            log one line per request (-v), and every catalogue change (-vv)\n"
           "  --version          the versions of mdbd and of the libraries it runs on\n"
           "  --help             this text\n"
           "\n"
           "SIGHUP rescans the folders; SIGTERM and SIGINT stop the server cleanly.\n";
}

bool ParseOptions(int argc, char **argv, Options &options, std::string &error) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](const char *name) -> const char * {
            if (i + 1 >= argc) {
                error = std::string(name) + " needs a value";
                return nullptr;
            }
            return argv[++i];
        };
        const char *v = nullptr;
        if (arg == "--help" || arg == "-h") {
            options.help = true;
        } else if (arg == "--version") {
            options.version = true;
        } else if (arg == "-v" || arg == "-vv") {
            options.verbosity = static_cast<int>(arg.size()) - 1;
        } else if (arg == "--no-watch") {
            options.watch = false;
        } else if (arg == "--db") {
            if ((v = value("--db")) == nullptr) return false;
            options.database = v;
        } else if (arg == "--name") {
            if ((v = value("--name")) == nullptr) return false;
            options.name = v;
        } else if (arg == "--interface") {
            if ((v = value("--interface")) == nullptr) return false;
            options.interface = v;
        } else if (arg == "--address") {
            if ((v = value("--address")) == nullptr) return false;
            struct in_addr parsed;
            if (inet_pton(AF_INET, v, &parsed) != 1) {
                error = std::string("--address needs an IPv4 address, not \"") + v + "\"";
                return false;
            }
            options.address = v;
        } else if (arg == "--port" || arg == "--http-port") {
            if ((v = value(arg.c_str())) == nullptr) return false;
            if (!ReadPort(v, arg == "--port" ? options.port : options.httpPort)) {
                error = arg + " needs a port number from 0 to 65535, not \"" + v + "\"";
                return false;
            }
        } else if (arg == "--max-upload") {
            if ((v = value("--max-upload")) == nullptr) return false;
            if (!ReadBytes(v, options.maxUpload)) {
                error = std::string("--max-upload needs a size such as 4G or 500M, not \"") + v + "\"";
                return false;
            }
        } else if (!arg.empty() && arg[0] == '-') {
            error = "unknown option " + arg;
            return false;
        } else {
            options.folders.push_back(arg);
        }
    }
    if (options.help || options.version) {
        return true;
    }
    if (options.folders.empty()) {
        error = "name at least one folder to share";
        return false;
    }
    if (!options.interface.empty() && !options.address.empty()) {
        error = "give --interface or --address, not both";
        return false;
    }
    if (options.database.empty()) {
        options.database = DefaultDatabasePath();
    }
    return true;
}

}  // namespace mdbd
