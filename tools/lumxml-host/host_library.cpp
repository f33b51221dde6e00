#include "host_library.h"

#include <cstdlib>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace host {

// The only platform-specific part of the host: loading a shared library and
// looking up a name in it (dlopen/dlsym, LoadLibrary/GetProcAddress).
namespace {

#if defined(_WIN32)
void* loadLibrary(const std::string& path, std::string& error) {
    HMODULE module = LoadLibraryA(path.c_str());
    if (module == nullptr) {
        error = "LoadLibrary failed with error " + std::to_string(GetLastError());
        return nullptr;
    }
    return reinterpret_cast<void*>(module);
}
void* findSymbol(void* handle, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
}
void closeLibrary(void* handle) { FreeLibrary(static_cast<HMODULE>(handle)); }
std::string loadedFrom(void*, const std::string& path) { return path; }
#else
void* loadLibrary(const std::string& path, std::string& error) {
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = dlerror();
        error = reason != nullptr ? reason : "unknown error";
    }
    return handle;
}
void* findSymbol(void* handle, const char* name) { return dlsym(handle, name); }
void closeLibrary(void* handle) { dlclose(handle); }
// The file the loader took for a library named by its SONAME alone.
std::string loadedFrom(void* symbol, const std::string& path) {
    Dl_info info;
    if (symbol != nullptr && dladdr(symbol, &info) != 0 && info.dli_fname != nullptr)
        return info.dli_fname;
    return path;
}
#endif

}  // namespace

HostLibrary::~HostLibrary() {
    if (handle_ != nullptr) closeLibrary(handle_);
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
    handle_ = loadLibrary(path, error_);
#if defined(LUMXML_SONAME_LIBRARY)
    // Under a sanitizer, dlopen is called from the sanitizer's runtime, so
    // the loader does not search this program's run path: the library built
    // beside the program is then named by its full path.
    if (handle_ == nullptr && path == LUMXML_SONAME_LIBRARY) {
        std::string bySoname = error_;
        handle_ = loadLibrary(LUMXML_DEFAULT_LIBRARY, error_);
        if (handle_ == nullptr) error_ = bySoname;
    }
#endif
    if (handle_ == nullptr) return false;
#define LUMXML_HOST_EXPORT(name)                                                      \
    exports_.name = reinterpret_cast<decltype(exports_.name)>(findSymbol(handle_, #name)); \
    if (exports_.name != nullptr) ++found_;
#include "export_names.inc"
#undef LUMXML_HOST_EXPORT
    path_ = loadedFrom(reinterpret_cast<void*>(exports_.lumInitParser), path);
    return true;
}

std::string defaultLibraryPath() {
    const char* fromEnvironment = std::getenv("LUMXML_LIBRARY");
    if (fromEnvironment != nullptr && *fromEnvironment != '\0') return fromEnvironment;
#if defined(LUMXML_SONAME_LIBRARY)
    // By its SONAME: the loader looks in the program's run path, which
    // names the build folder in the build and the lib folder beside an
    // installed program, so neither depends on where the other lies.
    return LUMXML_SONAME_LIBRARY;
#else
    return LUMXML_DEFAULT_LIBRARY;
#endif
}

}  // namespace host
