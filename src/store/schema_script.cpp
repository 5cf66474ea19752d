// The schema script: its path (build-time default, replaceable) and reading it whole into memory.
// The library checks nothing of the script's text; QRV_MDB_DbInit runs it as one batch.
#include "store/schema_script.h"

#include <mdb.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#ifndef MDB_SCHEMA_SCRIPT_PATH
#define MDB_SCHEMA_SCRIPT_PATH "/etc/create_db.sql"
#endif

namespace {

// The path set by MdbSetSchemaScriptPath; empty means the build-time default.
std::string &OverriddenPath() {
    static std::string s_path;
    return s_path;
}

bool g_bOverridden = false;

// Closes a FILE on every path out of MdbReadSchemaScript.
struct FileCloser {
    FILE *pstFile;
    ~FileCloser() {
        if (pstFile != nullptr) {
            std::fclose(pstFile);
        }
    }
};

}  // namespace

/* The current script path: the one set last, or MDB_SCHEMA_SCRIPT_PATH. */
extern "C" MDB_API const char *QRV_MDB_SchemaScriptPath(void) {
    return g_bOverridden ? OverriddenPath().c_str() : MDB_SCHEMA_SCRIPT_PATH;
}

/* Keep a copy of pcPath as the script path; NULL goes back to the default. */
extern "C" MDB_API void QRV_MDB_SetSchemaScriptPath(const char *pcPath) {
    if (pcPath == nullptr) {
        g_bOverridden = false;
        OverriddenPath().clear();
        return;
    }
    OverriddenPath().assign(pcPath);
    g_bOverridden = true;
}

/* Read the script file in one piece: size it by seeking to its end, allocate size + 1 bytes, read,
 * terminate. There is no size limit. NULL when any step fails. */
char *MdbReadSchemaScript(void) {
    FileCloser stFile{std::fopen(QRV_MDB_SchemaScriptPath(), "rb")};
    if (stFile.pstFile == nullptr) {
        return nullptr;
    }
    if (std::fseek(stFile.pstFile, 0, SEEK_END) != 0) {
        return nullptr;
    }
    long lSize = std::ftell(stFile.pstFile);
    if (lSize < 0 || std::fseek(stFile.pstFile, 0, SEEK_SET) != 0) {
        return nullptr;
    }
    char *pcText = static_cast<char *>(std::malloc(static_cast<size_t>(lSize) + 1));
    if (pcText == nullptr) {
        return nullptr;
    }
    size_t ulRead = std::fread(pcText, 1, static_cast<size_t>(lSize), stFile.pstFile);
    pcText[ulRead] = '\0';
    return pcText;
}
