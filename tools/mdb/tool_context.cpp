// Failure reports and catalogue opening for the mdb subcommands.
#include "tool_context.h"

#include <mdb_platform.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace mdbtool {

int Fail(const char *command, uint32_t status, const std::string &sentence) {
    fprintf(stderr, "mdb %s: %s: %s\n", command, QRV_MDB_StatusName(status), sentence.c_str());
    return kExitFailed;
}

int UsageError(const char *command, const std::string &sentence) {
    fprintf(stderr, "mdb %s: %s: %s (see \"mdb %s --help\")\n", command, QRV_MDB_StatusName(MDB_ERR_PARA),
            sentence.c_str(), command);
    return kExitUsage;
}

namespace {

int FirstLine(void *arg, int columns, char **values, char **) {
    std::string &text = *static_cast<std::string *>(arg);
    if (text.empty() && columns > 0 && values[0] != nullptr) {
        text = values[0];
    }
    return 0;
}

}  // namespace

bool PassesQuickCheck(sqlite3 *db, std::string &damage) {
    damage.clear();
    const int rc = MdbExecSql(db, "PRAGMA quick_check", FirstLine, &damage, nullptr);
    if (rc != SQLITE_OK) {
        damage = sqlite3_errstr(rc);
        return false;
    }
    return damage == "ok";
}

Catalogue::~Catalogue() {
    if (m_db != nullptr) {
        if (g_pstMdbCtx == m_db) {
            g_pstMdbCtx = nullptr;
        }
        sqlite3_close(m_db);
    }
}

bool Catalogue::Open(const char *command, const std::string &path, OpenMode mode) {
    struct stat st;
    const bool exists = stat(path.c_str(), &st) == 0;
    if (mode == OpenMode::kCreate && exists) {
        Fail(command, MDB_ERR_PARA, path + " exists already; a new catalogue needs a new file");
        return false;
    }
    if ((mode == OpenMode::kReadOnly || mode == OpenMode::kReadWrite) && !exists) {
        Fail(command, MDB_ERR_NOT_FOUND, "there is no catalogue at " + path + " (make one with \"mdb init\" or \"mdb scan\")");
        return false;
    }
    if (exists && !S_ISREG(st.st_mode)) {
        Fail(command, MDB_ERR_PARA, path + " is not a file");
        return false;
    }
    switch (mode) {
    case OpenMode::kCreate:
    case OpenMode::kCreateOrUse: {
        int existed = 0;
        m_db = QRV_MDB_DbInit(path.c_str(), &existed);
        m_created = m_db != nullptr && existed == 0;
        if (m_db == nullptr) {
            // The library leaves the file it made behind; a later run would take it for a catalogue.
            if (!exists) {
                unlink(path.c_str());
            }
            Fail(command, MDB_ERR_DB,
                 "the catalogue " + path + " could not be created: its folder must exist and be writable, and the "
                 "schema script " + QRV_MDB_SchemaScriptPath() + " must be readable");
            return false;
        }
        break;
    }
    case OpenMode::kReadOnly:
        m_db = QRV_MDB_DbInitReadOnly(path.c_str());
        break;
    case OpenMode::kReadWrite:
        m_db = QRV_MDB_DbInitReadWrite(path.c_str());
        break;
    }
    if (m_db == nullptr) {
        Fail(command, MDB_ERR_DB, "the catalogue " + path + " could not be opened");
        return false;
    }
    if (MdbExecSql(m_db, "select count(*) from sqlite_master", nullptr, nullptr, nullptr) == SQLITE_NOTADB) {
        Fail(command, MDB_ERR_DB, path + " is not an SQLite database, so it is no catalogue");
        return false;
    }
    std::string damage;
    if (mode == OpenMode::kCreateOrUse && !m_created && !PassesQuickCheck(m_db, damage)) {
        Fail(command, MDB_ERR_DB,
             "the catalogue " + path + " is damaged (PRAGMA quick_check: " + damage +
                 "); nothing was scanned into it. Move it aside and scan into a new file: a catalogue holds nothing "
                 "that a scan cannot make again");
        return false;
    }
    if (QRV_MDB_DbDLNATest(m_db, 0) != 1) {
        Fail(command, MDB_ERR_DB, path + " is not an MDB catalogue (it has no DLNA view)");
        return false;
    }
    g_pstMdbCtx = m_db;
    uint32_t status = QRV_MDB_DbGetRoots(m_db);
    if (status != MDB_OK) {
        Fail(command, status, std::string("the root folders of ") + path + " could not be read: " + QRV_MDB_StatusText(status));
        return false;
    }
    return true;
}

}  // namespace mdbtool
