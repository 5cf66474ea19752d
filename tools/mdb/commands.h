// The subcommands of mdb. Each file cmd_<name>.cpp defines one of these records.
#pragma once

namespace mdbtool {

struct Command {
    const char *name;
    const char *summary;  // one line for "mdb --help"
    const char *help;     // the text of "mdb <name> --help"
    const char *moreHelp; // further option lines shared with other commands, or NULL
    int (*run)(int argc, char **argv);  // argv[0] is the command's name; options and arguments follow
};

extern const Command kInitCommand;
extern const Command kScanCommand;
extern const Command kBrowseCommand;
extern const Command kSearchCommand;
extern const Command kCreateCommand;
extern const Command kDestroyCommand;
extern const Command kInfoCommand;

}  // namespace mdbtool
