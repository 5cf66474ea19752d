// The command line of mdbd: the shared folders and the options that say where the catalogue
// lives, how the server is named and on which address and ports it answers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mdbd {

struct Options {
    std::vector<std::string> folders;  // DIR...: shared, each a root of the catalogue
    std::string database;              // --db FILE
    std::string name;                  // --name: the friendly name; "MDB on <host name>" by default
    std::string interface;             // --interface IF (IPv4 and IPv6 of that interface)
    std::string address;               // --address ADDR (one IPv4 address; loopback allowed)
    uint16_t port = 0;                 // --port: UPnP (description, SOAP, eventing); 0 any
    uint16_t httpPort = 0;             // --http-port: the media file server; 0 any
    bool watch = true;                 // --no-watch: no inotify, no periodic rescans
    int verbosity = 0;                 // -v: one line per request; -vv: and per event
    uint64_t maxUpload = 4ull << 30;   // --max-upload BYTES: the largest upload without a size
    bool help = false;
    bool version = false;              // --version: print the version and stop
};

// Parses argv into options. false, with a sentence in error, for a wrong command line.
bool ParseOptions(int argc, char **argv, Options &options, std::string &error);

// The text of "mdbd --help".
std::string UsageText();

// The default catalogue path: $XDG_STATE_HOME/mdbd/catalogue.db, else ~/.local/state/mdbd/...
// for a user with a home, else /var/lib/mdbd/catalogue.db.
std::string DefaultDatabasePath();

}  // namespace mdbd
