// Receiving the files of uploads.
#include "upload_receiver.h"

#include "changed_containers.h"
#include "eventing.h"
#include "library_lock.h"
#include "log.h"

#include <mdb_platform.h>
#include <upload_folder.h>

#include <fcntl.h>
#include <stdio.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

namespace mdbd {

namespace {

// The free space an upload leaves on its file system, for the catalogue and everyone else there.
constexpr uint64_t kSpareBytes = 64ull << 20;

/* Renames from to to unless to exists (then EEXIST). */
bool RenameWithoutReplacing(const std::string &from, const std::string &to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL) {
        return false;
    }
    // A file system without RENAME_NOREPLACE: a hard link fails on an existing name as well.
    if (link(from.c_str(), to.c_str()) != 0) {
        return false;
    }
    unlink(from.c_str());
    return true;
}

/* Gives the row of a complete upload its size and drops its note. false when the row is gone
 * (the object was destroyed while its file arrived). */
bool Complete(long long id, uint64_t size) {
    LibraryGuard guard;
    MdbItemDetail row{};
    if (QRV_MDB_GetItemDetailInfo(g_pstMdbCtx, id, &row) != MDB_OK || row.llId != id) {
        return false;
    }
    const uint32_t rc = QRV_MDB_DbUpdateItemValues(
        g_pstMdbCtx, row.llParentId, static_cast<int32_t>(row.ulFlags), row.acTitle, row.acFileName,
        static_cast<long long>(size), row.acDate, static_cast<int32_t>(row.ulBitsPerSample),
        static_cast<long long>(row.ullDuration), static_cast<int32_t>(row.ulNrAudioChannels),
        static_cast<long long>(row.ullResolution), static_cast<int32_t>(row.ulSampleFrequency),
        static_cast<int32_t>(row.ulBitrate), row.acLastModify, static_cast<int32_t>(row.ulOriginalTrackNumber),
        row.llExIdActor, row.llExIdAlbum, row.llExIdArtist, row.llExIdAuthor, row.llExIdCreator, row.llExIdDirector,
        row.llExIdGenre, row.llExIdProducer, row.llExIdPublisher, id);
    if (rc != MDB_OK || QRV_MDB_CheckUploadComplete(id) != 1) {
        return false;
    }
    QRV_MDB_DelUploadNote(id);
    return true;
}

}  // namespace

// One body on its way: the object, its file, the hidden file the body goes to, and its limits.
struct UploadReceiver::Transfer {
    long long id = 0;
    std::string path;
    std::string part;
    int fd = -1;
    uint64_t limit = 0;    // what the body may hold
    uint64_t room = 0;     // what the file system can take
    uint64_t written = 0;
};

std::string UploadPartName(long long id) { return ".mdbd-upload-" + std::to_string(id) + ".part"; }

void TellUploadFolderChanged(Eventing &eventing) {
    long long folder;
    {
        LibraryGuard guard;
        folder = mdbscan::UploadFolderId(g_pstMdbCtx);
    }
    if (folder > 0) {
        eventing.Changed(ContainersOfFolders({folder}));
    }
}

void UploadReceiver::Announce(long long id, uint64_t size) {
    std::lock_guard<std::mutex> guard(m_mutex);
    m_announced[id] = size;
}

void UploadReceiver::Forget(long long id) {
    std::lock_guard<std::mutex> guard(m_mutex);
    m_announced.erase(id);
}

bool UploadReceiver::Receiving(long long id) {
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_receiving.count(id) != 0;
}

