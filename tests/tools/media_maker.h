// Small media files for the scanner and tool tests, made with ffmpeg's test sources (tones and
// test patterns) and with the project's EXIF stamp program; nothing is downloaded.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace mdbtest {

using Tags = std::vector<std::pair<std::string, std::string>>;

class MediaMaker {
public:
    // Files are made below root (which must exist).
    explicit MediaMaker(std::string root) : m_root(std::move(root)) {}

    // A stereo 44.1 kHz tone of the given seconds, encoded with codecArgs (ffmpeg options).
    void Tone(const std::string &rel, double seconds, const std::vector<std::string> &codecArgs, const Tags &tags) const;
    // A test pattern of width x height at 25 frames per second with a 48 kHz tone.
    void Clip(const std::string &rel, int width, int height, double seconds, const std::vector<std::string> &codecArgs,
              const Tags &tags) const;
    // One frame of a test pattern as a picture (format from the extension).
    void Picture(const std::string &rel, int width, int height) const;
    // EXIF date taken ("YYYY:MM:DD HH:MM:SS") and description written into a JPEG.
    void StampExif(const std::string &rel, const std::string &taken, const std::string &description) const;
    // Arbitrary bytes, for files that only pretend to be media.
    void Bytes(const std::string &rel, const std::string &bytes) const;

    std::string Path(const std::string &rel) const { return m_root + "/" + rel; }

private:
    void Ffmpeg(const std::string &rel, const std::vector<std::string> &args) const;
    std::string m_root;
};

}  // namespace mdbtest
