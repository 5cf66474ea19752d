// Test catalogues (see catalogue.h).
#include "catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

namespace mdbtest {

uint32_t ProfileFlags(const char *mime, const char *profile) {
    const char *suffix = nullptr;
    return QRV_MDB_PNtoFix(mime, profile, &suffix);
}

std::string Rows(sqlite3 *db, const std::string &sql) {
    std::string out;
    sqlite3_stmt *stmt = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr), SQLITE_OK) << sql << ": " << sqlite3_errmsg(db);
    for (int row = 0; stmt != nullptr && sqlite3_step(stmt) == SQLITE_ROW; ++row) {
        for (int col = 0; col < sqlite3_column_count(stmt); ++col) {
            const unsigned char *text = sqlite3_column_text(stmt, col);
            out += (col ? "|" : row ? "," : "") + std::string(text ? reinterpret_cast<const char *>(text) : "NULL");
        }
    }
    sqlite3_finalize(stmt);
    return out;
}

Catalogue::Catalogue() {
    QRV_MDB_SetSchemaScriptPath(MDB_TEST_SCHEMA_SCRIPT);
    int existed = -1;
    m_db = QRV_MDB_DbInit(dbPath().c_str(), &existed);
    EXPECT_TRUE(m_db != nullptr && existed == 0) << "QRV_MDB_DbInit failed on " << dbPath();
    g_pstMdbCtx = m_db;
}

Catalogue::~Catalogue() {
    if (g_pstMdbCtx == m_db) g_pstMdbCtx = nullptr;
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

long long Catalogue::addRow(long long parentId, const std::string &fileName, uint32_t flags) {
    ItemValues v;
    v.parentId = parentId;
    v.flags = static_cast<int32_t>(flags);
    v.title = v.fileName = fileName;
    return addItem(v);
}

long long Catalogue::lookup(const std::string &table, const std::string &name) {
    long long id = -1;
    uint32_t status = QRV_MDB_DbAddItemExtraInfo(m_db, &id, table.c_str(), name.c_str());
    EXPECT_EQ(status, MDB_OK) << "QRV_MDB_DbAddItemExtraInfo: " << QRV_MDB_StatusName(status) << " for " << name;
    return id;
}

void Catalogue::exec(const std::string &sql) {
    char *err = nullptr;
    EXPECT_EQ(sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &err), SQLITE_OK) << sql << ": " << (err ? err : "");
    sqlite3_free(err);
}

}  // namespace mdbtest
