// Running the mdb tool for a test and reading its Browse/Search answers: the DIDL-Lite part is
// parsed with libxml2 (so it must be well-formed XML), the counters from their lines.
#pragma once

#include "process.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mdbtest {

// mdb with the arguments.
ProcessResult RunTool(const std::vector<std::string> &args, const std::string &stdinText = std::string());

struct DidlObject {
    std::string element;  // "container" or "item"
    std::string id;
    std::string parentId;
    std::string title;
    std::string upnpClass;
    std::string res;      // text of the first res element
    std::string importUri;
};

struct ToolAnswer {
    bool parsed = false;       // the XML parsed and its root is a DIDL-Lite element with its namespace
    std::string parseError;
    std::vector<DidlObject> objects;
    long long numberReturned = -1;
    long long totalMatches = -1;
};

// Reads the indented XML answer and the NumberReturned/TotalMatches lines of a browse or search.
ToolAnswer ReadAnswer(const std::string &out);

}  // namespace mdbtest
