// Filling the synthetic catalogue. Rows are numbered in the order a scanner would write them:
// each folder row before its items. Titles are two to four words from a fixed vocabulary.
#include "synthetic_catalogue.h"

#include <mdb_platform.h>

#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace mdbbench {

namespace {

const char *const kWords[] = {
    "Morning", "Light",  "River",  "Night",  "Paper",  "Boats",  "Glass",  "Rain",   "Summer", "Winter",
    "Heart",   "Stone",  "Silver", "Golden", "Road",   "Home",   "Dream",  "Fire",   "Water",  "Wind",
    "Blue",    "Red",    "Green",  "Song",   "Dance",  "Slow",   "Fast",   "Little", "Great",  "Old",
    "New",     "City",   "Garden", "Ocean",  "Sky",    "Star",   "Moon",   "Sun",    "Shadow", "Echo",
    "Return",  "Escape", "Forest", "Valley", "Island", "Harbor", "Street", "Window", "Mirror", "Letter",
    "Promise", "Secret", "Wonder", "Memory", "Thunder", "Velvet", "Crystal", "Lantern", "Meadow", "Journey"};
constexpr size_t kWordCount = sizeof(kWords) / sizeof(kWords[0]);

// A small deterministic generator, so that every run builds the same catalogue.
struct Random {
    unsigned long long state = 0x9E3779B97F4A7C15ull;
    unsigned Next() {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<unsigned>(state >> 33);
    }
};

double Now() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) / 1e9;
}

class Filler {
public:
    explicit Filler(sqlite3 *db) : m_db(db) {}

    uint32_t Begin() { return Exec("BEGIN"); }
    uint32_t Commit() { return Exec("COMMIT"); }
    uint32_t Exec(const char *sql) { return MdbExecSql(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK ? MDB_OK : MDB_ERR_DB; }

    // Commits and begins again every 1,000 rows.
    uint32_t Counted() {
        ++rows;
        if (rows % 1000 != 0) {
            return MDB_OK;
        }
        uint32_t rc = Commit();
        return rc != MDB_OK ? rc : Begin();
    }

    uint32_t Folder(long long parent, const std::string &name, long long &id) {
        uint32_t rc = QRV_MDB_DbAddItem(m_db, parent, static_cast<int32_t>(MDB_CLASS_FOLDER), name.c_str(), name.c_str(),
                                        0, "", 0, 0, 0, 0, 0, 0, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, &id);
        return rc != MDB_OK ? rc : Counted();
    }

    uint32_t Lookups(const char *table, long long count, const char *prefix, std::vector<long long> &ids) {
        ids.resize(static_cast<size_t>(count));
        for (long long i = 0; i < count; ++i) {
            std::string name = std::string(prefix) + " " + kWords[i % kWordCount] + " " + std::to_string(i + 1);
            uint32_t rc = QRV_MDB_DbAddItemExtraInfo(m_db, &ids[static_cast<size_t>(i)], table, name.c_str());
            if (rc != MDB_OK) {
                return rc;
            }
        }
        return MDB_OK;
    }

    std::string Title(long long n) {
        const unsigned words = 2 + m_random.Next() % 3;
        std::string title;
        const bool abc = n % m_abcEvery == m_abcEvery / 3;
        const unsigned abcAt = m_random.Next() % words;
        for (unsigned w = 0; w < words; ++w) {
            if (!title.empty()) {
                title += ' ';
            }
            title += abc && w == abcAt ? "Fabcourt" : kWords[m_random.Next() % kWordCount];
        }
        return title;
    }

    long long rows = 0;
    long long m_abcEvery = 100;

private:
    sqlite3 *m_db;
    Random m_random;
};

}  // namespace

