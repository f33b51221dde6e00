#include "dom/methods/method_call.h"

#include <cstring>

#include <xercesc/util/XMLString.hpp>

#include "frame/host_codec.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

size_t unitsOf(const XMLCh* text) { return text != nullptr ? XMLString::stringLen(text) : 0; }

// Names and most values are short: with a UTF-8 host they are converted
// into a buffer of the calling thread instead of a block from Xerces' memory
// manager (the same bytes: toHost uses the same conversion). The buffer is
// trivially destructible, so that a host calling from its exit code still
// finds it. Longer texts, and other code pages, take the general route.
constexpr size_t kScratchBytes = 4096;

// `use(bytes, length)`: the terminated host bytes and their length up to
// the first NUL.
template <class Use>
void withHostBytes(const XMLCh* text, size_t units, Use&& use) {
    if (units < kScratchBytes / 3 && codec::hostIsUtf8()) {
        thread_local char scratch[kScratchBytes];
        size_t length = codec::utf16ToUtf8(text, units, scratch);
        scratch[length] = '\0';
        // A U+0000 unit would end the host's string there, as strlen sees it.
        if (std::memchr(scratch, '\0', length) != nullptr) length = std::strlen(scratch);
        use(static_cast<const char*>(scratch), length);
        return;
    }
    HostString host(text, units);
    use(host.get(), std::strlen(host.get()));
}

}  // namespace

void* MethodCall::rawArg(size_t slot) const {
    if (args_ == nullptr) throw MissingHostValue("no argument block");
    return args_[slot];
}

const char* MethodCall::stringArg(size_t slot) const {
    return static_cast<const char*>(rawArg(slot));
}

int32_t MethodCall::intArg(size_t slot) const {
    const void* value = rawArg(slot);
    if (value == nullptr) throw MissingHostValue("no integer in an argument slot");
    return *static_cast<const int32_t*>(value);
}

DOMNode* MethodCall::nodeArg(size_t slot) const { return static_cast<DOMNode*>(rawArg(slot)); }

void* MethodCall::needResult() {
    if (result_ == nullptr) throw MissingHostValue("no result memory");
    return result_;
}

char* MethodCall::resultChars() { return static_cast<char*>(needResult()); }

// Node and document addresses are written as the host keeps them: a node
// as its DOMNode*, a document as its DOMDocument*.
void MethodCall::writeNode(const DOMNode* node) {
    const void* address = node;
    std::memcpy(needResult(), &address, sizeof address);
}

void MethodCall::writeDocument(const DOMDocument* document) {
    const void* address = document;
    std::memcpy(needResult(), &address, sizeof address);
}

void MethodCall::writeInt32(int32_t value) { std::memcpy(needResult(), &value, sizeof value); }

void MethodCall::writeHandle(int64_t value) { std::memcpy(needResult(), &value, sizeof value); }

void MethodCall::writeEmptyString() { resultChars()[0] = '\0'; }

char* MethodCall::stringCell(size_t slot) const {
    void* cell = rawArg(slot);
    if (cell == nullptr) throw MissingHostValue("no string cell");
    return *static_cast<char**>(cell);
}

void MethodCall::writeStringCell(size_t slot, char* text) {
    void* cell = rawArg(slot);
    if (cell == nullptr) throw MissingHostValue("no string cell");
    std::memcpy(cell, &text, sizeof text);
}

void MethodCall::writeLengthCell(size_t slot, int32_t length) {
    void* cell = rawArg(slot);
    if (cell == nullptr) throw MissingHostValue("no length cell");
    std::memcpy(cell, &length, sizeof length);
}

void MethodCall::appendString(const char* bytes) {
    char* out = resultChars();
    std::strcpy(out + std::strlen(out), bytes);
}

void MethodCall::stringOut(const XMLCh* text, uint32_t limit) {
    size_t units = unitsOf(text);
    if (units >= limit) {
        report_.fixed(kStringTooLong, kStringTooLongCode);
        return;
    }
    if (text == nullptr) return;
    withHostBytes(text, units, [this](const char* bytes, size_t length) {
        std::memcpy(resultChars(), bytes, length + 1);
    });
}

void MethodCall::countedStringOut(const XMLCh* text, uint32_t limit) {
    if (text == nullptr) return;
    withHostBytes(text, unitsOf(text), [this, limit](const char* bytes, size_t length) {
        countedCopy(bytes, length, limit);
    });
}

// The first byte is always copied; before each further byte a counter that
// starts at L is decremented, and reaching 0 stops the copy: a text of L
// bytes or more leaves exactly its first L bytes, unterminated. L = 0 never
// reaches 0 again (the counter is unsigned and wraps): the whole text comes.
void MethodCall::countedCopy(const char* bytes, size_t length, uint32_t limit) {
    char* out = resultChars();
    if (limit != 0 && length >= limit) {
        std::memcpy(out, bytes, limit);
        report_.fixed(kStringTooLong, kStringTooLongCode);
        return;
    }
    std::memcpy(out, bytes, length + 1);
}

}  // namespace lumxml
