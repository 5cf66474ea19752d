// mdb search: a UPnP ContentDirectory Search through QRV_MDB_Search.
#include "commands.h"
#include "list_request.h"
#include "tool_context.h"

#include <string>

namespace mdbtool {

namespace {

const char kName[] = "search";

int RunSearch(int argc, char **argv) {
    CommandLine line;
    ListRequest request;
    const int exitCode =
        ParseListCommand(kName, argc, argv, ListOptionDefs(), 3,
                         "search needs a catalogue, a container id and search criteria", line, request);
    if (exitCode >= 0) {
        return exitCode;
    }
    Catalogue catalogue;
    if (!catalogue.Open(kName, line.Positionals()[0], OpenMode::kReadOnly)) {
        return kExitFailed;
    }
    const std::string containerId = line.Positionals()[1];
    const std::string criteria = line.Positionals()[2];
    return RunListRequest(
        kName, request, containerId,
        [&](MdbActionCtx *action) { return QRV_MDB_Search(containerId.c_str(), criteria.c_str(), action); },
        "Search in " + containerId + " for " + criteria + " failed (criteria the library accepts, and a known "
        "container, are needed)");
}

}  // namespace

const Command kSearchCommand = {
    kName, "answer a Search request (objects below a container that match criteria)",
    "usage: mdb search DB CONTAINERID CRITERIA [--start N] [--count N] [--filter F] [--sort S]\n"
    "                  [--format xml|table|raw] [--address ADDR] [--port N]\n"
    "\n"
    "Answers a UPnP ContentDirectory Search in the catalogue DB below CONTAINERID, as a media\n"
    "server would. Prints the DIDL-Lite answer, then NumberReturned and TotalMatches.\n"
    "CRITERIA is UPnP search criteria, such as\n"
    "  'dc:title contains \"light\"'\n"
    "  'upnp:class derivedfrom \"object.item.audioItem\" and upnp:artist = \"The Examples\"'\n"
    "  '*' (everything below the container)\n",
    kListOptionsHelp,
    RunSearch,
};

}  // namespace mdbtool
