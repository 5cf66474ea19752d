// The CreateObject Elements parser: plain text scanning of the DIDL-Lite description for the
// values CreateObject needs. Each value is the text between the first start marker anywhere in
// Elements and the next end marker behind it; nothing is XML-decoded. Values live in 512-byte
// stack buffers; only the values kept in the record are copied to the heap (strdup).

#include "upload/elements_parser.h"

#include "common/text.h"

#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

/* Store a heap copy of pcValue in *ppcField. -1 when the copy cannot be made. */
int32_t StoreCopy(char **ppcField, const char *pcValue) {
    char *pcCopy = strdup(pcValue);
    if (pcCopy == nullptr) {
        return -1;
    }
    *ppcField = pcCopy;
    return 0;
}

/* Put a terminator on the first occurrence of pcParam in pcText, if any. */
void CutAt(char *pcText, const char *pcParam) {
    char *pcFound = strstr(pcText, pcParam);
    if (pcFound != nullptr) {
        *pcFound = '\0';
    }
}

}  // namespace

int32_t MdbExtractValue(const char *pcText, const char *pcStart, const char *pcEnd, char *pcBuf,
                        uint32_t ulSize, uint32_t ulRequired) {
    if (pcText == nullptr || pcStart == nullptr || pcEnd == nullptr || pcBuf == nullptr || ulSize == 0) {
        return -1;
    }
    const std::string_view svText(pcText);
    const size_t startPos = svText.find(pcStart);
    if (startPos == std::string_view::npos) {
        if (ulRequired == 1) {
            return -1;
        }
        pcBuf[0] = '\0';
        return 0;
    }
    const size_t valuePos = startPos + strlen(pcStart);
    const size_t endPos = svText.find(pcEnd, valuePos);
    if (endPos == std::string_view::npos || endPos == valuePos) {
        return -1;
    }
    const size_t len = endPos - valuePos;
    if (len >= ulSize) {
        return -1;
    }
    memcpy(pcBuf, pcText + valuePos, len);
    pcBuf[len] = '\0';
    return 0;
}

/* parentID (required). A value other than the ContainerID only warns; the Elements value is kept. */
int32_t MdbParseParentId(MdbNewObject *pstObj) {
    char acValue[MDB_ELEMENTS_VALUE_SIZE];
    if (MdbExtractValue(pstObj->pcElements, "parentID=\"", "\"", acValue, sizeof acValue, 1) != 0) {
        return -1;
    }
    if (pstObj->pcContainerId == nullptr || strcmp(acValue, pstObj->pcContainerId) != 0) {
        puts("warning: the parentID is diffrent with ContainerID!");
    }
    return StoreCopy(&pstObj->pcParentId, acValue);
}

/* restricted (required): only an object the client may change can be created, so it must be "0". */
int32_t MdbParseRestricted(MdbNewObject *pstObj) {
    char acValue[MDB_ELEMENTS_VALUE_SIZE];
    if (MdbExtractValue(pstObj->pcElements, "restricted=\"", "\"", acValue, sizeof acValue, 1) != 0 ||
        strcmp(acValue, "0") != 0) {
        return -1;
    }
    pstObj->ulRestricted = 0;
    return 0;
}

/* dlna:dlnaManaged (optional): its decimal value must be 0, 1, 4 or 5. Nothing is stored. */
int32_t MdbParseDlnaManaged(MdbNewObject *pstObj) {
    char acValue[MDB_ELEMENTS_VALUE_SIZE];
    if (MdbExtractValue(pstObj->pcElements, "dlna:dlnaManaged=\"", "\"", acValue, sizeof acValue, 0) != 0) {
        return -1;
    }
    if (acValue[0] == '\0') {
        return 0;
    }
    const long long llManaged = MdbReadDecimal(acValue).Saturated();
    return (llManaged == 0 || llManaged == 1 || llManaged == 4 || llManaged == 5) ? 0 : -1;
}

/* dc:title (required), kept as written (entities are not decoded). */
int32_t MdbParseTitle(MdbNewObject *pstObj) {
    char acValue[MDB_ELEMENTS_VALUE_SIZE];
    if (MdbExtractValue(pstObj->pcElements, "<dc:title>", "</dc:title>", acValue, sizeof acValue, 1) != 0) {
        return -1;
    }
    return StoreCopy(&pstObj->pcTitle, acValue);
}

/* dc:date (optional): "year-month-day" with anything after the day ignored, month at most 12 and
 * day at most 31; stored rewritten without leading zeros ("2010-05-06T10:00" -> "2010-5-6"). */
int32_t MdbParseDate(MdbNewObject *pstObj) {
    char acValue[MDB_ELEMENTS_VALUE_SIZE];
    if (MdbExtractValue(pstObj->pcElements, "<dc:date>", "</dc:date>", acValue, sizeof acValue, 0) != 0) {
        return -1;
    }
    if (acValue[0] == '\0') {
        return 0;
    }
    unsigned int uiYear = 0;
    unsigned int uiMonth = 0;
    unsigned int uiDay = 0;
    if (sscanf(acValue, "%u-%u-%u%*s", &uiYear, &uiMonth, &uiDay) != 3 || uiMonth > 12 || uiDay > 31) {
        return -1;
    }
    char acDate[64];
    snprintf(acDate, sizeof acDate, "%u-%u-%u", uiYear, uiMonth, uiDay);
    return StoreCopy(&pstObj->pcDate, acDate);
}

