// The error convention shared by every export that can fail: a host buffer
// of 256 characters plus NUL and a host int32_t code, written only on
// failure, message first and code second.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/safe_format.h"
#include "lumxml.h"

namespace lumxml {

constexpr size_t kErrorBudget = 256;

// sprintf-style formatting into `buffer` with no length bound (the callers
// only format short fixed texts or text already cut to the budget).
// Returns the count written.
int formatError(char* buffer, const char* format, FormatArgs args = {});

// printf-style output to standard output (the document reporter's line).
int printOut(const char* format, FormatArgs args = {});

// Appends `text` behind what `buffer` already holds, cut to the room left
// in `budget` characters: an over-long text keeps its first room-3
// characters and ends in "...". The text then serves as a format, on
// purpose: hosts see "%%" in a Xerces message as "%".
void appendBudgeted(char* buffer, const char* text, size_t budget = kErrorBudget);

// The one place that writes a failure to the host: message first, then code.
class ErrorReport {
public:
    ErrorReport(char* buffer, int32_t* code) : buffer_(buffer), code_(code) {}

    // A fixed message, copied whole with its NUL.
    void fixed(const char* message, int32_t code);
    // A message that goes through the formatter ("Unexpected exception", ...).
    void formatted(int32_t code, const char* format, FormatArgs args = {});
    // `prefix` copied whole, then `text` appended under the budget rule.
    void prefixed(const char* prefix, const char* text, int32_t code);
    // `text` appended under the budget rule behind what the buffer holds.
    void appended(const char* text, int32_t code);
    void setCode(int32_t code);

    int32_t code() const { return code_ ? *code_ : 0; }
    char* buffer() const { return buffer_; }

private:
    char* buffer_;
    int32_t* code_;
};

}  // namespace lumxml
