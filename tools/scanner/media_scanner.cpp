// The scanner's walk: roots, the upload folder, folders depth first, files, vanished rows, folder
// bits, progress and counts. Folders are visited in name order, so that a first scan numbers the
// rows in the order a person reads the tree.
#include "media_scanner.h"

#include "dlna_choice.h"
#include "upload_folder.h"
#include "utf8_text.h"

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
    : m_db(db), m_options(options), m_writer(db, options.batchSize, options.lock) {}

void MediaScanner::Reset() {
    m_counts = ScanCounts();
    m_skipped.clear();
    m_error.clear();
}

uint32_t MediaScanner::Scan(const std::vector<std::string> &directories) {
    Reset();
    m_uploadFolder.clear();
    m_uploadFolderId = -1;
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
    uint32_t rc = MDB_OK;
    // Root rows first, so that the first root (the smallest id) is known before the walk.
    std::vector<CatalogueRow> rootRows(roots.size());
    for (size_t i = 0; rc == MDB_OK && i < roots.size(); ++i) {
        bool isNew = false;
        rc = m_writer.FindOrAddRoot(roots[i], ValidUtf8(BaseName(roots[i])), rootRows[i], isNew);
        m_counts.foldersAdded += isNew ? 1 : 0;
    }
    if (rc == MDB_OK && m_options.dropOtherRoots) {
        rc = DropOtherRoots(rootRows);
    }
    if (rc == MDB_OK) {
        rc = EnsureUploadFolder();
    }
    for (size_t i = 0; rc == MDB_OK && !m_options.rootsOnly && i < roots.size(); ++i) {
        struct stat st;
        stat(roots[i].c_str(), &st);
        m_ancestors.assign(1, Ancestor{static_cast<unsigned long long>(st.st_dev),
                                       static_cast<unsigned long long>(st.st_ino)});
        uint32_t bits = 0;
        rc = ScanFolder(roots[i], rootRows[i].id, rootRows[i].flags, bits);
    }
    ClearProgress();
    if (rc == MDB_OK) {
        rc = m_writer.Release();
    }
    if (rc != MDB_OK) {
        m_writer.Rollback();
        if (m_error.empty()) {
            m_error = "a catalogue statement failed";
        }
        return rc;
    }
    rc = m_options.rootsOnly ? MDB_OK : m_writer.Analyze();
    if (rc != MDB_OK) {
        m_error = "the catalogue could not be analysed";
    }
    return rc;
}

/* The "upload" folder below the first root (the root with the smallest id, where CreateObject
 * puts uploads): the directory is made when the root is writable, and its row is added. */
uint32_t MediaScanner::EnsureUploadFolder() {
    long long firstRoot = -1;
    char rootPath[4096] = "";
    uint32_t rc = m_writer.Locked([&] {
        uint32_t status = QRV_MDB_DbGetItemIdByName(m_db, 0, nullptr, &firstRoot);
        if (status == MDB_OK && firstRoot > 0) {
            status = QRV_MDB_GetItemInfo(m_db, firstRoot, nullptr, rootPath, sizeof rootPath, nullptr);
        }
        return status;
    });
    if (rc != MDB_OK || firstRoot <= 0) {
        return rc;
    }
    const std::string uploadPath = std::string(rootPath) + "/" + kUploadFolderName;
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
    std::map<std::string, CatalogueRow> rows;
    rc = m_writer.Children(firstRoot, rows);
    if (rc == MDB_OK && rows.count(kUploadFolderName) == 0) {
        ++m_counts.foldersAdded;
    }
    if (rc == MDB_OK) {
        rc = m_writer.AddFolder(firstRoot, kUploadFolderName, kUploadFolderFlags, m_uploadFolderId);
    }
    if (rc == MDB_OK) {
        m_uploadFolder = uploadPath;
    }
    return rc;
}

/* One folder: its rows are read, the catalogue is released, the directory is listed and each
 * entry compared with its row. Files that changed are read in chunks of one batch, each chunk
 * written in one transaction; a sub-folder's row is written before the walk goes down into it.
 * At the end the rows that no entry claimed are deleted and the folder's flags are set to the
 * classes found below it (returned in bits for the parent). */
