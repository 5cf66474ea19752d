// Following changes below the shared folders with inotify: one watch per folder, and the folders
// in which something was made, written, moved or deleted. Names beginning with "." (hidden files,
// the temporary files of uploads) are passed over, as the scanner passes them over.
#pragma once

#include <set>
#include <string>
#include <unordered_map>

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

    enum class Added { kAll, kOutOfWatches, kFailed };
    // Watches folder and every folder below it (hidden ones and links back up excepted).
    // kOutOfWatches when the kernel's limit (max_user_watches) was reached on the way.
    Added AddTree(const std::string &folder);

    // Reads what is pending: the folders whose content changed, and whether the kernel's queue
    // overflowed (then changes were lost, and what is watched must be rescanned).
    void Read(std::set<std::string> &changed, bool &overflowed);

private:
    int m_fd = -1;
    std::unordered_map<int, std::string> m_folders;  // watch descriptor to folder
};

// True when folder lies on a file system whose changes inotify does not see (network and FUSE
// file systems: another machine changes them).
bool IsRemoteFileSystem(const std::string &folder);

}  // namespace mdbd
