// CreateObject: an uploaded item enters the catalogue before its file arrives. The row (size 0)
// goes below the "upload" folder of the first root folder, the answer is a DIDL-Lite item whose
// res element carries the importUri, and an upload note starts the 35-second time-out.
//
// The file name on disk is "<title>.<suffix>", so the title decides where the upload is written:
// titles that could name anything but a plain file inside the upload folder are refused before
// the catalogue is touched.

#include <mdb.h>
#include <mdb_platform.h>

#include "common/tree_ids.h"
#include "common/url_base.h"
#include "common/xml_text.h"
#include "store/write_transaction.h"

#include <upnp.h>

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

bool IsControlChar(unsigned char c) { return c < 0x20 || c == 0x7f; }

/* True when pcText holds none of '/', '\' and the control characters. */
bool HasOnlyNameChars(const char *pcText) {
    for (const char *p = pcText; *p != '\0'; ++p) {
        if (*p == '/' || *p == '\\' || IsControlChar(static_cast<unsigned char>(*p))) {
            return false;
        }
    }
    return true;
}

/* A title that makes a plain, visible file name inside one folder: not empty, not beginning with
 * '.' (which also rules out "." and ".."), no path separator, no control character. */
bool IsSafeTitle(const char *pcTitle) {
    return pcTitle != nullptr && pcTitle[0] != '\0' && pcTitle[0] != '.' && HasOnlyNameChars(pcTitle);
}

/* The id of the "upload" folder below the first root folder; the root's own id when it has no
 * such child, -1 when there is no root folder. Lookup statuses are not looked at. */
long long FindUploadFolder(sqlite3 *pstDb) {
    long long llRootId = -1;
    QRV_MDB_DbGetItemIdByName(pstDb, 0, nullptr, &llRootId);
    long long llFolderId = llRootId;
    QRV_MDB_DbGetItemIdByName(pstDb, llRootId, "upload", &llFolderId);
    return llFolderId;
}

/* Delete an earlier object of the same file name in the upload folder with its note, after a
 * one-second pause when its upload is still pending. Its file stays: the new upload reuses the path. */
void ReplaceEarlierObject(sqlite3 *pstDb, long long llFolderId, const char *pcFileName) {
    long long llOldId = 0;
    QRV_MDB_DbGetItemIdByName(pstDb, llFolderId, pcFileName, &llOldId);
    if (llOldId == 0) {
        return;
    }
    if (QRV_MDB_FindUploadNote(llOldId) == 0) {
        sleep(1);
    }
    MdbExecSql(pstDb, kMdbBeginWrite, nullptr, nullptr, nullptr);
    QRV_MDB_DbDelItem(pstDb, llOldId);
    MdbExecSql(pstDb, "COMMIT", nullptr, nullptr, nullptr);
    QRV_MDB_DelUploadNote(llOldId);
}

/* The row's date: the request's, or today's local date as "%Y-%m-%d" (empty if the clock cannot
 * be converted). */
void FormatDate(const char *pcRequestDate, char *pcDate, size_t ulSize) {
    memset(pcDate, 0, ulSize);
    if (pcRequestDate != nullptr) {
        snprintf(pcDate, ulSize, "%s", pcRequestDate);
        return;
    }
    const time_t now = time(nullptr);
    const struct tm *pstNow = localtime(&now);
    if (pstNow != nullptr) {
        strftime(pcDate, ulSize, "%Y-%m-%d", pstNow);
    }
}

/* One insert of the new row: size 0, empty lastModify, every other number 0. */
uint32_t AddRow(sqlite3 *pstDb, long long llFolderId, uint32_t ulFlags, const char *pcTitle,
                const char *pcFileName, const char *pcDate, long long *pllNewId) {
    return QRV_MDB_DbAddItem(pstDb, llFolderId, static_cast<int32_t>(ulFlags), pcTitle, pcFileName, 0, pcDate,
                             0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, pllNewId);
}

/* Set an attribute named by a property table entry, when the table has that entry. */
void SetColumnAttribute(IXML_Element *pstElement, uint32_t ulCol, const char *pcValue) {
    if (ulCol < g_ulNumOfDlnaCols && pcValue != nullptr) {
        MdbXmlSetAttribute(pstElement, g_astDlnaCols[ulCol].pcColName, pcValue);
    }
}

/* The answer: an "item" with id, parentID, restricted "0" and managed "4", its title and class,
 * and a res element with protocolInfo, size, ifoFileURI and importUri. pstDidlRoot moves to the
 * item. Failures of single XML calls are not looked at. */
