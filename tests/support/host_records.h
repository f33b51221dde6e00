// Reading and writing host records at their documented byte offsets, as a
// host that knows only the record tables does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace lumtest {

template <class T>
T readAt(const void* record, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const unsigned char*>(record) + offset, sizeof value);
    return value;
}

template <class T>
void writeAt(void* record, size_t offset, T value) {
    std::memcpy(static_cast<unsigned char*>(record) + offset, &value, sizeof value);
}

// A C string read from a pointer slot at `offset` (null stays null).
inline const char* stringAt(const void* record, size_t offset) {
    return readAt<const char*>(record, offset);
}

}  // namespace lumtest
