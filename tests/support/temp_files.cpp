#include "host_test.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <stdexcept>

namespace lumtest {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "lumxml-test-XXXXXX").string();
    char* made = mkdtemp(pattern.data());
    if (made == nullptr) throw std::runtime_error("cannot make a temporary directory");
    path_ = made;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::file(const std::string& name) const { return path_ + "/" + name; }

std::string TempDir::write(const std::string& name, const std::string& content) const {
    std::filesystem::path full = file(name);
    std::filesystem::create_directories(full.parent_path());
    std::ofstream out(full, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    return full.string();
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace lumtest
