// What the library imports from its media server (mdb_platform.h), as mdbd defines it: the
// process-wide connection g_pstMdbCtx, the eventing hook that CreateObject calls, and the ports of
// the file server that resource URLs and importUris name.
#include "file_server.h"

#include <mdb_platform.h>

extern "C" {

sqlite3 *g_pstMdbCtx = nullptr;

// CreateObject calls this under the library mutex; mdbd tells its subscribers after the call
// instead, when it can name the upload folder's containers (upload_actions.cpp).
int QRV_DMS_NOTIFY_SUBSCRIPTION(uint32_t ulFlags) {
    (void)ulFlags;
    return 0;
}

// Resource URLs are written for the file server's IPv4 listener; an IPv6 client is given the
// same port (mdbd writes IPv4 URLs only).
unsigned short UpnpGetFileServerPort(void) { return mdbd::FileServerPort(); }
unsigned short UpnpGetFileServerPort6(void) { return mdbd::FileServerPort(); }

}  // extern "C"
