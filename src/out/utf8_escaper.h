// A fast way to the bytes XMLFormatter writes for UTF-8 output.
//
// Writing a large document spends most of its time inside XMLFormatter
// (escape-list search and the transcoder's per-character checks). For
// UTF-8 output the writer encodes and escapes itself instead, and must
// give exactly the formatter's bytes: the escapes of every ASCII character
// are therefore not written down here but learned once from an XMLFormatter
// itself. Characters beyond ASCII are plain UTF-8 (the UTF-8 transcoder can
// represent all of them); texts holding a surrogate go to the formatter.
#pragma once

#include <string>

#include <xercesc/framework/XMLFormatter.hpp>

namespace lumxml {

class Utf8Escaper {
public:
    // The tables, learned on first use (std::call_once); needs a started
    // XML engine.
    static const Utf8Escaper& instance();

    // Appends the bytes of `text` written with `flags`; false (and `out`
    // unchanged) when the text holds a surrogate, which the formatter must
    // then write.
    bool append(const XMLCh* text, XMLSize_t length,
                XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags flags, std::string& out) const;

    // True for the names of the UTF-8 encoding the fast way stands in for.
    static bool isUtf8(const char* encoding);

private:
    Utf8Escaper();
    // Writes at `out` (room for length times longest_ bytes); the end, or
    // null for a surrogate or a zero unit.
    char* encode(const XMLCh* text, XMLSize_t length,
                 XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags flags, char* out) const;
    static constexpr int kFlags = XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags_Count;
    // Per escape flag, per ASCII character: its bytes.
    struct Bytes {
        char text[15];
        unsigned char length;
    };
    Bytes ascii_[kFlags][128] = {};  // the zero unit stays empty: never taken
    size_t longest_ = 3;  // the most bytes one UTF-16 unit can become
};

}  // namespace lumxml
