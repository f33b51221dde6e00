// UTF-16 file names as the exports take them, and files read back by them.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "lumxml.h"

namespace lumtest {

// lum_wchar_t is char16_t on Linux and wchar_t on Windows: both are UTF-16
// code units of the same size, so a test keeps its names as std::u16string
// (u"..." literals) and hands them over through this.
inline const lum_wchar_t* wideUnits(const std::u16string& text) {
    static_assert(sizeof(lum_wchar_t) == sizeof(char16_t), "lum_wchar_t holds UTF-16 units");
    return reinterpret_cast<const lum_wchar_t*>(text.c_str());
}

// The same for a literal (u"..."), which lives as long as the program.
inline const lum_wchar_t* wideUnits(const char16_t* literal) {
    return reinterpret_cast<const lum_wchar_t*>(literal);
}

// Whole content of the file with that UTF-16 name ("" when it cannot be
// read): UTF-8 bytes on Linux, the wide name itself on Windows, as lumxml
// opens it.
inline std::string readWideNamedFile(const std::u16string& name) {
    std::ifstream in(std::filesystem::path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace lumtest
