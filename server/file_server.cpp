// Serving media files, and handing uploads over.
#include "file_server.h"

#include "byte_range.h"
#include "library_lock.h"
#include "log.h"

#include <mdb_platform.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <strings.h>
#include <microhttpd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace mdbd {

namespace {

std::atomic<uint16_t> g_fileServerPort{0};

constexpr char kMediaPrefix[] = "/web/mdb/";
constexpr char kUploadPrefix[] = "/web/upload/";
constexpr unsigned kConnectionLimit = 64;
constexpr unsigned kConnectionsPerClient = 24;
// A connection that has neither sent nor read for this long is closed (a paused TV keeps reading).
constexpr unsigned kIdleSeconds = 300;

// What the file server serves for one item.
struct MediaFile {
    std::string path;
    std::string mime;
    std::string contentFeatures;  // the fourth field of the item's protocolInfo
    bool streaming = false;       // audio and video stream; pictures are interactive
};

}  // namespace

long long ItemIdOf(const char *name) {
    const char *pc = name;
    long long id = 0;
    for (; std::isdigit(static_cast<unsigned char>(*pc)); ++pc) {
        if (id > (LLONG_MAX - 9) / 10) {
            return 0;
        }
        id = id * 10 + (*pc - '0');
    }
    if (pc == name) {
        return 0;
    }
    if (*pc == '.') {
        const char *ext = ++pc;
        while (std::isalnum(static_cast<unsigned char>(*pc))) {
            ++pc;
        }
        if (pc == ext || pc - ext > 10) {
            return 0;
        }
    }
    return *pc == '\0' ? id : 0;
}

namespace {

/* The file of item id, looked up under the library mutex. false for no row, a folder, an object
 * whose upload is still pending, or no file. */
bool LookUpItem(long long id, MediaFile &file) {
    LibraryGuard guard;
    uint32_t flags = 0;
    if (QRV_MDB_GetItemInfo(g_pstMdbCtx, id, nullptr, nullptr, 0, &flags) != MDB_OK ||
        (flags & MDB_FLAGS_CLASS_MASK) <= 10 || QRV_MDB_FindUploadNote(id) == 0) {
        return false;
    }
    char *path = nullptr;
    const char *mime = nullptr;
    if (QRV_MDB_GetFileInfoById(id, &path, &mime, nullptr, nullptr, nullptr) != 0 || path == nullptr) {
        std::free(path);
        return false;
    }
    file.path = path;
    std::free(path);
    file.mime = mime != nullptr ? mime : "application/octet-stream";
    char info[512];
    if (QRV_MDB_GetProtocolInfo(flags, info, sizeof info) == MDB_OK) {
        const char *features = info;
        for (int colons = 0; colons < 3 && features != nullptr; ++colons) {
            features = std::strchr(features, ':');
            features = features != nullptr ? features + 1 : nullptr;
        }
        file.contentFeatures = features != nullptr && std::strcmp(features, "*") != 0 ? features : "";
    }
    const uint32_t itemClass = flags & MDB_FLAGS_CLASS_MASK;
    file.streaming = itemClass == MDB_CLASS_MUSIC || itemClass == MDB_CLASS_VIDEO;
    return true;
}

MHD_Result Reply(MHD_Connection *connection, unsigned status, const char *text) {
    MHD_Response *response =
        MHD_create_response_from_buffer(std::strlen(text), const_cast<char *>(text), MHD_RESPMEM_MUST_COPY);
    if (response == nullptr) {
        return MHD_NO;
    }
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, "text/plain; charset=utf-8");
    if (status == MHD_HTTP_METHOD_NOT_ALLOWED) {
        MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD, PUT, POST");
    }
    const MHD_Result queued = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return queued;
}

/* The transfer mode of the answer: the one the client asks for (transferMode.dlna.org) when the
 * item allows it, the item's own when it asks for none or for no mode DLNA knows; NULL for a mode
 * the item does not allow (Streaming of an image, Interactive of audio or video), which is 406. */
