// The scanner's side of the catalogue: every change goes through the library's exported store
// operations (item records, lookup entries, folder flags) and its statement runner, inside
// transactions of a bounded number of changes.
#pragma once

#include "media_info.h"

#include <mdb.h>

#include <map>
#include <string>
#include <unordered_map>

namespace mdbscan {

// The folder bits of a folder's flags word: one bit per item class found below it.
constexpr uint32_t kFolderBits = MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_VIDEO | MDB_FLAGS_FOLDER_PICTURE;

// One ITEM row below a folder, as the scanner compares it with the file on disk.
struct CatalogueRow {
    long long id = 0;
    uint32_t flags = 0;
    long long size = 0;
    std::string lastModify;
};

// What a deletion removed.
struct RemovedRows {
    uint32_t items = 0;
    uint32_t folders = 0;
};

// The values of an item row apart from its media description.
struct ItemPlace {
    long long parentId = 0;
    std::string fileName;
    std::string title;
    long long size = 0;
    std::string date;
    std::string lastModify;
};

class CatalogueWriter {
public:
    CatalogueWriter(sqlite3 *db, uint32_t batchSize);
    CatalogueWriter(const CatalogueWriter &) = delete;
    CatalogueWriter &operator=(const CatalogueWriter &) = delete;

    // Opens the first transaction. MDB_ERR_DB when "BEGIN" fails.
    uint32_t Begin();
    // Counts one change; every batchSize changes the transaction is committed and a new one begun.
    uint32_t Changed();
    // Commits the open transaction.
    uint32_t Commit();
    // Rolls the open transaction back (after a failure); committed batches stay.
    void Rollback();
    // Runs ANALYZE, so that SQLite plans the browse and search statements with statistics.
    uint32_t Analyze();

    // The rows whose parentID is parentId, by file name.
    uint32_t Children(long long parentId, std::map<std::string, CatalogueRow> &rows);
    // The root folder row whose fileName is path: id and flags, or id -1 when there is none.
    uint32_t FindRoot(const std::string &path, CatalogueRow &row);
    // A new folder row (class 2, no folder bits yet).
    uint32_t AddFolder(long long parentId, const std::string &title, const std::string &fileName, long long &id);
    // Adds an item (existingId 0) or overwrites all values of row existingId.
    uint32_t WriteItem(const ItemPlace &place, uint32_t flags, const MediaInfo &info, long long existingId,
                       long long &id);
    // Deletes a row and, for a folder, everything below it.
    uint32_t DeleteTree(const CatalogueRow &row, RemovedRows &removed);
    // Sets the folder bits of folder id to bits: new bits are added one class at a time with
    // QRV_MDB_UpdateFolderFlags; when a bit is to go, the word is replaced with
    // QRV_MDB_SetFolderFlags. oldFlags is the folder's word as the scan found it.
    uint32_t SetFolderBits(long long id, uint32_t oldFlags, uint32_t bits);

private:
    uint32_t Run(const char *sql);
    uint32_t LookupId(const char *table, const std::string &name, long long &id);

    sqlite3 *m_db;
    uint32_t m_batchSize;
    uint32_t m_pending = 0;
    bool m_open = false;
    // Lookup entries met during this scan, per table, so each name costs one store call.
    std::map<std::string, std::unordered_map<std::string, long long>> m_lookupCache;
};

}  // namespace mdbscan
