// A growing byte buffer that is written through a pointer: room for a
// piece is asked for once, the piece is written straight into it and the
// end committed. Unlike std::string no byte is zero-filled first and no
// size is checked per byte.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>

namespace lumxml {

class ByteBuffer {
public:
    // Room for at least `count` bytes after the data.
    char* room(size_t count) {
        if (capacity_ - size_ < count) grow(count);
        return data_.get() + size_;
    }
    // The data now ends at `end` (inside the room last asked for).
    void commit(char* end) { size_ = static_cast<size_t>(end - data_.get()); }
    void append(const char* bytes, size_t count) {
        char* at = room(count);
        std::memcpy(at, bytes, count);
        size_ += count;
    }

    const char* data() const { return data_.get(); }
    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    void clear() { size_ = 0; }

private:
    void grow(size_t count) {
        size_t capacity = capacity_ < 65536 ? 65536 : 2 * capacity_;
        if (capacity - size_ < count) capacity = size_ + count;
        std::unique_ptr<char[]> grown(new char[capacity]);
        if (size_ != 0) std::memcpy(grown.get(), data_.get(), size_);
        data_ = std::move(grown);
        capacity_ = capacity;
    }

    std::unique_ptr<char[]> data_;
    size_t size_ = 0;
    size_t capacity_ = 0;
};

}  // namespace lumxml
