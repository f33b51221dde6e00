// The parser's error handler for document loading (and the SAX reader):
// keeps the first problem reported since the last reset, as one line of
// text within the host's 256-character budget and a code (8 warning,
// 9 error, 10 fatal error), for the export to hand to the host.
#pragma once

#include "lumxml.h"

#include <cstddef>
#include <cstdint>

#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>

#include "frame/error_report.h"

namespace lumxml {

class DOMTreeErrorReporter : public XERCES_CPP_NAMESPACE::ErrorHandler {
public:
    static constexpr int32_t kWarning = LUM_ERR_PARSE_WARNING;
    static constexpr int32_t kError = LUM_ERR_PARSE_ERROR;
    static constexpr int32_t kFatalError = LUM_ERR_PARSE_FATAL;

    DOMTreeErrorReporter();
    ~DOMTreeErrorReporter() override = default;

    void warning(const XERCES_CPP_NAMESPACE::SAXParseException& e) override;
    void error(const XERCES_CPP_NAMESPACE::SAXParseException& e) override;
    void fatalError(const XERCES_CPP_NAMESPACE::SAXParseException& e) override;
    // Clears sawErrors only: the text and the code stay.
    void resetErrors() override;

    bool sawErrors() const { return sawErrors_; }
    const char* message() const { return message_; }
    int32_t code() const { return code_; }

    // Copies the recorded text (whole, with its NUL) and code to the host.
    void reportTo(ErrorReport& report) const;

private:
    void recordWithPrefix(const XERCES_CPP_NAMESPACE::SAXParseException& e, const char* prefix,
                          int32_t code);
    void appendQuoted(const char* text);

    bool sawErrors_ = false;
    // The budget plus the NUL: nothing written here ever exceeds it.
    char message_[kErrorBudget + 1];
    int32_t code_ = 0;
};

}  // namespace lumxml
