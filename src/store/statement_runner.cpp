// The statement runner: every SQL statement of the library goes through MdbExecSql, which turns
// SQLITE_BUSY into "run it again" so that a statement never comes back busy.
#include <mdb.h>

/* Run pcSql on pstDb with the row callback; while SQLite answers SQLITE_BUSY (the busy handler's
 * budget spent), run the whole text again at once. Returns the first other result code. An error
 * text of a busy attempt is released before the retry, so at most the final one reaches the
 * caller. A null connection or text is SQLITE_MISUSE: SQLite itself would run a null text as an
 * empty one and report success, which would let a failed formatting pass as a statement that ran. */
int MdbExecSql(sqlite3 *pstDb, const char *pcSql, MdbRowCallback pfnCallback, void *pvArg,
               char **ppcErrMsg) {
    if (pstDb == nullptr || pcSql == nullptr) {
        return SQLITE_MISUSE;
    }
    for (;;) {
        int lRc = sqlite3_exec(pstDb, pcSql, pfnCallback, pvArg, ppcErrMsg);
        if (lRc != SQLITE_BUSY) {
            return lRc;
        }
        if (ppcErrMsg != nullptr) {
            sqlite3_free(*ppcErrMsg);
            *ppcErrMsg = nullptr;
        }
    }
}
