// mdb browse: a UPnP ContentDirectory Browse through QRV_MDB_Browse.
#include "commands.h"
#include "list_request.h"
#include "tool_context.h"

#include <cstdio>
#include <string>

namespace mdbtool {

namespace {

const char kName[] = "browse";

int RunBrowse(int argc, char **argv) {
    std::vector<OptionDef> definitions = ListOptionDefs();
    definitions.push_back({"metadata", false});
    CommandLine line;
    ListRequest request;
    const int exitCode = ParseListCommand(kName, argc, argv, definitions, 2,
                                          "browse needs a catalogue and an object id", line, request);
    if (exitCode >= 0) {
        return exitCode;
    }
    Catalogue catalogue;
    if (!catalogue.Open(kName, line.Positionals()[0], OpenMode::kReadOnly)) {
        return kExitFailed;
    }
    const std::string objectId = line.Positionals()[1];
    const uint32_t browseFlag = line.Has("metadata") ? 0 : 1;
    return RunListRequest(
        kName, request, objectId, [&](MdbActionCtx *action) { return QRV_MDB_Browse(objectId.c_str(), browseFlag, action); },
        std::string(browseFlag == 0 ? "BrowseMetadata" : "BrowseDirectChildren") + " of " + objectId + " failed");
}

}  // namespace

const Command kBrowseCommand = {
    kName, "answer a Browse request (the children or the metadata of an object)",
    "usage: mdb browse DB OBJECTID [--metadata] [--start N] [--count N] [--filter F] [--sort S]\n"
    "                  [--format xml|table|raw] [--address ADDR] [--port N]\n"
    "\n"
    "Answers a UPnP ContentDirectory Browse of OBJECTID in the catalogue DB, as a media server\n"
    "would: BrowseDirectChildren lists the object's children, --metadata (BrowseMetadata) describes\n"
    "the object itself. Prints the DIDL-Lite answer, then NumberReturned and TotalMatches.\n"
    "\n"
    "Object ids: \"0\" is the root; \"0.1\" music, \"0.2\" video, \"0.3\" pictures; below them the\n"
    "static containers (\"mdb browse DB 0.1\" lists them) and, after a \"|\", database objects such as\n"
    "\"0.1.264|5\" (folder row 5 in the music folder view) or \"0.1.257|3\" (genre 3).\n"
    "\n"
    "  --metadata         BrowseMetadata instead of BrowseDirectChildren\n",
    kListOptionsHelp,
    RunBrowse,
};

}  // namespace mdbtool
