// The upload time-out: an object whose upload note is still waiting 35 seconds after it was made
// is destroyed with its row and file. The media server calls the check from time to time; each
// call destroys at most one object. Time is the system uptime (sysinfo), so setting the clock
// neither shortens nor lengthens the time-out.

#include <mdb.h>

#include <sys/sysinfo.h>

#include <cstdio>
#include <cstring>

namespace {

// A note this many seconds old or younger is left alone; one second older times out.
constexpr int32_t kLongestWait = 34;

}  // namespace

int32_t QRV_MDB_AutoDestroyObject(void) {
    if (g_pstUploadList == nullptr) {
        return 0;
    }
    struct sysinfo stInfo;
    memset(&stInfo, 0, sizeof stInfo);
    sysinfo(&stInfo);
    const uint32_t ulNow = static_cast<uint32_t>(stInfo.uptime);

    for (const MdbUploadNote *pstNote = g_pstUploadList; pstNote != nullptr; pstNote = pstNote->pstNext) {
        if (pstNote->ulState != 1) {
            continue;
        }
        const int32_t lWaited = static_cast<int32_t>(ulNow - pstNote->ulStartTime);
        if (lWaited <= kLongestWait) {
            continue;
        }
        printf("35 second time out, auto destory item:%lld\n", pstNote->llObjectId);
        return static_cast<int32_t>(QRV_MDB_DestroyObject(pstNote->llObjectId));
    }
    return 0;
}
