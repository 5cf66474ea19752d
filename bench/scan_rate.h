// The scanner's rate on a generated tree of tagged MP3 files: one short file made with ffmpeg,
// copied into folders of 100 and given its own ID3 tags with TagLib; then a first scan into a new
// catalogue and an unchanged rescan, each timed.
#pragma once

#include <string>

namespace mdbbench {

struct ScanRate {
    bool ran = false;
    std::string why;          // when it did not run
    long long files = 0;
    double makeSeconds = 0;
    double firstScanSeconds = 0;
    double rescanSeconds = 0;
};

ScanRate MeasureScanRate(const std::string &workDir, long long files);

}  // namespace mdbbench