const char *TransferMode(const char *asked, bool streaming) {
    const char *own = streaming ? "Streaming" : "Interactive";
    if (asked == nullptr) {
        return own;
    }
    if (strcasecmp(asked, "Background") == 0) {
        return "Background";
    }
    if (strcasecmp(asked, "Streaming") == 0 || strcasecmp(asked, "Interactive") == 0) {
        return strcasecmp(asked, own) == 0 ? own : nullptr;
    }
    return own;
}

/* GET or HEAD of one media item. */
MHD_Result ServeItem(MHD_Connection *connection, const char *name) {
    MediaFile file;
    const long long id = ItemIdOf(name);
    if (id <= 0 || !LookUpItem(id, file)) {
        return Reply(connection, MHD_HTTP_NOT_FOUND, "no such item\n");
    }
    const char *mode =
        TransferMode(MHD_lookup_connection_value(connection, MHD_HEADER_KIND, "transferMode.dlna.org"), file.streaming);
    if (mode == nullptr) {
        return Reply(connection, MHD_HTTP_NOT_ACCEPTABLE, "this transfer mode is not offered for this item\n");
    }
    const int fd = open(file.path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat st;
    if (fd < 0 || fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        if (fd >= 0) {
            close(fd);
        }
        return Reply(connection, MHD_HTTP_NOT_FOUND, "no such item\n");
    }
    const uint64_t size = static_cast<uint64_t>(st.st_size);
    const ByteRange range =
        ReadByteRange(MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_RANGE), size);
    if (range.kind == ByteRange::kUnsatisfiable) {
        close(fd);
        MHD_Response *response = MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT);
        const std::string contentRange = "bytes */" + std::to_string(size);
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_RANGE, contentRange.c_str());
        const MHD_Result queued = MHD_queue_response(connection, MHD_HTTP_RANGE_NOT_SATISFIABLE, response);
        MHD_destroy_response(response);
        return queued;
    }
    // The response owns the descriptor from here and closes it when it is done.
    MHD_Response *response = MHD_create_response_from_fd_at_offset64(range.length, fd, range.offset);
    if (response == nullptr) {
        close(fd);
        return MHD_NO;
    }
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, file.mime.c_str());
    MHD_add_response_header(response, MHD_HTTP_HEADER_ACCEPT_RANGES, "bytes");
    if (!file.contentFeatures.empty()) {
        MHD_add_response_header(response, "contentFeatures.dlna.org", file.contentFeatures.c_str());
    }
    MHD_add_response_header(response, "transferMode.dlna.org", mode);
    unsigned status = MHD_HTTP_OK;
    if (range.kind == ByteRange::kPart) {
        const std::string contentRange = "bytes " + std::to_string(range.offset) + "-" +
                                         std::to_string(range.offset + range.length - 1) + "/" + std::to_string(size);
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_RANGE, contentRange.c_str());
        status = MHD_HTTP_PARTIAL_CONTENT;
    }
    const MHD_Result queued = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return queued;
}

// The state of one upload request between the calls of the access handler.
struct UploadRequest {
    void *upload = nullptr;  // the handler's state; NULL once finished, refused or aborted
    bool replied = false;
};

}  // namespace

struct FileServerAccess {
    static MHD_Result Access(void *cls, MHD_Connection *connection, const char *url, const char *method,
                             const char *, const char *data, size_t *dataSize, void **requestState) {
        FileServer *server = static_cast<FileServer *>(cls);
        const bool read = std::strcmp(method, MHD_HTTP_METHOD_GET) == 0 || std::strcmp(method, MHD_HTTP_METHOD_HEAD) == 0;
        const bool write = std::strcmp(method, MHD_HTTP_METHOD_PUT) == 0 || std::strcmp(method, MHD_HTTP_METHOD_POST) == 0;
        if (read && std::strncmp(url, kMediaPrefix, sizeof kMediaPrefix - 1) == 0) {
            LogRequest("file server %s %s", method, url);
            return ServeItem(connection, url + sizeof kMediaPrefix - 1);
        }
        if (!write || std::strncmp(url, kUploadPrefix, sizeof kUploadPrefix - 1) != 0 || server->m_uploads == nullptr) {
            return Reply(connection, read || write ? MHD_HTTP_NOT_FOUND : MHD_HTTP_METHOD_NOT_ALLOWED,
                         read || write ? "not found\n" : "method not allowed\n");
        }
        return Upload(server->m_uploads, connection, url + sizeof kUploadPrefix - 1, data, dataSize, requestState);
    }

