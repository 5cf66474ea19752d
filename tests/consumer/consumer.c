/* A C99 program that uses MDB as an installed package: it browses the static container tree
 * through the public header and the installed libraries, and prints what it found. */
#include <mdb.h>
#include <mdb_platform.h>

#include <stdio.h>
#include <stdlib.h>

int main(void)
{
    MdbActionCtx ctx = {0};
    char errStr[32] = {0};
    uint32_t status;
    IXML_Element *root;

    ctx.pcErrStr = errStr;
    ctx.ulRequestedCount = 10;
    ctx.ulAddrFamily = 2;
    ctx.pucFilter = calloc(g_ulNumOfDlnaCols, 1);
    ctx.pstDoc = ixmlDocument_createDocument();
    root = ixmlDocument_createElement(ctx.pstDoc, "DIDL-Lite");
    ixmlNode_appendChild((IXML_Node *)ctx.pstDoc, (IXML_Node *)root);
    ctx.pstDidlRoot = root;

    status = QRV_MDB_Browse("0", 1, &ctx);
    printf("%s returned=%u total=%u\n", QRV_MDB_StatusName(status), (unsigned)ctx.ulNumberReturned,
           (unsigned)ctx.ulTotalMatches);

    ixmlDocument_free(ctx.pstDoc);
    free(ctx.pucFilter);
    return status == MDB_OK && ctx.ulNumberReturned == 3 ? 0 : 1;
}
