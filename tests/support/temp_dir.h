// A scratch directory for one test, removed with everything in it when the object goes; and
// whole-file reads.
#pragma once

#include <filesystem>
#include <string>

namespace mdbtest {

class TempDir {
public:
    TempDir();
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    const std::string &path() const { return m_path; }
    std::string file(const std::string &name) const { return m_path + "/" + name; }  // path()/name
    // Creates the directory path()/rel (and its parents); returns its full path.
    std::string mkdir(const std::string &rel) const;
    // Writes a file path()/rel with the given bytes (making its directories); returns its full path.
    std::string write(const std::string &rel, const std::string &bytes) const;

private:
    std::string m_path;
};

// Reads a whole file; an empty string when it cannot be read.
std::string readFile(const std::string &path);
inline bool fileExists(const std::string &path) { return std::filesystem::exists(path); }

}  // namespace mdbtest
