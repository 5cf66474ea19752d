// The upload notes: one note per item whose file is still expected over HTTP, kept in a singly
// linked list in creation order. Browse asks whether an item has a note, CreateObject and
// DestroyObject add and remove them, the time-out walks them. Time is the system uptime, so
// setting the wall clock does not move a note's age.
#include <mdb.h>
#include <mdb_platform.h>

#include "store/store_alloc.h"

#include <sys/sysinfo.h>

#include <cstdlib>

MDB_API MdbUploadNote *g_pstUploadList = nullptr;

namespace {

// The first note for llObjectId (whole 64-bit id), or NULL.
MdbUploadNote *FirstNoteFor(long long llObjectId) {
    for (MdbUploadNote *pstNote = g_pstUploadList; pstNote != nullptr; pstNote = pstNote->pstNext) {
        if (pstNote->llObjectId == llObjectId) {
            return pstNote;
        }
    }
    return nullptr;
}

}  // namespace

/* Append a waiting note for llObjectId with the current uptime as its start. 0, or -1 when the
 * note cannot be allocated (the list is unchanged). Several notes for one id may coexist. */
int32_t QRV_MDB_AddUploadNote(long long llObjectId) {
    MdbUploadNote *pstNew = static_cast<MdbUploadNote *>(MdbAlloc(sizeof(MdbUploadNote)));
    if (pstNew == nullptr) {
        return -1;
    }
    struct sysinfo stInfo {};
    sysinfo(&stInfo);
    pstNew->llObjectId = llObjectId;
    pstNew->ulState = 1;
    pstNew->ulStartTime = static_cast<uint32_t>(stInfo.uptime);
    pstNew->pstNext = nullptr;

    MdbUploadNote **ppstLink = &g_pstUploadList;
    while (*ppstLink != nullptr) {
        ppstLink = &(*ppstLink)->pstNext;
    }
    *ppstLink = pstNew;
    return 0;
}

/* Unlink and free the first note for llObjectId; nothing happens when there is none. Always 0. */
int32_t QRV_MDB_DelUploadNote(long long llObjectId) {
    for (MdbUploadNote **ppstLink = &g_pstUploadList; *ppstLink != nullptr;
         ppstLink = &(*ppstLink)->pstNext) {
        MdbUploadNote *pstNote = *ppstLink;
        if (pstNote->llObjectId == llObjectId) {
            *ppstLink = pstNote->pstNext;
            std::free(pstNote);
            break;
        }
    }
    return 0;
}

/* 0 when some note (in either state) is for llObjectId, else -1. */
int32_t QRV_MDB_FindUploadNote(long long llObjectId) {
    return FirstNoteFor(llObjectId) != nullptr ? 0 : -1;
}

/* Set the first note for llObjectId to disabled (state 0): 0, or -1 when there is none. */
int32_t QRV_MDB_DisableUploadNote(long long llObjectId) {
    MdbUploadNote *pstNote = FirstNoteFor(llObjectId);
    if (pstNote == nullptr) {
        return -1;
    }
    pstNote->ulState = 0;
    return 0;
}

/* Free every note, first deleting its item's row on the process-wide connection (the result is
 * ignored; notes in both states alike). No file is removed, no transaction opened. Always 0. */
int32_t QRV_MDB_FreeUploadList(void) {
    MdbUploadNote *pstNote = g_pstUploadList;
    while (pstNote != nullptr) {
        MdbUploadNote *pstNext = pstNote->pstNext;
        (void)QRV_MDB_DbDelItem(g_pstMdbCtx, pstNote->llObjectId);
        std::free(pstNote);
        pstNote = pstNext;
    }
    g_pstUploadList = nullptr;
    return 0;
}
