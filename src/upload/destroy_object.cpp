// DestroyObject: removes one object by its database id, for the ContentDirectory DestroyObject
// action and for the upload time-out: its file on disk, its ITEM row and its upload note.
// Restricted rows are refused.

#include <mdb.h>
#include <mdb_platform.h>

#include "store/write_transaction.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

/* Remove the object's file when its path is known; say so when it is not. A file that cannot be
 * unlinked (already gone, a directory) is passed over. */
void RemoveFile(long long llId) {
    char *pcPath = nullptr;
    if (QRV_MDB_GetFileInfoById(llId, &pcPath, nullptr, nullptr, nullptr, nullptr) == 0 && pcPath != nullptr &&
        pcPath[0] != '\0') {
        unlink(pcPath);
        free(pcPath);
        return;
    }
    free(pcPath);
    puts("the file not find!");
}

/* Delete the row in a transaction, once more after two seconds when the first attempt fails. */
void DeleteRow(sqlite3 *pstDb, long long llId) {
    MdbExecSql(pstDb, kMdbBeginWrite, nullptr, nullptr, nullptr);
    if (QRV_MDB_DbDelItem(pstDb, llId) == MDB_ERR_DB) {
        sleep(2);
        QRV_MDB_DbDelItem(pstDb, llId);
    }
    MdbExecSql(pstDb, "COMMIT", nullptr, nullptr, nullptr);
}

}  // namespace

uint32_t QRV_MDB_DestroyObject(long long llId) {
    sqlite3 *pstDb = g_pstMdbCtx;
    uint32_t ulFlags = 0;
    QRV_MDB_GetItemInfo(pstDb, llId, nullptr, nullptr, 0, &ulFlags);
    if ((ulFlags & MDB_FLAGS_RESTRICTED) != 0) {
        return MDB_UPNP_ERR_RESTRICTED_OBJECT;
    }
    RemoveFile(llId);
    DeleteRow(pstDb, llId);
    return static_cast<uint32_t>(QRV_MDB_DelUploadNote(llId));
}