void *UploadReceiver::Begin(const std::string &name, long long announcedSize, UploadReply &reply) {
    auto refuse = [&reply](unsigned status, const char *text) -> void * {
        reply.status = status;
        reply.text = text;
        return nullptr;
    };
    const long long id = ItemIdOf(name.c_str());
    if (id <= 0) {
        return refuse(404, "no upload waits here\n");
    }
    auto transfer = std::make_unique<Transfer>();
    transfer->id = id;
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        if (!m_receiving.insert(id).second) {
            return refuse(409, "another upload of this object is under way\n");
        }
        auto announced = m_announced.find(id);
        transfer->limit = announced != m_announced.end() && announced->second > 0 ? announced->second : m_maxUpload;
    }
    // The note is disabled in the same hold of the mutex that finds it waiting, so that the
    // time-out cannot destroy the object between the two.
    char *path = nullptr;
    bool waiting = false, complete = false;
    {
        LibraryGuard guard;
        const bool upload = mdbscan::IsUploadedObject(g_pstMdbCtx, id);
        complete = upload && QRV_MDB_CheckUploadComplete(id) == 1;
        waiting = upload && QRV_MDB_FindUploadNote(id) == 0 &&
                  QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr) == 0 && path != nullptr &&
                  QRV_MDB_DisableUploadNote(id) == 0;
    }
    if (path != nullptr) {
        transfer->path = path;
        std::free(path);
    }
    if (!waiting) {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_receiving.erase(id);
        return complete ? refuse(409, "this object is uploaded already\n") : refuse(404, "no upload waits here\n");
    }
    const std::string folder = transfer->path.substr(0, transfer->path.rfind('/'));
    struct statvfs fs;
    const uint64_t available =
        statvfs(folder.c_str(), &fs) == 0 ? static_cast<uint64_t>(fs.f_bavail) * fs.f_frsize : UINT64_MAX;
    transfer->room = available > kSpareBytes ? available - kSpareBytes : 0;
    transfer->part = folder + "/" + UploadPartName(id);
    unsigned status = 0;
    if (announcedSize >= 0 && static_cast<uint64_t>(announcedSize) > transfer->limit) {
        status = 413;
    } else if (announcedSize >= 0 && static_cast<uint64_t>(announcedSize) > transfer->room) {
        status = 507;
    } else {
        transfer->fd = open(transfer->part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644);
        status = transfer->fd < 0 ? 500 : 0;
    }
    if (status != 0) {
        End(transfer.release(), false);
        return refuse(status, status == 413   ? "the upload is larger than announced or allowed\n"
                              : status == 507 ? "not enough free space for the upload\n"
                                              : "the upload cannot be written\n");
    }
    LogRequest("upload of object %lld begins (%s)", id, transfer->path.c_str());
    return transfer.release();
}

bool UploadReceiver::Write(void *upload, const char *data, size_t size, UploadReply &reply) {
    Transfer *transfer = static_cast<Transfer *>(upload);
    if (transfer->written + size > transfer->limit || transfer->written + size > transfer->room) {
        reply.status = transfer->written + size > transfer->limit ? 413 : 507;
        reply.text = reply.status == 413 ? "the upload is larger than announced or allowed\n"
                                         : "not enough free space for the upload\n";
        return false;
    }
    while (size > 0) {
        const ssize_t done = write(transfer->fd, data, size);
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done <= 0) {
            reply.status = errno == ENOSPC || errno == EDQUOT ? 507 : 500;
            reply.text = "the upload cannot be written\n";
            return false;
        }
        data += done;
        size -= static_cast<size_t>(done);
        transfer->written += static_cast<uint64_t>(done);
    }
    return true;
}

void UploadReceiver::Finish(void *upload, UploadReply &reply) {
    Transfer *transfer = static_cast<Transfer *>(upload);
    // The completion test reads a non-zero size: an empty body cannot complete an upload.
    const bool stored = transfer->written > 0 && fdatasync(transfer->fd) == 0 && close(transfer->fd) == 0;
    transfer->fd = -1;
    if (!stored || !RenameWithoutReplacing(transfer->part, transfer->path)) {
        reply.status = transfer->written == 0 ? 400 : errno == EEXIST ? 409 : 500;
        reply.text = transfer->written == 0 ? "the upload has no body\n" : "the upload cannot be stored\n";
        End(transfer, false);
        return;
    }
    if (!Complete(transfer->id, transfer->written)) {
        unlink(transfer->path.c_str());  // the file this upload made: its object is gone
        reply.status = 410;
        reply.text = "the object was destroyed while its file arrived\n";
        End(transfer, false);
        return;
    }
    LogRequest("upload of object %lld complete: %llu bytes", transfer->id,
               static_cast<unsigned long long>(transfer->written));
    reply.status = 200;
    reply.text = "uploaded\n";
    End(transfer, true);
}

void UploadReceiver::Abort(void *upload) {
    Transfer *transfer = static_cast<Transfer *>(upload);
    LogRequest("upload of object %lld broke off after %llu bytes; the object is destroyed", transfer->id,
               static_cast<unsigned long long>(transfer->written));
    End(transfer, false);
}

/* Ends a transfer: its hidden file goes; the object too unless its upload is complete. */
void UploadReceiver::End(Transfer *transfer, bool keepObject) {
    std::unique_ptr<Transfer> owned(transfer);
    if (transfer->fd >= 0) {
        close(transfer->fd);
    }
    if (!transfer->part.empty()) {
        unlink(transfer->part.c_str());
    }
    if (!keepObject) {
        LibraryGuard guard;
        if (mdbscan::IsUploadedObject(g_pstMdbCtx, transfer->id) && QRV_MDB_CheckUploadComplete(transfer->id) == 0) {
            QRV_MDB_DestroyObject(transfer->id);
        }
    }
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_receiving.erase(transfer->id);
        m_announced.erase(transfer->id);
    }
    TellUploadFolderChanged(m_eventing);
}

}  // namespace mdbd
