// Reads fuzz bytes as the decisions of a host: small integers, flags,
// choices from pools, and the rest as a document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

class FuzzInput {
public:
    FuzzInput(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    bool empty() const { return offset_ >= size_; }
    uint8_t byte() { return offset_ < size_ ? data_[offset_++] : 0; }
    bool flag() { return (byte() & 1) != 0; }
    // A value in [0, count).
    size_t pick(size_t count) { return count == 0 ? 0 : byte() % count; }
    int32_t int32() {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) value = (value << 8) | byte();
        return static_cast<int32_t>(value);
    }
    // Up to `max` bytes as a string (NUL bytes replaced: hosts pass C strings).
    std::string text(size_t max) {
        size_t length = pick(max + 1);
        std::string out;
        for (size_t i = 0; i < length && !empty(); ++i) {
            char c = static_cast<char>(byte());
            out.push_back(c == '\0' ? 'x' : c);
        }
        return out;
    }
    // Everything not read yet.
    const uint8_t* rest() const { return data_ + (offset_ < size_ ? offset_ : size_); }
    size_t restSize() const { return offset_ < size_ ? size_ - offset_ : 0; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t offset_ = 0;
};

}  // namespace fuzz
