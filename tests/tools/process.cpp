// Programs run for tests: standard output and error go to scratch files, read back afterwards, so
// that neither can fill a pipe and stall the program.
#include "process.h"

#include "temp_dir.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace mdbtest {

namespace {
constexpr int kPollMicroseconds = 10000;
constexpr int kMaxPolls = 12000;  // 120 s
}  // namespace

ProcessResult RunProcess(const std::vector<std::string> &argv, const std::string &stdinText) {
    ProcessResult result;
    TempDir scratch;
    const std::string inPath = scratch.write("stdin", stdinText);
    const std::string outPath = scratch.file("stdout");
    const std::string errPath = scratch.file("stderr");
    std::vector<char *> args;
    for (const std::string &arg : argv) {
        args.push_back(const_cast<char *>(arg.c_str()));
    }
    args.push_back(nullptr);
    pid_t pid = fork();
    if (pid < 0) {
        return result;
    }
    if (pid == 0) {
        int in = open(inPath.c_str(), O_RDONLY);
        int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (in < 0 || out < 0 || err < 0 || dup2(in, 0) < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0) {
            _exit(127);
        }
        execv(args[0], args.data());
        _exit(127);
    }
    int status = 0;
    int polls = 0;
    pid_t done = 0;
    while ((done = waitpid(pid, &status, WNOHANG)) == 0 && polls < kMaxPolls) {
        usleep(kPollMicroseconds);
        ++polls;
    }
    if (done == 0) {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        result.err = "stopped after 120 s";
        return result;
    }
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.out = readFile(outPath);
    result.err = readFile(errPath);
    return result;
}

}  // namespace mdbtest
