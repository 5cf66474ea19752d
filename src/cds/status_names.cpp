// Names of the status words, for messages of tools and servers, and the library's exported flag
// words that belong to no single operation.
#include <mdb.h>

/* Set to 1 for servers built for DLNA certification; the library itself never reads it. */
MDB_API uint32_t g_ulDlnaCertification = 1;

/* The name of a status word, such as "MDB_ERR_NOT_FOUND"; "MDB_UNKNOWN_STATUS" for other values. */
extern "C" MDB_API const char *QRV_MDB_StatusName(uint32_t ulStatus) {
    switch (ulStatus) {
    case MDB_OK:
        return "MDB_OK";
    case MDB_ERR_PARA:
        return "MDB_ERR_PARA";
    case MDB_ERR_MEM:
        return "MDB_ERR_MEM";
    case MDB_ERR_FAIL:
        return "MDB_ERR_FAIL";
    case MDB_ERR_NOT_FOUND:
        return "MDB_ERR_NOT_FOUND";
    case MDB_ERR_DB:
        return "MDB_ERR_DB";
    default:
        return "MDB_UNKNOWN_STATUS";
    }
}
