/* Controls of the media-server shim (libmdbserver) for tests and tools: the record of the
 * eventing notifications the library made, and the ports its file server functions answer.
 * The shim keeps one process-wide record; it is not thread-safe. */
#ifndef MDB_SERVER_SHIM_H
#define MDB_SERVER_SHIM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Number of QRV_DMS_NOTIFY_SUBSCRIPTION calls since start or the last reset. */
uint32_t MdbShimNotifyCount(void);
/* Flags word of call ulIndex (0-based) of the first MDB_SHIM_NOTIFY_KEPT calls; 0 beyond them. */
uint32_t MdbShimNotifyFlags(uint32_t ulIndex);
/* Forget every recorded call. */
void MdbShimResetNotifications(void);
#define MDB_SHIM_NOTIFY_KEPT 64u

/* Ports answered by UpnpGetFileServerPort and UpnpGetFileServerPort6 (both 9000 at start). */
void MdbShimSetFileServerPorts(unsigned short usPort, unsigned short usPort6);

#ifdef __cplusplus
}
#endif

#endif /* MDB_SERVER_SHIM_H */
