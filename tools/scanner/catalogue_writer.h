// The scanner's side of the catalogue: every change goes through the library's exported store
// operations (item records, lookup entries, folder flags) and its statement runner.
//
// Changes are written in transactions of a bounded number of changes. A transaction is opened
// with "BEGIN IMMEDIATE" at the first change and committed before the scanner next reads from disk
// (Release), so that it never stays open while directories are listed or tags are read. Taking
// the write lock at BEGIN means that two writers never both hold a read lock while each waits for
// the other's write lock, the deadlock SQLite answers with an immediate SQLITE_BUSY that the
// statement runner would repeat for ever. And since another scanner may have changed a folder
// between our read of it and our write, every row is looked up by its parent and file name
// inside the writing transaction before it is added: a file is never catalogued twice.
#pragma once

#include "media_info.h"

#include <mdb.h>

#include <map>
#include <set>
#include <string>
#include <unordered_map>

namespace mdbscan {

// The folder bits of a folder's flags word: one bit per item class found below it.
constexpr uint32_t kFolderBits = MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_VIDEO | MDB_FLAGS_FOLDER_PICTURE;

// Serialises the writer with the other users of its connection: a media server takes its library
// mutex in Lock and gives it back in Unlock. The writer holds it from BEGIN IMMEDIATE to COMMIT,
// and for the length of each single read outside a transaction. After each committed batch, with
// the lock given back, Committed names the folders (row ids; 0 for the level of the roots) whose
// children or own flags the batch changed, so that a server can tell its clients. The default
// does nothing.
class CatalogueLock {
public:
    virtual ~CatalogueLock() = default;
    virtual void Lock() {}
    virtual void Unlock() {}
    virtual void Committed(const std::set<long long> &folders) { (void)folders; }
};

// One ITEM row below a folder, as the scanner compares it with the file on disk.
struct CatalogueRow {
    long long id = 0;
    long long parentId = 0;
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
    // lock may be NULL (nothing to serialise with); it must outlive the writer.
    CatalogueWriter(sqlite3 *db, uint32_t batchSize, CatalogueLock *lock = nullptr);
    ~CatalogueWriter();
    CatalogueWriter(const CatalogueWriter &) = delete;
    CatalogueWriter &operator=(const CatalogueWriter &) = delete;

    // Commits the open transaction, if any, and gives the lock back. MDB_ERR_DB when COMMIT fails.
    uint32_t Release();
    // Rolls the open transaction back (after a failure); committed batches stay.
    void Rollback();
    // Runs ANALYZE in a transaction of its own, so that SQLite plans the browse and search
    // statements with statistics.
    uint32_t Analyze();

    // The rows whose parentID is parentId, by file name.
    uint32_t Children(long long parentId, std::map<std::string, CatalogueRow> &rows);
    // The root folder row whose fileName is path, added (restricted, titled title) when there is
    // none. isNew tells which.
    uint32_t FindOrAddRoot(const std::string &path, const std::string &title, CatalogueRow &row, bool &isNew);
    // The folder row named name below parentId: the existing one when there is a folder of that
    // name, else a new one with flags, titled name as valid UTF-8 (an item row of that name is
    // deleted first).
    uint32_t AddFolder(long long parentId, const std::string &name, uint32_t flags, long long &id);
    // Writes an item: overwrites the row of the same parent and file name when there is one (updated
    // is then true), else adds a row.
    uint32_t WriteItem(const ItemPlace &place, uint32_t flags, const MediaInfo &info, long long &id, bool &updated);
    // Deletes a row and, for a folder, everything below it.
    uint32_t DeleteTree(const CatalogueRow &row, RemovedRows &removed);
    // Replaces folder id's flags word oldFlags (as the scan found it) with newFlags, when they
    // differ: new folder bits are added one class at a time with QRV_MDB_UpdateFolderFlags; any
    // other difference replaces the word with QRV_MDB_SetFolderFlags.
    uint32_t SetFolderFlags(long long id, uint32_t oldFlags, uint32_t newFlags);

    // Runs fn (library calls on db()) with the lock held: within the open transaction, or taking
    // the lock for the call when none is open. Returns what fn returns.
    template <typename Fn>
    uint32_t Locked(Fn fn) {
        if (m_open) {
            return fn();
        }
        m_lock->Lock();
        const uint32_t rc = fn();
        m_lock->Unlock();
        return rc;
    }

    sqlite3 *db() const { return m_db; }

private:
    uint32_t Run(const char *sql);
    uint32_t Write();    // opens the transaction of the next change when none is open
    uint32_t Changed();  // counts a change; a full batch is committed
    uint32_t LookupId(const char *table, const std::string &name, long long &id);
    uint32_t ExistingRow(long long parentId, const std::string &fileName, CatalogueRow &row);
    uint32_t DeleteRows(const CatalogueRow &row, RemovedRows &removed);

    sqlite3 *m_db;
    uint32_t m_batchSize;
    CatalogueLock m_noLock;
    CatalogueLock *m_lock;
    uint32_t m_pending = 0;
    bool m_open = false;
    std::set<long long> m_touched;  // folders the open transaction changed
    // Lookup entries met during this scan, per table, so each name costs one store call.
    std::map<std::string, std::unordered_map<std::string, long long>> m_lookupCache;
};

}  // namespace mdbscan
