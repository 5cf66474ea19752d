// What Browse and Search share on the command line: paging, Filter and SortCriteria, the output
// format and the server address of resource URLs; and running the request on an action record
// as a media server does, then printing the answer.
#pragma once

#include "command_line.h"

#include <mdb.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace mdbtool {

struct ListRequest {
    uint32_t startingIndex = 0;
    uint32_t requestedCount = 0;  // 0: all, as UPnP's RequestedCount 0
    std::string filter = "*";
    std::string sort;
    std::string format = "xml";   // xml, table or raw
    int addressFamily = 0;
};

// The options of a list request, for CommandLine::Parse.
std::vector<OptionDef> ListOptionDefs();
// Reads the list options; on a bad value returns the exit code of a usage error, else -1.
int ReadListRequest(const char *command, const CommandLine &line, ListRequest &request);

// Parses the line of a list command (definitions: the list options and the command's own) and
// reads its list request. It needs exactly `positionals` positional arguments; `usage` says which.
// On a usage error returns the exit code, else -1.
int ParseListCommand(const char *command, int argc, char **argv, const std::vector<OptionDef> &definitions,
                     size_t positionals, const char *usage, CommandLine &line, ListRequest &request);

// Prepares an action record (filter bytes, sort text, answer document), calls the library through
// call, prints the answer with NumberReturned and TotalMatches, and returns the exit code.
// objectId is the ObjectID or ContainerID (copied into the action's writable id buffer).
int RunListRequest(const char *command, const ListRequest &request, const std::string &objectId,
                   const std::function<uint32_t(MdbActionCtx *)> &call, const std::string &whatFailed);

// The help lines of the list options.
extern const char *const kListOptionsHelp;

}  // namespace mdbtool
