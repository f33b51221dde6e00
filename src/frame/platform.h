// The small seam between lumxml and the platform it runs on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "lumxml.h"

namespace lumxml {
namespace platform {

// ASCII case-insensitive comparison (what _stricmp does on Windows).
int compareIgnoringCase(const char* a, const char* b);

// fopen with an 8-bit name.
std::FILE* openFile(const char* name, const char* mode);
// _wfopen on Windows; elsewhere the UTF-16 name is converted to UTF-8 first.
std::FILE* openFile(const lum_wchar_t* name, const char* mode);

// The size in bytes of the file `name` (an 8-bit name); 0 when it cannot
// be opened.
uint64_t fileSize(const char* name);

// The absolute form of the existing file or directory `path` (UTF-8), with
// ".", ".." and (where the platform has them) symbolic links resolved.
// False when it does not exist or cannot be resolved.
bool resolvePath(const std::string& path, std::string& resolved);

// True when `path` (resolved) is `directory` (resolved) or lies below it.
bool isWithin(const std::string& path, const std::string& directory);

// Runs `work(context)` on a new thread with a stack of at least
// `stackBytes` and waits for it. False when no such thread could be made.
bool runOnLargeStack(size_t stackBytes, void (*work)(void*), void* context);

}  // namespace platform
}  // namespace lumxml
