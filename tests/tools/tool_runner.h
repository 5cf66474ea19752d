// Running the mdb tool (or another program of the build) for a test, and reading its Browse and
// Search answers: the DIDL-Lite part is parsed with libxml2 (so it must be well-formed XML), the
// counters from their lines.
#pragma once

#include "library.h"

#include <string>
#include <vector>

namespace mdbtest {

struct ToolRun {
    int exitCode = -1;  // -1 when the program could not be run; 124 when stopped at its time limit
    std::string out, err;
};

// The program with the arguments and stdinText on standard input, stopped after timeoutSeconds.
ToolRun RunProgram(const std::string &program, const std::vector<std::string> &args,
                   const std::string &stdinText = std::string(), int timeoutSeconds = 120);
// mdb with the arguments.
inline ToolRun RunTool(const std::vector<std::string> &args, const std::string &stdinText = std::string(),
                       int timeoutSeconds = 120) {
    return RunProgram(MDB_TEST_TOOL, args, stdinText, timeoutSeconds);
}

struct ToolAnswer {
    std::string error;  // empty when the XML parsed and its root is DIDL-Lite in its namespace
    std::vector<DidlObject> objects;
    long long numberReturned = -1, totalMatches = -1;
};

ToolAnswer ReadAnswer(const std::string &out);

}  // namespace mdbtest
