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

    // True when every printable ASCII character and the line feed is
    // written as itself without escapes (NoEscapes): the writer's fixed
    // markup can then be copied as it is.
    bool plainMarkup() const { return plainMarkup_; }

    // The most bytes `length` UTF-16 units, or `length` bytes of UTF-8,
    // can become: the room encode() and encodeUtf8() need.
    size_t maxBytes(size_t length) const { return length * longest_; }

    // Writes at `out` (room for maxBytes(length)); the end, or null for a
    // surrogate or a zero unit (what is written then is garbage).
    char* encode(const XMLCh* text, XMLSize_t length,
                 XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags flags, char* out) const;

    // The bytes of a save's text or markup: as encode(), but a well-formed
    // surrogate pair is written too (its four-byte UTF-8 form, as the
    // formatter writes it). Null (garbage written) only for a lone
    // surrogate or a zero unit, which the caller leaves to the formatter.
    // Runs of ASCII written as themselves are copied in a tight loop; the
    // table is consulted only for the few characters that need escaping.
    char* encodeText(const XMLCh* text, XMLSize_t length,
                     XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags flags, char* out) const;

    // The same bytes for a text given in UTF-8 (a host text when the host
    // code page is UTF-8), without going through UTF-16: ASCII takes the
    // learned escapes, a well-formed two- or three-byte character other
    // than a surrogate is its own UTF-8 form. Null (garbage written) for
    // anything else: four-byte characters (surrogate pairs in UTF-16),
    // ill-formed bytes (which the host codec substitutes), a zero byte;
    // the caller then takes the way through UTF-16.
    char* encodeUtf8(const char* text, size_t length,
                     XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags flags, char* out) const;

private:
    Utf8Escaper();
    static constexpr int kFlags = XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags_Count;
    // Per escape flag, per ASCII character: its bytes.
    struct Bytes {
        char text[15];
        unsigned char length;
    };
    // Writes the bytes of ASCII `c` from `table` at `p` and moves `p` on;
    // false for NUL, which neither shortcut writes.
    static bool putAscii(const Bytes* table, unsigned c, char*& p);
    Bytes ascii_[kFlags][128] = {};  // the zero unit stays empty: never taken
    // Per escape flag, per byte: written as itself (ASCII only, never zero).
    bool asIs_[kFlags][256] = {};
    size_t longest_ = 3;  // the most bytes one UTF-16 unit can become
    bool plainMarkup_ = false;
};

}  // namespace lumxml
