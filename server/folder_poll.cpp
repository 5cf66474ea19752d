// Modification times of folders, compared once a minute.
#include "folder_poll.h"

#include "folder_walk.h"

#include <iterator>

namespace mdbd {

bool FolderPoll::Covers(const std::string &folder) const {
    for (const std::string &root : m_roots) {
        if (folder == root || folder.compare(0, root.size() + 1, root + "/") == 0) {
            return true;
        }
    }
    return false;
}

void FolderPoll::Record(const std::string &root, std::map<std::string, long long> &times,
                        const std::atomic<bool> *stop) const {
    WalkFolders(
        root,
        [&times](const std::string &path, const struct stat &st) {
            times[path] = static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
            return true;
        },
        stop);
}

bool FolderPoll::Add(const std::string &folder, const std::atomic<bool> *stop) {
    if (Covers(folder)) {
        return false;
    }
    const std::string below = folder + "/";
    for (auto it = m_roots.begin(); it != m_roots.end();) {
        it = it->compare(0, below.size(), below) == 0 ? m_roots.erase(it) : std::next(it);
    }
    m_roots.insert(folder);
    Record(folder, m_times, stop);
    return true;
}

void FolderPoll::Compare(std::set<std::string> &changed, const std::atomic<bool> *stop) {
    m_last = std::chrono::steady_clock::now();
    std::map<std::string, long long> now;
    for (const std::string &root : m_roots) {
        Record(root, now, stop);
    }
    if (stop != nullptr && *stop) {
        return;
    }
    for (const auto &[folder, time] : now) {
        auto before = m_times.find(folder);
        if (before == m_times.end() || before->second != time) {
            changed.insert(folder);
        }
    }
    m_times.swap(now);
}

}  // namespace mdbd
