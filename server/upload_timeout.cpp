// The upload time-out thread and the leftovers of an earlier run.
#include "upload_timeout.h"

#include "library_lock.h"
#include "log.h"
#include "upload_receiver.h"

#include <mdb_platform.h>
#include <upload_folder.h>

#include <dirent.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace mdbd {

namespace {

constexpr auto kInterval = std::chrono::seconds(2);
// Expired objects destroyed in one round at most; the next round takes the rest.
constexpr int kMaxPerRound = 16;

/* The objects whose upload note waits (is subject to the time-out). Library mutex held. */
std::set<long long> WaitingUploads() {
    std::set<long long> ids;
    for (const MdbUploadNote *note = g_pstUploadList; note != nullptr; note = note->pstNext) {
        if (note->ulState == 1) {
            ids.insert(note->llObjectId);
        }
    }
    return ids;
}

int CollectId(void *ids, int columns, char **values, char **) {
    if (columns > 0 && values[0] != nullptr) {
        static_cast<std::vector<long long> *>(ids)->push_back(std::atoll(values[0]));
    }
    return 0;
}

}  // namespace

unsigned UploadTimeout::DestroyLeftovers() {
    LibraryGuard guard;
    const long long folder = mdbscan::UploadFolderId(g_pstMdbCtx);
    if (folder <= 0) {
        return 0;
    }
    // What CreateObject made and no file completed: size 0 and no modification time, which every
    // scanned file has.
    std::vector<long long> ids;
    char *sql = sqlite3_mprintf("select id from ITEM where parentID=%lld and size=0 and lastModify='' and "
                                "(flags & %u) != %u",
                                folder, static_cast<unsigned>(MDB_FLAGS_CLASS_MASK),
                                static_cast<unsigned>(MDB_CLASS_FOLDER));
    if (sql != nullptr) {
        MdbExecSql(g_pstMdbCtx, sql, CollectId, &ids, nullptr);
        sqlite3_free(sql);
    }
    for (long long id : ids) {
        QRV_MDB_DestroyObject(id);
    }
    char *path = nullptr;
    if (QRV_MDB_GetFileInfoById(folder, &path, nullptr, nullptr, nullptr, nullptr) == 0 && path != nullptr) {
        const std::string prefix = ".mdbd-upload-";
        if (DIR *dir = opendir(path)) {
            while (const struct dirent *entry = readdir(dir)) {
                const std::string name = entry->d_name;
                if (name.compare(0, prefix.size(), prefix) == 0) {
                    unlink((std::string(path) + "/" + name).c_str());
                }
            }
            closedir(dir);
        }
    }
    std::free(path);
    return static_cast<unsigned>(ids.size());
}

void UploadTimeout::Start() {
    m_stopping = false;
    m_thread = std::thread([this] { Run(); });
}

void UploadTimeout::Stop() {
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void UploadTimeout::Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_wake.wait_for(lock, kInterval, [this] { return m_stopping; })) {
        lock.unlock();
        Expire();
        lock.lock();
    }
}

/* The library's time-out destroys one expired object per call and answers 0 whether it did or
 * not: what went is read from the note list before and after, and called again while one went. */
void UploadTimeout::Expire() {
    for (int round = 0; round < kMaxPerRound; ++round) {
        std::set<long long> gone;
        {
            LibraryGuard guard;
            const std::set<long long> before = WaitingUploads();
            if (before.empty()) {
                return;
            }
            QRV_MDB_AutoDestroyObject();
            const std::set<long long> after = WaitingUploads();
            for (long long id : before) {
                if (after.count(id) == 0) {
                    gone.insert(id);
                }
            }
        }
        if (gone.empty()) {
            return;
        }
        for (long long id : gone) {
            m_receiver.Forget(id);
            LogNote("the file of upload %lld never came: the object is destroyed", id);
        }
        TellUploadFolderChanged(m_eventing);
    }
}

}  // namespace mdbd
