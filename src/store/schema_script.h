// The schema script that QRV_MDB_DbInit runs on a new catalogue file: reading it. Its path (the
// build-time MDB_SCHEMA_SCRIPT_PATH, "/etc/create_db.sql" on a device, unless a program points it
// elsewhere) is set and read through mdb.h.
#pragma once

/* Read the whole schema script into a NUL-terminated block from malloc (the caller frees it).
 * Returns NULL when the script cannot be opened, sized, read or allocated. */
char *MdbReadSchemaScript(void);
