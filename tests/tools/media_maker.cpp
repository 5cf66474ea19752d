// Making test media with ffmpeg. A file that cannot be made fails the running test at once, with
// what ffmpeg said, so that a missing encoder is not mistaken for a scanner fault.
#include "media_maker.h"

#include "process.h"
#include "temp_dir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdio>

namespace mdbtest {

namespace {

void MakeParents(const std::string &path) {
    for (std::string::size_type slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), 0755);
    }
}

std::string Seconds(double seconds) {
    char text[32];
    snprintf(text, sizeof text, "%.2f", seconds);
    return text;
}

}  // namespace

void MediaMaker::Ffmpeg(const std::string &rel, const std::vector<std::string> &args) const {
    const std::string path = Path(rel);
    MakeParents(path);
    std::vector<std::string> argv = {MDB_TEST_FFMPEG, "-nostdin", "-hide_banner", "-loglevel", "error", "-y"};
    argv.insert(argv.end(), args.begin(), args.end());
    argv.push_back(path);
    ProcessResult r = RunProcess(argv);
    ASSERT_EQ(r.exitCode, 0) << "ffmpeg could not make " << rel << ": " << r.err;
}

void MediaMaker::Tone(const std::string &rel, double seconds, const std::vector<std::string> &codecArgs,
                      const Tags &tags) const {
    std::vector<std::string> args = {"-f", "lavfi", "-i", "sine=frequency=440:sample_rate=44100:duration=" + Seconds(seconds),
                                     "-ac", "2"};
    args.insert(args.end(), codecArgs.begin(), codecArgs.end());
    for (const auto &tag : tags) {
        args.push_back("-metadata");
        args.push_back(tag.first + "=" + tag.second);
    }
    Ffmpeg(rel, args);
}

void MediaMaker::Clip(const std::string &rel, int width, int height, double seconds,
                      const std::vector<std::string> &codecArgs, const Tags &tags) const {
    const std::string size = std::to_string(width) + "x" + std::to_string(height);
    std::vector<std::string> args = {"-f", "lavfi", "-i", "testsrc=size=" + size + ":rate=25:duration=" + Seconds(seconds),
                                     "-f", "lavfi", "-i", "sine=frequency=440:sample_rate=48000:duration=" + Seconds(seconds),
                                     "-shortest", "-ac", "2"};
    args.insert(args.end(), codecArgs.begin(), codecArgs.end());
    for (const auto &tag : tags) {
        args.push_back("-metadata");
        args.push_back(tag.first + "=" + tag.second);
    }
    Ffmpeg(rel, args);
}

void MediaMaker::Picture(const std::string &rel, int width, int height) const {
    Ffmpeg(rel, {"-f", "lavfi", "-i", "testsrc=size=" + std::to_string(width) + "x" + std::to_string(height),
                 "-frames:v", "1"});
}

void MediaMaker::StampExif(const std::string &rel, const std::string &taken, const std::string &description) const {
    ProcessResult r = RunProcess({MDB_TEST_EXIF_STAMP, Path(rel), taken, description});
    ASSERT_EQ(r.exitCode, 0) << "EXIF could not be written into " << rel << ": " << r.err;
}

void MediaMaker::Bytes(const std::string &rel, const std::string &bytes) const {
    const std::string path = Path(rel);
    MakeParents(path);
    FILE *file = fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr) << path;
    fwrite(bytes.data(), 1, bytes.size(), file);
    fclose(file);
}

}  // namespace mdbtest
