#include "host_library.h"

#include <cstdlib>

#include <dlfcn.h>

namespace host {

HostLibrary::~HostLibrary() {
    if (handle_ != nullptr) dlclose(handle_);
}

int HostLibrary::exportsExpected() {
    int count = 0;
#define LUMXML_HOST_EXPORT(name) ++count;
#include "export_names.inc"
#undef LUMXML_HOST_EXPORT
    return count;
}

bool HostLibrary::open(const std::string& path) {
    path_ = path;
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* reason = dlerror();
        error_ = reason != nullptr ? reason : "unknown error";
        return false;
    }
#define LUMXML_HOST_EXPORT(name)                                               \
    exports_.name = reinterpret_cast<decltype(exports_.name)>(dlsym(handle_, #name)); \
    if (exports_.name != nullptr) ++found_;
#include "export_names.inc"
#undef LUMXML_HOST_EXPORT
    return true;
}

std::string defaultLibraryPath() {
    const char* fromEnvironment = std::getenv("LUMXML_LIBRARY");
    if (fromEnvironment != nullptr && *fromEnvironment != '\0') return fromEnvironment;
    return LUMXML_DEFAULT_LIBRARY;
}

}  // namespace host
