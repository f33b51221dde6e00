#include "out/utf8_escaper.h"

#include <cstdint>
#include <cstring>
#include <mutex>
#include <stdexcept>

#include "frame/platform.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// Collects what a formatter writes.
class Capture : public XMLFormatTarget {
public:
    void writeChars(const XMLByte* toWrite, XMLSize_t count, XMLFormatter*) override {
        bytes.append(reinterpret_cast<const char*>(toWrite), count);
    }
    std::string bytes;
};

}  // namespace

Utf8Escaper::Utf8Escaper() {
    Capture capture;
    XMLCh utf8[] = {'U', 'T', 'F', '-', '8', 0};
    XMLFormatter formatter(utf8, &capture, XMLFormatter::NoEscapes, XMLFormatter::UnRep_CharRef);
    for (int flags = 0; flags < kFlags; ++flags) {
        for (XMLCh c = 1; c < 128; ++c) {
            capture.bytes.clear();
            formatter.formatBuf(&c, 1, static_cast<XMLFormatter::EscapeFlags>(flags));
            // An escape is a short reference ("&quot;", "&#xD;").
            if (capture.bytes.size() > sizeof ascii_[flags][c].text) throw std::length_error("escape");
            Bytes& entry = ascii_[flags][c];
            std::memcpy(entry.text, capture.bytes.data(), capture.bytes.size());
            entry.length = static_cast<unsigned char>(capture.bytes.size());
            asIs_[flags][c] = entry.length == 1 && entry.text[0] == static_cast<char>(c);
            if (capture.bytes.size() > longest_) longest_ = capture.bytes.size();
        }
    }
    plainMarkup_ = true;
    for (XMLCh c = 0x20; c < 0x7F; ++c) {
        const Bytes& entry = ascii_[XMLFormatter::NoEscapes][c];
        if (entry.length != 1 || entry.text[0] != static_cast<char>(c)) plainMarkup_ = false;
    }
    const Bytes& lineFeed = ascii_[XMLFormatter::NoEscapes]['\n'];
    if (lineFeed.length != 1 || lineFeed.text[0] != '\n') plainMarkup_ = false;
}

const Utf8Escaper& Utf8Escaper::instance() {
    static std::once_flag once;
    static const Utf8Escaper* escaper = nullptr;
    std::call_once(once, [] { escaper = new Utf8Escaper; });  // kept for the process
    return *escaper;
}

bool Utf8Escaper::isUtf8(const char* encoding) {
    if (encoding == nullptr) return false;
    return platform::compareIgnoringCase(encoding, "UTF-8") == 0 ||
           platform::compareIgnoringCase(encoding, "UTF8") == 0;
}

bool Utf8Escaper::append(const XMLCh* text, XMLSize_t length, XMLFormatter::EscapeFlags flags,
                         std::string& out) const {
    const size_t start = out.size();
    // Room for the longest case. Only that room is filled by resize (the
    // text's own size, not the string's spare capacity, which a buffer
    // gathering many small pieces would fill again and again).
    const size_t room = start + length * longest_;
    if (out.capacity() < room) out.reserve(2 * room);
    out.resize(room);
    char* const begin = &out[start];
    char* end = encode(text, length, flags, begin);
    out.resize(end != nullptr ? start + static_cast<size_t>(end - begin) : start);
    return end != nullptr;
}

inline bool Utf8Escaper::putAscii(const Bytes* table, unsigned c, char*& p) {
    const Bytes& bytes = table[c];
    if (bytes.length == 1) {
        *p++ = bytes.text[0];
        return true;
    }
    if (c == 0) return false;
    std::memcpy(p, bytes.text, bytes.length);
    p += bytes.length;
    return true;
}

char* Utf8Escaper::encode(const XMLCh* text, XMLSize_t length, XMLFormatter::EscapeFlags flags,
                          char* p) const {
    const Bytes* table = ascii_[flags];
    for (XMLSize_t i = 0; i < length; ++i) {
        const XMLCh c = text[i];
        if (c < 0x80) {
            if (!putAscii(table, c, p)) return nullptr;
        } else if (c < 0x800) {
            *p++ = static_cast<char>(0xC0 | (c >> 6));
            *p++ = static_cast<char>(0x80 | (c & 0x3F));
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            return nullptr;
        } else {
            *p++ = static_cast<char>(0xE0 | (c >> 12));
            *p++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            *p++ = static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return p;
}

char* Utf8Escaper::encodeText(const XMLCh* text, XMLSize_t length, XMLFormatter::EscapeFlags flags,
                              char* p) const {
    const Bytes* table = ascii_[flags];
    const bool* asIs = asIs_[flags];
    const XMLCh* s = text;
    const XMLCh* const end = text + length;
    while (s < end) {
        XMLCh c = *s;
        // The common case first: ASCII that needs no escape.
        while (c < 0x80 && asIs[c]) {
            *p++ = static_cast<char>(c);
            if (++s == end) return p;
            c = *s;
        }
        if (c < 0x80) {
            if (c == 0) return nullptr;
            const Bytes& bytes = table[c];
            std::memcpy(p, bytes.text, bytes.length);
            p += bytes.length;
        } else if (c < 0x800) {
            *p++ = static_cast<char>(0xC0 | (c >> 6));
            *p++ = static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0xD800 || c > 0xDFFF) {
            *p++ = static_cast<char>(0xE0 | (c >> 12));
            *p++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            *p++ = static_cast<char>(0x80 | (c & 0x3F));
        } else if (c <= 0xDBFF && end - s >= 2 && s[1] >= 0xDC00 && s[1] <= 0xDFFF) {
            const uint32_t code = 0x10000u + ((static_cast<uint32_t>(c) - 0xD800u) << 10) +
                                  (static_cast<uint32_t>(s[1]) - 0xDC00u);
            *p++ = static_cast<char>(0xF0 | (code >> 18));
            *p++ = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            *p++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            *p++ = static_cast<char>(0x80 | (code & 0x3F));
            ++s;
        } else {
            return nullptr;  // a lone surrogate
        }
        ++s;
    }
    return p;
}

char* Utf8Escaper::encodeUtf8(const char* text, size_t length, XMLFormatter::EscapeFlags flags,
                              char* p) const {
    const Bytes* table = ascii_[flags];
    const bool* asIs = asIs_[flags];
    const unsigned char* s = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* const end = s + length;
    auto continuation = [](unsigned char c) { return (c & 0xC0) == 0x80; };
    while (s < end) {
        const unsigned char c = *s;
        if (asIs[c]) {
            *p++ = static_cast<char>(c);
            ++s;
        } else if (c < 0x80) {
            if (!putAscii(table, c, p)) return nullptr;
            ++s;
        } else if (c >= 0xC2 && c <= 0xDF) {
            // U+0080..U+07FF
            if (end - s < 2 || !continuation(s[1])) return nullptr;
            *p++ = static_cast<char>(s[0]);
            *p++ = static_cast<char>(s[1]);
            s += 2;
        } else if (c >= 0xE0 && c <= 0xEF) {
            // U+0800..U+FFFF, neither overlong (E0 80..9F) nor a surrogate
            // (ED A0..BF)
            if (end - s < 3 || !continuation(s[1]) || !continuation(s[2])) return nullptr;
            if ((c == 0xE0 && s[1] < 0xA0) || (c == 0xED && s[1] >= 0xA0)) return nullptr;
            *p++ = static_cast<char>(s[0]);
            *p++ = static_cast<char>(s[1]);
            *p++ = static_cast<char>(s[2]);
            s += 3;
        } else {
            return nullptr;
        }
    }
    return p;
}

}  // namespace lumxml
