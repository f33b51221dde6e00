#include "host_test.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#if defined(_WIN32)
#include <random>
#endif

#include <stdexcept>

namespace lumtest {

#if defined(_WIN32)
// Windows has no mkdtemp: try random names until one is created anew
// (create_directory answers false for a folder that already exists).
TempDir::TempDir() {
    std::random_device seed;
    std::mt19937_64 random(seed());
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::filesystem::path candidate = std::filesystem::temp_directory_path() /
                                          ("lumxml-test-" + std::to_string(random() % 1000000000));
        if (std::filesystem::create_directory(candidate)) {
            path_ = candidate.string();
            return;
        }
    }
    throw std::runtime_error("cannot make a temporary directory");
}
#else
TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "lumxml-test-XXXXXX").string();
    char* made = mkdtemp(pattern.data());
    if (made == nullptr) throw std::runtime_error("cannot make a temporary directory");
    path_ = made;
}
#endif

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::file(const std::string& name) const { return path_ + "/" + name; }

// Test paths are UTF-8 text on every platform (a Linux file name is its
// UTF-8 bytes); Windows would read a narrow name in its ANSI code page.
#if defined(_WIN32)
static std::filesystem::path pathOf(const std::string& utf8) { return std::filesystem::u8path(utf8); }
static std::string textOf(const std::filesystem::path& path) { return path.u8string(); }
#else
static std::filesystem::path pathOf(const std::string& utf8) { return utf8; }
static std::string textOf(const std::filesystem::path& path) { return path.string(); }
#endif

std::string TempDir::write(const std::string& name, const std::string& content) const {
    std::filesystem::path full = pathOf(file(name));
    std::filesystem::create_directories(full.parent_path());
    std::ofstream out(full, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    return textOf(full);
}

std::string readFile(const std::string& path) {
    std::ifstream in(pathOf(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace lumtest
