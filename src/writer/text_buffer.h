// A growable, zero-terminated 8-bit text owned by a writer.
#pragma once

#include <cstddef>

namespace lumxml {

class TextBuffer {
public:
    static constexpr size_t kStep = 512;

    // 512 bytes holding an empty text.
    TextBuffer();
    ~TextBuffer();
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    // Raises the capacity in steps of 512 until it exceeds `size`, moving
    // the text to a new block. Nothing happens when it already does.
    void reserve(size_t size);
    // As reserve(), but the old block is handed to the caller instead of
    // being freed (null when the text did not move), so that an address
    // handed out earlier stays readable.
    char* reserveRetaining(size_t size);
    // Copies `text` with its terminating zero; the length becomes its size
    // including the zero. Null stores an empty text with length 0.
    void set(const char* text);
    // As set(), for a text of `size` bytes that need not be terminated.
    void set(const char* text, size_t size);

    const char* text() const { return text_; }
    char* data() { return text_; }
    size_t capacity() const { return capacity_; }
    size_t length() const { return length_; }
    void setLength(size_t length) { length_ = length; }

private:
    char* text_;
    size_t capacity_;
    size_t length_ = 0;
};

}  // namespace lumxml
