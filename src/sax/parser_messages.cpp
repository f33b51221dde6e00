// The reader's messages: every text the pull reader and the one-shot
// validation leave in the record's error text (255 characters and a NUL)
// with its code.
#include "sax/parser_parts.h"
#include "sax/sax_parser.h"

#include <cstring>
#include <string>

#include "dom/load/dom_tree_error_reporter.h"
#include "frame/host_codec.h"

namespace lumxml {
namespace sax {
namespace pull {

// ---- Error text of the record ---------------------------------------------

ErrorReport reportOf(SaxParserInstance& instance) {
    return ErrorReport(instance.errorText, &instance.errorCode);
}

void writePrefixed(SaxParserInstance& instance, const char* prefix, const XMLCh* message,
                   int32_t code) {
    std::memcpy(instance.errorText, prefix, std::strlen(prefix) + 1);
    HostString text(message);
    appendBudgeted(instance.errorText, text.get() != nullptr ? text.get() : "",
                   kRecordErrorBudget);
    instance.errorCode = code;
}

void appendMessage(SaxParserInstance& instance, const XMLCh* message, int32_t code) {
    HostString text(message);
    appendBudgeted(instance.errorText, text.get() != nullptr ? text.get() : "",
                   kRecordErrorBudget);
    instance.errorCode = code;
}

void copyReporterText(SaxParserInstance& instance, const DOMTreeErrorReporter& reporter) {
    std::string text(reporter.message());
    if (text.size() > kRecordErrorBudget) {
        // Never half a character of the host code page before the dots.
        text.resize(codec::characterBoundary(text.data(), text.size(), kRecordErrorBudget - 3));
        text.append("...");
    }
    std::memcpy(instance.errorText, text.c_str(), text.size() + 1);
    instance.errorCode = reporter.code();
}

bool hasText(const XMLCh* text) { return text != nullptr && text[0] != 0; }
bool hasText(const char* text) { return text != nullptr && text[0] != '\0'; }

}  // namespace pull
}  // namespace sax
}  // namespace lumxml
