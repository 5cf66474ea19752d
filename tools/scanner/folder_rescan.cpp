// Rescanning one folder of the catalogue, as a media server does when the folder changed on disk:
// the folder is found by walking the rows from its root down the names of its path, scanned with
// everything below it, and the folder bits of its ancestors are set anew, since what a folder
// holds decides in which media views its ancestors show.
#include "media_scanner.h"

#include "upload_folder.h"

#include <sys/stat.h>

#include <sstream>

namespace mdbscan {

uint32_t MediaScanner::RescanFolder(const std::string &path) {
    Reset();
    if (m_db == nullptr) {
        m_error = "no catalogue is open";
        return MDB_ERR_PARA;
    }
    m_uploadFolderId = -1;
    uint32_t rc = m_writer.Locked([&] {
        m_uploadFolderId = UploadFolderId(m_db);
        return MDB_OK;
    });
    // The root whose path is path or one of its ancestors, then the rows of the names below it.
    std::map<std::string, CatalogueRow> rows;
    rc = rc == MDB_OK ? m_writer.Children(0, rows) : rc;
    std::vector<CatalogueRow> chain;
    std::string folder;
    for (const auto &root : rows) {
        const std::string &rootPath = root.first;
        if (path == rootPath || (path.compare(0, rootPath.size(), rootPath) == 0 && path[rootPath.size()] == '/')) {
            chain.push_back(root.second);
            folder = rootPath;
            break;
        }
    }
    if (rc != MDB_OK || chain.empty()) {
        m_error = path + " is not below a shared folder";
        return rc != MDB_OK ? rc : MDB_ERR_NOT_FOUND;
    }
    std::istringstream names(path.substr(folder.size()));
    for (std::string name; rc == MDB_OK && std::getline(names, name, '/');) {
        if (name.empty()) {
            continue;
        }
        rc = m_writer.Children(chain.back().id, rows);
        auto found = rows.find(name);
        if (found == rows.end() || (found->second.flags & MDB_FLAGS_CLASS_MASK) != MDB_CLASS_FOLDER) {
            break;  // not catalogued yet: its parent's scan finds it
        }
        chain.push_back(found->second);
        folder += "/" + name;
    }
    // The ancestors of the folder, for the loop test of the walk.
    m_ancestors.clear();
    std::string ancestor = folder;
    for (size_t i = 0; i < chain.size(); ++i) {
        struct stat st;
        if (stat(ancestor.c_str(), &st) == 0) {
            m_ancestors.insert(m_ancestors.begin(), Ancestor{static_cast<unsigned long long>(st.st_dev),
                                                               static_cast<unsigned long long>(st.st_ino)});
        }
        ancestor = ancestor.substr(0, ancestor.find_last_of('/'));
    }
    uint32_t bits = 0;
    if (rc == MDB_OK) {
        rc = ScanFolder(folder, chain.back().id, chain.back().flags, bits);
    }
    chain.pop_back();
    if (rc == MDB_OK) {
        rc = SetAncestorBits(chain);
    }
    rc = rc == MDB_OK ? m_writer.Release() : rc;
    if (rc != MDB_OK) {
        m_writer.Rollback();
        if (m_error.empty()) {
            m_error = "a catalogue statement failed";
        }
    }
    return rc;
}

/* From the deepest ancestor up: the folder bits are those of its children (the class bit of an
 * item, the folder bits of a folder). Stops at the first ancestor whose bits stay as they were,
 * since those above it cannot change then. */
uint32_t MediaScanner::SetAncestorBits(std::vector<CatalogueRow> ancestors) {
    uint32_t rc = MDB_OK;
    for (auto it = ancestors.rbegin(); rc == MDB_OK && it != ancestors.rend(); ++it) {
        std::map<std::string, CatalogueRow> children;
        rc = m_writer.Children(it->id, children);
        uint32_t bits = 0;
        for (const auto &child : children) {
            const uint32_t flags = child.second.flags;
            const uint32_t itemClass = flags & MDB_FLAGS_CLASS_MASK;
            bits |= itemClass == MDB_CLASS_FOLDER ? flags & kFolderBits
                                                   : (itemClass < 32 ? (1u << itemClass) & kFolderBits : 0);
        }
        const uint32_t flags = BaseFlags(it->id) | bits;
        if (rc != MDB_OK || flags == it->flags) {
            break;
        }
        rc = m_writer.SetFolderFlags(it->id, it->flags, flags);
    }
    return rc;
}

}  // namespace mdbscan