uint32_t MediaScanner::ScanFolder(const std::string &path, long long folderId, uint32_t folderFlags, uint32_t &bits) {
    bits = 0;
    ++m_counts.folders;
    ShowProgress(path, false);
    std::map<std::string, CatalogueRow> rows;
    uint32_t rc = m_writer.Children(folderId, rows);
    if (rc == MDB_OK) {
        rc = m_writer.Release();
    }
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
    std::vector<FileJob> jobs;
    for (size_t i = 0; rc == MDB_OK && i < names.size(); ++i) {
        if (m_options.stop != nullptr && m_options.stop->load()) {
            m_error = "the scan was stopped";
            rc = MDB_ERR_FAIL;
            break;
        }
        const std::string &name = names[i];
        const std::string full = path + "/" + name;
        struct stat st;
        if (stat(full.c_str(), &st) != 0) {
            ++m_counts.ignored;  // a dangling link; a row of that name goes with the vanished ones
            continue;
        }
        auto found = rows.find(name);
        const CatalogueRow existing = found != rows.end() ? found->second : CatalogueRow();
        const bool existingFolder = existing.id > 0 && (existing.flags & MDB_FLAGS_CLASS_MASK) == MDB_CLASS_FOLDER;
        if (S_ISDIR(st.st_mode)) {
            // The files read so far get their rows before the walk goes down.
            rc = WriteFiles(jobs, rows, bits);
            const Ancestor self{static_cast<unsigned long long>(st.st_dev), static_cast<unsigned long long>(st.st_ino)};
            bool loop = std::any_of(m_ancestors.begin(), m_ancestors.end(), [&](const Ancestor &a) {
                return a.device == self.device && a.inode == self.inode;
            });
            if (rc != MDB_OK || loop || m_ancestors.size() >= kMaxDepth) {
                if (rc == MDB_OK) {
                    Skip(full, loop ? "folder links back to a folder above it" : "folder nested too deep");
                }
                continue;
            }
            long long childId = existing.id;
            uint32_t childFlags = existing.flags;
            if (!existingFolder) {
                if (existing.id > 0) {
                    RemovedRows removed;
                    rc = m_writer.DeleteTree(existing, removed);
                    m_counts.removed += removed.items;
                }
                childFlags = kScannedFolderFlags;
                if (rc == MDB_OK) {
                    rc = m_writer.AddFolder(folderId, name, childFlags, childId);
                    ++m_counts.foldersAdded;
                }
            }
            rows.erase(name);
            uint32_t childBits = 0;
            if (rc == MDB_OK) {
                m_ancestors.push_back(self);
                rc = ScanFolder(full, childId, childFlags, childBits);
                m_ancestors.pop_back();
            }
            bits |= childBits;
        } else if (S_ISREG(st.st_mode) && KindOfFileName(name) != MediaKind::kNone) {
            ++m_counts.files;
            ShowProgress(full, false);
            const uint32_t itemClass = ItemClassOfKind(KindOfFileName(name));
            if (existing.id > 0 && (existing.flags & MDB_FLAGS_CLASS_MASK) == itemClass &&
                existing.size == static_cast<long long>(st.st_size) &&
                existing.lastModify == FormatModificationTime(static_cast<long long>(st.st_mtime))) {
                ++m_counts.unchanged;
                bits |= 1u << itemClass;
                rows.erase(found);
                continue;
            }
            FileJob job;
            job.name = name;
            job.existing = existing;
            if (ReadFile(full, folderId, static_cast<long long>(st.st_size), static_cast<long long>(st.st_mtime),
                         job)) {
                jobs.push_back(std::move(job));
            }
            if (jobs.size() >= m_options.batchSize) {
                rc = WriteFiles(jobs, rows, bits);
            }
        } else {
            ++m_counts.ignored;
        }
    }
    if (rc == MDB_OK) {
        rc = WriteFiles(jobs, rows, bits);
    }
    // Rows that no entry claimed: vanished, no longer media, or now unreadable. In the upload
    // folder an object whose file is still to come stays, as does one whose file arrived since
    // the folder was listed.
    for (auto it = rows.begin(); rc == MDB_OK && it != rows.end(); ++it) {
        if (folderId == m_uploadFolderId && IsUploadInProgress(it->second.id, path + "/" + it->first)) {
            continue;
        }
        RemovedRows removed;
        rc = m_writer.DeleteTree(it->second, removed);
        m_counts.removed += removed.items;
        m_counts.foldersRemoved += removed.folders;
    }
    if (rc == MDB_OK) {
        rc = m_writer.SetFolderFlags(folderId, folderFlags, BaseFlags(folderId) | (bits & kFolderBits));
    }
    bits |= BaseFlags(folderId) & kFolderBits;  // the upload folder shows its parent in every view
    return rc;
}

