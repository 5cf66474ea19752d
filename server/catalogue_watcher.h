// Keeping mdbd's catalogue current, in a thread of its own: the first scan of the shared folders
// (clients browse while it fills the catalogue), then the folders' changes followed with inotify
// (a folder that changed is rescanned a second after the last change, or ten seconds after the
// first while changes go on; a queue overflow rescans everything), or, where inotify cannot follow
// (watches used up, network file systems), a rescan of the folders whose modification time
// changed, once a minute. SIGHUP asks for a full rescan. Each batch the scanner commits raises
// SystemUpdateID and names its containers.
//
// The scanner reads directories and tags with no lock held and no transaction open; it writes
// in short batches, each holding the library mutex from BEGIN IMMEDIATE to COMMIT, so that a
// request waits at most one batch. The mutex is always taken before SQLite's write lock, never
// while holding it, so the two cannot deadlock.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <mdb.h>

namespace mdbd {

class Eventing;
class FolderPoll;
class FolderWatch;

class CatalogueWatcher {
public:
    CatalogueWatcher(sqlite3 *db, Eventing &eventing, std::vector<std::string> folders, bool watch);
    ~CatalogueWatcher() { Stop(); }
    CatalogueWatcher(const CatalogueWatcher &) = delete;
    CatalogueWatcher &operator=(const CatalogueWatcher &) = delete;

    // Writes the root rows of the shared folders (dropping those of folders no longer shared) and
    // makes the upload folder, before the server answers; the scan itself runs in the thread.
    // false when the catalogue cannot be written.
    bool PrepareRoots();
    void Start();
    // Asks for a full rescan (SIGHUP).
    void RequestRescan();
    // Ends a scan under way at its next file and stops the thread.
    void Stop();

private:
    void Run();
    bool FullScan();
    void Rescan(const std::string &folder);
    void Follow(FolderWatch &watch, FolderPoll &poll, const std::string &folder);

    sqlite3 *m_db;
    Eventing &m_eventing;
    const std::vector<std::string> m_folders;
    const bool m_watch;
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_rescan{false};
    std::thread m_thread;
};

}  // namespace mdbd
