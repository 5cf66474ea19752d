// mdb info: what a media server's HTTP file server learns about an object through
// QRV_MDB_GetFileInfoById (path, MIME type, DLNA profile, DLNA.ORG_OP and DLNA.ORG_FLAGS).
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

const char kName[] = "info";

const char *OrNone(const char *text) { return text != nullptr ? text : "(none)"; }

int RunInfo(int argc, char **argv) {
    CommandLine line;
    std::string error;
    if (!line.Parse(argc, argv, 1, {}, error)) {
        return UsageError(kName, error);
    }
    if (line.Positionals().size() != 2) {
        return UsageError(kName, "info needs a catalogue and an object id");
    }
    const long long id = RowIdOfArgument(line.Positionals()[1]);
    if (id <= 0) {
        return UsageError(kName, "\"" + line.Positionals()[1] + "\" names no catalogue row");
    }
    Catalogue catalogue;
    if (!catalogue.Open(kName, line.Positionals()[0], OpenMode::kReadOnly)) {
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
    const bool item = (flags & MDB_FLAGS_CLASS_MASK) > 10;
    char *path = nullptr;
    const char *mime = nullptr;
    const char *profile = nullptr;
    const char *op = nullptr;
    const char *dlnaFlags = nullptr;
    // Folders have no DLNA description: their flags carry folder bits where items keep their family.
    int32_t result = item ? QRV_MDB_GetFileInfoById(id, &path, &mime, &profile, &op, &dlnaFlags)
                          : QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr);
    if (result == 1) {
        return Fail(kName, MDB_ERR_NOT_FOUND,
                    "object " + std::to_string(id) + " names no file (it is a root folder or has no file name)");
    }
    if (result != 0) {
        free(path);
        return Fail(kName, static_cast<uint32_t>(result),
                    "the path of object " + std::to_string(id) + " could not be built: " +
                        QRV_MDB_StatusText(static_cast<uint32_t>(result)));
    }
    printf("id: %lld\n", id);
    printf("class: %s\n", OrNone(QRV_MDB_GetMediaClassById(flags)));
    printf("path: %s\n", OrNone(path));
    if (item) {
        printf("MIME type: %s\n", OrNone(mime));
        printf("DLNA profile: %s\n", OrNone(profile));
        printf("DLNA.ORG_OP: %s\n", OrNone(op));
        printf("DLNA.ORG_FLAGS: %s\n", OrNone(dlnaFlags));
    }
    printf("flags: 0x%08x\n", flags);
    free(path);
    return kExitOk;
}

}  // namespace

const Command kInfoCommand = {
    kName, "show an object's path, MIME type, DLNA profile, OP and FLAGS",
    "usage: mdb info DB ID\n"
    "\n"
    "Prints what a media server's file server looks up for the object ID (a row id such as 42,\n"
    "or an object id that ends in one, such as 0.1.264|42): its path on disk, and for items the\n"
    "MIME type, the DLNA profile (DLNA.ORG_PN), DLNA.ORG_OP and DLNA.ORG_FLAGS.\n",
    nullptr,
    RunInfo,
};

}  // namespace mdbtool
