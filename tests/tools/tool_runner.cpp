// Programs as the tests run them: standard input, output and error are scratch files, so that no
// pipe can stall them, and coreutils' timeout bounds their time. libxml2 reads the tool's answers.
#include "tool_runner.h"

#include "temp_dir.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>

extern char **environ;

namespace mdbtest {

namespace {
// The tool makes new catalogues with the build tree's schema script, not with the installed one
// (which need not exist on the machine). Set once, before any test spawns the tool.
[[maybe_unused]] const bool kSchemaScriptSet = setenv("MDB_SCHEMA_SCRIPT", MDB_TEST_TOOL_SCHEMA_SCRIPT, 1) == 0;
}  // namespace

ToolRun RunProgram(const std::string &program, const std::vector<std::string> &args, const std::string &stdinText,
                   int timeoutSeconds) {
    TempDir scratch;
    const std::string in = scratch.write("in", stdinText), out = scratch.file("out"), err = scratch.file("err");
    std::vector<std::string> line = {"/usr/bin/timeout", std::to_string(timeoutSeconds), program};
    line.insert(line.end(), args.begin(), args.end());
    std::vector<char *> argv;
    for (std::string &arg : line) argv.push_back(arg.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 0, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&files, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ToolRun run;
    pid_t pid = 0;
    int status = 0;
    if (posix_spawn(&pid, argv[0], &files, nullptr, argv.data(), environ) == 0 && waitpid(pid, &status, 0) == pid &&
        WIFEXITED(status)) {
        run.exitCode = WEXITSTATUS(status);
    }
    posix_spawn_file_actions_destroy(&files);
    run.out = readFile(out);
    run.err = readFile(err);
    return run;
}

namespace {

std::string Text(xmlNode *node, const char *attribute = nullptr) {
    xmlChar *value = attribute != nullptr ? xmlGetProp(node, BAD_CAST attribute) : xmlNodeGetContent(node);
    std::string text = value != nullptr ? reinterpret_cast<const char *>(value) : "";
    xmlFree(value);
    return text;
}

long long Counter(const std::string &out, const std::string &label) {
    const std::string::size_type at = ("\n" + out).find("\n" + label + ": ");
    return at == std::string::npos ? -1 : atoll(out.c_str() + at + label.size() + 2);
}

}  // namespace

ToolAnswer ReadAnswer(const std::string &out) {
    ToolAnswer answer;
    answer.numberReturned = Counter(out, "NumberReturned");
    answer.totalMatches = Counter(out, "TotalMatches");
    const std::string xml = out.substr(0, out.find("NumberReturned: "));
    xmlDoc *doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "answer.xml", "UTF-8", XML_PARSE_NONET);
    xmlNode *root = doc != nullptr ? xmlDocGetRootElement(doc) : nullptr;
    if (root == nullptr || !xmlStrEqual(root->name, BAD_CAST "DIDL-Lite") || root->ns == nullptr ||
        !xmlStrEqual(root->ns->href, BAD_CAST "urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/")) {
        answer.error = "not well-formed XML with a DIDL-Lite root in its namespace:\n" + out;
        root = nullptr;
    }
    for (xmlNode *object = root != nullptr ? xmlFirstElementChild(root) : nullptr; object != nullptr;
         object = xmlNextElementSibling(object)) {
        DidlObject o{reinterpret_cast<const char *>(object->name), Text(object, "id"), "", "",
                     Text(object, "restricted")};
        for (xmlNode *child = xmlFirstElementChild(object); child != nullptr; child = xmlNextElementSibling(child)) {
            if (xmlStrEqual(child->name, BAD_CAST "title")) {
                o.title = Text(child);
            } else if (xmlStrEqual(child->name, BAD_CAST "res") && o.res.empty()) {
                o.res = Text(child);
            }
        }
        answer.objects.push_back(o);
    }
    xmlFreeDoc(doc);
    return answer;
}

}  // namespace mdbtest
