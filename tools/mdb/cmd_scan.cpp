// mdb scan: fill or refresh a catalogue from directories with the media scanner.
#include "commands.h"
#include "command_line.h"
#include "tool_context.h"

#include <media_info.h>
#include <media_scanner.h>

#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <string>

namespace mdbtool {

namespace {

const char kName[] = "scan";

double SecondsSince(const timespec &start) {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec - start.tv_sec) + static_cast<double>(now.tv_nsec - start.tv_nsec) / 1e9;
}

int RunScan(int argc, char **argv) {
    CommandLine line;
    std::string error;
    if (!line.Parse(argc, argv, 1, {{"quiet", false}, {"batch", true}}, error)) {
        return UsageError(kName, error);
    }
    if (line.Positionals().size() < 2) {
        return UsageError(kName, "scan needs a catalogue and at least one directory");
    }
    mdbscan::ScanOptions options;
    if (!line.Unsigned("batch", options.batchSize, options.batchSize, error)) {
        return UsageError(kName, error);
    }
    if (options.batchSize == 0) {
        return UsageError(kName, "--batch needs at least 1 change per transaction");
    }
    options.progress = !line.Has("quiet") && isatty(fileno(stderr)) != 0;
    const std::vector<std::string> directories(line.Positionals().begin() + 1, line.Positionals().end());
    Catalogue catalogue;
    if (!catalogue.Open(kName, line.Positionals()[0], OpenMode::kCreateOrUse)) {
        return kExitFailed;
    }
    if (catalogue.created()) {
        printf("created catalogue %s\n", line.Positionals()[0].c_str());
    }
    timespec start;
    clock_gettime(CLOCK_MONOTONIC, &start);
    mdbscan::MediaScanner scanner(catalogue.db(), options);
    uint32_t status = scanner.Scan(directories);
    const double seconds = SecondsSince(start);
    const mdbscan::ScanCounts &c = scanner.counts();
    if (status != MDB_OK) {
        return Fail(kName, status, "the scan stopped: " + scanner.lastError());
    }
    printf("scanned %u folders and %u media files in %.2f s (%.0f files/s)\n", c.folders, c.files, seconds,
           seconds > 0 ? c.files / seconds : 0.0);
    printf("  items: %u added, %u updated, %u unchanged, %u removed\n", c.added, c.updated, c.unchanged, c.removed);
    printf("  folders: %u added, %u removed\n", c.foldersAdded, c.foldersRemoved);
    printf("  skipped: %u unreadable or corrupt; not media: %u\n", c.skipped, c.ignored);
    if (!scanner.uploadFolder().empty()) {
        printf("  upload folder: %s\n", scanner.uploadFolder().c_str());
    }
    return kExitOk;
}

}  // namespace

const Command kScanCommand = {
    kName, "fill or refresh a catalogue from media directories",
    "usage: mdb scan DB DIR... [--quiet] [--batch N]\n"
    "\n"
    "Scans each DIR into the catalogue DB (created with the schema script when it does not exist).\n"
    "Each DIR becomes a root folder; its folders and its audio, video and picture files become\n"
    "catalogue rows with their tags, stream properties and DLNA profile (read with the libraries\n"
    "this build has). An \"upload\" folder is made below the first root when that root is writable.\n"
    "A rescan is incremental: files with the same size and modification time are not read again,\n"
    "vanished files and folders are deleted, folder bits are recomputed. Unreadable or corrupt\n"
    "files are reported and skipped. The scan ends with ANALYZE and prints what it counted.\n"
    "\n"
    "  --quiet            no progress line (it is shown only on a terminal anyway)\n"
    "  --batch N          changes per transaction (default 1000)\n",
    nullptr,
    RunScan,
};

}  // namespace mdbtool
