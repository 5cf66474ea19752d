// The upload folder: the folder row named "upload" directly below the first root folder (the root
// with the smallest id), where CreateObject puts every object a client uploads. The scanner makes
// it; the mdb tool and the media server check against it that a client can only ever destroy
// objects that CreateObject made, never the user's own media.
#pragma once

#include <mdb.h>

namespace mdbscan {

// The name of the upload folder below the first root.
constexpr char kUploadFolderName[] = "upload";

// The flags word of every folder and root row the scanner makes: a folder that DestroyObject
// refuses (restricted). The upload folder alone is a plain folder, since clients create in it,
// and it is listed in the folder view of every media class, even while empty, so that clients
// find where their uploads go.
constexpr uint32_t kScannedFolderFlags = MDB_CLASS_FOLDER | MDB_FLAGS_RESTRICTED;
constexpr uint32_t kUploadFolderFlags =
    MDB_CLASS_FOLDER | MDB_FLAGS_FOLDER_MUSIC | MDB_FLAGS_FOLDER_VIDEO | MDB_FLAGS_FOLDER_PICTURE;

// The upload folder's row id, or -1 when the catalogue has none (or it cannot be read).
long long UploadFolderId(sqlite3 *db);

// True when row id exists directly below the upload folder: an object that CreateObject made.
bool IsUploadedObject(sqlite3 *db, long long id);

}  // namespace mdbscan
