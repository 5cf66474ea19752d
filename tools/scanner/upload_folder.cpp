// Finding the upload folder and the objects below it, with the library's store operations.
#include "upload_folder.h"

namespace mdbscan {

long long UploadFolderId(sqlite3 *db) {
    long long firstRoot = -1;
    if (QRV_MDB_DbGetItemIdByName(db, 0, nullptr, &firstRoot) != MDB_OK || firstRoot <= 0) {
        return -1;
    }
    long long upload = -1;
    if (QRV_MDB_DbGetItemIdByName(db, firstRoot, kUploadFolderName, &upload) != MDB_OK) {
        return -1;
    }
    return upload > 0 ? upload : -1;
}

bool IsUploadedObject(sqlite3 *db, long long id) {
    const long long upload = UploadFolderId(db);
    long long parentId = -1;
    uint32_t flags = 0;
    return upload > 0 && id > 0 && QRV_MDB_GetItemInfo(db, id, &parentId, nullptr, 0, &flags) == MDB_OK &&
           flags != 0 && parentId == upload;
}

}  // namespace mdbscan
