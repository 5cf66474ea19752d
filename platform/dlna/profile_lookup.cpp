// The two functions of the DLNA profile library: a profile by its id (an item's flags word), and
// the flags word and file suffix for a MIME type and DLNA profile name (an upload's protocolInfo).
#include <mdb_platform.h>

#include "../common/media_family_codes.h"
#include "profile_table.h"

#include <strings.h>

#include <cstring>

using namespace mdbdlna;

namespace {

const ProfileFamily *FamilyByCode(uint32_t ulFamilyCode) {
    for (uint32_t i = 0; i < g_ulNumOfProfileFamilies; ++i) {
        if (g_astProfileFamilies[i].ulFamilyCode == ulFamilyCode) {
            return &g_astProfileFamilies[i];
        }
    }
    return nullptr;
}

/* MIME types compare without regard to case ("audio/L16" and "audio/l16" are one type). */
bool SameMime(const char *pcA, const char *pcB) { return strcasecmp(pcA, pcB) == 0; }

struct Match {
    const ProfileFamily *pstFamily = nullptr;
    uint32_t ulNumber = 0;
    explicit operator bool() const { return pstFamily != nullptr; }
};

/* The first profile, over all families in order, for which pfnAccept answers true. */
template <typename Accept> Match FindFirst(Accept pfnAccept) {
    for (uint32_t f = 0; f < g_ulNumOfProfileFamilies; ++f) {
        const ProfileFamily &stFamily = g_astProfileFamilies[f];
        for (uint32_t j = 0; j < stFamily.ulCount; ++j) {
            if (pfnAccept(stFamily.pstProfiles[j])) {
                return Match{&stFamily, j};
            }
        }
    }
    return Match{};
}

} // namespace

/* The profile whose id is ulProfileId: the family code in the low 16 bits and the profile number
 * in bits 16-31. The restricted bit (7) is not part of a file's format and is ignored. NULL for
 * a word that names no family (folders, containers) or a number beyond the family's profiles. */
extern "C" const MdbDlnaProfile *QRV_DLNA_GetProfileByProfileId(uint32_t ulProfileId) {
    uint32_t ulId = ulProfileId & ~mdbplatform::kRestrictedBit;
    const ProfileFamily *pstFamily = FamilyByCode(ulId & 0xFFFFu);
    uint32_t ulNumber = ulId >> 16;
    if (pstFamily == nullptr || ulNumber >= pstFamily->ulCount) {
        return nullptr;
    }
    return &pstFamily->pstProfiles[ulNumber];
}

/* Flags word and file suffix for an upload of MIME type pcMimeType and DLNA profile pcProfileName.
 *  - A profile name: the profile of that name and MIME type; failing that, of that name alone.
 *  - No profile name (NULL, empty or "Unknown"), or one this library does not know: the
 *    "Unknown" profile of that MIME type, else the first profile of that MIME type.
 * The answer is the profile id and its suffix. When nothing matches (a MIME type this platform
 * does not serve) the answer is 0 and *ppcSuffix NULL, which makes the upload fail. */
extern "C" uint32_t QRV_MDB_PNtoFix(const char *pcMimeType, const char *pcProfileName, const char **ppcSuffix) {
    if (ppcSuffix != nullptr) {
        *ppcSuffix = nullptr;
    }
    const char *pcMime = pcMimeType != nullptr ? pcMimeType : "";
    Match stMatch;
    if (pcProfileName != nullptr && pcProfileName[0] != '\0' && std::strcmp(pcProfileName, g_pcUnknownProfileName) != 0) {
        stMatch = FindFirst([&](const MdbDlnaProfile &p) {
            return std::strcmp(p.pcProfileName, pcProfileName) == 0 && SameMime(p.pcMimeType, pcMime);
        });
        if (!stMatch) {
            stMatch = FindFirst([&](const MdbDlnaProfile &p) { return std::strcmp(p.pcProfileName, pcProfileName) == 0; });
        }
    }
    if (!stMatch) {
        stMatch = FindFirst([&](const MdbDlnaProfile &p) {
            return std::strcmp(p.pcProfileName, g_pcUnknownProfileName) == 0 && SameMime(p.pcMimeType, pcMime);
        });
    }
    if (!stMatch) {
        stMatch = FindFirst([&](const MdbDlnaProfile &p) { return SameMime(p.pcMimeType, pcMime); });
    }
    if (stMatch) {
        if (ppcSuffix != nullptr) {
            *ppcSuffix = stMatch.pstFamily->pstProfiles[stMatch.ulNumber].pcSuffix;
        }
        return mdbplatform::ProfileId(stMatch.pstFamily->ulFamilyCode, stMatch.ulNumber);
    }
    return 0;
}
