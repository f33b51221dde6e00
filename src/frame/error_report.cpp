#include "frame/error_report.h"

#include "frame/host_codec.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace lumxml {

int formatError(char* buffer, const char* format, FormatArgs args) {
    if (buffer == nullptr) return -1;
    if (format != nullptr && std::strchr(format, '%') == nullptr) {
        // Nothing to convert: copied as it is, without allocating, so that
        // a failure to allocate can still be reported.
        const size_t length = std::strlen(format);
        std::memmove(buffer, format, length + 1);
        return static_cast<int>(length);
    }
    std::string text;
    safeFormat(text, format, args);
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<int>(text.size());
}

int printOut(const char* format, FormatArgs args) {
    std::string text;
    safeFormat(text, format, args);
    if (text.empty()) return 0;
    size_t written = std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    return static_cast<int>(written);
}

void appendBudgeted(char* buffer, const char* text, size_t budget) {
    if (buffer == nullptr) return;
    size_t used = std::strlen(buffer);
    if (used >= budget || text == nullptr) return;
    size_t room = budget - used;
    std::string piece(text);
    if (piece.size() > room) {
        size_t keep = room >= 3 ? room - 3 : 0;
        // Never half a character of the host code page before the dots.
        piece.resize(codec::characterBoundary(piece.data(), piece.size(), keep));
        piece.append(room >= 3 ? 3 : room, '.');
    }
    formatError(buffer + used, piece.c_str());
}

void ErrorReport::fixed(const char* message, int32_t code) {
    if (buffer_ != nullptr) std::memcpy(buffer_, message, std::strlen(message) + 1);
    setCode(code);
}

void ErrorReport::formatted(int32_t code, const char* format, FormatArgs args) {
    formatError(buffer_, format, args);
    setCode(code);
}

void ErrorReport::prefixed(const char* prefix, const char* text, int32_t code) {
    if (buffer_ != nullptr) {
        std::memcpy(buffer_, prefix, std::strlen(prefix) + 1);
        appendBudgeted(buffer_, text);
    }
    setCode(code);
}

void ErrorReport::appended(const char* text, int32_t code) {
    appendBudgeted(buffer_, text);
    setCode(code);
}

void ErrorReport::setCode(int32_t code) {
    if (code_ != nullptr) *code_ = code;
}

}  // namespace lumxml
