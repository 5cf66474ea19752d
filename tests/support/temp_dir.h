// A scratch directory for one test, removed with everything in it when the object goes.
#pragma once

#include <string>

namespace mdbtest {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    const std::string &path() const { return m_path; }
    // path() + "/" + name
    std::string file(const std::string &name) const;
    // Creates the directory path()/rel (and its parents); returns its full path.
    std::string mkdir(const std::string &rel) const;
    // Writes a file path()/rel with the given bytes; returns its full path.
    std::string write(const std::string &rel, const std::string &bytes) const;

private:
    std::string m_path;
};

// Reads a whole file; an empty string when it cannot be read.
std::string readFile(const std::string &path);
bool fileExists(const std::string &path);

}  // namespace mdbtest
