// A health test of the DLNA view: does it show rows for the first ITEM rows?
#include <mdb.h>

/* 1 when "select count(*) from DLNA where id in (select id from ITEM Limit 3)" runs and counts at
 * least ulExpected rows, else 0 (also for a NULL connection). */
int32_t QRV_MDB_DbDLNATest(sqlite3 *pstDb, uint32_t ulExpected) {
    if (pstDb == nullptr) {
        return 0;
    }
    uint32_t ulCount = 0;
    if (MdbExecSql(pstDb, "select count(*) from DLNA where id in (select id from ITEM Limit 3)",
                   MdbGetCountCallback, &ulCount, nullptr) != SQLITE_OK) {
        return 0;
    }
    return ulCount >= ulExpected ? 1 : 0;
}
