// The DLNA description of a scanned file: which MIME type and DLNA.ORG_PN profile name it has,
// and the ITEM flags word (class, media family, profile) that the platform's profile library
// gives for them.
#pragma once

#include "media_info.h"

#include <cstdint>
#include <string>

namespace mdbscan {

// Sets info.mimeType and info.profileName from what the reader found (format, codecs, picture
// size, sample rate, channels, bitrate), following the DLNA media format profiles.
void ChooseDlnaProfile(MediaKind kind, MediaInfo &info);

// The flags word for info's MIME type and profile name through QRV_MDB_PNtoFix. Returns false,
// with a reason in error, when the profile library knows no profile for the MIME type or the
// profile it answers is not of the kind's item class.
bool ResolveItemFlags(MediaKind kind, const MediaInfo &info, uint32_t &flags, std::string &error);

// The upnp:class number of items of a kind (11 music, 12 video, 13 pictures), 0 for kNone.
uint32_t ItemClassOfKind(MediaKind kind);

}  // namespace mdbscan
