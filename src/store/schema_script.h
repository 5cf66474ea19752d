// The schema script that QRV_MDB_DbInit runs on a new catalogue file: where it is read from, and
// reading it. The path defaults to the build-time MDB_SCHEMA_SCRIPT_PATH ("/etc/create_db.sql" on
// a device); tests and tools may point it elsewhere.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* The path the next QRV_MDB_DbInit of a new file reads the schema script from. */
const char *MdbSchemaScriptPath(void);

/* Point the schema script at pcPath (copied); NULL restores the build-time default. */
void MdbSetSchemaScriptPath(const char *pcPath);

#ifdef __cplusplus
}
#endif

/* Read the whole schema script into a NUL-terminated block from malloc (the caller frees it).
 * Returns NULL when the script cannot be opened, sized, read or allocated. */
char *MdbReadSchemaScript(void);
