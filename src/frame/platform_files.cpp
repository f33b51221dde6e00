// File sizes and path resolution behind the platform seam.
#include "frame/platform.h"

#include <cstdlib>
#include <memory>

#if defined(_WIN32)
#include <stdlib.h>
#else
#include <limits.h>
#include <sys/types.h>
#endif

namespace lumxml {
namespace platform {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

bool isSeparator(char c) {
#if defined(_WIN32)
    return c == '/' || c == '\\';
#else
    return c == '/';
#endif
}

}  // namespace

uint64_t fileSize(const char* name) {
    std::unique_ptr<std::FILE, FileCloser> file(openFile(name, "rb"));
    if (!file) return 0;
#if defined(_WIN32)
    if (_fseeki64(file.get(), 0, SEEK_END) != 0) return 0;
    const long long end = _ftelli64(file.get());
#else
    if (fseeko(file.get(), 0, SEEK_END) != 0) return 0;
    const off_t end = ftello(file.get());
#endif
    return end > 0 ? static_cast<uint64_t>(end) : 0;
}

bool resolvePath(const std::string& path, std::string& resolved) {
#if defined(_WIN32)
    // _fullpath folds "." and ".." (Windows links are left as they are).
    char* full = _fullpath(nullptr, path.c_str(), 0);
#else
    char* full = realpath(path.c_str(), nullptr);
#endif
    if (full == nullptr) return false;
    resolved = full;
    std::free(full);
    return true;
}

bool isWithin(const std::string& path, const std::string& directory) {
    size_t length = directory.size();
    while (length > 1 && isSeparator(directory[length - 1])) --length;
    if (path.size() < length || path.compare(0, length, directory, 0, length) != 0) return false;
    if (path.size() == length) return true;
    // "/a/bc" is not below "/a/b"; the root "/" ends in its separator.
    return isSeparator(path[length]) || isSeparator(directory[length - 1]);
}

}  // namespace platform
}  // namespace lumxml