/* True while the upload of object id has a note in this process (a media server's) or once its
 * file is at path. */
bool MediaScanner::IsUploadInProgress(long long id, const std::string &path) {
    const uint32_t noted = m_writer.Locked([id] { return QRV_MDB_FindUploadNote(id) == 0 ? 1u : 0u; });
    return noted != 0 || access(path.c_str(), F_OK) == 0;
}

/* A folder row's flags without its folder bits: restricted, except the upload folder. */
uint32_t MediaScanner::BaseFlags(long long folderId) const {
    return folderId == m_uploadFolderId ? kUploadFolderFlags : kScannedFolderFlags;
}

/* The root rows of directories Scan was not given go, with everything below them. */
uint32_t MediaScanner::DropOtherRoots(const std::vector<CatalogueRow> &keep) {
    std::map<std::string, CatalogueRow> roots;
    uint32_t rc = m_writer.Children(0, roots);
    for (auto it = roots.begin(); rc == MDB_OK && it != roots.end(); ++it) {
        const bool kept = std::any_of(keep.begin(), keep.end(), [&](const CatalogueRow &r) { return r.id == it->second.id; });
        if (!kept) {
            RemovedRows removed;
            rc = m_writer.DeleteTree(it->second, removed);
            m_counts.removed += removed.items;
            m_counts.foldersRemoved += removed.folders;
        }
    }
    return rc;
}

/* Read one media file into job, with the catalogue released first: the reading is the slow part
 * of a scan. false, with the file reported as skipped, when it cannot be read; the caller then
 * deletes a row of the same name as one that no entry claimed. */
bool MediaScanner::ReadFile(const std::string &path, long long folderId, long long size, long long mtime,
                            FileJob &job) {
    if (m_writer.Release() != MDB_OK) {
        return false;
    }
    const MediaKind kind = KindOfFileName(job.name);
    job.itemClass = ItemClassOfKind(kind);
    std::string error;
    if (!ReadInfo(kind, path, job.info, error)) {
        Skip(path, error);
        return false;
    }
    ChooseDlnaProfile(kind, job.info);
    if (!ResolveItemFlags(kind, job.info, job.flags, error)) {
        Skip(path, error);
        return false;
    }
    for (std::string *text : {&job.info.title, &job.info.artist, &job.info.album, &job.info.genre,
                              &job.info.creator, &job.info.date}) {
        *text = ValidUtf8(*text);
    }
    job.place.parentId = folderId;
    job.place.fileName = job.name;
    job.place.title = job.info.title.empty() ? ValidUtf8(WithoutExtension(job.name)) : job.info.title;
    job.place.size = size;
    job.place.date = job.info.date.empty() ? LocalDate(mtime) : job.info.date;
    job.place.lastModify = FormatModificationTime(mtime);
    return true;
}

/* Write the rows of the files read (a folder row of the same name goes first) and claim them. */
uint32_t MediaScanner::WriteFiles(std::vector<FileJob> &jobs, std::map<std::string, CatalogueRow> &rows,
                                  uint32_t &bits) {
    uint32_t rc = MDB_OK;
    for (size_t i = 0; rc == MDB_OK && i < jobs.size(); ++i) {
        FileJob &job = jobs[i];
        if (job.existing.id > 0 && (job.existing.flags & MDB_FLAGS_CLASS_MASK) == MDB_CLASS_FOLDER) {
            RemovedRows removed;
            rc = m_writer.DeleteTree(job.existing, removed);
            m_counts.foldersRemoved += removed.folders;
            m_counts.removed += removed.items;
        }
        long long id = 0;
        bool updated = false;
        if (rc == MDB_OK) {
            rc = m_writer.WriteItem(job.place, job.flags, job.info, id, updated);
        }
        if (rc == MDB_OK) {
            ++(updated ? m_counts.updated : m_counts.added);
            bits |= 1u << job.itemClass;
            rows.erase(job.name);
        }
    }
    jobs.clear();
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
