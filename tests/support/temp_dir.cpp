// Scratch directories for tests.
#include "temp_dir.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace mdbtest {

TempDir::TempDir() : m_path((fs::temp_directory_path() / "mdbtest-XXXXXX").string()) {
    if (::mkdtemp(m_path.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
}

std::string TempDir::mkdir(const std::string &rel) const {
    fs::create_directories(file(rel));
    return file(rel);
}

std::string TempDir::write(const std::string &rel, const std::string &bytes) const {
    fs::create_directories(fs::path(file(rel)).parent_path());
    std::ofstream(file(rel), std::ios::binary) << bytes;
    return file(rel);
}

std::string readFile(const std::string &path) {
    std::ostringstream ss;
    ss << std::ifstream(path, std::ios::binary).rdbuf();
    return ss.str();
}

}  // namespace mdbtest
