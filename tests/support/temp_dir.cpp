// Scratch directories for tests.
#include "temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace mdbtest {

TempDir::TempDir() {
    std::string tmpl = (fs::temp_directory_path() / "mdbtest-XXXXXX").string();
    if (::mkdtemp(tmpl.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    m_path = tmpl;
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::remove_all(m_path, ec);
}

std::string TempDir::file(const std::string &name) const { return m_path + "/" + name; }

std::string TempDir::mkdir(const std::string &rel) const {
    std::string full = file(rel);
    fs::create_directories(full);
    return full;
}

std::string TempDir::write(const std::string &rel, const std::string &bytes) const {
    std::string full = file(rel);
    fs::create_directories(fs::path(full).parent_path());
    std::ofstream out(full, std::ios::binary);
    out << bytes;
    return full;
}

std::string readFile(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool fileExists(const std::string &path) { return fs::exists(path); }

}  // namespace mdbtest
