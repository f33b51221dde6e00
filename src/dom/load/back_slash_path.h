// Network paths: a name that begins with two forward slashes is handed to
// Xerces with every '/' turned into a backslash (the form Windows expects
// for a UNC path). Shared by document loading and the SAX reader.
#pragma once

#include <string>

namespace lumxml {

// True when `name` begins with "//".
bool isNetworkPath(const char* name);

// Copies `in` to `out` with every '/' turned into '\\', NUL included.
// `out` must hold strlen(in) + 1 bytes.
void toBackslashPath(char* out, const char* in);

// The same, as a new string.
std::string toBackslashPath(const char* in);

// The name Xerces should see: the backslash copy for a network path,
// otherwise `name` unchanged.
std::string pathForXerces(const char* name);

}  // namespace lumxml
