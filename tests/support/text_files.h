// Files that lumxml writes in text mode ("w").
#pragma once

#include <string>

namespace lumtest {

// The bytes a file written in text mode holds for `written`: the C run-time
// of Windows turns each "\n" into "\r\n" there; POSIX keeps the bytes.
inline std::string textModeBytes(const std::string& written) {
#if defined(_WIN32)
    std::string bytes;
    for (char c : written) {
        if (c == '\n') bytes += '\r';
        bytes += c;
    }
    return bytes;
#else
    return written;
#endif
}

}  // namespace lumtest
