// Test catalogues: a new database file in a scratch directory, made by QRV_MDB_DbInit with the
// schema script of the source tree and published at g_pstMdbCtx; rows go in through the store's own
// operations.
#include "catalogue.h"

#include <mdb_platform.h>


#include <gtest/gtest.h>

namespace mdbtest {

Catalogue::Catalogue() {
    QRV_MDB_SetSchemaScriptPath(MDB_TEST_SCHEMA_SCRIPT);
    int existed = -1;
    m_db = QRV_MDB_DbInit(dbPath().c_str(), &existed);
    if (m_db == nullptr) {
        ADD_FAILURE() << "QRV_MDB_DbInit failed on " << dbPath() << " with script " << MDB_TEST_SCHEMA_SCRIPT;
        return;
    }
    EXPECT_EQ(existed, 0) << "a fresh catalogue file already existed";
    g_pstMdbCtx = m_db;
}

Catalogue::~Catalogue() {
    if (g_pstMdbCtx == m_db) {
        g_pstMdbCtx = nullptr;
    }
    sqlite3_close(m_db);
    QRV_MDB_SetSchemaScriptPath(nullptr);
}

long long Catalogue::addItem(const ItemValues &v) {
    long long id = -1;
    uint32_t status = QRV_MDB_DbAddItem(
        m_db, v.parentId, v.flags, v.title.c_str(), v.fileName.c_str(), v.size, v.date.c_str(),
        v.bitsPerSample, v.duration, v.nrAudioChannels, v.resolution, v.sampleFrequency, v.bitrate,
        v.lastModify.c_str(), v.originalTrackNumber, v.actor, v.album, v.artist, v.author, v.creator,
        v.director, v.genre, v.producer, v.publisher, &id);
    EXPECT_EQ(status, MDB_OK) << "QRV_MDB_DbAddItem: " << QRV_MDB_StatusName(status) << " for " << v.fileName;
    return id;
}

long long Catalogue::addFolder(long long parentId, const std::string &fileName, int32_t extraFlags) {
    ItemValues v;
    v.parentId = parentId;
    v.flags = static_cast<int32_t>(MDB_CLASS_FOLDER) | extraFlags;
    v.title = fileName;
    v.fileName = fileName;
    return addItem(v);
}

long long Catalogue::lookup(const std::string &table, const std::string &name) {
    long long id = -1;
    uint32_t status = QRV_MDB_DbAddItemExtraInfo(m_db, &id, table.c_str(), name.c_str());
    EXPECT_EQ(status, MDB_OK) << "QRV_MDB_DbAddItemExtraInfo: " << QRV_MDB_StatusName(status) << " for "
                              << table << " " << name;
    return id;
}

void Catalogue::exec(const std::string &sql) {
    char *err = nullptr;
    int rc = sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &err);
    EXPECT_EQ(rc, SQLITE_OK) << sql << ": " << (err != nullptr ? err : "");
    sqlite3_free(err);
}

std::string Catalogue::scalar(const std::string &sql) {
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v2(m_db, sql.c_str(), -1, &stmt, nullptr);
    EXPECT_EQ(rc, SQLITE_OK) << sql << ": " << sqlite3_errmsg(m_db);
    std::string result;
    if (rc == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW) {
        const unsigned char *text = sqlite3_column_text(stmt, 0);
        result = text != nullptr ? reinterpret_cast<const char *>(text) : "NULL";
    }
    sqlite3_finalize(stmt);
    return result;
}

}  // namespace mdbtest
