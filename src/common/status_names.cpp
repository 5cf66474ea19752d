// Names of the status words, for messages of tools and servers, and the library's exported flag
// words that belong to no single operation.
#include <mdb.h>

/* Set to 1 for servers built for DLNA certification; the library itself never reads it. */
MDB_API uint32_t g_ulDlnaCertification = 1;

/* The name of a status word, such as "MDB_ERR_NOT_FOUND"; "MDB_UNKNOWN_STATUS" for other values. */
extern "C" MDB_API const char *QRV_MDB_StatusName(uint32_t ulStatus) {
    switch (ulStatus) {
#define MDB_STATUS_NAME_CASE(name, text) \
    case name:                           \
        return #name;
        MDB_STATUS_MAP(MDB_STATUS_NAME_CASE)
#undef MDB_STATUS_NAME_CASE
    default:
        return "MDB_UNKNOWN_STATUS";
    }
}

extern "C" MDB_API const char *QRV_MDB_StatusText(uint32_t ulStatus) {
    switch (ulStatus) {
#define MDB_STATUS_TEXT_CASE(name, text) \
    case name:                           \
        return text;
        MDB_STATUS_MAP(MDB_STATUS_TEXT_CASE)
#undef MDB_STATUS_TEXT_CASE
    default:
        return "the library answered with an unknown status";
    }
}
