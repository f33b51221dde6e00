// Helpers for tests that call lumxml the way a host does.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "lumxml.h"

namespace lumtest {

// The host side of the error convention: 256 characters + NUL, and a code.
struct ErrorSlot {
    char buffer[257];
    int32_t code = 0;

    ErrorSlot() { clear(); }
    void clear() {
        std::memset(buffer, 0, sizeof buffer);
        code = 0;
    }
    std::string text() const { return std::string(buffer); }
};

// Initialises the library once per process (host_init.cpp: behaviour
// tests only, it calls the export) with `codePage` (UTF-8 by
// default); later calls do nothing.
void initLibraryOnce(const char* codePage = "UTF-8");

// A fresh directory under the system temporary directory, removed with
// everything in it when the object goes.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    // Full path of `name` inside the directory.
    std::string file(const std::string& name) const;
    // Writes `content` to `name` (directories on the way are made) and
    // answers the full path.
    std::string write(const std::string& name, const std::string& content) const;

private:
    std::string path_;
};

// Whole content of a file ("" when it cannot be read).
std::string readFile(const std::string& path);

}  // namespace lumtest
