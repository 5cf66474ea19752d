// The scanner's walk: roots, the upload folder, folders depth first, files, vanished rows, folder
// bits, progress and counts. Folders are visited in name order, so that a first scan numbers the
// rows in the order a person reads the tree.
#include "media_scanner.h"

#include "dlna_choice.h"

#include <dirent.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace mdbscan {

namespace {

// Deeper folders are reported and not entered: no real media tree is that deep, a loop is.
constexpr size_t kMaxDepth = 64;
// At most this many skipped files are kept for skippedFiles(); all are counted and reported.
constexpr size_t kMaxSkippedKept = 1000;
constexpr long long kProgressEveryMs = 100;

long long NowMs() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<long long>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

std::string BaseName(const std::string &path) {
    std::string::size_type slash = path.find_last_of('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    return name.empty() ? path : name;
}

std::string WithoutExtension(const std::string &name) {
    std::string::size_type dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

// dc:date of a file without a date of its own: its modification time, local time.
std::string LocalDate(long long mtime) {
    time_t t = static_cast<time_t>(mtime);
    struct tm local;
    char text[32] = "";
    if (localtime_r(&t, &local) != nullptr) {
        strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    }
    return text;
}

bool ReadInfo(MediaKind kind, const std::string &path, MediaInfo &info, std::string &error) {
    switch (kind) {
    case MediaKind::kAudio:
        return ReadAudioInfo(path, info, error);
    case MediaKind::kVideo:
        return ReadVideoInfo(path, info, error);
    case MediaKind::kImage:
        return ReadImageInfo(path, info, error);
    case MediaKind::kNone:
        break;
    }
    error = "not a media file";
    return false;
}

// The names in a directory, without "." and ".." and without hidden entries, sorted.
bool ListDirectory(const std::string &path, std::vector<std::string> &names, std::string &error) {
    names.clear();
    DIR *dir = opendir(path.c_str());
    if (dir == nullptr) {
        error = strerror(errno);
        return false;
    }
    while (struct dirent *entry = readdir(dir)) {
        if (entry->d_name[0] != '.') {
            names.emplace_back(entry->d_name);
        }
    }
    closedir(dir);
    std::sort(names.begin(), names.end());
    return true;
}

}  // namespace

std::string FormatModificationTime(long long mtime) {
    time_t t = static_cast<time_t>(mtime);
    struct tm utc;
    char text[32] = "";
    if (gmtime_r(&t, &utc) != nullptr) {
        strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    }
    return text;
}

MediaScanner::MediaScanner(sqlite3 *db, const ScanOptions &options)
    : m_db(db), m_options(options), m_writer(db, options.batchSize) {}

uint32_t MediaScanner::Scan(const std::vector<std::string> &directories) {
    m_counts = ScanCounts();
    m_skipped.clear();
    m_error.clear();
    m_uploadFolder.clear();
    if (m_db == nullptr) {
        m_error = "no catalogue is open";
        return MDB_ERR_PARA;
    }
    std::vector<std::string> roots;
    for (const std::string &directory : directories) {
        char resolved[PATH_MAX];
        struct stat st;
        if (realpath(directory.c_str(), resolved) == nullptr || stat(resolved, &st) != 0) {
            m_error = directory + ": " + strerror(errno);
            return MDB_ERR_PARA;
        }
        if (!S_ISDIR(st.st_mode)) {
            m_error = directory + " is not a directory";
            return MDB_ERR_PARA;
        }
        if (access(resolved, R_OK | X_OK) != 0) {
            m_error = directory + " cannot be read: " + strerror(errno);
            return MDB_ERR_PARA;
        }
        roots.emplace_back(resolved);
    }
    uint32_t rc = m_writer.Begin();
    // Root rows first, so that the first root (the smallest id) is known before the walk.
    std::vector<CatalogueRow> rootRows(roots.size());
    for (size_t i = 0; rc == MDB_OK && i < roots.size(); ++i) {
        rc = m_writer.FindRoot(roots[i], rootRows[i]);
        if (rc == MDB_OK && rootRows[i].id <= 0) {
            rootRows[i].flags = MDB_CLASS_FOLDER;
            rc = m_writer.AddFolder(0, BaseName(roots[i]), roots[i], rootRows[i].id);
            ++m_counts.foldersAdded;
        }
    }
    if (rc == MDB_OK) {
        rc = EnsureUploadFolder();
    }
    for (size_t i = 0; rc == MDB_OK && i < roots.size(); ++i) {
        struct stat st;
        stat(roots[i].c_str(), &st);
        m_ancestors.assign(1, Ancestor{static_cast<unsigned long long>(st.st_dev),
                                       static_cast<unsigned long long>(st.st_ino)});
        uint32_t bits = 0;
        rc = ScanFolder(roots[i], rootRows[i].id, rootRows[i].flags, bits);
    }
    ClearProgress();
    if (rc != MDB_OK) {
        m_writer.Rollback();
        if (m_error.empty()) {
            m_error = "a catalogue statement failed";
        }
        return rc;
    }
    rc = m_writer.Commit();
    if (rc == MDB_OK) {
        rc = m_writer.Analyze();
    }
    if (rc != MDB_OK) {
        m_error = "the catalogue could not be committed or analysed";
    }
    return rc;
}

/* The "upload" folder below the first root (the root with the smallest id, where CreateObject
 * puts uploads): the directory is made when the root is writable, and its row is added. */
uint32_t MediaScanner::EnsureUploadFolder() {
    long long firstRoot = -1;
    uint32_t rc = QRV_MDB_DbGetItemIdByName(m_db, 0, nullptr, &firstRoot);
    if (rc != MDB_OK || firstRoot <= 0) {
        return rc;
    }
    char rootPath[4096] = "";
    rc = QRV_MDB_GetItemInfo(m_db, firstRoot, nullptr, rootPath, sizeof rootPath, nullptr);
    if (rc != MDB_OK) {
        return rc;
    }
    const std::string uploadPath = std::string(rootPath) + "/upload";
    struct stat st;
    if (stat(uploadPath.c_str(), &st) != 0) {
        if (access(rootPath, W_OK) != 0 || mkdir(uploadPath.c_str(), 0755) != 0) {
            fprintf(m_options.messages, "note: no upload folder: %s is not writable (%s), so uploads are unavailable\n",
                    rootPath, strerror(errno));
            return MDB_OK;
        }
    } else if (!S_ISDIR(st.st_mode)) {
        fprintf(m_options.messages, "note: no upload folder: %s is not a directory, so uploads are unavailable\n",
                uploadPath.c_str());
        return MDB_OK;
    }
    if (access(uploadPath.c_str(), W_OK) != 0) {
        fprintf(m_options.messages, "note: %s is not writable, so uploads are unavailable\n", uploadPath.c_str());
    }
    long long uploadId = -1;
    rc = QRV_MDB_DbGetItemIdByName(m_db, firstRoot, "upload", &uploadId);
    if (rc == MDB_OK && uploadId <= 0) {
        rc = m_writer.AddFolder(firstRoot, "upload", "upload", uploadId);
        ++m_counts.foldersAdded;
    }
    if (rc == MDB_OK) {
        m_uploadFolder = uploadPath;
    }
    return rc;
}

/* One folder: its entries against its rows, then the rows no entry claimed are deleted, then
 * the folder's bits are set to the classes found below it (returned in bits for the parent). */
uint32_t MediaScanner::ScanFolder(const std::string &path, long long folderId, uint32_t folderFlags, uint32_t &bits) {
    bits = 0;
    ++m_counts.folders;
    ShowProgress(path, false);
    std::map<std::string, CatalogueRow> rows;
    uint32_t rc = m_writer.Children(folderId, rows);
    if (rc != MDB_OK) {
        return rc;
    }
    std::vector<std::string> names;
    std::string error;
    if (!ListDirectory(path, names, error)) {
        // What is below an unreadable folder is unknown: its rows and bits stay as they are.
        Skip(path, "folder cannot be read (" + error + "); its catalogue entries are kept");
        bits = folderFlags & kFolderBits;
        return MDB_OK;
    }
    for (size_t i = 0; rc == MDB_OK && i < names.size(); ++i) {
        const std::string &name = names[i];
        const std::string full = path + "/" + name;
        struct stat st;
        if (stat(full.c_str(), &st) != 0) {
            ++m_counts.ignored;  // a dangling link; a row of that name goes with the vanished ones
            continue;
        }
        auto found = rows.find(name);
        CatalogueRow *existing = found != rows.end() ? &found->second : nullptr;
        if (S_ISDIR(st.st_mode)) {
            const Ancestor self{static_cast<unsigned long long>(st.st_dev), static_cast<unsigned long long>(st.st_ino)};
            bool loop = std::any_of(m_ancestors.begin(), m_ancestors.end(), [&](const Ancestor &a) {
                return a.device == self.device && a.inode == self.inode;
            });
            if (loop || m_ancestors.size() >= kMaxDepth) {
                Skip(full, loop ? "folder links back to a folder above it" : "folder nested too deep");
                continue;
            }
            long long childId = 0;
            uint32_t childFlags = MDB_CLASS_FOLDER;
            if (existing != nullptr && (existing->flags & MDB_FLAGS_CLASS_MASK) == MDB_CLASS_FOLDER) {
                childId = existing->id;
                childFlags = existing->flags;
                rows.erase(found);
            } else {
                if (existing != nullptr) {
                    RemovedRows removed;
                    rc = m_writer.DeleteTree(*existing, removed);
                    m_counts.removed += removed.items;
                    rows.erase(found);
                }
                if (rc == MDB_OK) {
                    rc = m_writer.AddFolder(folderId, name, name, childId);
                    ++m_counts.foldersAdded;
                }
            }
            uint32_t childBits = 0;
            if (rc == MDB_OK) {
                m_ancestors.push_back(self);
                rc = ScanFolder(full, childId, childFlags, childBits);
                m_ancestors.pop_back();
            }
            bits |= childBits;
        } else if (S_ISREG(st.st_mode) && KindOfFileName(name) != MediaKind::kNone) {
            if (existing != nullptr && (existing->flags & MDB_FLAGS_CLASS_MASK) == MDB_CLASS_FOLDER) {
                RemovedRows removed;
                rc = m_writer.DeleteTree(*existing, removed);
                m_counts.foldersRemoved += removed.folders;
                m_counts.removed += removed.items;
                rows.erase(found);
                existing = nullptr;
            }
            bool claimed = false;
            if (rc == MDB_OK) {
                uint32_t fileBits = 0;
                rc = ScanFile(full, name, folderId, static_cast<long long>(st.st_size),
                              static_cast<long long>(st.st_mtime), existing, fileBits);
                claimed = fileBits != 0;
                bits |= fileBits;
            }
            if (claimed && existing != nullptr) {
                rows.erase(found);
            }
        } else {
            ++m_counts.ignored;
        }
    }
    // Rows that no entry claimed: vanished, no longer media, or now unreadable.
    for (auto it = rows.begin(); rc == MDB_OK && it != rows.end(); ++it) {
        RemovedRows removed;
        rc = m_writer.DeleteTree(it->second, removed);
        m_counts.removed += removed.items;
        m_counts.foldersRemoved += removed.folders;
    }
    if (rc == MDB_OK) {
        rc = m_writer.SetFolderBits(folderId, folderFlags, bits);
    }
    return rc;
}

/* One media file. bits receives the class bit when the file has (or keeps) its row, 0 when it
 * was skipped; the caller then deletes a row of the same name. */
uint32_t MediaScanner::ScanFile(const std::string &path, const std::string &name, long long folderId, long long size,
                                long long mtime, const CatalogueRow *existing, uint32_t &bits) {
    bits = 0;
    ++m_counts.files;
    ShowProgress(path, false);
    const MediaKind kind = KindOfFileName(name);
    const uint32_t itemClass = ItemClassOfKind(kind);
    const std::string lastModify = FormatModificationTime(mtime);
    if (existing != nullptr && (existing->flags & MDB_FLAGS_CLASS_MASK) == itemClass && existing->size == size &&
        existing->lastModify == lastModify) {
        ++m_counts.unchanged;
        bits = 1u << itemClass;
        return MDB_OK;
    }
    MediaInfo info;
    std::string error;
    uint32_t flags = 0;
    if (!ReadInfo(kind, path, info, error)) {
        Skip(path, error);
        return MDB_OK;
    }
    ChooseDlnaProfile(kind, info);
    if (!ResolveItemFlags(kind, info, flags, error)) {
        Skip(path, error);
        return MDB_OK;
    }
    ItemPlace place;
    place.parentId = folderId;
    place.fileName = name;
    place.title = info.title.empty() ? WithoutExtension(name) : info.title;
    place.size = size;
    place.date = info.date.empty() ? LocalDate(mtime) : info.date;
    place.lastModify = lastModify;
    const bool rewrite = existing != nullptr && (existing->flags & MDB_FLAGS_CLASS_MASK) > MDB_CLASS_FOLDER;
    long long id = 0;
    uint32_t rc = m_writer.WriteItem(place, flags, info, rewrite ? existing->id : 0, id);
    if (rc == MDB_OK) {
        ++(rewrite ? m_counts.updated : m_counts.added);
        bits = 1u << itemClass;
    }
    return rc;
}

void MediaScanner::Skip(const std::string &path, const std::string &reason) {
    ++m_counts.skipped;
    if (m_skipped.size() < kMaxSkippedKept) {
        m_skipped.push_back(SkippedFile{path, reason});
    }
    ClearProgress();
    fprintf(m_options.messages, "skipped: %s: %s\n", path.c_str(), reason.c_str());
}

/* "\r" and an erase-to-end-of-line keep the progress on one terminal line, cut to the terminal's
 * width so that it never wraps; it is redrawn at most every 100 ms. */
void MediaScanner::ShowProgress(const std::string &where, bool force) {
    if (!m_options.progress) {
        return;
    }
    long long now = NowMs();
    if (!force && m_progressShown && now - m_lastProgressMs < kProgressEveryMs) {
        return;
    }
    m_lastProgressMs = now;
    m_progressShown = true;
    struct winsize size;
    size_t columns = ioctl(fileno(m_options.messages), TIOCGWINSZ, &size) == 0 && size.ws_col > 20 ? size.ws_col : 80;
    char counts[128];
    snprintf(counts, sizeof counts, "scanning: %u files (%u new, %u changed, %u skipped) in %u folders  ",
             m_counts.files, m_counts.added, m_counts.updated, m_counts.skipped, m_counts.folders);
    std::string line = counts;
    const size_t room = columns - 1 > line.size() ? columns - 1 - line.size() : 0;
    if (where.size() <= room) {
        line += where;
    } else if (room > 3) {
        line += "..." + where.substr(where.size() - (room - 3));
    }
    if (line.size() > columns - 1) {
        line.resize(columns - 1);
    }
    fprintf(m_options.messages, "\r\033[K%s", line.c_str());
    fflush(m_options.messages);
}

void MediaScanner::ClearProgress() {
    if (m_options.progress && m_progressShown) {
        fputs("\r\033[K", m_options.messages);
        fflush(m_options.messages);
        m_progressShown = false;
    }
}

}  // namespace mdbscan
