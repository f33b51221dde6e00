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

std::FILE* openFile(const lum_wchar_t* name, const char* mode) {
    if (name == nullptr) return nullptr;
#if defined(_WIN32)
    std::wstring wideMode(mode, mode + std::char_traits<char>::length(mode));
    return _wfopen(name, wideMode.c_str());
#else
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
#endif
}

}  // namespace platform
}  // namespace lumxml
