// What every mdb subcommand shares: reporting a failure (the status code's name and a sentence),
// opening the catalogue in the mode the subcommand needs, and standing in for the media server
// (the process-wide connection, the server address and file-server port of resource URLs).
#pragma once

#include <mdb.h>

#include <cstdint>
#include <string>

namespace mdbtool {

// Exit codes: 0 success, 1 the library or the system refused, 2 the command line was wrong.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// Prints "mdb <command>: <STATUS NAME>: <sentence>" on standard error and returns kExitFailed.
int Fail(const char *command, uint32_t status, const std::string &sentence);
// The same for a wrong command line, pointing at the command's --help; returns kExitUsage.
int UsageError(const char *command, const std::string &sentence);

// True when db passes SQLite's PRAGMA quick_check; otherwise damage holds its first complaint.
bool PassesQuickCheck(sqlite3 *db, std::string &damage);

enum class OpenMode {
    kCreate,     // a new catalogue: the file must not exist yet
    kCreateOrUse,// scan: made with the schema script when new, else used as it is
    kReadOnly,   // browse, search, info
    kReadWrite,  // create, destroy
};

// An open catalogue for one command. Open() refuses a file that is no SQLite database, and for a
// scan one that fails PRAGMA quick_check (a scan would only add to the damage). It also stores the
// connection at g_pstMdbCtx (where the request handlers take it from) and loads the root folder
// list; the destructor closes it.
class Catalogue {
public:
    Catalogue() = default;
    ~Catalogue();
    Catalogue(const Catalogue &) = delete;
    Catalogue &operator=(const Catalogue &) = delete;

    // On failure prints the reason (via Fail) and returns false.
    bool Open(const char *command, const std::string &path, OpenMode mode);
    sqlite3 *db() const { return m_db; }
    bool created() const { return m_created; }

private:
    sqlite3 *m_db = nullptr;
    bool m_created = false;
};

// The media server's address and file-server port as resource URLs and import URIs show them.
// An empty address leaves URLs relative ("/web/mdb/12.mp3"). Returns the address family to put
// into action records and upload requests: 2 for IPv4, 10 for IPv6, 0 without an address; -1
// when the address is neither.
int ConfigureServerAddress(const std::string &address, uint16_t port);

}  // namespace mdbtool
