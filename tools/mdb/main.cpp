// mdb: the command-line tool of the MDB media catalogue library. It fills a catalogue from media
// folders and answers Browse, Search, CreateObject and DestroyObject requests on it the way a
// media server would, printing the DIDL-Lite answers; so the library can be tried before it is
// wired into a server.
#include "commands.h"
#include "tool_context.h"

#include <media_info.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using mdbtool::Command;

const Command *const kCommands[] = {&mdbtool::kInitCommand,   &mdbtool::kScanCommand,    &mdbtool::kBrowseCommand,
                                    &mdbtool::kSearchCommand, &mdbtool::kCreateCommand,  &mdbtool::kDestroyCommand,
                                    &mdbtool::kInfoCommand};

void PrintOverview(FILE *out) {
    fprintf(out,
            "usage: mdb COMMAND [ARGUMENTS] [OPTIONS]\n"
            "\n"
            "The command-line tool of MDB, the media catalogue library for DLNA media servers.\n"
            "\n"
            "commands:\n");
    for (const Command *command : kCommands) {
        fprintf(out, "  %-9s %s\n", command->name, command->summary);
    }
    fprintf(out,
            "\n"
            "\"mdb COMMAND --help\" describes a command. Errors name the library's status code\n"
            "(such as MDB_ERR_NOT_FOUND) and end with exit code 1; a wrong command line ends with 2.\n"
            "\n"
            "environment:\n"
            "  MDB_SCHEMA_SCRIPT  the schema script new catalogues are made with (default %s)\n",
            MDB_TOOL_SCHEMA_SCRIPT);
}

bool AsksForHelp(int argc, char **argv) {
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--") == 0) {
            return false;
        }
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

int main(int argc, char **argv) {
    // A schema script other than the one the library was built with (a build tree's, a packager's).
    const char *schema = getenv("MDB_SCHEMA_SCRIPT");
    if (schema != nullptr && schema[0] != '\0') {
        QRV_MDB_SetSchemaScriptPath(schema);
    }
    if (argc < 2) {
        PrintOverview(stderr);
        return mdbtool::kExitUsage;
    }
    const std::string name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        PrintOverview(stdout);
        return mdbtool::kExitOk;
    }
    if (name == "--version") {
        printf("mdb %s\n", MDB_TOOL_VERSION);
        return mdbtool::kExitOk;
    }
    for (const Command *command : kCommands) {
        if (name != command->name) {
            continue;
        }
        if (AsksForHelp(argc, argv)) {
            fputs(command->help, stdout);
            if (command->moreHelp != nullptr) {
                fputs(command->moreHelp, stdout);
            }
            if (command == &mdbtool::kScanCommand) {
                printf("\nmetadata readers in this build: %s\n", mdbscan::ReaderLibraries().c_str());
            }
            return mdbtool::kExitOk;
        }
        return command->run(argc - 1, argv + 1);
    }
    fprintf(stderr, "mdb: %s: unknown command \"%s\" (see \"mdb --help\")\n", QRV_MDB_StatusName(MDB_ERR_PARA),
            name.c_str());
    return mdbtool::kExitUsage;
}
