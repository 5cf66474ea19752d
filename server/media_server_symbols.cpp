// The media-server symbols of mdb_platform.h, as mdbd defines them.
#include "media_server_symbols.h"

#include "file_server.h"

#include <mdb_platform.h>

namespace mdbd {

namespace {

std::function<void(uint32_t)> &CreateNotification() {
    static std::function<void(uint32_t)> s_notify;
    return s_notify;
}

}  // namespace

void SetCreateNotification(std::function<void(uint32_t flags)> notify) { CreateNotification() = std::move(notify); }

}  // namespace mdbd

extern "C" {

sqlite3 *g_pstMdbCtx = nullptr;

int QRV_DMS_NOTIFY_SUBSCRIPTION(uint32_t ulFlags) {
    if (mdbd::CreateNotification()) {
        mdbd::CreateNotification()(ulFlags);
    }
    return 0;
}

// Resource URLs are written for the file server's IPv4 listener; an IPv6 client is given the
// same port (mdbd writes IPv4 URLs only).
unsigned short UpnpGetFileServerPort(void) { return mdbd::FileServerPort(); }
unsigned short UpnpGetFileServerPort6(void) { return mdbd::FileServerPort(); }

}  // extern "C"
