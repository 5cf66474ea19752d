// Texts the scanner stores for display (titles, tag values) are valid UTF-8. File names and tags
// from old disks and old tools are often Latin-1: a byte that does not belong to a valid UTF-8
// sequence is taken as the Latin-1 character of its value, which makes "Caf\xe9" the "Café" it
// was meant to be. File names themselves are stored as they are, since they name the file.
#pragma once

#include <string>
#include <string_view>

namespace mdbscan {

// text, with every byte outside a valid UTF-8 sequence converted from Latin-1.
std::string ValidUtf8(std::string_view text);

}  // namespace mdbscan
