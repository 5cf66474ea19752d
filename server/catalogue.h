// mdbd's catalogue: opened at start (made with the schema script when new), checked, and set
// aside and made anew when it is damaged or no catalogue at all. The catalogue is derived data:
// a scan makes it again. The connection becomes the library's process-wide one (g_pstMdbCtx).
#pragma once

#include <mdb.h>

#include <string>

namespace mdbd {

class Catalogue {
public:
    Catalogue() = default;
    ~Catalogue() { Close(); }
    Catalogue(const Catalogue &) = delete;
    Catalogue &operator=(const Catalogue &) = delete;

    // Opens the catalogue at path, making its folder and the catalogue when there is none. A file
    // that is no SQLite database, fails PRAGMA quick_check or has no DLNA view is renamed to
    // "<path>.damaged-<date>" (and logged) and a new catalogue is made. The catalogue is put in
    // WAL mode with synchronous=NORMAL: a crash loses at most the last batch, never consistency.
    // false, with a sentence in error, when no catalogue can be opened or made.
    bool Open(const std::string &path, std::string &error);
    // Closes the connection and clears g_pstMdbCtx (under the library mutex).
    void Close();

    sqlite3 *db() const { return m_db; }

private:
    sqlite3 *m_db = nullptr;
};

}  // namespace mdbd
