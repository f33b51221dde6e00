#include "frame/host_codec.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>

#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {
namespace codec {

namespace {

static_assert(sizeof(XMLCh) == sizeof(UChar), "XMLCh and UChar are both UTF-16 units");

std::mutex selectionMutex;
std::string selectedName = "UTF-8";
bool selectedIsUtf8 = true;
// A copy of selectedIsUtf8 that readers take without the mutex: the host
// never overlaps lumInitParser with anything else.
std::atomic<bool> hostUtf8{true};
std::atomic<unsigned> generation{1};

// One converter per thread, reopened when lumInitParser chose another one.
class ThreadConverter {
public:
    ~ThreadConverter() {
        if (converter_ != nullptr) ucnv_close(converter_);
    }

    // Null when the chosen code page is UTF-8 (converted without a converter).
    UConverter* get() {
        unsigned current = generation.load(std::memory_order_acquire);
        if (current != generation_) {
            if (converter_ != nullptr) ucnv_close(converter_);
            converter_ = nullptr;
            std::lock_guard<std::mutex> lock(selectionMutex);
            if (!selectedIsUtf8) {
                UErrorCode status = U_ZERO_ERROR;
                converter_ = ucnv_open(selectedName.c_str(), &status);
                if (U_FAILURE(status)) converter_ = nullptr;
            }
            generation_ = current;
        }
        return converter_;
    }

private:
    UConverter* converter_ = nullptr;
    unsigned generation_ = 0;
};

thread_local ThreadConverter threadConverter;

MemoryManager* memory() { return XMLPlatformUtils::fgMemoryManager; }

template <class T>
T* allocate(size_t count) {
    return static_cast<T*>(memory()->allocate(count * sizeof(T)));
}

bool isUtf8Name(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    const char* canonical = ucnv_getCanonicalName(name, "", &status);
    if (U_FAILURE(status) || canonical == nullptr) canonical = name;
    return std::strcmp(canonical, "UTF-8") == 0 || std::strcmp(name, "UTF-8") == 0;
}

}  // namespace

bool select(const char* name) {
    if (name == nullptr) return false;
    UErrorCode status = U_ZERO_ERROR;
    UConverter* probe = ucnv_open(name, &status);
    if (U_FAILURE(status) || probe == nullptr) return false;
    bool utf8 = std::strcmp(ucnv_getName(probe, &status), "UTF-8") == 0 || isUtf8Name(name);
    ucnv_close(probe);
    {
        std::lock_guard<std::mutex> lock(selectionMutex);
        selectedName = name;
        selectedIsUtf8 = utf8;
        hostUtf8.store(utf8, std::memory_order_release);
    }
    generation.fetch_add(1, std::memory_order_acq_rel);
    return true;
}

std::string selected() {
    std::lock_guard<std::mutex> lock(selectionMutex);
    return selectedName;
}

XMLCh* toXml(const char* text) {
    if (text == nullptr) return nullptr;
    return toXml(text, std::strlen(text));
}

namespace {

// Converts `length` bytes into `out` (room for `capacity` units, the NUL
// included); answers the unit count, which exceeds `capacity` - 1 only when
// a converter expanded (status U_BUFFER_OVERFLOW_ERROR).
int32_t convertToXml(UConverter* converter, const char* text, size_t length, XMLCh* out,
                     size_t capacity, UErrorCode& status) {
    int32_t produced = 0;
    if (converter == nullptr) {
        // An ASCII run widens unit by unit; ICU takes what follows it.
        size_t ascii = 0;
        while (ascii < length && static_cast<unsigned char>(text[ascii]) < 0x80) {
            out[ascii] = static_cast<XMLCh>(text[ascii]);
            ++ascii;
        }
        if (ascii < length) {
            u_strFromUTF8WithSub(reinterpret_cast<UChar*>(out + ascii),
                                 static_cast<int32_t>(capacity - ascii), &produced, text + ascii,
                                 static_cast<int32_t>(length - ascii), 0xFFFD, nullptr, &status);
        }
        produced += static_cast<int32_t>(ascii);
    } else {
        ucnv_resetToUnicode(converter);
        produced = ucnv_toUChars(converter, reinterpret_cast<UChar*>(out),
                                 static_cast<int32_t>(capacity), text,
                                 static_cast<int32_t>(length), &status);
    }
    return produced;
}

}  // namespace

XMLCh* toXml(const char* text, size_t length) {
    if (text == nullptr || memory() == nullptr) return nullptr;
    // A code page never yields more UTF-16 units than it has bytes.
    size_t capacity = length + 1;
    XMLCh* out = allocate<XMLCh>(capacity);
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = threadConverter.get();
    int32_t produced = convertToXml(converter, text, length, out, capacity, status);
    if (status == U_BUFFER_OVERFLOW_ERROR && converter != nullptr) {
        // Not seen with ICU's code pages, but a converter may expand.
        memory()->deallocate(out);
        capacity = static_cast<size_t>(produced) + 1;
        out = allocate<XMLCh>(capacity);
        status = U_ZERO_ERROR;
        produced = convertToXml(converter, text, length, out, capacity, status);
    }
    if (U_FAILURE(status) || produced < 0) produced = 0;
    out[produced] = 0;
    return out;
}

const XMLCh* toXml(const char* text, size_t length, std::basic_string<XMLCh>& out) {
    if (text == nullptr || memory() == nullptr) return nullptr;
    // As above: room for one unit a byte, and the NUL; the string keeps its
    // own terminator behind that room.
    size_t capacity = length + 1;
    if (out.size() < capacity) out.resize(capacity);
    UErrorCode status = U_ZERO_ERROR;
    // A UTF-8 host needs no converter (the per-thread one would be null):
    // skipping its look-up spares a thread-local access per text.
    UConverter* converter = hostIsUtf8() ? nullptr : threadConverter.get();
    int32_t produced = convertToXml(converter, text, length, &out[0], capacity, status);
    if (status == U_BUFFER_OVERFLOW_ERROR && converter != nullptr) {
        capacity = static_cast<size_t>(produced) + 1;
        out.resize(capacity);
        status = U_ZERO_ERROR;
        produced = convertToXml(converter, text, length, &out[0], capacity, status);
    }
    if (U_FAILURE(status) || produced < 0) produced = 0;
    out[static_cast<size_t>(produced)] = 0;
    return out.data();
}

bool hostIsUtf8() { return hostUtf8.load(std::memory_order_acquire); }

namespace {

void putUtf8Sequence(char*& out, uint32_t code) {
    if (code < 0x800) {
        *out++ = static_cast<char>(0xC0 | (code >> 6));
        *out++ = static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        *out++ = static_cast<char>(0xE0 | (code >> 12));
        *out++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        *out++ = static_cast<char>(0x80 | (code & 0x3F));
    } else {
        *out++ = static_cast<char>(0xF0 | (code >> 18));
        *out++ = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        *out++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        *out++ = static_cast<char>(0x80 | (code & 0x3F));
    }
}

bool isLeadSurrogate(XMLCh unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isTrailSurrogate(XMLCh unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

}  // namespace

size_t utf16ToUtf8(const XMLCh* text, size_t length, char* out) {
    char* const start = out;
    size_t i = 0;
    while (i < length) {
        // Markup and most text are ASCII: four units at a time while they are.
        while (i + 4 <= length) {
            uint64_t four;
            std::memcpy(&four, text + i, sizeof four);
            if ((four & 0xFF80FF80FF80FF80ull) != 0) break;
            out[0] = static_cast<char>(text[i]);
            out[1] = static_cast<char>(text[i + 1]);
            out[2] = static_cast<char>(text[i + 2]);
            out[3] = static_cast<char>(text[i + 3]);
            out += 4;
            i += 4;
        }
        if (i >= length) break;
        const XMLCh unit = text[i];
        if (unit < 0x80) {
            *out++ = static_cast<char>(unit);
            ++i;
        } else if (isLeadSurrogate(unit) && i + 1 < length && isTrailSurrogate(text[i + 1])) {
            const uint32_t code = 0x10000 + ((static_cast<uint32_t>(unit) - 0xD800) << 10) +
                                  (static_cast<uint32_t>(text[i + 1]) - 0xDC00);
            putUtf8Sequence(out, code);
            i += 2;
        } else {
            // An unpaired surrogate becomes U+FFFD, as ICU substitutes it.
            const bool unpaired = unit >= 0xD800 && unit <= 0xDFFF;
            putUtf8Sequence(out, unpaired ? 0xFFFDu : unit);
            ++i;
        }
    }
    return static_cast<size_t>(out - start);
}

char* toHost(const XMLCh* text) {
    if (text == nullptr) return nullptr;
    return toHost(text, XMLString::stringLen(text));
}

namespace {

// Converts into `out` (capacity bytes, room for the NUL included);
// answers the byte count the whole text needs.
int32_t convertToHost(const XMLCh* text, size_t length, char* out, int32_t capacity,
                      UErrorCode& status) {
    int32_t produced = 0;
    UConverter* converter = threadConverter.get();
    if (converter == nullptr) {
        // Most markup and text is ASCII: copy that run directly and leave
        // ICU only what follows the first other character.
        size_t ascii = 0;
        size_t room = capacity > 0 ? static_cast<size_t>(capacity) - 1 : 0;
        while (ascii < length && ascii < room && text[ascii] < 0x80) {
            out[ascii] = static_cast<char>(text[ascii]);
            ++ascii;
        }
        if (ascii == length) {
            out[ascii] = '\0';
            return static_cast<int32_t>(ascii);
        }
        u_strToUTF8WithSub(out + ascii, capacity - static_cast<int32_t>(ascii), &produced,
                           reinterpret_cast<const UChar*>(text + ascii),
                           static_cast<int32_t>(length - ascii), 0xFFFD, nullptr, &status);
        produced += static_cast<int32_t>(ascii);
    } else {
        ucnv_resetFromUnicode(converter);
        produced = ucnv_fromUChars(converter, out, capacity,
                                   reinterpret_cast<const UChar*>(text),
                                   static_cast<int32_t>(length), &status);
    }
    return produced;
}

}  // namespace

char* toHost(const XMLCh* text, size_t length) {
    if (text == nullptr || memory() == nullptr) return nullptr;
    if (hostIsUtf8()) {
        // A UTF-16 unit never needs more than 3 UTF-8 bytes (a pair: 4 for 2).
        char* out = allocate<char>(length * 3 + 1);
        out[utf16ToUtf8(text, length, out)] = '\0';
        return out;
    }
    // First try with room for the common case (up to 3 bytes a unit).
    int32_t capacity = static_cast<int32_t>(length * 3 + 1);
    char* out = allocate<char>(static_cast<size_t>(capacity));
    UErrorCode status = U_ZERO_ERROR;
    int32_t needed = convertToHost(text, length, out, capacity, status);
    if (status == U_BUFFER_OVERFLOW_ERROR || needed >= capacity) {
        memory()->deallocate(out);
        capacity = needed + 1;
        out = allocate<char>(static_cast<size_t>(capacity));
        status = U_ZERO_ERROR;
        needed = convertToHost(text, length, out, capacity, status);
    }
    if (U_FAILURE(status) || needed < 0) needed = 0;
    out[needed] = '\0';
    return out;
}

void appendHost(std::string& out, const XMLCh* text, size_t length) {
    if (text == nullptr || length == 0) return;
    size_t start = out.size();
    if (hostIsUtf8()) {
        out.resize(start + length * 3);
        out.resize(start + utf16ToUtf8(text, length, &out[start]));
        return;
    }
    out.resize(start + length * 3 + 1);
    UErrorCode status = U_ZERO_ERROR;
    int32_t needed = convertToHost(text, length, &out[start],
                                   static_cast<int32_t>(length * 3 + 1), status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        out.resize(start + static_cast<size_t>(needed) + 1);
        status = U_ZERO_ERROR;
        needed = convertToHost(text, length, &out[start], needed + 1, status);
    }
    if (U_FAILURE(status) || needed < 0) needed = 0;
    out.resize(start + static_cast<size_t>(needed));
}

size_t characterBoundary(const char* text, size_t length, size_t maxBytes) {
    if (maxBytes >= length) return length;
    UConverter* converter = threadConverter.get();
    if (converter == nullptr) {
        // UTF-8: step back over continuation bytes to the lead of the cut character.
        size_t cut = maxBytes;
        while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
        return cut;
    }
    ucnv_resetToUnicode(converter);
    const char* source = text;
    const char* limit = text + length;
    size_t boundary = 0;
    while (source < limit) {
        UErrorCode status = U_ZERO_ERROR;
        ucnv_getNextUChar(converter, &source, limit, &status);
        size_t reached = static_cast<size_t>(source - text);
        if (U_FAILURE(status) && status != U_INVALID_CHAR_FOUND &&
            status != U_ILLEGAL_CHAR_FOUND && status != U_TRUNCATED_CHAR_FOUND)
            break;
        if (reached > maxBytes || reached == boundary) break;
        boundary = reached;
    }
    ucnv_resetToUnicode(converter);
    return boundary;
}

void release(XMLCh* text) {
    if (text != nullptr) XMLString::release(&text);
}

void release(char* text) {
    if (text != nullptr) XMLString::release(&text);
}

}  // namespace codec

XmlString& XmlString::operator=(XmlString&& other) noexcept {
    if (this != &other) {
        codec::release(text_);
        text_ = other.text_;
        other.text_ = nullptr;
    }
    return *this;
}

HostString& HostString::operator=(HostString&& other) noexcept {
    if (this != &other) {
        codec::release(text_);
        text_ = other.text_;
        other.text_ = nullptr;
    }
    return *this;
}

}  // namespace lumxml
