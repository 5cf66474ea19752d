// File information lookup: from a database id to the item's full path on disk and the DLNA
// description of its format. The catalogue stores only each row's own file name and its parent,
// with a root folder row (parent 0) holding the directory path of a shared root, so the path is
// rebuilt by walking up the parent chain and inserting each ancestor's name in front.

#include <mdb.h>
#include <mdb_platform.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr uint32_t kNameSize = 4096;

// The longest parent chain the walk follows; deeper chains are taken as a loop in the catalogue.
constexpr int kMaxAncestors = 64;

// A parent id no row can have: a lookup that leaves it in place found no row.
constexpr long long kNoRow = LLONG_MIN;

/* The transfer parameters of the family in bits 8-15 of the flags word, or NULL when that index
 * names no family (a folder's bits, for instance) or the family has none. */
const MdbTransferParams *FamilyTransfer(uint32_t ulFlags) {
    const uint32_t ulFamily = (ulFlags >> 8) & 255u;
    if (ulFamily >= g_ulNumOfMediaClasses) {
        return nullptr;
    }
    return g_astMediaClasses[ulFamily].pstTransfer;
}

/* Fill the description outputs that were asked for. */
void DescribeFormat(uint32_t ulFlags, const char **ppcMimeType, const char **ppcProfileName,
                    const char **ppcOpValue, const char **ppcFlagsValue) {
    const MdbDlnaProfile *pstProfile = QRV_DLNA_GetProfileByProfileId(ulFlags);
    if (ppcMimeType != nullptr) {
        *ppcMimeType = nullptr;
        if (pstProfile != nullptr) {
            *ppcMimeType = pstProfile->pcMimeType;
        }
    }
    if (ppcProfileName != nullptr) {
        *ppcProfileName = nullptr;
        pstProfile = QRV_DLNA_GetProfileByProfileId(ulFlags);
        if (pstProfile != nullptr) {
            *ppcProfileName = pstProfile->pcProfileName;
        }
    }
    const MdbTransferParams *pstTransfer = FamilyTransfer(ulFlags);
    if (ppcOpValue != nullptr) {
        *ppcOpValue = pstTransfer != nullptr ? pstTransfer->pcOpValue : nullptr;
    }
    if (ppcFlagsValue != nullptr) {
        *ppcFlagsValue = pstTransfer != nullptr ? pstTransfer->pcFlagsValue : nullptr;
    }
}

/* Put the names of the ancestors from llParentId up to the root folder in front of rPath.
 * MDB_OK; the lookup's status when it fails; MDB_ERR_NOT_FOUND when a row of the chain is missing
 * (a negative parent id included) or the chain is longer than kMaxAncestors. */
uint32_t PrependAncestors(sqlite3 *pstDb, long long llParentId, std::string &rPath) {
    char acName[kNameSize];
    for (int lDepth = 0; llParentId != 0; ++lDepth) {
        if (llParentId < 0 || lDepth == kMaxAncestors) {
            return MDB_ERR_NOT_FOUND;
        }
        long long llNextParent = kNoRow;
        const uint32_t ulStatus = QRV_MDB_GetItemInfo(pstDb, llParentId, &llNextParent, acName, kNameSize, nullptr);
        if (ulStatus != MDB_OK) {
            return ulStatus;
        }
        if (llNextParent == kNoRow) {
            return MDB_ERR_NOT_FOUND;
        }
        rPath.insert(0, "/");
        rPath.insert(0, acName);
        llParentId = llNextParent;
    }
    return MDB_OK;
}

}  // namespace

int32_t QRV_MDB_GetFileInfoById(long long llId, char **ppcPath, const char **ppcMimeType,
                                const char **ppcProfileName, const char **ppcOpValue,
                                const char **ppcFlagsValue) {
    sqlite3 *pstDb = g_pstMdbCtx;
    char acName[kNameSize];
    memset(acName, 0, sizeof acName);
    uint32_t ulFlags = 0;
    long long llParentId = 0;
    const uint32_t ulStatus = QRV_MDB_GetItemInfo(pstDb, llId, &llParentId, acName, kNameSize, &ulFlags);
    if (ulFlags == 0 || ulStatus != MDB_OK || llParentId == 0 || acName[0] == '\0') {
        return 1;
    }

    if (ppcMimeType != nullptr || ppcProfileName != nullptr || ppcOpValue != nullptr || ppcFlagsValue != nullptr) {
        DescribeFormat(ulFlags, ppcMimeType, ppcProfileName, ppcOpValue, ppcFlagsValue);
    }
    if (ppcPath == nullptr) {
        return 0;
    }

    std::string path(acName);
    const uint32_t ulWalk = PrependAncestors(pstDb, llParentId, path);
    if (ulWalk != MDB_OK) {
        return static_cast<int32_t>(ulWalk);
    }
    char *pcPath = strdup(path.c_str());
    if (pcPath == nullptr) {
        return static_cast<int32_t>(MDB_ERR_MEM);
    }
    *ppcPath = pcPath;
    return 0;
}
