// mdb destroy: a UPnP ContentDirectory DestroyObject through QRV_MDB_DestroyObject, which removes
// the object's file from disk, so the tool guards everything outside the upload folder.
#include "commands.h"
#include "command_line.h"
#include "object_id_argument.h"
#include "tool_context.h"

#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace mdbtool {

namespace {

const char kName[] = "destroy";

// The id of the "upload" folder below the first root folder, or -1 when there is none.
long long UploadFolderId(sqlite3 *db) {
    long long firstRoot = -1;
    if (QRV_MDB_DbGetItemIdByName(db, 0, nullptr, &firstRoot) != MDB_OK || firstRoot <= 0) {
        return -1;
    }
    long long upload = -1;
    QRV_MDB_DbGetItemIdByName(db, firstRoot, "upload", &upload);
    return upload;
}

int RunDestroy(int argc, char **argv) {
    CommandLine line;
    std::string error;
    if (!line.Parse(argc, argv, 1, {{"force", false}}, error)) {
        return UsageError(kName, error);
    }
    if (line.Positionals().size() != 2) {
        return UsageError(kName, "destroy needs a catalogue and an object id");
    }
    const long long id = RowIdOfArgument(line.Positionals()[1]);
    if (id <= 0) {
        return UsageError(kName, "\"" + line.Positionals()[1] + "\" names no catalogue row");
    }
    Catalogue catalogue;
    if (!catalogue.Open(kName, line.Positionals()[0], OpenMode::kReadWrite)) {
        return kExitFailed;
    }
    uint32_t flags = 0;
    long long parentId = 0;
    uint32_t status = QRV_MDB_GetItemInfo(catalogue.db(), id, &parentId, nullptr, 0, &flags);
    if (status != MDB_OK) {
        return Fail(kName, status, "object " + std::to_string(id) + " could not be read: " + StatusMeaning(status));
    }
    if (flags == 0) {
        return Fail(kName, MDB_ERR_NOT_FOUND, "the catalogue has no object " + std::to_string(id));
    }
    if ((flags & MDB_FLAGS_CLASS_MASK) <= 10) {
        return Fail(kName, MDB_ERR_PARA,
                    "object " + std::to_string(id) + " is a folder; destroy removes single items (a rescan removes "
                    "folders whose directory is gone)");
    }
    char *path = nullptr;
    QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr);
    const std::string file = path != nullptr ? path : "";
    free(path);
    if (parentId != UploadFolderId(catalogue.db()) && !line.Has("force")) {
        return Fail(kName, MDB_ERR_PARA,
                    "object " + std::to_string(id) + " is not in the upload folder, and destroying it deletes its file " +
                        (file.empty() ? std::string("from disk") : file) + "; give --force to do that");
    }
    const uint32_t result = QRV_MDB_DestroyObject(id);
    if (result == MDB_UPNP_ERR_RESTRICTED_OBJECT) {
        return Fail(kName, MDB_ERR_PARA,
                    "object " + std::to_string(id) + " is restricted (UPnP error 711); nothing was removed");
    }
    if (result != 0) {
        return Fail(kName, result, "object " + std::to_string(id) + " could not be destroyed");
    }
    printf("destroyed object %lld%s%s\n", id, file.empty() ? "" : "; removed ", file.c_str());
    return kExitOk;
}

}  // namespace

const Command kDestroyCommand = {
    kName, "remove an object with its file (DestroyObject)",
    "usage: mdb destroy DB ID [--force]\n"
    "\n"
    "Answers a UPnP ContentDirectory DestroyObject: removes the object's file from disk, its row\n"
    "and its upload note. ID is a row id (42) or an object id that ends in one (0.1.264|42).\n"
    "Only objects in the upload folder are destroyed unless --force is given, since the file on\n"
    "disk goes with the row. Folders are refused; restricted objects are refused by the library.\n"
    "\n"
    "  --force            destroy an object outside the upload folder too (its file is deleted)\n",
    nullptr,
    RunDestroy,
};

}  // namespace mdbtool
