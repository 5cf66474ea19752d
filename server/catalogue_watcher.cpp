// The scanning thread of mdbd.
#include "catalogue_watcher.h"

#include "changed_containers.h"
#include "eventing.h"
#include "folder_poll.h"
#include "folder_watch.h"
#include "library_lock.h"
#include "log.h"

#include <media_scanner.h>
#include <mdb_platform.h>

#include <poll.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <map>
#include <set>

namespace mdbd {

namespace {

using Clock = std::chrono::steady_clock;
// A folder is rescanned this long after its last change: a file being copied changes many times.
constexpr auto kSettle = std::chrono::seconds(1);
// ... but no longer than this after the first change while changes go on.
constexpr auto kMaxDelay = std::chrono::seconds(10);
// Changes per transaction: a batch is over in a few milliseconds, so a request waits little.
constexpr uint32_t kBatchSize = 200;

// The scanner's lock is the library mutex; each committed batch becomes an event.
class ScannerLock : public mdbscan::CatalogueLock {
public:
    ScannerLock(sqlite3 *db, Eventing &eventing) : m_db(db), m_eventing(eventing) {}
    void Lock() override { LibraryMutex().lock(); }
    void Unlock() override { LibraryMutex().unlock(); }

    /* The root list the library holds is read anew when roots changed. */
    void Committed(const std::set<long long> &folders) override {
        if (folders.count(0) != 0) {
            LibraryGuard guard;
            QRV_MDB_DbGetRoots(m_db);
        }
        m_eventing.Changed(ContainersOfFolders(folders));
    }

private:
    sqlite3 *m_db;
    Eventing &m_eventing;
};

mdbscan::ScanOptions ScanOptionsFor(mdbscan::CatalogueLock &lock, const std::atomic<bool> &stop) {
    mdbscan::ScanOptions options;
    options.batchSize = kBatchSize;
    options.lock = &lock;
    options.stop = &stop;
    options.messages = LogNoteStream();
    return options;
}

/* The folders to rescan for the changed ones: each as it is on disk (a folder that is gone is
 * rescanned from its nearest parent that is there, which sees it vanish), none below another
 * (a rescan takes in everything below). false when a shared folder itself is gone. */
bool FoldersToRescan(const std::set<std::string> &changed, const std::vector<std::string> &roots,
                     std::set<std::string> &folders) {
    for (std::string folder : changed) {
        struct stat st;
        while (stat(folder.c_str(), &st) != 0) {
            const bool isRoot = std::find(roots.begin(), roots.end(), folder) != roots.end();
            const std::string::size_type slash = folder.find_last_of('/');
            if (isRoot || slash == std::string::npos || slash == 0) {
                return false;
            }
            folder.erase(slash);
        }
        folders.insert(folder);
    }
    for (auto it = folders.begin(); it != folders.end();) {
        const std::string below = *it + "/";
        auto next = std::next(it);
        while (next != folders.end() && next->compare(0, below.size(), below) == 0) {
            next = folders.erase(next);
        }
        it = next;
    }
    return true;
}

}  // namespace

CatalogueWatcher::CatalogueWatcher(sqlite3 *db, Eventing &eventing, std::vector<std::string> folders, bool watch)
    : m_db(db), m_eventing(eventing), m_folders(std::move(folders)), m_watch(watch) {}

void CatalogueWatcher::Start() {
    m_stop = false;
    m_thread = std::thread([this] { Run(); });
}

void CatalogueWatcher::RequestRescan() { m_rescan = true; }

void CatalogueWatcher::Stop() {
    m_stop = true;
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

/* Scans every shared folder; the roots of folders no longer shared go. */
bool CatalogueWatcher::FullScan() {
    ScannerLock lock(m_db, m_eventing);
    mdbscan::ScanOptions options = ScanOptionsFor(lock, m_stop);
    options.dropOtherRoots = true;
    mdbscan::MediaScanner scanner(m_db, options);
    const auto started = Clock::now();
    const uint32_t rc = scanner.Scan(m_folders);
    const mdbscan::ScanCounts &c = scanner.counts();
    if (rc != MDB_OK) {
        if (!m_stop) {
            LogError("the scan stopped: %s", scanner.lastError().c_str());
        }
        return false;
    }
    const long long ms = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - started).count();
    LogNote("scanned %u media files in %u folders in %lld.%03lld s: %u added, %u updated, %u removed, %u skipped",
            c.files, c.folders, ms / 1000, ms % 1000, c.added, c.updated, c.removed, c.skipped);
    return true;
}

bool CatalogueWatcher::PrepareRoots() {
    ScannerLock lock(m_db, m_eventing);
    mdbscan::ScanOptions options = ScanOptionsFor(lock, m_stop);
    options.dropOtherRoots = true;
    options.rootsOnly = true;
    mdbscan::MediaScanner scanner(m_db, options);
    if (scanner.Scan(m_folders) != MDB_OK) {
        LogError("the shared folders cannot be entered in the catalogue: %s", scanner.lastError().c_str());
        return false;
    }
    return true;
}

void CatalogueWatcher::Rescan(const std::string &folder) {
    ScannerLock lock(m_db, m_eventing);
    mdbscan::MediaScanner scanner(m_db, ScanOptionsFor(lock, m_stop));
    if (scanner.RescanFolder(folder) != MDB_OK) {
        if (!m_stop) {
            LogError("%s could not be rescanned: %s", folder.c_str(), scanner.lastError().c_str());
        }
        return;
    }
    const mdbscan::ScanCounts &c = scanner.counts();
    if (c.added + c.updated + c.removed + c.foldersAdded + c.foldersRemoved > 0) {
        LogChange("rescanned %s: %u added, %u updated, %u removed", folder.c_str(), c.added, c.updated, c.removed);
    }
}

/* Watches folder and everything below it; what inotify cannot follow there is polled. */
void CatalogueWatcher::Follow(FolderWatch &watch, FolderPoll &poll, const std::string &folder) {
    const FolderWatch::Added added = watch.AddTree(folder, &m_stop);
    for (const std::string &remote : added.remote) {
        if (poll.Add(remote, &m_stop)) {
            LogNote("%s is a network file system, whose changes inotify does not see: it is rescanned every minute",
                    remote.c_str());
        }
    }
    if (added.outOfWatches && poll.Add(folder, &m_stop)) {
        LogNote("the kernel's inotify watches are used up (fs.inotify.max_user_watches): %s is rescanned every minute",
                folder.c_str());
    }
}

void CatalogueWatcher::Run() {
    // The folders are watched before the first scan: what changes while it runs is rescanned
    // after it.
    FolderWatch watch;
    FolderPoll poll;
    if (m_watch) {
        const bool opened = watch.Open();
        for (const std::string &folder : m_folders) {
            if (opened && !IsRemoteFileSystem(folder)) {
                Follow(watch, poll, folder);
            } else if (poll.Add(folder, &m_stop)) {
                LogNote("%s is rescanned every minute (%s)", folder.c_str(),
                        opened ? "a network file system, whose changes inotify does not see" : "no inotify");
            }
        }
    }
    FullScan();
    std::set<std::string> dirty;
    // Rescans wait for a second without changes, but no more than kMaxDelay after the first.
    auto lastChange = Clock::now(), firstChange = Clock::time_point::max();
    while (!m_stop) {
        struct pollfd pfd = {watch.fd(), POLLIN, 0};
        ::poll(&pfd, watch.fd() >= 0 ? 1 : 0, 250);
        if (m_stop) {
            break;
        }
        bool overflowed = false;
        if ((pfd.revents & POLLIN) != 0 && watch.Read(dirty, overflowed)) {
            lastChange = Clock::now();
            firstChange = std::min(firstChange, lastChange);
        }
        if (poll.Due()) {
            const size_t before = dirty.size();
            poll.Compare(dirty, &m_stop);
            if (dirty.size() > before) {  // a minute old already: no settling
                lastChange = Clock::now() - kSettle;
                firstChange = std::min(firstChange, lastChange);
            }
        }
        std::set<std::string> folders;
        const bool full = overflowed || m_rescan.exchange(false) ||
                          (!dirty.empty() && !FoldersToRescan(dirty, m_folders, folders));
        if (full) {
            LogNote(overflowed ? "too many changes at once for inotify: rescanning every shared folder"
                               : "rescanning every shared folder");
            dirty.clear();
            firstChange = Clock::time_point::max();
            FullScan();
            for (const std::string &folder : m_folders) {
                if (watch.fd() >= 0 && !IsRemoteFileSystem(folder)) {
                    Follow(watch, poll, folder);  // folders made meanwhile are watched from now on
                }
            }
            continue;
        }
        const auto now = Clock::now();
        if (dirty.empty() || (now - lastChange < kSettle && now - firstChange < kMaxDelay)) {
            continue;
        }
        dirty.clear();
        firstChange = Clock::time_point::max();
        for (const std::string &folder : folders) {
            if (m_stop) {
                break;
            }
            Rescan(folder);
            if (watch.fd() >= 0) {
                Follow(watch, poll, folder);  // folders made meanwhile are watched from now on
            }
        }
    }
}

}  // namespace mdbd
