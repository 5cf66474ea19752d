// The media tree of the scanner and tool tests: a few tagged files of every kind, a few corrupt
// ones and a few that are not media. It is made once per test program with ffmpeg and copied
// for each test, so that a test may change its copy freely.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mdbtest {

// What the scanner must make of one valid media file of the tree.
struct ExpectedItem {
    const char *rel;          // path below the tree's root
    uint32_t itemClass;       // 11, 12 or 13
    const char *mime;         // MIME type of the profile the row's flags name
    const char *profile;      // DLNA profile name ("Unknown" for formats without one)
    const char *title;
    const char *artist;       // "" for none
    const char *album;
    const char *genre;
    uint32_t track;
    uint32_t width, height;   // 0 for audio
    uint32_t sampleFrequency; // 0 for pictures
    uint32_t channels;
    uint32_t bitsPerSample;   // 0 where the format has none
    const char *datePrefix;   // the row's date begins with this ("" for no expectation)
    long long durationMs;     // expected duration, 0 for pictures (checked within 10%)
};

const std::vector<ExpectedItem> &SampleItems();
// Files that pretend to be media but are not valid files of their kind.
const std::vector<std::string> &SampleCorruptFiles();
// Files that are not media at all.
const std::vector<std::string> &SampleForeignFiles();
// Folders of the tree (relative; "" is the root) and the folder bits the scan must give them.
struct ExpectedFolder {
    const char *rel;
    uint32_t bits;
};
const std::vector<ExpectedFolder> &SampleFolders();

// Copies the tree into dir, which must exist. The tree is made on first use.
void CopySampleTree(const std::string &dir);

}  // namespace mdbtest