uint32_t BuildSyntheticCatalogue(sqlite3 *db, const CatalogueShape &shape, SyntheticCatalogue &out) {
    out = SyntheticCatalogue();
    Filler fill(db);
    fill.m_abcEvery = shape.abcEvery > 0 ? shape.abcEvery : 100;
    const char *suffix = nullptr;
    const uint32_t musicFlags = QRV_MDB_PNtoFix("audio/mpeg", "MP3", &suffix);
    const uint32_t photoFlags = QRV_MDB_PNtoFix("image/jpeg", "JPEG_LRG", &suffix);
    const uint32_t videoFlags = QRV_MDB_PNtoFix("video/mp4", "AVC_MP4_HP_HD_AAC", &suffix);
    const double start = Now();
    uint32_t rc = fill.Begin();
    std::vector<long long> genres, artists, creators, albums;
    if (rc == MDB_OK) rc = fill.Lookups("GENRES", shape.genres, "Genre", genres);
    if (rc == MDB_OK) rc = fill.Lookups("ARTISTS", shape.artists, "Artist", artists);
    if (rc == MDB_OK) rc = fill.Lookups("CREATORS", shape.artists, "Artist", creators);
    if (rc == MDB_OK) rc = fill.Lookups("ALBUMS", shape.albums, "Album", albums);
    long long musicRoot = 0, pictureRoot = 0, videoRoot = 0;
    if (rc == MDB_OK) rc = fill.Folder(0, "/srv/media/Music", musicRoot);
    if (rc == MDB_OK) rc = fill.Folder(0, "/srv/media/Pictures", pictureRoot);
    if (rc == MDB_OK) rc = fill.Folder(0, "/srv/media/Video", videoRoot);
    if (rc == MDB_OK) rc = fill.Folder(musicRoot, "upload", out.uploadFolderId);

    // Music: the big folder first, then folders of perFolder tracks.
    long long folder = 0;
    long long inFolder = 0;
    long long folderNumber = 0;
    for (long long t = 0; rc == MDB_OK && t < shape.tracks; ++t) {
        const bool big = t < shape.bigFolder;
        if (t == 0 || (!big && (t == shape.bigFolder || inFolder == shape.perFolder))) {
            rc = fill.Folder(musicRoot, big ? std::string("All Singles") : "Album Folder " + std::to_string(++folderNumber),
                             folder);
            if (rc == MDB_OK) rc = QRV_MDB_UpdateFolderFlags(db, folder, MDB_FLAGS_FOLDER_MUSIC);
            if (big) out.bigFolderId = folder;
            inFolder = 0;
        }
        if (rc != MDB_OK) break;
        const size_t album = static_cast<size_t>(t % shape.albums);
        const size_t artist = album % static_cast<size_t>(shape.artists);
        const size_t genre = artist % static_cast<size_t>(shape.genres);
        const std::string title = fill.Title(t);
        const std::string file = std::to_string(t + 1) + " " + title + ".mp3";
        long long id = 0;
        rc = QRV_MDB_DbAddItem(db, folder, static_cast<int32_t>(musicFlags), title.c_str(), file.c_str(),
                               4000000 + (t % 997) * 3001, "2010-01-01", 16, (180 + t % 120) * 1000000LL, 2, 0, 44100,
                               16000, "2020-01-01T00:00:00Z", static_cast<int32_t>(inFolder + 1), 0, albums[album],
                               artists[artist], 0, creators[artist], 0, genres[genre], 0, 0, &id);
        if (rc == MDB_OK) rc = fill.Counted();
        if (big && t == shape.bigFolder / 2) out.sampleItemId = id;
        ++inFolder;
    }
    if (rc == MDB_OK) rc = QRV_MDB_UpdateFolderFlags(db, musicRoot, MDB_FLAGS_FOLDER_MUSIC);

    // Pictures and video, in folders of perFolder.
    const struct {
        long long count;
        long long root;
        uint32_t flags;
        uint32_t folderBit;
        const char *name;
        const char *ext;
        long long resolution;
    } others[] = {
        {shape.photos, pictureRoot, photoFlags, MDB_FLAGS_FOLDER_PICTURE, "IMG_", ".jpg", (2000LL << 32) | 3000},
        {shape.videos, videoRoot, videoFlags, MDB_FLAGS_FOLDER_VIDEO, "Clip ", ".mp4", (1080LL << 32) | 1920},
    };
    for (const auto &kind : others) {
        for (long long i = 0; rc == MDB_OK && i < kind.count; ++i) {
            if (i % shape.perFolder == 0) {
                rc = fill.Folder(kind.root, std::string(kind.name) + "folder " + std::to_string(i / shape.perFolder + 1),
                                 folder);
                if (rc == MDB_OK) rc = QRV_MDB_UpdateFolderFlags(db, folder, kind.folderBit);
            }
            if (rc != MDB_OK) break;
            const std::string title = kind.name + std::to_string(i + 1);
            const std::string file = title + kind.ext;
            const long long duration = kind.flags == videoFlags ? 600 * 1000000LL : 0;
            rc = QRV_MDB_DbAddItem(db, folder, static_cast<int32_t>(kind.flags), title.c_str(), file.c_str(), 3000000,
                                   "2019-07-14T10:00:00", 0, duration, 0, kind.resolution, 0, 0,
                                   "2020-01-01T00:00:00Z", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, nullptr);
            if (rc == MDB_OK) rc = fill.Counted();
        }
        if (rc == MDB_OK) rc = QRV_MDB_UpdateFolderFlags(db, kind.root, kind.folderBit);
    }
    if (rc == MDB_OK) rc = fill.Commit();
    out.rows = fill.rows;
    out.fillSeconds = Now() - start;
    if (rc == MDB_OK) {
        const double analyze = Now();
        rc = fill.Exec("ANALYZE");
        out.analyzeSeconds = Now() - analyze;
    }
    return rc;
}

}  // namespace mdbbench