void BuildAnswer(MdbNewObject *pstObj, long long llNewId) {
    IXML_Element *pstItem = nullptr;
    QRV_MDB_XmlAppendChildElement(pstObj->pstDoc, pstObj->pstDidlRoot, "item", nullptr, &pstItem);
    pstObj->pstItem = pstItem;
    if (pstItem != nullptr) {
        SetColumnAttribute(pstItem, MDB_COL_IDX_ID, pstObj->pcObjectId);
        SetColumnAttribute(pstItem, MDB_COL_IDX_PARENT, pstObj->pcParentId);
        SetColumnAttribute(pstItem, MDB_COL_IDX_RESTRICTED, "0");
        SetColumnAttribute(pstItem, MDB_COL_IDX_MANAGED, "4");
    }
    pstObj->pstDidlRoot = reinterpret_cast<IXML_Element *>(
        ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(pstObj->pstDidlRoot)));

    QRV_MDB_XmlAppendChildElement(pstObj->pstDoc, pstObj->pstDidlRoot, "dc:title", pstObj->pcTitle,
                                  &pstObj->pstItem);
    QRV_MDB_XmlAppendChildElement(pstObj->pstDoc, pstObj->pstDidlRoot, "upnp:class", pstObj->pcClass,
                                  &pstObj->pstItem);

    QRV_MDB_XmlAppendChildElement(pstObj->pstDoc, pstObj->pstDidlRoot, "res", nullptr, &pstObj->pstRes);
    IXML_Element *pstRes = pstObj->pstRes;
    if (pstRes == nullptr) {
        return;
    }
    if (pstObj->pcProtocolInfo != nullptr) {
        MdbXmlSetAttribute(pstRes, "protocolInfo", pstObj->pcProtocolInfo);
    }
    if (pstObj->pcSize != nullptr) {
        MdbXmlSetAttribute(pstRes, "size", pstObj->pcSize);
    }
    if (pstObj->pcIfoFileUri != nullptr) {
        MdbXmlSetAttribute(pstRes, "dlna:ifoFileURI", pstObj->pcIfoFileUri);
    }
    char acBase[256];
    MdbFormatUrlBase(pstObj->ulAddrFamily, acBase, sizeof acBase);
    // The import URL is cut at 127 characters, the size of its buffer.
    char acImportUri[128];
#pragma GCC diagnostic push
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wformat-truncation"
#endif
    snprintf(acImportUri, sizeof acImportUri, "%s/web/upload/%lld.%s", acBase, llNewId, pstObj->pcSuffix);
#pragma GCC diagnostic pop
    MdbXmlSetAttribute(pstRes, "importUri", acImportUri);
}

/* The object id "<prefix>|<id>" as a heap text (NULL when it cannot be copied). */
char *FormatObjectId(const char *pcPrefix, long long llId) {
    char acId[128];
    snprintf(acId, sizeof acId, "%s|%lld", pcPrefix, llId);
    return strdup(acId);
}

}  // namespace

uint32_t QRV_MDB_CreateObject(MdbNewObject *pstObj) {
    const uint32_t kFailed = static_cast<uint32_t>(-1);
    if (pstObj == nullptr || pstObj->pstDoc == nullptr || pstObj->pstDidlRoot == nullptr ||
        !IsSafeTitle(pstObj->pcTitle) || pstObj->pcSuffix == nullptr || !HasOnlyNameChars(pstObj->pcSuffix)) {
        return kFailed;
    }
    // Music and picture items are listed below their folder containers, video items below the
    // all-video container; other classes cannot be uploaded.
    const MdbMediaContainers *pstContainers = MdbMediaContainersOfClass(pstObj->ulFlags & MDB_FLAGS_CLASS_MASK);
    if (pstContainers == nullptr) {
        return kFailed;
    }
    const char *pcPrefix = pstContainers->acUploads;

    sqlite3 *pstDb = g_pstMdbCtx;
    const long long llFolderId = FindUploadFolder(pstDb);
    pstObj->ulFlags &= ~MDB_FLAGS_RESTRICTED;

    char acFileName[128];
    snprintf(acFileName, sizeof acFileName, "%s.%s", pstObj->pcTitle, pstObj->pcSuffix);
    ReplaceEarlierObject(pstDb, llFolderId, acFileName);

    char acDate[64];
    FormatDate(pstObj->pcDate, acDate, sizeof acDate);

    MdbExecSql(pstDb, kMdbBeginWrite, nullptr, nullptr, nullptr);
    long long llNewId = 0;
    uint32_t ulStatus = AddRow(pstDb, llFolderId, pstObj->ulFlags, pstObj->pcTitle, acFileName, acDate, &llNewId);
    if (ulStatus != MDB_OK || llNewId <= 0) {
        sleep(2);
        ulStatus = AddRow(pstDb, llFolderId, pstObj->ulFlags, pstObj->pcTitle, acFileName, acDate, &llNewId);
    }
    MdbExecSql(pstDb, "COMMIT", nullptr, nullptr, nullptr);
    if (ulStatus != MDB_OK || llNewId <= 0) {
        return kFailed;
    }

    pstObj->pcObjectId = FormatObjectId(pcPrefix, llNewId);
    pstObj->pcParentId = FormatObjectId(pcPrefix, llFolderId);
    BuildAnswer(pstObj, llNewId);

    QRV_MDB_AddUploadNote(llNewId);
    QRV_DMS_NOTIFY_SUBSCRIPTION(pstObj->ulFlags);
    return MDB_OK;
}
