// Programs as the tests run them: through the shell, with standard input, output and error in
// scratch files, so that no pipe can stall them, and coreutils' timeout bounding their time.
#include "tool_runner.h"

#include "temp_dir.h"

#include <sys/wait.h>

#include <cstdlib>

namespace mdbtest {

namespace {
// The tool makes new catalogues with the build tree's schema script, not with the installed one
// (which need not exist on the machine). Set once, before any test spawns the tool.
[[maybe_unused]] const bool kSchemaScriptSet = setenv("MDB_SCHEMA_SCRIPT", MDB_TEST_TOOL_SCHEMA_SCRIPT, 1) == 0;

long long Counter(const std::string &out, const std::string &label) {
    const std::string::size_type at = ("\n" + out).find("\n" + label + ": ");
    return at == std::string::npos ? -1 : atoll(out.c_str() + at + label.size() + 2);
}
}  // namespace

ToolRun RunProgram(const std::string &program, const std::vector<std::string> &args, const std::string &stdinText,
                   int timeoutSeconds) {
    TempDir scratch;
    std::string line = "/usr/bin/timeout " + std::to_string(timeoutSeconds) + " " + program;
    for (std::string arg : args) {  // each argument in single quotes, its own quotes as '\''
        for (size_t at = arg.find('\''); at != std::string::npos; at = arg.find('\'', at + 4)) arg.replace(at, 1, "'\\''");
        line += " '" + arg + "'";
    }
    const int status = std::system((line + " <" + scratch.write("in", stdinText) + " >" + scratch.file("out") +
                                    " 2>" + scratch.file("err")).c_str());
    return {status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(scratch.file("out")),
            readFile(scratch.file("err"))};
}

ToolAnswer ReadAnswer(const std::string &out) {
    ToolAnswer answer;
    answer.objects = ReadDidl(out.substr(0, out.find("NumberReturned: ")), &answer.error);
    answer.numberReturned = Counter(out, "NumberReturned");
    answer.totalMatches = Counter(out, "TotalMatches");
    return answer;
}

}  // namespace mdbtest
