// The folder walk of the watchers.
#include "folder_walk.h"

#include <dirent.h>

#include <set>
#include <utility>
#include <vector>

namespace mdbd {

namespace {

// The scanner enters no deeper folder either.
constexpr size_t kMaxDepth = 64;

}  // namespace

void WalkFolders(const std::string &folder, const std::function<bool(const std::string &, const struct stat &)> &visit,
                 const std::atomic<bool> *stop) {
    std::set<std::pair<dev_t, ino_t>> seen;
    std::vector<std::pair<std::string, size_t>> pending = {{folder, 0}};
    while (!pending.empty() && (stop == nullptr || !*stop)) {
        const auto [path, depth] = pending.back();
        pending.pop_back();
        struct stat st;
        if (stat(path.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) || !seen.insert({st.st_dev, st.st_ino}).second ||
            !visit(path, st) || depth >= kMaxDepth) {
            continue;
        }
        DIR *dir = opendir(path.c_str());
        if (dir == nullptr) {
            continue;
        }
        while (const struct dirent *entry = readdir(dir)) {
            // Files are told apart by their entry where the file system says what they are.
            const bool maybeFolder = entry->d_type == DT_DIR || entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN;
            if (entry->d_name[0] != '.' && maybeFolder) {
                pending.push_back({path + "/" + entry->d_name, depth + 1});
            }
        }
        closedir(dir);
    }
}

}  // namespace mdbd
