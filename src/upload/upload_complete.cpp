// Upload completion: an uploaded item's row is written with size 0 and the media server sets the
// size once the file is complete, so a non-zero size is the sign that the upload has finished.

#include <mdb.h>
#include <mdb_platform.h>

#include <cstring>

int32_t QRV_MDB_CheckUploadComplete(long long llId) {
    MdbItemDetail stDetail;
    memset(&stDetail, 0, sizeof stDetail);
    if (QRV_MDB_GetItemDetailInfo(g_pstMdbCtx, llId, &stDetail) != MDB_OK) {
        return 0;
    }
    return stDetail.ullSize != 0 ? 1 : 0;
}
