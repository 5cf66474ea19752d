// Following folders whose changes inotify cannot see (network file systems, or once the kernel's
// watches are used up) by their modification times: a folder's time changes when an entry in it
// is made, renamed or deleted. Files rewritten in place go unseen until SIGHUP.
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <set>
#include <string>

namespace mdbd {

class FolderPoll {
public:
    // Follows folder and the folders below it from now on; false when it is followed already.
    bool Add(const std::string &folder, const std::atomic<bool> *stop);
    bool Empty() const { return m_roots.empty(); }
    // True once a minute after the last comparison.
    bool Due() const { return !m_roots.empty() && std::chrono::steady_clock::now() - m_last >= kInterval; }
    // Puts the followed folders that are new or whose time changed into changed.
    void Compare(std::set<std::string> &changed, const std::atomic<bool> *stop);

private:
    static constexpr std::chrono::seconds kInterval{60};
    bool Covers(const std::string &folder) const;
    void Record(const std::string &root, std::map<std::string, long long> &times, const std::atomic<bool> *stop) const;

    std::set<std::string> m_roots;
    std::map<std::string, long long> m_times;  // folder to modification time in nanoseconds
    std::chrono::steady_clock::time_point m_last = std::chrono::steady_clock::now();
};

}  // namespace mdbd
