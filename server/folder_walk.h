// Walking a tree of folders as the server's watchers need it: every folder once, however many
// links lead to it (a link back up is no loop), hidden folders and folders nested deeper than any
// real media tree passed over, and an end as soon as the server stops.
#pragma once

#include <sys/stat.h>

#include <atomic>
#include <functional>
#include <string>

namespace mdbd {

// Calls visit(path, st) for folder and each folder below it, parents before children; a folder
// whose visit returns false is not entered. Nothing is visited once *stop is true.
void WalkFolders(const std::string &folder, const std::function<bool(const std::string &, const struct stat &)> &visit,
                 const std::atomic<bool> *stop = nullptr);

}  // namespace mdbd
