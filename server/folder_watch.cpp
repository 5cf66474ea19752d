// inotify, one watch per folder.
#include "folder_watch.h"

#include "folder_walk.h"

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

FolderWatch::Added FolderWatch::AddTree(const std::string &folder, const std::atomic<bool> *stop) {
    Added added;
    dev_t rootDevice = 0;
    WalkFolders(
        folder,
        [&](const std::string &path, const struct stat &st) {
            if (path == folder) {
                rootDevice = st.st_dev;
            } else if (st.st_dev != rootDevice && IsRemoteFileSystem(path)) {
                added.remote.push_back(path);
                return false;
            }
            const int wd = added.outOfWatches ? -1 : inotify_add_watch(m_fd, path.c_str(), kEvents);
            if (wd < 0) {
                added.outOfWatches = added.outOfWatches || errno == ENOSPC;
                return !added.outOfWatches;
            }
            auto known = m_folders.find(wd);
            if (known != m_folders.end() && known->second != path) {
                // The same folder under another path: reached by a link (entered once, under the
                // first path), or moved there (the old path names something else now).
                struct stat old;
                if (stat(known->second.c_str(), &old) == 0 && old.st_dev == st.st_dev && old.st_ino == st.st_ino) {
                    return false;
                }
            }
            m_folders[wd] = path;
            return true;
        },
        stop);
    return added;
}

void FolderWatch::Forget(const std::string &path) {
    const std::string below = path + "/";
    for (auto it = m_folders.begin(); it != m_folders.end();) {
        if (it->second == path || it->second.compare(0, below.size(), below) == 0) {
            inotify_rm_watch(m_fd, it->first);
            it = m_folders.erase(it);
        } else {
            ++it;
        }
    }
}

bool FolderWatch::Read(std::set<std::string> &changed, bool &overflowed) {
    alignas(struct inotify_event) char buffer[16384];
    bool counted = false;
    for (;;) {
        const ssize_t got = read(m_fd, buffer, sizeof buffer);
        if (got <= 0) {
            return counted;
        }
        for (ssize_t at = 0; at < got;) {
            const struct inotify_event *event = reinterpret_cast<const struct inotify_event *>(buffer + at);
            at += static_cast<ssize_t>(sizeof(struct inotify_event) + event->len);
            if ((event->mask & IN_Q_OVERFLOW) != 0) {
                overflowed = true;
                counted = true;
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
                // The parent sees the folder go; a moved folder is watched again where it went
                // once its new parent is rescanned.
                const std::string path = folder->second;
                const std::string::size_type slash = path.find_last_of('/');
                changed.insert(slash == std::string::npos || slash == 0 ? path : path.substr(0, slash));
                if ((event->mask & IN_MOVE_SELF) != 0) {
                    Forget(path);
                }
                counted = true;
                continue;
            }
            if (event->len > 0 && event->name[0] == '.') {
                continue;
            }
            changed.insert(folder->second);
            counted = true;
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
