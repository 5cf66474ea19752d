// A real catalogue for tests: a new database file in a scratch directory, created by
// QRV_MDB_DbInit with the shipped schema script, stored at g_pstMdbCtx for the request handlers.
// Rows are added through the library's own store operations.
#pragma once

#include "temp_dir.h"

#include <mdb.h>

#include <sstream>
#include <string>

namespace mdbtest {

// Values of one ITEM row for Catalogue::addItem; unset fields are 0 or empty.
struct ItemValues {
    long long parentId = 0;
    int32_t flags = 0;
    std::string title, fileName;
    long long size = 0;
    std::string date;
    int32_t bitsPerSample = 0;
    long long duration = 0;
    int32_t nrAudioChannels = 0;
    long long resolution = 0;
    int32_t sampleFrequency = 0, bitrate = 0;
    std::string lastModify;
    int32_t originalTrackNumber = 0;
    long long actor = 0, album = 0, artist = 0, author = 0, creator = 0, director = 0, genre = 0,
              producer = 0, publisher = 0;
};

// The values joined with '|', as Rows prints the columns of a row.
template <typename... T>
std::string Join(const T &...values) {
    std::ostringstream out;
    ((out << values << '|'), ...);
    return out.str().substr(0, out.str().size() - 1);
}

// The flags word the profile library gives an item of that MIME type and profile name.
uint32_t ProfileFlags(const char *mime, const char *profile);

// The rows of a query: columns joined with '|', rows with ',' ("NULL" for SQL NULL); "" for none.
std::string Rows(sqlite3 *db, const std::string &sql);

class Catalogue {
public:
    // Creates the catalogue and sets g_pstMdbCtx; fails the current test when it cannot.
    Catalogue();
    // Closes the connection and clears g_pstMdbCtx.
    ~Catalogue();
    Catalogue(const Catalogue &) = delete;
    Catalogue &operator=(const Catalogue &) = delete;

    sqlite3 *db() const { return m_db; }
    const TempDir &dir() const { return m_dir; }
    std::string dbPath() const { return m_dir.file("catalogue.db"); }

    // Adds a row with QRV_MDB_DbAddItem; returns its id (fails the test on error).
    long long addItem(const ItemValues &v);
    // A row with title = fileName below parentId; a folder row (class 2) with extra flags.
    long long addRow(long long parentId, const std::string &fileName, uint32_t flags);
    long long addFolder(long long parentId, const std::string &fileName, int32_t extraFlags = 0) {
        return addRow(parentId, fileName, MDB_CLASS_FOLDER | static_cast<uint32_t>(extraFlags));
    }
    // A lookup entry through QRV_MDB_DbAddItemExtraInfo.
    long long lookup(const std::string &table, const std::string &name);
    // Runs SQL directly (for setting up or spoiling rows); fails the test on error.
    void exec(const std::string &sql);
    std::string rows(const std::string &sql) const { return Rows(m_db, sql); }

private:
    TempDir m_dir;
    sqlite3 *m_db = nullptr;
};

}  // namespace mdbtest
