#include "dom/method_call.h"

#include <cstring>

#include <xercesc/util/XMLString.hpp>

#include "frame/host_codec.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

size_t unitsOf(const XMLCh* text) { return text != nullptr ? XMLString::stringLen(text) : 0; }

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
    HostString host(text, units);
    std::strcpy(resultChars(), host.get());
}

void MethodCall::countedStringOut(const XMLCh* text, uint32_t limit) {
    if (text == nullptr) return;
    HostString host(text, unitsOf(text));
    const char* bytes = host.get();
    char* out = resultChars();
    out[0] = bytes[0];
    // Before each further byte a counter that starts at L is decremented;
    // reaching 0 stops the copy, so at most L bytes are written.
    uint32_t counter = limit;
    for (size_t i = 1; bytes[i - 1] != '\0'; ++i) {
        if (--counter == 0) {
            report_.fixed(kStringTooLong, kStringTooLongCode);
            return;
        }
        out[i] = bytes[i];
    }
}

}  // namespace lumxml
