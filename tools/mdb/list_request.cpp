// Running Browse and Search for the command line the way a media server runs them: Filter and
// SortCriteria converted by the library, a fresh DIDL-Lite document, NumberReturned set to 0, the
// call, then the answer serialised with its counters.
#include "list_request.h"

#include "didl_answer.h"
#include "tool_context.h"

#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace mdbtool {

const char *const kListOptionsHelp =
    "  --start N          StartingIndex: skip the first N objects (default 0)\n"
    "  --count N          RequestedCount: at most N objects; 0 or none means all\n"
    "  --filter F         Filter, a comma-separated list of properties (default \"*\": all)\n"
    "  --sort S           SortCriteria, such as \"+dc:title\" or \"-dc:date,+dc:title\"\n"
    "  --format FORMAT    xml (indented DIDL-Lite, default), table (one line per object) or\n"
    "                     raw (the Result text as a server sends it)\n"
    "  --address ADDR     the server's IPv4 or IPv6 address in resource URLs (default: none,\n"
    "                     so URLs start with /web/mdb/)\n"
    "  --port N           the file server's port in resource URLs (default 9000)\n";

std::vector<OptionDef> ListOptionDefs() {
    return {{"start", true},  {"count", true},   {"filter", true}, {"sort", true},
            {"format", true}, {"address", true}, {"port", true}};
}

int ParseListCommand(const char *command, int argc, char **argv, const std::vector<OptionDef> &definitions,
                     size_t positionals, const char *usage, CommandLine &line, ListRequest &request) {
    std::string error;
    if (!line.Parse(argc, argv, 1, definitions, error)) {
        return UsageError(command, error);
    }
    if (line.Positionals().size() != positionals) {
        return UsageError(command, usage);
    }
    return ReadListRequest(command, line, request);
}

int ReadListRequest(const char *command, const CommandLine &line, ListRequest &request) {
    std::string error;
    uint32_t port = 9000;
    if (!line.Unsigned("start", 0, request.startingIndex, error) ||
        !line.Unsigned("count", 0, request.requestedCount, error) || !line.Unsigned("port", 9000, port, error)) {
        return UsageError(command, error);
    }
    if (port > 65535) {
        return UsageError(command, "--port needs a port number from 0 to 65535");
    }
    request.filter = line.Value("filter", "*");
    request.sort = line.Value("sort");
    request.format = line.Value("format", "xml");
    if (request.format != "xml" && request.format != "table" && request.format != "raw") {
        return UsageError(command, "--format is xml, table or raw, not \"" + request.format + "\"");
    }
    request.addressFamily = ConfigureServerAddress(line.Value("address"), static_cast<uint16_t>(port));
    if (request.addressFamily < 0) {
        return UsageError(command, "--address needs an IPv4 or IPv6 address, not \"" + line.Value("address") + "\"");
    }
    return -1;
}

int RunListRequest(const char *command, const ListRequest &request, const std::string &objectId,
                   const std::function<uint32_t(MdbActionCtx *)> &call, const std::string &whatFailed) {
    DidlAnswer answer;
    unsigned char *filter = QRV_MDB_ParseFilterString(request.filter.c_str());
    char *sort = request.sort.empty() ? nullptr : QRV_MDB_BuildSortStr(request.sort.c_str());
    if (answer.root() == nullptr || filter == nullptr) {
        free(filter);
        free(sort);
        return Fail(command, MDB_ERR_MEM, "the answer document or the filter could not be made");
    }
    if (!request.sort.empty() && sort == nullptr) {
        fprintf(stderr, "mdb %s: note: the sort criteria \"%s\" name no sortable property; the order is the catalogue's\n",
                command, request.sort.c_str());
    }
    char objectIdBuffer[256];
    char errorText[64] = "";
    snprintf(objectIdBuffer, sizeof objectIdBuffer, "%s", objectId.c_str());
    MdbActionCtx action;
    memset(&action, 0, sizeof action);
    action.pcObjectId = objectIdBuffer;
    action.ulStartingIndex = request.startingIndex;
    action.ulRequestedCount = request.requestedCount == 0 ? UINT32_MAX : request.requestedCount;
    action.ulAddrFamily = static_cast<uint32_t>(request.addressFamily);
    action.pucFilter = filter;
    action.pcSortStr = sort;
    action.ulNumberReturned = 0;
    action.pstDoc = answer.doc();
    action.pstDidlRoot = answer.root();
    action.pcErrStr = errorText;

    const uint32_t status = call(&action);
    free(filter);
    free(sort);
    if (status != MDB_OK) {
        std::string sentence = whatFailed + ": " + QRV_MDB_StatusText(status);
        if (action.lUpnpErrCode != 0) {
            sentence += " (UPnP error " + std::to_string(action.lUpnpErrCode) + " \"" + errorText + "\")";
        }
        return Fail(command, status, sentence);
    }
    if (request.format == "table") {
        fputs(answer.Table().c_str(), stdout);
    } else if (request.format == "raw") {
        printf("%s\n", answer.Compact().c_str());
    } else {
        fputs(answer.Indented().c_str(), stdout);
    }
    printf("NumberReturned: %u\nTotalMatches: %u\n", action.ulNumberReturned, action.ulTotalMatches);
    return kExitOk;
}

}  // namespace mdbtool
