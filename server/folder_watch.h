// Following changes below the shared folders with inotify: one watch per folder, and the folders
// in which something was made, written, moved or deleted. Names beginning with "." (hidden files,
// the temporary files of uploads) are passed over, as the scanner passes them over.
#pragma once

#include <atomic>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace mdbd {

class FolderWatch {
public:
    FolderWatch() = default;
    ~FolderWatch();
    FolderWatch(const FolderWatch &) = delete;
    FolderWatch &operator=(const FolderWatch &) = delete;

    // false when the kernel offers no inotify.
    bool Open();
    int fd() const { return m_fd; }

    struct Added {
        bool outOfWatches = false;        // the kernel's limit (max_user_watches) was reached
        std::vector<std::string> remote;  // folders on network file systems, left unwatched
    };
    // Watches folder and every folder below it; a folder watched under a path that is no longer
    // its own (it was moved) is watched under its new path from now on.
    Added AddTree(const std::string &folder, const std::atomic<bool> *stop);

    // Reads what is pending into changed (the folders whose content changed) and overflowed (the
    // kernel's queue overflowed: changes were lost, what is watched must be rescanned). true when
    // it read a change that counts.
    bool Read(std::set<std::string> &changed, bool &overflowed);

private:
    // Drops the watches of path and of the folders below it (path was moved away).
    void Forget(const std::string &path);

    int m_fd = -1;
    std::unordered_map<int, std::string> m_folders;  // watch descriptor to folder
};

// True when folder lies on a file system whose changes inotify does not see (network and FUSE
// file systems: another machine changes them).
bool IsRemoteFileSystem(const std::string &folder);

}  // namespace mdbd
