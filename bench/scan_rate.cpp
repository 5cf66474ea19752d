// Scanner rate measurement.
#include "scan_rate.h"

#include <mdb.h>
#include <mdb_platform.h>
#include <media_scanner.h>

#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>

namespace mdbbench {

namespace {

double Now() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) / 1e9;
}

bool MakeBaseFile(const std::string &path) {
    pid_t pid = fork();
    if (pid == 0) {
        freopen("/dev/null", "w", stderr);
        execl(MDB_BENCH_FFMPEG, "ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
              "sine=frequency=440:sample_rate=44100:duration=1", "-ac", "2", "-c:a", "libmp3lame", "-b:a", "64k",
              path.c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    int status = 0;
    return pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

ScanRate MeasureScanRate(const std::string &workDir, long long files) {
    namespace fs = std::filesystem;
    ScanRate rate;
    const std::string tree = workDir + "/scan-tree";
    const std::string base = workDir + "/base.mp3";
    std::error_code ignored;
    fs::remove_all(tree, ignored);
    fs::create_directories(tree);
    const double make = Now();
    if (!MakeBaseFile(base)) {
        rate.why = "ffmpeg could not make the base MP3 file";
        return rate;
    }
    for (long long i = 0; i < files; ++i) {
        const std::string folder = tree + "/Artist " + std::to_string(i / 100 % 50) + "/Album " + std::to_string(i / 100);
        if (i % 100 == 0) {
            fs::create_directories(folder);
        }
        const std::string path = folder + "/" + std::to_string(i % 100 + 1) + " Track " + std::to_string(i) + ".mp3";
        fs::copy_file(base, path, fs::copy_options::overwrite_existing);
        TagLib::MPEG::File file(path.c_str(), false);
        TagLib::ID3v2::Tag *tag = file.ID3v2Tag(true);
        tag->setTitle("Track " + TagLib::String(std::to_string(i)));
        tag->setArtist("Artist " + TagLib::String(std::to_string(i / 100 % 50)));
        tag->setAlbum("Album " + TagLib::String(std::to_string(i / 100)));
        tag->setGenre("Genre " + TagLib::String(std::to_string(i % 30)));
        tag->setTrack(static_cast<unsigned>(i % 100 + 1));
        tag->setYear(2000 + static_cast<unsigned>(i % 20));
        file.save(TagLib::MPEG::File::ID3v2);
    }
    rate.makeSeconds = Now() - make;
    const std::string dbPath = workDir + "/scan.db";
    fs::remove(dbPath, ignored);
    sqlite3 *db = QRV_MDB_DbInit(dbPath.c_str(), nullptr);
    if (db == nullptr) {
        rate.why = "the scan catalogue could not be created";
        return rate;
    }
    FILE *sink = fopen("/dev/null", "w");
    mdbscan::ScanOptions options;
    options.messages = sink;
    mdbscan::MediaScanner scanner(db, options);
    double start = Now();
    uint32_t status = scanner.Scan({tree});
    rate.firstScanSeconds = Now() - start;
    rate.files = scanner.counts().added;
    start = Now();
    if (status == MDB_OK) {
        status = scanner.Scan({tree});
    }
    rate.rescanSeconds = Now() - start;
    fclose(sink);
    sqlite3_close(db);
    rate.ran = status == MDB_OK;
    if (!rate.ran) {
        rate.why = std::string("the scan failed with ") + QRV_MDB_StatusName(status);
    }
    return rate;
}

}  // namespace mdbbench
