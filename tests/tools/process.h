// Running a program for a test: its exit code and everything it wrote, bounded in time.
#pragma once

#include <string>
#include <vector>

namespace mdbtest {

struct ProcessResult {
    int exitCode = -1;  // -1 when the program could not be started or was stopped for taking too long
    std::string out;
    std::string err;
};

// Runs argv[0] (a path) with the arguments, standard input from stdinText, for at most 120 s.
ProcessResult RunProcess(const std::vector<std::string> &argv, const std::string &stdinText = std::string());

}  // namespace mdbtest
