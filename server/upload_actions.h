// CreateObject and DestroyObject of ContentDirectory: a client announces an upload (the library
// enters it in the upload folder and hands out its importUri; its file then arrives at the file
// server, upload_receiver.h) or destroys one. Clients can only ever destroy objects that
// CreateObject made below the upload folder, never the user's own media (711), and an upload
// never takes over a name that a row or a file in the upload folder has: it gets a free one
// ("memo (2)"), so that one client's upload never replaces another's and the time-out only ever
// removes a file that its own upload made.
#pragma once

#include <upnp.h>

namespace mdbd {

class Eventing;
class UploadReceiver;

class UploadActions {
public:
    UploadActions(Eventing &eventing, UploadReceiver &receiver) : m_eventing(eventing), m_receiver(receiver) {}

    // Each answers one action request (from a libupnp worker thread).
    void CreateObject(UpnpActionRequest *request);
    void DestroyObject(UpnpActionRequest *request);

private:
    Eventing &m_eventing;
    UploadReceiver &m_receiver;
};

}  // namespace mdbd
