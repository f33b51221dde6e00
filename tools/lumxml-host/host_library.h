// The library as a host runtime sees it: a file loaded at run time and 26
// entry points looked up by name.
#pragma once

#include <string>

#include "lumxml.h"

namespace host {

struct Exports {
#define LUMXML_HOST_EXPORT(name) decltype(&::name) name = nullptr;
#include "export_names.inc"
#undef LUMXML_HOST_EXPORT
};

class HostLibrary {
public:
    HostLibrary() = default;
    ~HostLibrary();
    HostLibrary(const HostLibrary&) = delete;
    HostLibrary& operator=(const HostLibrary&) = delete;

    // Loads the library; false with `error()` set when it cannot be loaded.
    bool open(const std::string& path);
    const std::string& path() const { return path_; }
    const std::string& error() const { return error_; }
    const Exports& exports() const { return exports_; }
    int exportsFound() const { return found_; }
    static int exportsExpected();

private:
    void* handle_ = nullptr;
    std::string path_;
    std::string error_;
    Exports exports_;
    int found_ = 0;
};

// The library path: --library, else $LUMXML_LIBRARY, else the built one.
std::string defaultLibraryPath();

}  // namespace host
