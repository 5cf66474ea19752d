// Re-pointing roots: when a storage device comes back under another mount name (usb2_1 instead of
// usb1_1), the plain folder rows of the old name whose directory no longer exists are pointed at
// the new root. The rows are found with LIKE patterns built from the new root: its beginning up to
// the device number, and its ending from the last '_' of its first component.
#include "store/root_replace.h"

#include "store/sql_text.h"

#include <sys/stat.h>

#include <cstring>

namespace {

constexpr size_t kPathSize = 4096;
// A new root longer than this gets its part behind this many characters as the folder's title.
constexpr size_t kTitleSkip = 5;

bool IsExistingDirectory(const char *pcPath) {
    struct stat64 stInfo;
    return pcPath != nullptr && stat64(pcPath, &stInfo) == 0 && S_ISDIR(stInfo.st_mode);
}

// Runs one update with the new root (or part of it) and the row's id text.
bool RunUpdate(sqlite3 *pstDb, const char *pcFormat, const char *pcValue, const char *pcIdText) {
    MdbSqlText pcSql(sqlite3_mprintf(pcFormat, pcValue, pcIdText));
    return pcSql && MdbExecSql(pstDb, pcSql.get(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

}  // namespace

int MdbReplaceRootCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames) {
    (void)ppcNames;
    const MdbReplaceRootCtx *pstCtx = static_cast<const MdbReplaceRootCtx *>(pvArg);
    if (pstCtx == nullptr) {
        return 1;
    }
    if (lColNum < 2 || ppcValues == nullptr || ppcValues[0] == nullptr) {
        return 0;
    }
    const char *pcIdText = ppcValues[0];
    if (IsExistingDirectory(ppcValues[1])) {
        return 0;
    }
    const char *pcNewRoot = pstCtx->pcNewRoot;
    if (!RunUpdate(pstCtx->pstDb, "update ITEM set fileName = '%q' where id =%s", pcNewRoot, pcIdText)) {
        return static_cast<int>(MDB_ERR_DB);
    }
    if (std::strlen(pcNewRoot) > kTitleSkip && std::strchr(pcNewRoot + kTitleSkip, '/') == nullptr) {
        if (!RunUpdate(pstCtx->pstDb, "update ITEM set title = '%q' where id =%s", pcNewRoot + kTitleSkip,
                       pcIdText)) {
            return static_cast<int>(MDB_ERR_DB);
        }
    }
    return 0;
}

/* Point the plain folder rows (flags exactly 2) that match the new root's beginning and ending,
 * and whose directory is gone, at pcNewRoot. Only the length of pcBase is used: the first
 * component of pcNewRoot behind it must hold a '_'. Its last '_' starts the ending; the beginning
 * stops before the one or two digits in front of the '_' (two when the character two places before
 * the '_' is 1-9, otherwise one character goes). MDB_OK without doing anything when pcNewRoot is
 * not longer than pcBase; MDB_ERR_PARA for NULL arguments or no '_'; MDB_ERR_DB when a statement
 * fails (rows already rewritten stay so). */
uint32_t QRV_MDB_ReplaceRoot(sqlite3 *pstDb, const char *pcBase, const char *pcNewRoot) {
    if (pstDb == nullptr || pcBase == nullptr || pcNewRoot == nullptr) {
        return MDB_ERR_PARA;
    }
    const size_t ulBaseLen = std::strlen(pcBase);
    if (std::strlen(pcNewRoot) <= ulBaseLen) {
        return MDB_OK;
    }
    char acPrefix[kPathSize] = {0};
    std::strncpy(acPrefix, pcNewRoot, kPathSize - 1);
    const size_t ulCopyLen = std::strlen(acPrefix);
    // A base of 4095 characters or more would put the component behind the cut copy: refuse it
    // rather than read past the buffer.
    if (ulBaseLen + 1 > ulCopyLen) {
        return MDB_ERR_PARA;
    }

    // The first component below the base (the separator skipped), up to the next '/' if any.
    char *pcComponent = acPrefix + ulBaseLen + 1;
    char *pcComponentEnd = std::strchr(pcComponent, '/');
    if (pcComponentEnd == nullptr) {
        pcComponentEnd = acPrefix + ulCopyLen;
    }
    char *pcUnderscore = nullptr;
    for (char *pcScan = pcComponent; pcScan < pcComponentEnd; ++pcScan) {
        if (*pcScan == '_') {
            pcUnderscore = pcScan;
        }
    }
    if (pcUnderscore == nullptr) {
        return MDB_ERR_PARA;
    }

    // The ending stays in place behind the cut; the beginning ends at the cut.
    const char *pcSuffix = pcUnderscore;
    const size_t ulUnderscoreIdx = static_cast<size_t>(pcUnderscore - acPrefix);
    char *pcCut = pcUnderscore - 1;
    if (ulUnderscoreIdx >= 2 && acPrefix[ulUnderscoreIdx - 2] >= '1' && acPrefix[ulUnderscoreIdx - 2] <= '9') {
        pcCut = pcUnderscore - 2;
    }
    *pcCut = '\0';

    MdbSqlText pcSql(sqlite3_mprintf(
        "select id,fileName from ITEM where flags = 2 and fileName like '%q%%' and fileName like '%%%q'",
        acPrefix, pcSuffix));
    if (!pcSql) {
        return MDB_ERR_MEM;
    }
    MdbReplaceRootCtx stCtx{pstDb, pcNewRoot};
    return MdbExecSql(pstDb, pcSql.get(), MdbReplaceRootCallback, &stCtx, nullptr) == SQLITE_OK ? MDB_OK
                                                                                             : MDB_ERR_DB;
}
