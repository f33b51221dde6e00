// Conversion of host 8-bit strings to UTF-16 and back.
//
// The host's code page is chosen by lumInitParser. Every host string that
// crosses the boundary goes through this module, both ways, with the
// semantics of Xerces' local-code-page transcoding: null stays null, empty
// gives empty, memory comes from Xerces' memory manager so that
// XMLString::release frees it, and unrepresentable characters are
// substituted. ICU converters are not thread-safe: each thread converts
// with its own converter, opened on the chosen name.
#pragma once

#include <cstddef>
#include <string>

#include <xercesc/util/XercesDefs.hpp>

namespace lumxml {

namespace codec {

// Chooses the code page of the host (an ICU converter name or alias).
// Returns false when ICU cannot open it; the codec then keeps UTF-8.
bool select(const char* name);
// Name of the converter in use ("UTF-8" until select is called).
std::string selected();

// Host 8-bit -> UTF-16, allocated from Xerces' memory manager.
XMLCh* toXml(const char* text);
XMLCh* toXml(const char* text, size_t length);
// The same units as toXml, into `out` (grown as needed, reused by callers
// that convert one text after another, so that no allocation is made once
// it is large enough). Answers the units, zero-terminated; null for null.
const XMLCh* toXml(const char* text, size_t length, std::basic_string<XMLCh>& out);
// True when the host code page is UTF-8: host texts are then converted
// without an ICU converter, and a host text of ASCII and well-formed UTF-8
// is exactly the UTF-8 form of its UTF-16 units. Read without a lock or a
// per-thread converter, so hot paths may ask it for every string.
bool hostIsUtf8();
// UTF-16 -> host 8-bit, allocated from Xerces' memory manager.
char* toHost(const XMLCh* text);
char* toHost(const XMLCh* text, size_t length);
// Host bytes of `text` appended to `out` (no allocation from Xerces).
void appendHost(std::string& out, const XMLCh* text, size_t length);

// UTF-16 -> UTF-8 without ICU, byte for byte what ICU's converter gives
// with U+FFFD for an unpaired surrogate. `out` has room for length * 3
// bytes; answers the bytes written (no NUL is added).
size_t utf16ToUtf8(const XMLCh* text, size_t length, char* out);

// The longest prefix of `text` (`length` bytes), at most `maxBytes` long,
// that ends on a character boundary of the host code page: a message cut
// to the error budget never ends in half a character.
size_t characterBoundary(const char* text, size_t length, size_t maxBytes);

void release(XMLCh* text);
void release(char* text);

}  // namespace codec

// Owns a UTF-16 copy of a host string (null stays null).
class XmlString {
public:
    XmlString() = default;
    explicit XmlString(const char* text) : text_(codec::toXml(text)) {}
    ~XmlString() { codec::release(text_); }
    XmlString(XmlString&& other) noexcept : text_(other.text_) { other.text_ = nullptr; }
    XmlString& operator=(XmlString&& other) noexcept;
    XmlString(const XmlString&) = delete;
    XmlString& operator=(const XmlString&) = delete;

    const XMLCh* get() const { return text_; }
    operator const XMLCh*() const { return text_; }
    XMLCh* release() {
        XMLCh* text = text_;
        text_ = nullptr;
        return text;
    }

private:
    XMLCh* text_ = nullptr;
};

// Owns a host 8-bit copy of a UTF-16 string (null stays null).
class HostString {
public:
    HostString() = default;
    explicit HostString(const XMLCh* text) : text_(codec::toHost(text)) {}
    HostString(const XMLCh* text, size_t length) : text_(codec::toHost(text, length)) {}
    ~HostString() { codec::release(text_); }
    HostString(HostString&& other) noexcept : text_(other.text_) { other.text_ = nullptr; }
    HostString& operator=(HostString&& other) noexcept;
    HostString(const HostString&) = delete;
    HostString& operator=(const HostString&) = delete;

    const char* get() const { return text_; }
    char* data() { return text_; }
    operator const char*() const { return text_; }
    char* release() {
        char* text = text_;
        text_ = nullptr;
        return text;
    }

private:
    char* text_ = nullptr;
};

}  // namespace lumxml
