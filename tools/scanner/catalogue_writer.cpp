// Writing scan results into the catalogue with the library's store operations. Statements the
// store operations do not offer (the children of a folder with their size and modification time,
// transactions, ANALYZE) go through the library's statement runner MdbExecSql; BEGIN IMMEDIATE,
// COMMIT and ROLLBACK each run as a text of their own, since the runner repeats a busy text from
// its first statement.
#include "catalogue_writer.h"

#include "upload_folder.h"
#include "utf8_text.h"

#include <cstdlib>
#include <cstring>

namespace mdbscan {

namespace {

int CollectChildRow(void *arg, int columns, char **values, char **) {
    auto *rows = static_cast<std::map<std::string, CatalogueRow> *>(arg);
    if (columns < 6 || values[1] == nullptr) {
        return 0;
    }
    CatalogueRow row;
    row.id = values[0] != nullptr ? atoll(values[0]) : 0;
    row.parentId = values[5] != nullptr ? atoll(values[5]) : 0;
    row.flags = values[2] != nullptr ? static_cast<uint32_t>(strtoul(values[2], nullptr, 10)) : 0;
    row.size = values[3] != nullptr ? atoll(values[3]) : 0;
    row.lastModify = values[4] != nullptr ? values[4] : "";
    (*rows)[values[1]] = row;
    return 0;
}

constexpr uint32_t kClassBitFirst = MDB_CLASS_MUSIC;
constexpr uint32_t kClassBitLast = MDB_CLASS_PICTURE;

bool IsFolder(uint32_t flags) { return (flags & MDB_FLAGS_CLASS_MASK) == MDB_CLASS_FOLDER; }

}  // namespace

CatalogueWriter::CatalogueWriter(sqlite3 *db, uint32_t batchSize, CatalogueLock *lock)
    : m_db(db), m_batchSize(batchSize == 0 ? 1 : batchSize), m_lock(lock != nullptr ? lock : &m_noLock) {}

CatalogueWriter::~CatalogueWriter() { Rollback(); }

uint32_t CatalogueWriter::Run(const char *sql) {
    return MdbExecSql(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB;
}

uint32_t CatalogueWriter::Write() {
    if (m_open) {
        return MDB_OK;
    }
    m_lock->Lock();
    if (Run("BEGIN IMMEDIATE") != MDB_OK) {
        m_lock->Unlock();
        return MDB_ERR_DB;
    }
    m_open = true;
    m_pending = 0;
    return MDB_OK;
}

uint32_t CatalogueWriter::Release() {
    if (!m_open) {
        return MDB_OK;
    }
    const uint32_t rc = Run("COMMIT");
    if (rc != MDB_OK) {
        Run("ROLLBACK");
        m_lookupCache.clear();
    }
    std::set<long long> touched;
    touched.swap(m_touched);
    m_open = false;
    m_lock->Unlock();
    if (rc == MDB_OK && !touched.empty()) {
        m_lock->Committed(touched);
    }
    return rc;
}

void CatalogueWriter::Rollback() {
    if (m_open) {
        Run("ROLLBACK");
        m_open = false;
        m_touched.clear();
        m_lock->Unlock();
        // Entries the rolled-back transaction added are gone again.
        m_lookupCache.clear();
    }
}

uint32_t CatalogueWriter::Changed() {
    return ++m_pending < m_batchSize ? MDB_OK : Release();
}

uint32_t CatalogueWriter::Analyze() {
    uint32_t rc = Write();
    if (rc == MDB_OK) {
        rc = Run("ANALYZE");
    }
    if (rc != MDB_OK) {
        Rollback();
        return rc;
    }
    return Release();
}

uint32_t CatalogueWriter::Children(long long parentId, std::map<std::string, CatalogueRow> &rows) {
    char sql[160];
    snprintf(sql, sizeof sql, "select id,fileName,flags,size,lastModify,parentID from ITEM where parentID=%lld",
             parentId);
    rows.clear();
    return Locked([&] { return MdbExecSql(m_db, sql, CollectChildRow, &rows, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB; });
}

uint32_t CatalogueWriter::ExistingRow(long long parentId, const std::string &fileName, CatalogueRow &row) {
    row = CatalogueRow();
    row.id = -1;
    row.parentId = parentId;
    uint32_t rc = QRV_MDB_DbGetItemIdByName(m_db, parentId, fileName.c_str(), &row.id);
    if (rc == MDB_OK && row.id > 0) {
        rc = QRV_MDB_GetItemInfo(m_db, row.id, nullptr, nullptr, 0, &row.flags);
    }
    return rc;
}

uint32_t CatalogueWriter::FindOrAddRoot(const std::string &path, const std::string &title, CatalogueRow &row,
                                        bool &isNew) {
    isNew = false;
    uint32_t rc = Write();
    if (rc == MDB_OK) {
        rc = ExistingRow(0, path, row);
    }
    if (rc != MDB_OK || row.id > 0) {
        return rc;
    }
    isNew = true;
    m_touched.insert(0);
    row.flags = kScannedFolderFlags;
    rc = QRV_MDB_DbAddItem(m_db, 0, static_cast<int32_t>(row.flags), title.c_str(), path.c_str(), 0, "", 0, 0, 0, 0,
                           0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, &row.id);
    return rc != MDB_OK ? rc : Changed();
}

uint32_t CatalogueWriter::AddFolder(long long parentId, const std::string &name, uint32_t flags, long long &id) {
    id = 0;
    uint32_t rc = Write();
    CatalogueRow existing;
    if (rc == MDB_OK) {
        rc = ExistingRow(parentId, name, existing);
    }
    if (rc == MDB_OK && existing.id > 0) {
        if (IsFolder(existing.flags)) {
            id = existing.id;
            return MDB_OK;
        }
        RemovedRows removed;
        rc = DeleteTree(existing, removed);
    }
    if (rc == MDB_OK) {
        rc = Write();  // the deletion may have completed a batch
    }
    if (rc != MDB_OK) {
        return rc;
    }
    m_touched.insert(parentId);
    rc = QRV_MDB_DbAddItem(m_db, parentId, static_cast<int32_t>(flags), ValidUtf8(name).c_str(), name.c_str(), 0, "",
                           0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, &id);
    return rc != MDB_OK ? rc : Changed();
}

/* The entry's id from the cache, or through QRV_MDB_DbAddItemExtraInfo (which finds or creates
 * it). An empty name stands for no entry: id 0. */
uint32_t CatalogueWriter::LookupId(const char *table, const std::string &name, long long &id) {
    id = 0;
    if (name.empty()) {
        return MDB_OK;
    }
    auto &cache = m_lookupCache[table];
    auto found = cache.find(name);
    if (found != cache.end()) {
        id = found->second;
        return MDB_OK;
    }
    uint32_t rc = QRV_MDB_DbAddItemExtraInfo(m_db, &id, table, name.c_str());
    if (rc == MDB_OK) {
        cache.emplace(name, id);
    }
    return rc;
}

uint32_t CatalogueWriter::WriteItem(const ItemPlace &place, uint32_t flags, const MediaInfo &info, long long &id,
                                    bool &updated) {
    id = 0;
    updated = false;
    uint32_t rc = Write();
    CatalogueRow existing;
    if (rc == MDB_OK) {
        rc = ExistingRow(place.parentId, place.fileName, existing);
    }
    if (rc == MDB_OK && existing.id > 0 && IsFolder(existing.flags)) {
        RemovedRows removed;
        rc = DeleteTree(existing, removed);
        existing.id = -1;
        if (rc == MDB_OK) {
            rc = Write();
        }
    }
    long long genre = 0;
    long long artist = 0;
    long long album = 0;
    long long creator = 0;
    if (rc == MDB_OK) {
        rc = LookupId("GENRES", info.genre, genre);
    }
    if (rc == MDB_OK) {
        rc = LookupId("ARTISTS", info.artist, artist);
    }
    if (rc == MDB_OK) {
        rc = LookupId("ALBUMS", info.album, album);
    }
    if (rc == MDB_OK) {
        rc = LookupId("CREATORS", info.creator, creator);
    }
    if (rc != MDB_OK) {
        return rc;
    }
    const int32_t lFlags = static_cast<int32_t>(flags);
    m_touched.insert(place.parentId);
    if (existing.id > 0) {
        id = existing.id;
        updated = true;
        rc = QRV_MDB_DbUpdateItemValues(m_db, place.parentId, lFlags, place.title.c_str(), place.fileName.c_str(),
                                        place.size, place.date.c_str(), info.bitsPerSample, info.durationUs,
                                        info.nrAudioChannels, info.Resolution(), info.sampleFrequency, info.bitrate,
                                        place.lastModify.c_str(), info.trackNumber, 0, album, artist, 0, creator, 0,
                                        genre, 0, 0, existing.id);
    } else {
        rc = QRV_MDB_DbAddItem(m_db, place.parentId, lFlags, place.title.c_str(), place.fileName.c_str(), place.size,
                               place.date.c_str(), info.bitsPerSample, info.durationUs, info.nrAudioChannels,
                               info.Resolution(), info.sampleFrequency, info.bitrate, place.lastModify.c_str(),
                               info.trackNumber, 0, album, artist, 0, creator, 0, genre, 0, 0, &id);
    }
    return rc != MDB_OK ? rc : Changed();
}

/* Depth first: the folders below are emptied and deleted before the folder's own item children
 * (QRV_MDB_DbDelSubItem) and the folder itself (QRV_MDB_DbDelItem). The whole tree goes in one
 * transaction and counts as one change, so that no reader sees a folder half deleted. */
uint32_t CatalogueWriter::DeleteTree(const CatalogueRow &row, RemovedRows &removed) {
    uint32_t rc = Write();
    if (rc == MDB_OK) {
        m_touched.insert(row.parentId);
        rc = DeleteRows(row, removed);
    }
    return rc != MDB_OK ? rc : Changed();
}

uint32_t CatalogueWriter::DeleteRows(const CatalogueRow &row, RemovedRows &removed) {
    if (IsFolder(row.flags)) {
        std::map<std::string, CatalogueRow> children;
        uint32_t rc = Children(row.id, children);
        for (auto it = children.begin(); rc == MDB_OK && it != children.end(); ++it) {
            if (IsFolder(it->second.flags)) {
                rc = DeleteRows(it->second, removed);
            } else {
                ++removed.items;
            }
        }
        if (rc == MDB_OK) {
            rc = QRV_MDB_DbDelSubItem(m_db, row.id);
        }
        if (rc != MDB_OK) {
            return rc;
        }
        ++removed.folders;
    } else {
        ++removed.items;
    }
    return QRV_MDB_DbDelItem(m_db, row.id);
}

uint32_t CatalogueWriter::SetFolderFlags(long long id, uint32_t oldFlags, uint32_t newFlags) {
    if (oldFlags == newFlags) {
        return MDB_OK;
    }
    uint32_t rc = Write();
    if (rc != MDB_OK) {
        return rc;
    }
    // The folder's class bits decide in which views of its parent it is listed.
    long long parentId = 0;
    QRV_MDB_GetItemInfo(m_db, id, &parentId, nullptr, 0, nullptr);
    m_touched.insert(id);
    m_touched.insert(parentId);
    const uint32_t added = newFlags & ~oldFlags;
    if ((oldFlags & ~newFlags) != 0 || (added & ~kFolderBits) != 0) {
        rc = QRV_MDB_SetFolderFlags(m_db, id, static_cast<int32_t>(newFlags));
    } else {
        // QRV_MDB_UpdateFolderFlags writes nothing when any of the bits it is given is set
        // already, so each class bit goes in a call of its own.
        for (uint32_t c = kClassBitFirst; rc == MDB_OK && c <= kClassBitLast; ++c) {
            const uint32_t bit = 1u << c;
            if ((added & bit) != 0) {
                rc = QRV_MDB_UpdateFolderFlags(m_db, id, bit);
            }
        }
    }
    return rc != MDB_OK ? rc : Changed();
}

}  // namespace mdbscan