/* upnp:class (required), kept as written; it is not compared with the known classes. */
int32_t MdbParseClass(MdbNewObject *pstObj) {
    char acValue[MDB_ELEMENTS_VALUE_SIZE];
    if (MdbExtractValue(pstObj->pcElements, "<upnp:class>", "</upnp:class>", acValue, sizeof acValue, 1) != 0) {
        return -1;
    }
    return StoreCopy(&pstObj->pcClass, acValue);
}

/* size (optional): refused when its decimal value is negative; kept as written. */
int32_t MdbParseSize(MdbNewObject *pstObj) {
    char acValue[MDB_ELEMENTS_VALUE_SIZE];
    if (MdbExtractValue(pstObj->pcElements, "size=\"", "\"", acValue, sizeof acValue, 0) != 0) {
        return -1;
    }
    if (acValue[0] == '\0') {
        return 0;
    }
    if (MdbReadDecimal(acValue).Saturated() < 0) {
        return -1;
    }
    return StoreCopy(&pstObj->pcSize, acValue);
}

/* dlna:ifoFileURI (optional), kept as written. */
int32_t MdbParseIfoFileUri(MdbNewObject *pstObj) {
    char acValue[MDB_ELEMENTS_VALUE_SIZE];
    if (MdbExtractValue(pstObj->pcElements, "dlna:ifoFileURI=\"", "\"", acValue, sizeof acValue, 0) != 0) {
        return -1;
    }
    if (acValue[0] == '\0') {
        return 0;
    }
    return StoreCopy(&pstObj->pcIfoFileUri, acValue);
}

/* protocolInfo (required): kept without the play speed, the flags and the vendor test parameter,
 * which describe a transfer of the source, not the object to be created. */
int32_t MdbParseProtocolInfo(MdbNewObject *pstObj) {
    char acValue[MDB_ELEMENTS_VALUE_SIZE];
    if (MdbExtractValue(pstObj->pcElements, "protocolInfo=\"", "\"", acValue, sizeof acValue, 1) != 0) {
        return -1;
    }
    CutAt(acValue, ";DLNA.ORG_PS=");
    CutAt(acValue, ";DLNA.ORG_FLAGS=");
    CutAt(acValue, MDB_VENDOR_TEST_PARAM);
    return StoreCopy(&pstObj->pcProtocolInfo, acValue);
}

/* The MIME type (third field of protocolInfo, up to its first ';') and the DLNA.ORG_PN value of the
 * fourth field, each cut to 31 characters, go to QRV_MDB_PNtoFix, which gives the flags word and
 * the file suffix. Fails without three ':' separators or when no suffix is known. */
int32_t MdbParseProfile(MdbNewObject *pstObj) {
    if (pstObj->pcProtocolInfo == nullptr) {
        return -1;
    }
    char acWork[256];
    snprintf(acWork, sizeof acWork, "%s", pstObj->pcProtocolInfo);
    const std::string_view svInfo(acWork);

    const size_t firstColon = svInfo.find(':');
    const size_t secondColon = firstColon == std::string_view::npos ? firstColon : svInfo.find(':', firstColon + 1);
    const size_t thirdColon = secondColon == std::string_view::npos ? secondColon : svInfo.find(':', secondColon + 1);
    if (thirdColon == std::string_view::npos) {
        return -1;
    }
    std::string_view svMime = svInfo.substr(secondColon + 1, thirdColon - secondColon - 1);
    svMime = svMime.substr(0, svMime.find(';'));
    char acMime[32];
    MdbCopyCut(acMime, sizeof acMime, svMime);

    char acProfile[32] = "";
    const std::string_view svParams = svInfo.substr(thirdColon + 1);
    static constexpr std::string_view kPnParam = "DLNA.ORG_PN=";
    const size_t pnPos = svParams.find(kPnParam);
    if (pnPos != std::string_view::npos) {
        std::string_view svProfile = svParams.substr(pnPos + kPnParam.size());
        svProfile = svProfile.substr(0, svProfile.find(';'));
        MdbCopyCut(acProfile, sizeof acProfile, svProfile);
    }

    pstObj->pcSuffix = nullptr;
    pstObj->ulFlags = QRV_MDB_PNtoFix(acMime, acProfile, &pstObj->pcSuffix);
    return pstObj->pcSuffix == nullptr ? -1 : 0;
}

uint32_t QRV_MDB_ParseElements(MdbNewObject *pstObj) {
    if (pstObj == nullptr || pstObj->pcElements == nullptr) {
        return static_cast<uint32_t>(-1);
    }
    using FieldParser = int32_t (*)(MdbNewObject *);
    static const FieldParser kParsers[] = {
        MdbParseParentId, MdbParseRestricted, MdbParseDlnaManaged, MdbParseTitle,        MdbParseDate,
        MdbParseClass,    MdbParseSize,       MdbParseIfoFileUri,  MdbParseProtocolInfo, MdbParseProfile,
    };
    for (FieldParser pfnParse : kParsers) {
        if (pfnParse(pstObj) != 0) {
            return static_cast<uint32_t>(-1);
        }
    }
    return 0;
}
