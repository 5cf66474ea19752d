// The media scanner: fills a catalogue from directories on disk and keeps it in step with them.
//
// Each directory becomes a root folder row (parentID 0, fileName its absolute path); its folders
// become folder rows and its audio, video and picture files item rows with their tags, stream
// properties and DLNA profile. Root and folder rows are restricted (DestroyObject refuses them),
// except the upload folder. A rescan is incremental: files whose size and modification time are
// unchanged are not read again, vanished files and folders are deleted, and folder bits are
// recomputed. Unreadable or corrupt files are reported and skipped.
//
// Directories are listed and files read while no transaction is open; what was read is then
// written in short transactions (see CatalogueWriter), so that other writers and readers of the
// catalogue wait at most one batch.
#pragma once

#include "catalogue_writer.h"

#include <mdb.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace mdbscan {

struct ScanOptions {
    bool progress = false;      // keep a progress line on `messages` (for a terminal)
    uint32_t batchSize = 1000;  // changes per transaction
    FILE *messages = stderr;    // skipped files, unreadable folders, the upload folder note
    CatalogueLock *lock = nullptr;  // held around every transaction and read (NULL: none)
    bool dropOtherRoots = false;    // Scan deletes the root rows of directories it is not given
    bool rootsOnly = false;         // Scan writes the root rows and the upload folder, and no more
    const std::atomic<bool> *stop = nullptr;  // when it becomes true, a scan ends early (MDB_ERR_FAIL)
};

struct ScanCounts {
    uint32_t folders = 0;         // folders walked (roots included)
    uint32_t foldersAdded = 0;
    uint32_t foldersRemoved = 0;
    uint32_t files = 0;           // media files found
    uint32_t added = 0;           // new item rows
    uint32_t updated = 0;         // item rows rewritten because the file changed
    uint32_t unchanged = 0;       // same size and modification time: not read again
    uint32_t removed = 0;         // item rows deleted: vanished, no longer media, or now unreadable
    uint32_t skipped = 0;         // media files that could not be read
    uint32_t ignored = 0;         // files that are not media
};

struct SkippedFile {
    std::string path;
    std::string reason;
};

class MediaScanner {
public:
    // db: a catalogue opened with QRV_MDB_DbInit; the scanner writes it with the store operations.
    MediaScanner(sqlite3 *db, const ScanOptions &options);

    // Scans every directory as a root. Before any change each is checked to be a readable
    // directory (else MDB_ERR_PARA and lastError()). MDB_ERR_DB when a statement fails: the
    // batches committed before stay, the open one is rolled back.
    uint32_t Scan(const std::vector<std::string> &directories);

    // Rescans one folder below a root that Scan has catalogued (path as the root's row names it,
    // then the folder names), with everything below it, and sets the folder bits of its ancestors
    // anew. A folder without a row yet is found by rescanning its nearest ancestor that has one.
    // MDB_ERR_NOT_FOUND when no root holds path; otherwise as Scan.
    uint32_t RescanFolder(const std::string &path);

    const ScanCounts &counts() const { return m_counts; }
    const std::vector<SkippedFile> &skippedFiles() const { return m_skipped; }
    const std::string &lastError() const { return m_error; }
    // The upload folder made or found below the first root, empty when uploads are unavailable.
    const std::string &uploadFolder() const { return m_uploadFolder; }

private:
    struct Ancestor {
        unsigned long long device;
        unsigned long long inode;
    };
    // A media file whose row is to be written, with what was read from it.
    struct FileJob {
        std::string name;
        CatalogueRow existing;  // the row of that name as the folder's read found it (id 0: none)
        uint32_t itemClass = 0;
        uint32_t flags = 0;
        ItemPlace place;
        MediaInfo info;
    };

    uint32_t EnsureUploadFolder();
    uint32_t ScanFolder(const std::string &path, long long folderId, uint32_t folderFlags, uint32_t &bits);
    bool ReadFile(const std::string &path, long long folderId, long long size, long long mtime, FileJob &job);
    uint32_t WriteFiles(std::vector<FileJob> &jobs, std::map<std::string, CatalogueRow> &rows, uint32_t &bits);
    uint32_t DropOtherRoots(const std::vector<CatalogueRow> &keep);
    uint32_t SetAncestorBits(std::vector<CatalogueRow> ancestors);
    uint32_t BaseFlags(long long folderId) const;
    bool IsUploadInProgress(long long id, const std::string &path);
    void Reset();
    void Skip(const std::string &path, const std::string &reason);
    void ShowProgress(const std::string &where, bool force);
    void ClearProgress();

    sqlite3 *m_db;
    ScanOptions m_options;
    CatalogueWriter m_writer;
    ScanCounts m_counts;
    std::vector<SkippedFile> m_skipped;
    std::vector<Ancestor> m_ancestors;
    std::string m_error;
    std::string m_uploadFolder;
    long long m_uploadFolderId = -1;
    long long m_lastProgressMs = 0;
    bool m_progressShown = false;
};

// Modification time as the scanner stores it in lastModify ("YYYY-MM-DDTHH:MM:SSZ", UTC).
std::string FormatModificationTime(long long mtime);

}  // namespace mdbscan