    /* An upload request: begun on the first call, fed a piece per call, finished on the call
     * that comes with no more data. A refused piece is answered at once. */
    static MHD_Result Upload(UploadHandler *handler, MHD_Connection *connection, const char *name, const char *data,
                             size_t *dataSize, void **requestState) {
        UploadRequest *request = static_cast<UploadRequest *>(*requestState);
        UploadReply reply;
        if (request == nullptr) {
            const char *length = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_CONTENT_LENGTH);
            char *end = nullptr;
            const long long announced = length != nullptr ? std::strtoll(length, &end, 10) : -1;
            request = new UploadRequest;
            *requestState = request;
            request->upload = handler->Begin(name, end != nullptr && *end == '\0' ? announced : -1, reply);
            if (request->upload == nullptr) {
                request->replied = true;
                return Reply(connection, reply.status, reply.text.c_str());
            }
            return MHD_YES;
        }
        if (*dataSize > 0) {
            if (request->upload != nullptr && !handler->Write(request->upload, data, *dataSize, reply)) {
                handler->Abort(request->upload);
                request->upload = nullptr;
                request->replied = true;
                *dataSize = 0;
                return Reply(connection, reply.status, reply.text.c_str());
            }
            *dataSize = 0;
            return MHD_YES;
        }
        if (request->replied) {
            return MHD_YES;
        }
        handler->Finish(request->upload, reply);
        request->upload = nullptr;
        request->replied = true;
        return Reply(connection, reply.status, reply.text.c_str());
    }

    /* A request ended: an upload that did not finish is aborted. */
    static void Completed(void *cls, MHD_Connection *, void **requestState, MHD_RequestTerminationCode) {
        UploadRequest *request = static_cast<UploadRequest *>(*requestState);
        if (request == nullptr) {
            return;
        }
        if (request->upload != nullptr) {
            static_cast<FileServer *>(cls)->m_uploads->Abort(request->upload);
        }
        delete request;
        *requestState = nullptr;
    }
};

bool FileServer::Start(const std::string &address, uint16_t port, UploadHandler *uploads, std::string &error) {
    m_uploads = uploads;
    struct sockaddr_in bind {};
    bind.sin_family = AF_INET;
    bind.sin_port = htons(port);
    bind.sin_addr.s_addr = htonl(INADDR_ANY);
    if (!address.empty() && inet_pton(AF_INET, address.c_str(), &bind.sin_addr) != 1) {
        error = "the file server cannot listen on " + address;
        return false;
    }
    m_daemon = MHD_start_daemon(
        MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_THREAD_PER_CONNECTION | MHD_USE_ERROR_LOG, port, nullptr, nullptr,
        &FileServerAccess::Access, this, MHD_OPTION_SOCK_ADDR, &bind, MHD_OPTION_CONNECTION_LIMIT, kConnectionLimit,
        MHD_OPTION_PER_IP_CONNECTION_LIMIT, kConnectionsPerClient, MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds,
        MHD_OPTION_NOTIFY_COMPLETED, &FileServerAccess::Completed, this, MHD_OPTION_END);
    if (m_daemon == nullptr) {
        error = "the file server cannot listen on " + (address.empty() ? std::string("any address") : address) +
                " port " + std::to_string(port);
        return false;
    }
    const MHD_DaemonInfo *info = MHD_get_daemon_info(m_daemon, MHD_DAEMON_INFO_BIND_PORT);
    m_port = info != nullptr ? info->port : port;
    g_fileServerPort = m_port;
    return true;
}

void FileServer::Stop() {
    if (m_daemon != nullptr) {
        MHD_stop_daemon(m_daemon);
        m_daemon = nullptr;
    }
}

uint16_t FileServerPort() { return g_fileServerPort.load(); }

}  // namespace mdbd
