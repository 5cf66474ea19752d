// Re-pointing folder rows whose directory has vanished at a new root path: the row callback and
// its context. Internal to the store; QRV_MDB_ReplaceRoot is exported through mdb.h.
#pragma once

#include <mdb.h>

/* The argument of MdbReplaceRootCallback. */
struct MdbReplaceRootCtx {
    sqlite3 *pstDb;          /* the connection the updates run on */
    const char *pcNewRoot;   /* the new root path as the caller gave it */
};

/* Columns id (text), fileName of a matched plain folder row. When fileName names an existing
 * directory the row is left alone; otherwise its fileName becomes the new root and, when the new
 * root is longer than 5 characters with no '/' after its fifth, its title becomes the new root from
 * the sixth character on. Returns 0 to continue, 1 for a NULL context, MDB_ERR_DB when an update
 * fails (which stops the select). */
int MdbReplaceRootCallback(void *pvArg, int lColNum, char **ppcValues, char **ppcNames);
