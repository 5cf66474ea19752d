// mdb destroy: a UPnP ContentDirectory DestroyObject through QRV_MDB_DestroyObject, which removes
// the object's file from disk. The library removes any row that is not restricted, and scanned
// items cannot carry the restricted bit, so the tool destroys only what a client made: objects
// directly below the upload folder. Everything else is refused as restricted (711), with no
// option to lift it: a user's media is never deleted by a catalogue request.
#include "commands.h"
#include "command_line.h"
#include "object_id_argument.h"
#include "tool_context.h"

#include <mdb_platform.h>
#include <upload_folder.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace mdbtool {

namespace {

const char kName[] = "destroy";

int RunDestroy(int argc, char **argv) {
    CommandLine line;
    std::string error;
    if (!line.Parse(argc, argv, 1, {}, error)) {
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
    uint32_t status = QRV_MDB_GetItemInfo(catalogue.db(), id, nullptr, nullptr, 0, &flags);
    if (status != MDB_OK) {
        return Fail(kName, status, "object " + std::to_string(id) + " could not be read: " + QRV_MDB_StatusText(status));
    }
    if (flags == 0) {
        return Fail(kName, MDB_ERR_NOT_FOUND, "the catalogue has no object " + std::to_string(id));
    }
    if (!mdbscan::IsUploadedObject(catalogue.db(), id)) {
        return Fail(kName, MDB_UPNP_ERR_RESTRICTED_OBJECT,
                    "object " + std::to_string(id) + " is restricted: only objects made by CreateObject (in the "
                    "upload folder) can be destroyed; nothing was removed");
    }
    char *path = nullptr;
    QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr);
    const std::string file = path != nullptr ? path : "";
    free(path);
    const uint32_t result = QRV_MDB_DestroyObject(id);
    if (result != 0) {
        return Fail(kName, result, "object " + std::to_string(id) + " could not be destroyed; nothing was removed");
    }
    printf("destroyed object %lld%s%s\n", id, file.empty() ? "" : "; removed ", file.c_str());
    return kExitOk;
}

}  // namespace

const Command kDestroyCommand = {
    kName, "remove an uploaded object with its file (DestroyObject)",
    "usage: mdb destroy DB ID\n"
    "\n"
    "Answers a UPnP ContentDirectory DestroyObject: removes the object's file from disk, its row\n"
    "and its upload note. ID is a row id (42) or an object id that ends in one (0.1.264|42).\n"
    "Only objects that CreateObject made (those in the upload folder) can be destroyed: any other\n"
    "object, a scanned file, folder or root, is refused as restricted (UPnP error 711), and there\n"
    "is no option to lift this. A rescan removes what has vanished from disk.\n",
    nullptr,
    RunDestroy,
};

}  // namespace mdbtool
