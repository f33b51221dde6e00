// A printf-like formatter that is safe with run-time text as its format.
//
// lumxml formats a few run-time texts (Xerces messages, the document
// reporter's recorded text) as if they were formats, because hosts see the
// effect: "%%" in such a text reaches them as "%". Passing such text to the
// printf family would let it read or write memory, so this formatter
// implements the effect with typed arguments: "%%" becomes "%", "%s", "%d"
// and "%ld" take the supplied arguments in order, and any other conversion,
// or one for which no argument (of a fitting kind) is left, is copied as it
// stands.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

namespace lumxml {

class FormatArg {
public:
    FormatArg(const char* text) : text_(text ? text : "(null)"), isText_(true) {}
    FormatArg(int value) : number_(value) {}
    FormatArg(long value) : number_(value) {}
    FormatArg(long long value) : number_(value) {}
    FormatArg(unsigned value) : number_(value) {}
    FormatArg(unsigned long value) : number_(static_cast<long long>(value)) {}

    bool isText() const { return isText_; }
    const char* text() const { return text_; }
    long long number() const { return number_; }

private:
    const char* text_ = nullptr;
    long long number_ = 0;
    bool isText_ = false;
};

using FormatArgs = std::initializer_list<FormatArg>;

// Appends the formatted text to `out`.
void safeFormat(std::string& out, const char* format, FormatArgs args = {});

}  // namespace lumxml
