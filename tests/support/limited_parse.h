// A load and a pull read of a document in memory with an expansion limit,
// the way a host that reads untrusted input calls them: shared by the
// tests of the limits such a parse adds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lumtest {

struct Loaded {
    int32_t code = 0;
    std::string message;
};

// lumDocLoad of `text` from memory into a fresh document (deleted after);
// `limit` null for no limit.
Loaded loadText(const std::string& text, const int32_t* limit, uint32_t flags = 0);

struct Pulled {
    std::vector<std::string> fatalErrors;  // the texts of the "FatalError" events
    size_t events = 0;
    int32_t lastResult = 0;  // of the step that ended the read
    int32_t errorCode = 0;   // the record's, after the end
};

// Pulls `text` from memory to the end; `limit` -1 for no limit.
Pulled pullText(const std::string& text, int32_t limit, uint32_t flags = 0);

inline bool mentions(const std::string& text, const std::string& what) {
    return text.find(what) != std::string::npos;
}

}  // namespace lumtest
