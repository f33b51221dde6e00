#include "frame/platform.h"

#include <string>

#if defined(_WIN32)
#include <string.h>
#include <wchar.h>
#else
#include <unicode/ustring.h>
#endif

namespace lumxml {
namespace platform {

#if defined(_WIN32)

// lumxml never changes the C locale, so _stricmp folds ASCII letters only.
int compareIgnoringCase(const char* a, const char* b) { return _stricmp(a, b); }

std::FILE* openFile(const char* name, const char* mode) {
    if (name == nullptr) return nullptr;
    return std::fopen(name, mode);
}

// lum_wchar_t is wchar_t (UTF-16) here: the name goes to _wfopen as it is,
// with the same mode in wide characters (L"wb", L"w", ...).
std::FILE* openFile(const lum_wchar_t* name, const char* mode) {
    if (name == nullptr) return nullptr;
    wchar_t wideMode[8] = {0};
    for (size_t i = 0; mode[i] != '\0' && i + 1 < sizeof wideMode / sizeof wideMode[0]; ++i)
        wideMode[i] = static_cast<wchar_t>(static_cast<unsigned char>(mode[i]));
    return _wfopen(name, wideMode);
}

#else

int compareIgnoringCase(const char* a, const char* b) {
    for (;; ++a, ++b) {
        unsigned char ca = static_cast<unsigned char>(*a);
        unsigned char cb = static_cast<unsigned char>(*b);
        if (ca >= 'A' && ca <= 'Z') ca = static_cast<unsigned char>(ca - 'A' + 'a');
        if (cb >= 'A' && cb <= 'Z') cb = static_cast<unsigned char>(cb - 'A' + 'a');
        if (ca != cb || ca == 0) return static_cast<int>(ca) - static_cast<int>(cb);
    }
}

std::FILE* openFile(const char* name, const char* mode) {
    if (name == nullptr) return nullptr;
    return std::fopen(name, mode);
}

// No wide fopen on POSIX: the UTF-16 name is converted to UTF-8 first.
std::FILE* openFile(const lum_wchar_t* name, const char* mode) {
    if (name == nullptr) return nullptr;
    const UChar* units = reinterpret_cast<const UChar*>(name);
    int32_t needed = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(nullptr, 0, &needed, units, -1, 0xFFFD, nullptr, &status);
    std::string utf8(static_cast<size_t>(needed) + 1, '\0');
    status = U_ZERO_ERROR;
    u_strToUTF8WithSub(&utf8[0], needed + 1, &needed, units, -1, 0xFFFD, nullptr, &status);
    if (U_FAILURE(status)) return nullptr;
    utf8.resize(static_cast<size_t>(needed));
    return std::fopen(utf8.c_str(), mode);
}

#endif

}  // namespace platform
}  // namespace lumxml
