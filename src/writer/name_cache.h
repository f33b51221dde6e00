// The last few names a writer checked, with their answers.
//
// A strict writer checks every element and attribute name, and a document
// uses the same few names again and again. The answer for a host text is
// fixed as long as the host code page is (the writer keeps answers only
// while it is UTF-8), so a name seen lately is answered without being
// converted and checked again.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace lumxml {

class NameCache {
public:
    static constexpr size_t kEntries = 8;
    static constexpr size_t kLongestName = 64;  // longer names are not kept

    // The answer kept for the `length` bytes at `name`, or null.
    const bool* find(const char* name, size_t length) const {
        for (const Entry& entry : entries_) {
            if (entry.used && entry.name.size() == length && length != 0 &&
                entry.name[0] == name[0] && std::memcmp(entry.name.data(), name, length) == 0)
                return &entry.answer;
        }
        return nullptr;
    }

    // Keeps an answer, in place of the oldest one kept.
    void remember(const char* name, size_t length, bool answer) {
        if (length > kLongestName) return;
        Entry& entry = entries_[next_];
        next_ = (next_ + 1) % kEntries;
        entry.used = true;
        entry.name.assign(name, length);
        entry.answer = answer;
    }

    void clear() {
        for (Entry& entry : entries_) entry.used = false;
    }

private:
    struct Entry {
        std::string name;
        bool answer = false;
        bool used = false;
    };
    Entry entries_[kEntries];
    size_t next_ = 0;
};

}  // namespace lumxml
