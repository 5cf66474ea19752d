// The files of uploads arriving at their importUri ("/web/upload/<id>.<ext>", POST or PUT) on the
// file server. A body is taken only while the object's upload note exists and no other body for
// it is under way; it is written in pieces, as it arrives, to a hidden file beside the object's
// file ("." names are passed over by the scanner and the folder watch), and renamed to the file
// when complete. The note is disabled when the body begins, so that the 35-second time-out never
// destroys an upload while it arrives; mdbd keeps its own record of the bodies under way.
//
// A body that breaks off, exceeds its limit (the size the client announced in CreateObject, else
// --max-upload), outgrows the free space or cannot be written leaves nothing behind: its hidden
// file goes and mdbd destroys the object at once rather than letting its note wait again, since
// a client that lost its connection does not resume a POST. A complete body gets its row's size
// (what the library's completion test reads), loses its note, and is told to subscribers.
#pragma once

#include "file_server.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <set>

namespace mdbd {

class Eventing;

class UploadReceiver : public UploadHandler {
public:
    UploadReceiver(Eventing &eventing, uint64_t maxUpload) : m_eventing(eventing), m_maxUpload(maxUpload) {}

    // The size CreateObject's client announced for object id (its res@size), the limit of its body.
    void Announce(long long id, uint64_t size);
    // Forgets what is known of object id (it was destroyed).
    void Forget(long long id);
    // True while a body for object id arrives.
    bool Receiving(long long id);

    void *Begin(const std::string &name, long long announcedSize, UploadReply &reply) override;
    bool Write(void *upload, const char *data, size_t size, UploadReply &reply) override;
    void Finish(void *upload, UploadReply &reply) override;
    void Abort(void *upload) override;

private:
    struct Transfer;
    void End(Transfer *transfer, bool keepObject);

    Eventing &m_eventing;
    const uint64_t m_maxUpload;
    std::mutex m_mutex;  // guards what follows
    std::map<long long, uint64_t> m_announced;
    std::set<long long> m_receiving;
};

// The hidden name an upload's body is written to, beside the object's file.
std::string UploadPartName(long long id);

// Tells subscribers that the upload folder changed. Takes the library mutex.
void TellUploadFolderChanged(Eventing &eventing);

}  // namespace mdbd
