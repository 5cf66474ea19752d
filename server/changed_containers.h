// The containers whose listing may change when folders of the catalogue change, as an event
// names them in ContainerUpdateIDs.
#pragma once

#include <set>
#include <string>

namespace mdbd {

// For changed folders (row ids; 0 for the level of the roots): every folder view of each folder
// ("<view>|<folder>", or the views themselves for the roots; a folder's class bits may have
// changed, so the views of every class), and every all-items and category container.
std::set<std::string> ContainersOfFolders(const std::set<long long> &folders);

}  // namespace mdbd
