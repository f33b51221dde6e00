// What a node or document method works with: the host's argument slots,
// its result memory and its error buffer. Results reach the host only
// through MethodCall's writers, and string results only through the
// string-out protocol below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMNode.hpp>

#include "frame/error_report.h"
#include "lumxml.h"

namespace lumxml {

// A null handle, argument slot or result pointer where the method needs
// one: answered as an unexpected failure (code 13) by the export's guard.
class MissingHostValue : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class MethodCall {
public:
    MethodCall(void** args, void* result, ErrorReport& report)
        : args_(args), result_(result), report_(report) {}

    ErrorReport& report() { return report_; }

    // ---- argument slots (read only by the methods that use them) --------
    // Pointer to an 8-bit host string; may be null.
    const char* stringArg(size_t slot) const;
    // Pointer to a 32-bit integer; must not be null.
    int32_t intArg(size_t slot) const;
    // A node address itself; may be null.
    XERCES_CPP_NAMESPACE::DOMNode* nodeArg(size_t slot) const;
    // The raw slot (pointers to cells, byte buffers).
    void* rawArg(size_t slot) const;

    // ---- results: the one place that writes them -------------------------
    void writeNode(const XERCES_CPP_NAMESPACE::DOMNode* node);
    void writeDocument(const XERCES_CPP_NAMESPACE::DOMDocument* document);
    void writeInt32(int32_t value);
    void writeHandle(int64_t value);
    void writeEmptyString();
    // Cells the host points to from an argument slot (methods 36 and 38).
    char* stringCell(size_t slot) const;
    void writeStringCell(size_t slot, char* text);
    void writeLengthCell(size_t slot, int32_t length);
    // Appends host bytes (and a NUL) behind the text in the result buffer.
    void appendString(const char* bytes);

    // String out with limit L (read unsigned): fails with "String length too
    // long" (12) when the UTF-16 length of `text` (0 when null) is L or
    // more; otherwise a non-null text is copied with its terminator. The
    // check counts UTF-16 units, not the bytes the code page produces.
    void stringOut(const XMLCh* text, uint32_t limit);
    // The byte-counting copy: a transcoded value of fewer than L bytes
    // arrives whole with its terminator; a longer one leaves exactly L bytes
    // and no terminator, and fails with "String length too long" (12).
    void countedStringOut(const XMLCh* text, uint32_t limit);

private:
    char* resultChars();
    void* needResult();
    void countedCopy(const char* bytes, size_t length, uint32_t limit);

    void** args_;
    void* result_;
    ErrorReport& report_;
};

constexpr const char* kStringTooLong = "String length too long";
constexpr int32_t kStringTooLongCode = LUM_ERR_STRING_LENGTH;

}  // namespace lumxml
