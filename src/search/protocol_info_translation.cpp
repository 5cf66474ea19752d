// Translation of protocolInfo criteria: the MIME type after "http-get:*:" and the DLNA profile
// name after "DLNA.ORG_PN=" are looked up among the profiles of every media format family, and the
// first match selects the items of that family (MIME type alone) or of exactly that profile.
#include "common/text.h"
#include "search/expression_translation.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr size_t kKeySize = 32;           // each key keeps at most 31 characters
constexpr uint32_t kProfilesPerFamily = 60;
constexpr char kMimeMarker[] = "http-get:*:";
constexpr char kProfileMarker[] = "DLNA.ORG_PN=";

/* Copy the text after pcMarker in pcValue, up to cStop or the end, at most 31 characters, into
 * acKey. false when the marker is not in the value. */
bool ExtractKey(const char *pcValue, const char *pcMarker, char cStop, char (&acKey)[kKeySize]) {
    acKey[0] = '\0';
    const char *pc = std::strstr(pcValue, pcMarker);
    if (pc == nullptr) {
        return false;
    }
    pc += std::strlen(pcMarker);
    const char acStop[2] = {cStop, '\0'};
    size_t len = std::strcspn(pc, acStop);
    if (len >= kKeySize) {
        len = kKeySize - 1;
    }
    std::memcpy(acKey, pc, len);
    acKey[len] = '\0';
    return true;
}

bool SameText(const char *pcA, const char *pcB) { return pcA != nullptr && std::strcmp(pcA, pcB) == 0; }

struct FreeDeleter {
    void operator()(char *pc) const { std::free(pc); }
};

}  // namespace

/* Find the first profile, family by family and within a family by increasing profile number,
 * whose MIME type and/or name equal the keys present, and append the condition: "0" for none,
 * "(flags & 65535) = <family code>" for a MIME type alone, "flags = <profile id>" otherwise. A
 * value with neither key fails with MDB_ERR_FAIL. */
uint32_t MdbTranslateProtocolInfo(MdbTranslation &stT, const char *pcValue) {
    char acMime[kKeySize], acProfile[kKeySize];
    bool bMime = ExtractKey(pcValue, kMimeMarker, ':', acMime);
    bool bProfile = ExtractKey(pcValue, kProfileMarker, ';', acProfile);
    if (!bMime && !bProfile) {
        return MDB_ERR_FAIL;
    }
    std::unique_ptr<char, FreeDeleter> pcCond(static_cast<char *>(std::malloc(kMdbConditionSize)));
    if (pcCond == nullptr) {
        return MDB_ERR_FAIL;
    }
    std::strcpy(pcCond.get(), "0");
    bool bFound = false;
    for (uint32_t i = 0; i < g_ulNumOfMediaClasses && !bFound; ++i) {
        uint32_t ulCode = g_astMediaClasses[i].ulFlagsCode;
        for (uint32_t j = 0; j < kProfilesPerFamily && !bFound; ++j) {
            uint32_t ulProfileId = ulCode + (j << 16);
            const MdbDlnaProfile *pstProfile = QRV_DLNA_GetProfileByProfileId(ulProfileId);
            if (pstProfile == nullptr) {
                break;
            }
            bool bMimeOk = !bMime || SameText(pstProfile->pcMimeType, acMime);
            bool bNameOk = !bProfile || SameText(pstProfile->pcProfileName, acProfile);
            if (!bMimeOk || !bNameOk) {
                continue;
            }
            bFound = true;
            if (bProfile) {
                std::snprintf(pcCond.get(), kMdbConditionSize, "flags = %d", static_cast<int>(ulProfileId));
            } else {
                std::snprintf(pcCond.get(), kMdbConditionSize, "(flags & %d) = %d", 65535, static_cast<int>(ulCode));
            }
        }
    }
    return MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, pcCond.get());
}
