// Writing scan results into the catalogue with the library's store operations. Statements the
// store operations do not offer (the children of a folder with their size and modification time,
// transactions, ANALYZE) go through the library's statement runner MdbExecSql.
#include "catalogue_writer.h"

#include <cstdlib>
#include <cstring>

namespace mdbscan {

namespace {

int CollectChildRow(void *arg, int columns, char **values, char **) {
    auto *rows = static_cast<std::map<std::string, CatalogueRow> *>(arg);
    if (columns < 5 || values[1] == nullptr) {
        return 0;
    }
    CatalogueRow row;
    row.id = values[0] != nullptr ? atoll(values[0]) : 0;
    row.flags = values[2] != nullptr ? static_cast<uint32_t>(strtoul(values[2], nullptr, 10)) : 0;
    row.size = values[3] != nullptr ? atoll(values[3]) : 0;
    row.lastModify = values[4] != nullptr ? values[4] : "";
    (*rows)[values[1]] = row;
    return 0;
}

constexpr uint32_t kClassBitFirst = MDB_CLASS_MUSIC;
constexpr uint32_t kClassBitLast = MDB_CLASS_PICTURE;

}  // namespace

CatalogueWriter::CatalogueWriter(sqlite3 *db, uint32_t batchSize)
    : m_db(db), m_batchSize(batchSize == 0 ? 1 : batchSize) {}

uint32_t CatalogueWriter::Run(const char *sql) {
    return MdbExecSql(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB;
}

uint32_t CatalogueWriter::Begin() {
    uint32_t rc = Run("BEGIN");
    m_open = rc == MDB_OK;
    m_pending = 0;
    return rc;
}

uint32_t CatalogueWriter::Commit() {
    if (!m_open) {
        return MDB_OK;
    }
    m_open = false;
    return Run("COMMIT");
}

void CatalogueWriter::Rollback() {
    if (m_open) {
        Run("ROLLBACK");
        m_open = false;
    }
}

uint32_t CatalogueWriter::Changed() {
    if (++m_pending < m_batchSize) {
        return MDB_OK;
    }
    uint32_t rc = Commit();
    return rc != MDB_OK ? rc : Begin();
}

uint32_t CatalogueWriter::Analyze() { return Run("ANALYZE"); }

uint32_t CatalogueWriter::Children(long long parentId, std::map<std::string, CatalogueRow> &rows) {
    char sql[160];
    snprintf(sql, sizeof sql, "select id,fileName,flags,size,lastModify from ITEM where parentID=%lld", parentId);
    rows.clear();
    return MdbExecSql(m_db, sql, CollectChildRow, &rows, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB;
}

uint32_t CatalogueWriter::FindRoot(const std::string &path, CatalogueRow &row) {
    row = CatalogueRow();
    row.id = -1;
    uint32_t rc = QRV_MDB_DbGetItemIdByName(m_db, 0, path.c_str(), &row.id);
    if (rc != MDB_OK || row.id <= 0) {
        row.id = -1;
        return rc;
    }
    return QRV_MDB_GetItemInfo(m_db, row.id, nullptr, nullptr, 0, &row.flags);
}

uint32_t CatalogueWriter::AddFolder(long long parentId, const std::string &title, const std::string &fileName,
                                    long long &id) {
    id = 0;
    uint32_t rc = QRV_MDB_DbAddItem(m_db, parentId, static_cast<int32_t>(MDB_CLASS_FOLDER), title.c_str(),
                                    fileName.c_str(), 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, &id);
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

uint32_t CatalogueWriter::WriteItem(const ItemPlace &place, uint32_t flags, const MediaInfo &info,
                                    long long existingId, long long &id) {
    long long genre = 0;
    long long artist = 0;
    long long album = 0;
    long long creator = 0;
    uint32_t rc = LookupId("GENRES", info.genre, genre);
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
    if (existingId > 0) {
        id = existingId;
        rc = QRV_MDB_DbUpdateItemValues(m_db, place.parentId, lFlags, place.title.c_str(), place.fileName.c_str(),
                                        place.size, place.date.c_str(), info.bitsPerSample, info.durationUs,
                                        info.nrAudioChannels, info.Resolution(), info.sampleFrequency, info.bitrate,
                                        place.lastModify.c_str(), info.trackNumber, 0, album, artist, 0, creator, 0,
                                        genre, 0, 0, existingId);
    } else {
        id = 0;
        rc = QRV_MDB_DbAddItem(m_db, place.parentId, lFlags, place.title.c_str(), place.fileName.c_str(), place.size,
                               place.date.c_str(), info.bitsPerSample, info.durationUs, info.nrAudioChannels,
                               info.Resolution(), info.sampleFrequency, info.bitrate, place.lastModify.c_str(),
                               info.trackNumber, 0, album, artist, 0, creator, 0, genre, 0, 0, &id);
    }
    return rc != MDB_OK ? rc : Changed();
}

/* Depth first: the folders below are emptied and deleted before the folder's own item children
 * (QRV_MDB_DbDelSubItem) and the folder itself (QRV_MDB_DbDelItem). */
uint32_t CatalogueWriter::DeleteTree(const CatalogueRow &row, RemovedRows &removed) {
    if ((row.flags & MDB_FLAGS_CLASS_MASK) == MDB_CLASS_FOLDER) {
        std::map<std::string, CatalogueRow> children;
        uint32_t rc = Children(row.id, children);
        for (auto it = children.begin(); rc == MDB_OK && it != children.end(); ++it) {
            if ((it->second.flags & MDB_FLAGS_CLASS_MASK) == MDB_CLASS_FOLDER) {
                rc = DeleteTree(it->second, removed);
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
    uint32_t rc = QRV_MDB_DbDelItem(m_db, row.id);
    return rc != MDB_OK ? rc : Changed();
}

uint32_t CatalogueWriter::SetFolderBits(long long id, uint32_t oldFlags, uint32_t bits) {
    const uint32_t oldBits = oldFlags & kFolderBits;
    bits &= kFolderBits;
    if (oldBits == bits) {
        return MDB_OK;
    }
    uint32_t rc = MDB_OK;
    if ((oldBits & ~bits) != 0) {
        rc = QRV_MDB_SetFolderFlags(m_db, id, static_cast<int32_t>((oldFlags & ~kFolderBits) | bits));
    } else {
        // QRV_MDB_UpdateFolderFlags writes nothing when any of the bits it is given is set
        // already, so each class bit goes in a call of its own.
        for (uint32_t c = kClassBitFirst; rc == MDB_OK && c <= kClassBitLast; ++c) {
            const uint32_t bit = 1u << c;
            if ((bits & bit) != 0 && (oldBits & bit) == 0) {
                rc = QRV_MDB_UpdateFolderFlags(m_db, id, bit);
            }
        }
    }
    return rc != MDB_OK ? rc : Changed();
}

}  // namespace mdbscan
