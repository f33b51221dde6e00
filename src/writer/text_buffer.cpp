#include "writer/text_buffer.h"

#include <cstring>

namespace lumxml {

TextBuffer::TextBuffer() : text_(new char[kStep]), capacity_(kStep) { text_[0] = '\0'; }

TextBuffer::~TextBuffer() { delete[] text_; }

void TextBuffer::reserve(size_t size) { delete[] reserveRetaining(size); }

char* TextBuffer::reserveRetaining(size_t size) {
    if (capacity_ > size) return nullptr;
    size_t capacity = capacity_;
    while (capacity <= size) capacity += kStep;
    char* grown = new char[capacity];
    std::strcpy(grown, text_);
    char* old = text_;
    text_ = grown;
    capacity_ = capacity;
    return old;
}

void TextBuffer::set(const char* text) {
    if (text == nullptr) {
        text_[0] = '\0';
        length_ = 0;
        return;
    }
    set(text, std::strlen(text));
}

void TextBuffer::set(const char* text, size_t size) {
    reserve(size + 1);
    std::memcpy(text_, text, size);
    text_[size] = '\0';
    length_ = size + 1;
}

}  // namespace lumxml
