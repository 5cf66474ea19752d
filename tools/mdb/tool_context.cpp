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

const char *StatusMeaning(uint32_t status) {
    switch (status) {
    case MDB_OK:
        return "it succeeded";
    case MDB_ERR_PARA:
        return "an argument is missing or invalid, or the request is one the library refuses";
    case MDB_ERR_MEM:
        return "memory ran out, or a text did not fit its buffer";
    case MDB_ERR_FAIL:
        return "a file could not be opened or written, or a search expression could not be translated";
    case MDB_ERR_NOT_FOUND:
        return "the object id does not resolve, or the object does not exist";
    case MDB_ERR_DB:
        return "an SQL statement failed";
    default:
        return "the library answered with an unknown status";
    }
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
                 "schema script " MDB_TOOL_SCHEMA_SCRIPT " must be readable");
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
    if (QRV_MDB_DbDLNATest(m_db, 0) != 1) {
        Fail(command, MDB_ERR_DB, path + " is not an MDB catalogue (it has no DLNA view)");
        return false;
    }
    g_pstMdbCtx = m_db;
    uint32_t status = QRV_MDB_DbGetRoots(m_db);
    if (status != MDB_OK) {
        Fail(command, status, std::string("the root folders of ") + path + " could not be read: " + StatusMeaning(status));
        return false;
    }
    return true;
}

}  // namespace mdbtool
