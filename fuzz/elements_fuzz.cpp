// Fuzz target for uploads: arbitrary CreateObject Elements texts go through QRV_MDB_ParseElements
// and, when they parse, QRV_MDB_CreateObject on an in-memory catalogue built with the shipped
// schema (one root folder with its "upload" folder). After each input QRV_MDB_FreeUploadList drops
// the created objects with their rows.
//
// Nothing here touches the disk: CreateObject writes no file and DestroyObject is never called.
// This program's sleep() returns at once and its sysinfo() reports an uptime that moves one second
// per call, so the pauses of CreateObject cost nothing. Besides the sanitizers, the target stops on:
//  - a result outside 0 / -1, or a parse that succeeds without its required values;
//  - a refused CreateObject that changed the catalogue, or an accepted one that did not add one row;
//  - a created row that is not a plain file name in the upload folder, or whose path leaves it;
//  - rows left behind after QRV_MDB_FreeUploadList.
#include <mdb.h>
#include <mdb_platform.h>

#include "fuzz_catalogue.h"

#include <sys/sysinfo.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr const char *kRootPath = "/nonexistent/fuzz-media";
sqlite3 *g_pstDb = nullptr;
long long g_llUploadFolder = 0;
long g_lUptime = 1000;

[[noreturn]] void Fail(const char *pcWhat, const std::string &detail) { mdbfuzz::Fail("elements", pcWhat, detail); }

long long Count(const char *pcSql) {
    sqlite3_stmt *pstStmt = nullptr;
    long long llCount = -1;
    if (sqlite3_prepare_v2(g_pstDb, pcSql, -1, &pstStmt, nullptr) == SQLITE_OK && sqlite3_step(pstStmt) == SQLITE_ROW) {
        llCount = sqlite3_column_int64(pstStmt, 0);
    }
    sqlite3_finalize(pstStmt);
    return llCount;
}

void BuildCatalogue() {
    g_pstDb = mdbfuzz::OpenCatalogue("elements");
    long long llRoot = 0;
    if (QRV_MDB_DbAddItem(g_pstDb, 0, 2, kRootPath, kRootPath, 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0,
                          0, 0, &llRoot) != MDB_OK ||
        QRV_MDB_DbAddItem(g_pstDb, llRoot, 2, "upload", "upload", 0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0,
                          0, 0, 0, &g_llUploadFolder) != MDB_OK) {
        Fail("setting up the catalogue", "folder rows");
    }
    g_pstMdbCtx = g_pstDb;
}

/* The created row must be a plain file in the upload folder, and its path must stay there. */
void CheckCreated(const MdbNewObject &stObj) {
    const char *pcBar = stObj.pcObjectId != nullptr ? std::strchr(stObj.pcObjectId, '|') : nullptr;
    if (pcBar == nullptr) {
        Fail("no object id after a successful CreateObject", "");
    }
    const long long llId = std::atoll(pcBar + 1);
    char acName[4096] = "";
    long long llParent = -1;
    uint32_t ulFlags = 0;
    if (QRV_MDB_GetItemInfo(g_pstDb, llId, &llParent, acName, sizeof acName, &ulFlags) != MDB_OK ||
        llParent != g_llUploadFolder) {
        Fail("created row not in the upload folder", stObj.pcObjectId);
    }
    if (acName[0] == '\0' || acName[0] == '.' || std::strchr(acName, '/') != nullptr || std::strlen(acName) > 127) {
        Fail("created file name is no plain name", acName);
    }
    char *pcPath = nullptr;
    if (QRV_MDB_GetFileInfoById(llId, &pcPath, nullptr, nullptr, nullptr, nullptr) != 0 || pcPath == nullptr) {
        Fail("no path for a created row", acName);
    }
    const std::string expected = std::string(kRootPath) + "/upload/" + acName;
    if (expected != pcPath) {
        Fail("created file outside the upload folder", pcPath);
    }
    std::free(pcPath);
    if (stObj.pstRes == nullptr || ixmlElement_getAttribute(stObj.pstRes, "importUri") == nullptr) {
        Fail("answer without importUri", acName);
    }
}

void FreeTexts(MdbNewObject &stObj, char *pcParsedParentId) {
    for (char *pcText : {stObj.pcParentId, stObj.pcTitle, stObj.pcDate, stObj.pcClass, stObj.pcSize,
                         stObj.pcProtocolInfo, stObj.pcIfoFileUri, stObj.pcObjectId}) {
        std::free(pcText);
    }
    if (pcParsedParentId != stObj.pcParentId) {
        std::free(pcParsedParentId);
    }
}

}  // namespace

extern "C" unsigned int sleep(unsigned int seconds) {
    g_lUptime += static_cast<long>(seconds);
    return 0;
}

extern "C" int sysinfo(struct sysinfo *pstInfo) {
    std::memset(pstInfo, 0, sizeof *pstInfo);
    pstInfo->uptime = ++g_lUptime;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (g_pstDb == nullptr) {
        BuildCatalogue();
    }
    std::string elements(reinterpret_cast<const char *>(data), size);
    char acContainer[] = "0.1.264|2";

    MdbNewObject stObj;
    std::memset(&stObj, 0, sizeof stObj);
    stObj.pcContainerId = acContainer;
    stObj.pcElements = elements.data();
    stObj.ulAddrFamily = (size % 3 == 0) ? 10 : 2;
    stObj.ulRestricted = 1;
    stObj.pstDoc = ixmlDocument_createDocument();
    stObj.pstDidlRoot = ixmlDocument_createElement(stObj.pstDoc, "DIDL-Lite");
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(stObj.pstDoc), reinterpret_cast<IXML_Node *>(stObj.pstDidlRoot));

    const uint32_t ulParsed = QRV_MDB_ParseElements(&stObj);
    char *pcParsedParentId = stObj.pcParentId;
    if (ulParsed != 0 && ulParsed != UINT32_MAX) {
        Fail("parse result outside 0 / -1", std::to_string(ulParsed));
    }
    if (ulParsed == 0) {
        if (stObj.pcParentId == nullptr || stObj.pcTitle == nullptr || stObj.pcClass == nullptr ||
            stObj.pcProtocolInfo == nullptr || stObj.pcSuffix == nullptr || stObj.ulRestricted != 0) {
            Fail("a parse without its required values", elements);
        }
        if (std::strlen(stObj.pcTitle) > 511 || std::strstr(stObj.pcProtocolInfo, ";DLNA.ORG_FLAGS=") != nullptr) {
            Fail("a parsed value beyond its rules", elements);
        }
        const long long llRowsBefore = Count("select count(*) from ITEM");
        const uint32_t ulCreated = QRV_MDB_CreateObject(&stObj);
        const long long llRowsAfter = Count("select count(*) from ITEM");
        if (ulCreated == 0) {
            if (llRowsAfter != llRowsBefore + 1) {
                Fail("an accepted CreateObject did not add exactly one row", elements);
            }
            CheckCreated(stObj);
        } else if (ulCreated != UINT32_MAX) {
            Fail("CreateObject result outside 0 / -1", std::to_string(ulCreated));
        } else if (llRowsAfter != llRowsBefore) {
            Fail("a refused CreateObject changed the catalogue", elements);
        }
    }

    QRV_MDB_FreeUploadList();
    if (Count("select count(*) from ITEM") != 2) {
        Fail("rows left behind after QRV_MDB_FreeUploadList", elements);
    }
    FreeTexts(stObj, pcParsedParentId);
    ixmlDocument_free(stObj.pstDoc);
    return 0;
}
