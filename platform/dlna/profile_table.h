// The DLNA profiles of the reference platform, family by family. Internal to the profile library.
#pragma once

#include <mdb.h>

#include <cstdint>

namespace mdbdlna {

// One family's profiles: profile j has the id ulFamilyCode + (j << 16).
struct ProfileFamily {
    uint32_t ulFamilyCode;
    const MdbDlnaProfile *pstProfiles;
    uint32_t ulCount;
};

// Every family, in the order of g_astMediaClasses.
extern const ProfileFamily g_astProfileFamilies[];
extern const uint32_t g_ulNumOfProfileFamilies;

// The name of the profile of files that have no DLNA profile.
extern const char *const g_pcUnknownProfileName;

} // namespace mdbdlna
