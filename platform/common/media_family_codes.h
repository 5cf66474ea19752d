// The media format families that the adaptation library and the DLNA profile library share.
// A family's code is the low 16 bits of the flags word of every item of the family: its item
// class number in bits 0-6 and its index in g_astMediaClasses in bits 8-15. Bits 16-31 of an
// item's flags word number its DLNA profile within the family, so the whole word is a profile id.
#pragma once

#include <cstdint>

namespace mdbplatform {

// Item class numbers (1-based into g_apcObjClassStrings).
constexpr uint32_t kClassMusicTrack = 11;
constexpr uint32_t kClassVideoItem = 12;
constexpr uint32_t kClassPhoto = 13;

// Indexes of the families in g_astMediaClasses.
enum MediaFamily : uint32_t { kFamilyAudio = 0, kFamilyVideo = 1, kFamilyImage = 2, kFamilyCount = 3 };

constexpr uint32_t FamilyCode(uint32_t family, uint32_t itemClass) { return (family << 8) | itemClass; }

constexpr uint32_t kFamilyCodeAudio = FamilyCode(kFamilyAudio, kClassMusicTrack); // 0x000B
constexpr uint32_t kFamilyCodeVideo = FamilyCode(kFamilyVideo, kClassVideoItem);  // 0x010C
constexpr uint32_t kFamilyCodeImage = FamilyCode(kFamilyImage, kClassPhoto);      // 0x020D

// A profile id: the family code plus the profile's number within the family in bits 16-31.
constexpr uint32_t ProfileId(uint32_t familyCode, uint32_t number) { return familyCode + (number << 16); }

// Bit 7 of a flags word marks a restricted object; it says nothing about the file's format.
constexpr uint32_t kRestrictedBit = 0x80;

} // namespace mdbplatform
