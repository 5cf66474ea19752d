// inotify, one watch per folder.
#include "folder_watch.h"

#include <dirent.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

namespace mdbd {

namespace {

constexpr uint32_t kEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB |
                             IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr size_t kMaxDepth = 64;

}  // namespace

FolderWatch::~FolderWatch() {
    if (m_fd >= 0) {
        close(m_fd);
    }
}

bool FolderWatch::Open() {
    m_fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    return m_fd >= 0;
}

FolderWatch::Added FolderWatch::AddTree(const std::string &folder) {
    std::vector<std::pair<std::string, size_t>> pending = {{folder, 0}};
    Added result = Added::kAll;
    while (!pending.empty()) {
        const auto [path, depth] = pending.back();
        pending.pop_back();
        const int wd = inotify_add_watch(m_fd, path.c_str(), kEvents);
        if (wd < 0) {
            if (errno == ENOSPC) {
                return Added::kOutOfWatches;
            }
            result = Added::kFailed;
            continue;
        }
        if (m_folders.count(wd) != 0 && m_folders[wd] != path) {
            continue;  // a folder that is watched already (a link to it): not entered twice
        }
        m_folders[wd] = path;
        DIR *dir = depth < kMaxDepth ? opendir(path.c_str()) : nullptr;
        while (dir != nullptr) {
            struct dirent *entry = readdir(dir);
            if (entry == nullptr) {
                closedir(dir);
                break;
            }
            if (entry->d_name[0] == '.') {
                continue;
            }
            const std::string child = path + "/" + entry->d_name;
            struct stat st;
            if (stat(child.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
                pending.push_back({child, depth + 1});
            }
        }
    }
    return result;
}

void FolderWatch::Read(std::set<std::string> &changed, bool &overflowed) {
    alignas(struct inotify_event) char buffer[16384];
    for (;;) {
        const ssize_t got = read(m_fd, buffer, sizeof buffer);
        if (got <= 0) {
            return;
        }
        for (ssize_t at = 0; at < got;) {
            const struct inotify_event *event = reinterpret_cast<const struct inotify_event *>(buffer + at);
            at += static_cast<ssize_t>(sizeof(struct inotify_event) + event->len);
            if ((event->mask & IN_Q_OVERFLOW) != 0) {
                overflowed = true;
                continue;
            }
            auto folder = m_folders.find(event->wd);
            if (folder == m_folders.end()) {
                continue;
            }
            if ((event->mask & IN_IGNORED) != 0) {
                m_folders.erase(folder);
                continue;
            }
            if ((event->mask & (IN_DELETE_SELF | IN_MOVE_SELF)) != 0) {
                const std::string::size_type slash = folder->second.find_last_of('/');
                changed.insert(slash == std::string::npos ? folder->second : folder->second.substr(0, slash));
                continue;
            }
            if (event->len > 0 && event->name[0] == '.') {
                continue;
            }
            changed.insert(folder->second);
        }
    }
}

bool IsRemoteFileSystem(const std::string &folder) {
    struct statfs fs;
    if (statfs(folder.c_str(), &fs) != 0) {
        return false;
    }
    switch (static_cast<unsigned long>(fs.f_type)) {
    case 0x6969:      // NFS
    case 0x517B:      // SMB
    case 0xFF534D42:  // CIFS
    case 0xFE534D42:  // SMB2
    case 0x65735546:  // FUSE
    case 0x01021997:  // 9P
    case 0x73757245:  // Coda
    case 0x564C:      // NCP
        return true;
    default:
        return false;
    }
}

}  // namespace mdbd
