// The media-server side of libmdb for tests and tools: the process-wide connection, an eventing
// hook that records what it is told, and the ports of an HTTP file server (set by the program).
#include <mdb_platform.h>

#include "mdb_server_shim.h"

namespace {

constexpr unsigned short kDefaultFileServerPort = 9000;

uint32_t g_ulNotifyCount = 0;
uint32_t g_aulNotifyFlags[MDB_SHIM_NOTIFY_KEPT] = {};
unsigned short g_usFileServerPort = kDefaultFileServerPort;
unsigned short g_usFileServerPort6 = kDefaultFileServerPort;

} // namespace

extern "C" {

sqlite3 *g_pstMdbCtx = nullptr;

/* Record one notification; always succeeds. */
int QRV_DMS_NOTIFY_SUBSCRIPTION(uint32_t ulFlags) {
    if (g_ulNotifyCount < MDB_SHIM_NOTIFY_KEPT) {
        g_aulNotifyFlags[g_ulNotifyCount] = ulFlags;
    }
    ++g_ulNotifyCount;
    return 0;
}

unsigned short UpnpGetFileServerPort(void) { return g_usFileServerPort; }

unsigned short UpnpGetFileServerPort6(void) { return g_usFileServerPort6; }

uint32_t MdbShimNotifyCount(void) { return g_ulNotifyCount; }

uint32_t MdbShimNotifyFlags(uint32_t ulIndex) {
    return ulIndex < MDB_SHIM_NOTIFY_KEPT && ulIndex < g_ulNotifyCount ? g_aulNotifyFlags[ulIndex] : 0;
}

void MdbShimResetNotifications(void) {
    g_ulNotifyCount = 0;
    for (uint32_t &ulFlags : g_aulNotifyFlags) {
        ulFlags = 0;
    }
}

void MdbShimSetFileServerPorts(unsigned short usPort, unsigned short usPort6) {
    g_usFileServerPort = usPort;
    g_usFileServerPort6 = usPort6;
}

} // extern "C"
