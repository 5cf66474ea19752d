// The scanning thread of mdbd.
#include "catalogue_watcher.h"

#include "eventing.h"
#include "folder_watch.h"
#include "library_lock.h"
#include "log.h"

#include <adapt/handler_wrappers.h>
#include <media_scanner.h>
#include <mdb_platform.h>

#include <dirent.h>
#include <poll.h>
#include <sys/stat.h>

#include <chrono>
#include <map>
#include <set>

namespace mdbd {

namespace {

using Clock = std::chrono::steady_clock;
// A folder is rescanned this long after its last change: a file being copied changes many times.
constexpr auto kSettle = std::chrono::seconds(1);
// Where inotify cannot follow, folders are compared with the disk this often.
constexpr auto kPollInterval = std::chrono::seconds(60);
// Changes per transaction: a batch is over in a few milliseconds, so a request waits little.
constexpr uint32_t kBatchSize = 200;

/* Calls fn for every node of the static tree with its handler kind and id. */
template <typename Fn>
void ForEachContainer(const MdbStaticContainer *node, Fn fn) {
    char id[256];
    if (QRV_MDB_StaticContainerGetObjId(node, id, sizeof id) == MDB_OK) {
        fn(*node, mdbadapt::KindOfHandler(node->pfnBrowse), std::string(id));
    }
    for (uint16_t i = 0; node->pstChildren != nullptr && i < node->usChildNum; ++i) {
        ForEachContainer(&node->pstChildren[i], fn);
    }
}

// The scanner's lock is the library mutex; each committed batch becomes an event.
class ScannerLock : public mdbscan::CatalogueLock {
public:
    ScannerLock(sqlite3 *db, Eventing &eventing) : m_db(db), m_eventing(eventing) {}
    void Lock() override { LibraryMutex().lock(); }
    void Unlock() override { LibraryMutex().unlock(); }

    /* The containers that list a changed folder's children (the folder views of the classes the
     * folder holds, "<view>|<folder>", or the views themselves for the roots) and the all-items
     * containers of those classes. The root list the library holds is read anew when roots
     * changed. */
    void Committed(const std::set<long long> &folders) override {
        std::set<std::string> containers;
        LibraryGuard guard;
        for (long long folder : folders) {
            uint32_t flags = 0;
            if (folder != 0) {
                QRV_MDB_GetItemInfo(m_db, folder, nullptr, nullptr, 0, &flags);
            } else {
                QRV_MDB_DbGetRoots(m_db);
            }
            ForEachContainer(&g_stRootContainer, [&](const MdbStaticContainer &node, mdbadapt::HandlerKind kind,
                                                      const std::string &id) {
                const bool holds = folder == 0 || (node.usAdaptData < 32 && (flags & (1u << node.usAdaptData)) != 0);
                if (kind == mdbadapt::HandlerKind::kFolders && holds) {
                    containers.insert(folder == 0 ? id : id + "|" + std::to_string(folder));
                } else if (kind == mdbadapt::HandlerKind::kAllItems && holds) {
                    containers.insert(id);
                }
            });
        }
        m_eventing.Changed(containers);
    }

private:
    sqlite3 *m_db;
    Eventing &m_eventing;
};

/* The modification times of folder and every folder below it. */
void FolderTimes(const std::string &folder, std::map<std::string, long long> &times, size_t depth = 0) {
    struct stat st;
    if (depth > 64 || stat(folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) || times.count(folder) != 0) {
        return;
    }
    times[folder] = static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
    DIR *dir = opendir(folder.c_str());
    while (dir != nullptr) {
        struct dirent *entry = readdir(dir);
        if (entry == nullptr) {
            closedir(dir);
            break;
        }
        if (entry->d_name[0] != '.') {
            FolderTimes(folder + "/" + entry->d_name, times, depth + 1);
        }
    }
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
    mdbscan::ScanOptions options;
    options.batchSize = kBatchSize;
    options.lock = &lock;
    options.dropOtherRoots = true;
    options.stop = &m_stop;
    options.messages = LogNoteStream();
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

void CatalogueWatcher::Rescan(const std::string &folder) {
    ScannerLock lock(m_db, m_eventing);
    mdbscan::ScanOptions options;
    options.batchSize = kBatchSize;
    options.lock = &lock;
    options.stop = &m_stop;
    options.messages = LogNoteStream();
    mdbscan::MediaScanner scanner(m_db, options);
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

void CatalogueWatcher::Run() {
    FullScan();
    FolderWatch watch;
    bool polling = false;  // some folder is followed by its modification time
    std::map<std::string, long long> times;
    if (m_watch) {
        const bool opened = watch.Open();
        for (const std::string &folder : m_folders) {
            if (!opened || IsRemoteFileSystem(folder)) {
                LogNote("%s is followed by a rescan every minute (%s)", folder.c_str(),
                        opened ? "a network file system, whose changes inotify does not see" : "no inotify");
                polling = true;
            } else if (watch.AddTree(folder) == FolderWatch::Added::kOutOfWatches) {
                LogNote("the kernel's inotify watches are used up (fs.inotify.max_user_watches); %s is followed by a "
                        "rescan every minute",
                        folder.c_str());
                polling = true;
            }
        }
        if (polling) {
            for (const std::string &folder : m_folders) {
                FolderTimes(folder, times);
            }
        }
    }
    std::set<std::string> dirty;
    Clock::time_point lastChange = Clock::now(), lastPoll = Clock::now();
    while (!m_stop) {
        struct pollfd pfd = {watch.fd(), POLLIN, 0};
        poll(&pfd, watch.fd() >= 0 ? 1 : 0, 250);
        if (m_stop) {
            break;
        }
        if (m_rescan.exchange(false)) {
            LogNote("rescanning every shared folder");
            FullScan();
            dirty.clear();
            continue;
        }
        if ((pfd.revents & POLLIN) != 0) {
            bool overflowed = false;
            watch.Read(dirty, overflowed);
            lastChange = Clock::now();
            if (overflowed) {
                LogNote("too many changes at once for inotify; rescanning every shared folder");
                dirty.clear();
                FullScan();
                continue;
            }
        }
        if (polling && Clock::now() - lastPoll >= kPollInterval) {
            lastPoll = Clock::now();
            std::map<std::string, long long> now;
            for (const std::string &folder : m_folders) {
                FolderTimes(folder, now);
            }
            for (const auto &entry : now) {
                auto before = times.find(entry.first);
                if (before == times.end() || before->second != entry.second) {
                    dirty.insert(entry.first);
                }
            }
            times.swap(now);
        }
        if (!dirty.empty() && Clock::now() - lastChange >= kSettle) {
            std::set<std::string> folders;
            folders.swap(dirty);
            for (std::string folder : folders) {
                // A folder that is gone is rescanned from its parent, which sees it vanish.
                struct stat st;
                while (stat(folder.c_str(), &st) != 0 && folder.find('/', 1) != std::string::npos) {
                    folder.erase(folder.find_last_of('/'));
                }
                Rescan(folder);
                if (watch.fd() >= 0) {
                    watch.AddTree(folder);  // folders made meanwhile are watched from now on
                }
            }
        }
    }
}

}  // namespace mdbd
