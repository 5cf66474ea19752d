// The file server's URL base, from the server's address (libupnp) and the file server's port (the
// media server).
#include "common/url_base.h"

#include <mdb_platform.h>
#include <upnp.h>

#include <cstdio>

/* libupnp answers NULL for an address until it is initialised; that counts as no address. */
void MdbFormatUrlBase(uint32_t ulAddrFamily, char *pcBuf, uint32_t ulSize) {
    if (pcBuf == nullptr || ulSize == 0) {
        return;
    }
    pcBuf[0] = '\0';
    if (ulAddrFamily == 2) {
        const char *pcAddr = UpnpGetServerIpAddress();
        if (pcAddr != nullptr) {
            std::snprintf(pcBuf, ulSize, "http://%s:%d", pcAddr, static_cast<int>(UpnpGetFileServerPort()));
        }
    } else if (ulAddrFamily == 10) {
        const char *pcAddr = UpnpGetServerIp6Address();
        if (pcAddr != nullptr) {
            std::snprintf(pcBuf, ulSize, "http://[%s]:%d", pcAddr, static_cast<int>(UpnpGetFileServerPort6()));
        }
    }
}
