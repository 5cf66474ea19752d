// The media format families of the reference platform and their DLNA transfer parameters.
//
// Family i has index i in bits 8-15 of its items' flags words (media_family_codes.h). The OP value
// "01" offers byte ranges (HTTP Range) and no time seek. The FLAGS values are the DLNA 1.5 flag
// words: audio and video stream (streaming + background transfer, connection stalling, DLNA 1.5:
// 0x01700000), images are fetched interactively (interactive + background, stalling, DLNA 1.5:
// 0x00F00000); each is followed by the 24 reserved zero digits.
#include <mdb_platform.h>

#include "../common/media_family_codes.h"

using namespace mdbplatform;

namespace {

const MdbTransferParams kAudioTransfer = {"audio", "audio/mpeg", nullptr, "01", "01700000000000000000000000000000"};
const MdbTransferParams kVideoTransfer = {"video", "video/mpeg", nullptr, "01", "01700000000000000000000000000000"};
const MdbTransferParams kImageTransfer = {"image", "image/jpeg", nullptr, "01", "00f00000000000000000000000000000"};

} // namespace

extern "C" {

const MdbMediaClass g_astMediaClasses[] = {
    {kFamilyCodeAudio, &kAudioTransfer},
    {kFamilyCodeVideo, &kVideoTransfer},
    {kFamilyCodeImage, &kImageTransfer},
};

const uint32_t g_ulNumOfMediaClasses = sizeof(g_astMediaClasses) / sizeof(g_astMediaClasses[0]);

} // extern "C"

static_assert(sizeof(g_astMediaClasses) / sizeof(g_astMediaClasses[0]) == kFamilyCount,
              "family indexes and the family table disagree");
