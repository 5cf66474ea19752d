// The bounded id list that QRV_MDB_DbGetAllItemID fills: unlike the exported MdbGetIdListCallback
// it never writes past the room it was given.
#pragma once

#include <cstdint>

/* A cursor into an id array and the number of entries still free behind it. */
struct MdbIdListBound {
    long long *pllNext;
    uint32_t ulRoomLeft;
};

/* pvArg: MdbIdListBound. Stores column 0 (atoll; SQL NULL -1) at the cursor and advances it while
 * room is left; rows beyond the room are dropped. Always continues (0). */
int MdbGetBoundedIdListCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);
