// The "res" element of an item: the resource URL on the server's HTTP file server, the DLNA
// protocolInfo of its profile and media family, and the importUri of an object still waiting for
// its upload.
#include "cds/item_writer.h"
#include "common/url_base.h"
#include "common/xml_text.h"

#include <mdb_platform.h>
#include <upnp.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// Fixed DLNA.ORG_FLAGS of LPCM resources, whatever their family says.
const char kLpcmFlags[] = "01700000000000000000000000000000";

// The OP and FLAGS texts of a media family, or NULLs when the family index lies outside the table
// or the family has no (complete) transfer parameters.
struct TransferTexts {
    const char *pcOp = nullptr;
    const char *pcFlags = nullptr;
    bool present() const { return pcOp != nullptr && pcFlags != nullptr; }
};

TransferTexts TransferOfFamily(uint32_t ulFlags) {
    TransferTexts texts;
    const uint32_t ulFamily = (ulFlags >> 8) & 255u;
    if (ulFamily >= g_ulNumOfMediaClasses || g_astMediaClasses[ulFamily].pstTransfer == nullptr) {
        return texts;
    }
    const MdbTransferParams *pstTransfer = g_astMediaClasses[ulFamily].pstTransfer;
    if (pstTransfer->pcOpValue != nullptr && pstTransfer->pcFlagsValue != nullptr) {
        texts.pcOp = pstTransfer->pcOpValue;
        texts.pcFlags = pstTransfer->pcFlagsValue;
    }
    return texts;
}

}  // namespace

/* protocolInfo for a profile: LPCM with its fixed OP and FLAGS; "Unknown" without DLNA.ORG_PN;
 * any other with its name. A family without transfer parameters gives no OP and FLAGS: then
 * "Unknown" becomes "http-get:*:mime:*" and any other name carries DLNA.ORG_PN alone.
 * A profile record without name or MIME type writes them as empty texts, never formats NULL. */
void MdbFormatProtocolInfo(const MdbDlnaProfile *pstProfile, uint32_t ulFlags, char *pcBuf, uint32_t ulSize) {
    if (pstProfile == nullptr || pcBuf == nullptr || ulSize == 0) {
        return;
    }
    const char *pcName = pstProfile->pcProfileName != nullptr ? pstProfile->pcProfileName : "";
    const char *pcMime = pstProfile->pcMimeType != nullptr ? pstProfile->pcMimeType : "";
    const TransferTexts transfer = TransferOfFamily(ulFlags);
    if (std::strncmp(pcName, "LPCM", 4) == 0) {
        std::snprintf(pcBuf, ulSize, "http-get:*:%s:DLNA.ORG_PN=%s;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=%s", pcMime, pcName,
                      kLpcmFlags);
    } else if (std::strcmp(pcName, "Unknown") == 0) {
        if (transfer.present()) {
            std::snprintf(pcBuf, ulSize, "http-get:*:%s:DLNA.ORG_OP=%s;DLNA.ORG_FLAGS=%s", pcMime, transfer.pcOp,
                          transfer.pcFlags);
        } else {
            std::snprintf(pcBuf, ulSize, "http-get:*:%s:*", pcMime);
        }
    } else if (transfer.present()) {
        std::snprintf(pcBuf, ulSize, "http-get:*:%s:DLNA.ORG_PN=%s;DLNA.ORG_OP=%s;DLNA.ORG_FLAGS=%s", pcMime, pcName,
                      transfer.pcOp, transfer.pcFlags);
    } else {
        std::snprintf(pcBuf, ulSize, "http-get:*:%s:DLNA.ORG_PN=%s", pcMime, pcName);
    }
}

/* The URL is "<base>/web/mdb/<row id><extension>", the extension being the file name's last "."
 * and what follows (none without a "."). While an upload note exists for the row the URL is empty
 * and an unrestricted object gets "<base>/web/upload/<row id><extension>" as importUri instead.
 * Attribute order on the element: protocolInfo, then importUri. Texts are cut at 512 bytes. */
void MdbAppendResElement(MdbItemBuildCtx *pstCtx, char **ppcValues, uint32_t ulFlags,
                         const MdbDlnaProfile *pstProfile, const char *pcUrlBase) {
    if (pstCtx == nullptr || pstCtx->pstAction == nullptr || pstCtx->pstItem == nullptr || ppcValues == nullptr ||
        pstProfile == nullptr) {
        return;
    }
    MdbActionCtx *pstAction = pstCtx->pstAction;
    const char *pcRowId = ppcValues[MDB_ROW_ID] != nullptr ? ppcValues[MDB_ROW_ID] : "";
    const char *pcFileName = ppcValues[MDB_ROW_FILE_NAME];
    const char *pcDot = pcFileName != nullptr ? std::strrchr(pcFileName, '.') : nullptr;
    const char *pcExtension = pcDot != nullptr ? pcDot : "";
    const char *pcBase = pcUrlBase != nullptr ? pcUrlBase : "";
    const bool bUploading = QRV_MDB_FindUploadNote(atoll(pcRowId)) == 0;

    char acText[512] = {0};
    if (!bUploading) {
        std::snprintf(acText, sizeof acText, "%s/web/mdb/%s%s", pcBase, pcRowId, pcExtension);
    }
    IXML_Element *pstRes = nullptr;
    if (QRV_MDB_XmlAppendChildElement(pstAction->pstDoc, pstCtx->pstItem, "res", acText, &pstRes) != MDB_OK) {
        return;
    }
    pstCtx->pstRes = pstRes;

    MdbFormatProtocolInfo(pstProfile, ulFlags, acText, sizeof acText);
    ixmlElement_setAttribute(pstRes, "protocolInfo", acText);

    if ((ulFlags & MDB_FLAGS_RESTRICTED) == 0 && bUploading) {
        std::snprintf(acText, sizeof acText, "%s/web/upload/%s%s", pcBase, pcRowId, pcExtension);
        MdbXmlSetAttribute(pstRes, "importUri", acText);
    }
}

/* The protocolInfo of an item whose flags word is ulFlags, exactly as its res element carries it. */
extern "C" MDB_API uint32_t QRV_MDB_GetProtocolInfo(uint32_t ulFlags, char *pcBuf, uint32_t ulSize) {
    if (pcBuf == nullptr || ulSize == 0) {
        return MDB_ERR_PARA;
    }
    pcBuf[0] = '\0';
    const MdbDlnaProfile *pstProfile = QRV_DLNA_GetProfileByProfileId(ulFlags);
    if (pstProfile == nullptr) {
        return MDB_ERR_NOT_FOUND;
    }
    MdbFormatProtocolInfo(pstProfile, ulFlags, pcBuf, ulSize);
    return MDB_OK;
}
