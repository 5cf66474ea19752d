// Opening, checking and, when damaged, replacing mdbd's catalogue.
#include "catalogue.h"

#include "library_lock.h"
#include "log.h"

#include <mdb_platform.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace mdbd {

namespace {

bool MakeFolders(const std::string &path) {
    for (std::string::size_type slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        if (mkdir(path.substr(0, slash).c_str(), 0755) != 0 && errno != EEXIST) {
            return false;
        }
    }
    return true;
}

int FirstValue(void *arg, int columns, char **values, char **) {
    std::string &text = *static_cast<std::string *>(arg);
    if (text.empty() && columns > 0 && values[0] != nullptr) {
        text = values[0];
    }
    return 0;
}

/* Why the existing file at path cannot serve as the catalogue, or "" when it can. */
std::string Damage(const std::string &path) {
    sqlite3 *db = nullptr;
    std::string why;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        why = "it cannot be opened";
    } else {
        std::string answer;
        const int rc = sqlite3_exec(db, "PRAGMA quick_check", FirstValue, &answer, nullptr);
        if (rc == SQLITE_NOTADB) {
            why = "it is not an SQLite database";
        } else if (rc != SQLITE_OK || answer != "ok") {
            why = "PRAGMA quick_check: " + (rc != SQLITE_OK ? std::string(sqlite3_errstr(rc)) : answer);
        } else if (QRV_MDB_DbDLNATest(db, 0) != 1) {
            why = "it has no DLNA view";
        }
    }
    sqlite3_close(db);
    return why;
}

/* Renames the catalogue and its WAL files to "<path>.damaged-<date>...". */
void SetAside(const std::string &path, const std::string &why) {
    char stamp[32];
    const time_t now = time(nullptr);
    struct tm local;
    localtime_r(&now, &local);
    strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &local);
    const std::string aside = path + ".damaged-" + stamp;
    for (const char *part : {"", "-wal", "-shm"}) {
        rename((path + part).c_str(), (aside + part).c_str());
    }
    LogError("the catalogue %s is damaged (%s); it was moved to %s and a new one is made by a full scan",
             path.c_str(), why.c_str(), aside.c_str());
}

}  // namespace

bool Catalogue::Open(const std::string &path, std::string &error) {
    Close();
    if (!MakeFolders(path)) {
        error = "the folder of " + path + " cannot be made: " + strerror(errno);
        return false;
    }
    struct stat st;
    if (stat(path.c_str(), &st) == 0) {
        const std::string why = S_ISREG(st.st_mode) ? Damage(path) : "it is not a file";
        if (!why.empty()) {
            SetAside(path, why);
        }
    }
    int existed = 0;
    sqlite3 *db = QRV_MDB_DbInit(path.c_str(), &existed);
    if (db == nullptr) {
        if (existed == 0) {
            unlink(path.c_str());  // what the failed creation left behind would pass for a catalogue
        }
        error = "the catalogue " + path + " cannot be made: its folder must be writable and the schema script " +
                QRV_MDB_SchemaScriptPath() + " readable";
        return false;
    }
    if (MdbExecSql(db, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr) != SQLITE_OK ||
        MdbExecSql(db, "PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr) != SQLITE_OK) {
        LogNote("the catalogue %s stays in its journal mode: %s", path.c_str(), sqlite3_errmsg(db));
    }
    LibraryGuard guard;
    m_db = db;
    g_pstMdbCtx = db;
    return true;
}

void Catalogue::Close() {
    if (m_db == nullptr) {
        return;
    }
    LibraryGuard guard;
    if (g_pstMdbCtx == m_db) {
        g_pstMdbCtx = nullptr;
    }
    sqlite3_close(m_db);
    m_db = nullptr;
}

}  // namespace mdbd
