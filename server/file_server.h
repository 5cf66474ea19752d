// mdbd's HTTP file server, on its own port with libmicrohttpd (libupnp's web server keeps a whole
// POST body in memory, closes every connection after one request, and a streaming download holds
// one of its few workers). It serves GET and HEAD of "/web/mdb/<id>.<ext>": only item ids that
// resolve through the catalogue, never a path taken from the URL; single byte ranges; the DLNA
// headers TVs need for seeking; keep-alive; the file sent from its descriptor (sendfile). A thread
// per connection, so that a stream never waits for another, and a request waits for the library
// mutex only while its item is looked up. Uploads to "/web/upload/" go to an UploadHandler.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

struct MHD_Daemon;

namespace mdbd {

// The answer to an upload request that ends it: an HTTP status and a short text.
struct UploadReply {
    unsigned status = 0;
    std::string text;
};

// Receives upload bodies (PUT or POST to "/web/upload/<name>"), in pieces as they arrive.
class UploadHandler {
public:
    virtual ~UploadHandler() = default;
    // A new upload of name (what follows "/web/upload/"); announcedSize is the Content-Length, or
    // -1 without one. Returns the upload's state, or NULL with the reply that refuses it.
    virtual void *Begin(const std::string &name, long long announcedSize, UploadReply &reply) = 0;
    // The next piece of the body. false refuses the rest with reply (the upload is then aborted).
    virtual bool Write(void *upload, const char *data, size_t size, UploadReply &reply) = 0;
    // The whole body has arrived: completes the upload and sets the reply.
    virtual void Finish(void *upload, UploadReply &reply) = 0;
    // The request ended before Finish (the body broke off, or was refused): nothing may stay.
    virtual void Abort(void *upload) = 0;
};

class FileServer {
public:
    FileServer() = default;
    ~FileServer() { Stop(); }
    FileServer(const FileServer &) = delete;
    FileServer &operator=(const FileServer &) = delete;

    // Listens on address (an IPv4 address; empty: every address) and port (0: any). false, with a
    // sentence in error, when it cannot.
    bool Start(const std::string &address, uint16_t port, UploadHandler *uploads, std::string &error);
    // Stops listening and closes every connection.
    void Stop();
    uint16_t port() const { return m_port; }

private:
    MHD_Daemon *m_daemon = nullptr;
    UploadHandler *m_uploads = nullptr;
    uint16_t m_port = 0;

    friend struct FileServerAccess;
};

// The port the file server answers on; the library writes it into resource URLs.
uint16_t FileServerPort();

// The row id that a name below "/web/mdb/" or "/web/upload/" names: "<digits>" or
// "<digits>.<ext>"; 0 for anything else (no row has id 0).
long long ItemIdOf(const char *name);

}  // namespace mdbd
