// mdb init: a new, empty catalogue made with the shipped schema script.
#include "commands.h"
#include "command_line.h"
#include "tool_context.h"

#include <cstdio>
#include <string>

namespace mdbtool {

namespace {

const char kName[] = "init";

int RunInit(int argc, char **argv) {
    CommandLine line;
    std::string error;
    if (!line.Parse(argc, argv, 1, {}, error)) {
        return UsageError(kName, error);
    }
    if (line.Positionals().size() != 1) {
        return UsageError(kName, "init needs exactly one argument, the catalogue file to create");
    }
    Catalogue catalogue;
    if (!catalogue.Open(kName, line.Positionals()[0], OpenMode::kCreate)) {
        return kExitFailed;
    }
    printf("created catalogue %s (schema %s)\n", line.Positionals()[0].c_str(), QRV_MDB_SchemaScriptPath());
    return kExitOk;
}

}  // namespace

const Command kInitCommand = {
    kName, "create an empty catalogue",
    "usage: mdb init DB\n"
    "\n"
    "Creates the catalogue file DB with the schema script " MDB_TOOL_SCHEMA_SCRIPT "\n"
    "(or the one the environment variable MDB_SCHEMA_SCRIPT names).\n"
    "DB must not exist yet. (\"mdb scan\" also creates a catalogue that does not exist.)\n",
    nullptr,
    RunInit,
};

}  // namespace mdbtool
