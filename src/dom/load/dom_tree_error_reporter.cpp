#include "dom/load/dom_tree_error_reporter.h"

#include <cstring>
#include <string>

#include "frame/host_codec.h"
#include "frame/safe_format.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// "'...'" is the shortest quoted text that still says something was cut.
constexpr size_t kShortestCutQuote = 5;

// A location prefix that would leave no room for "'...'" is itself cut
// (it can only be that long through a very long system id): the host
// buffer holds 256 characters and nothing may be written past them.
void boundPrefix(std::string& prefix) {
    const size_t longest = kErrorBudget - kShortestCutQuote;
    if (prefix.size() > longest) {
        prefix.resize(codec::characterBoundary(prefix.data(), prefix.size(), longest - 3));
        prefix.append("...");
    }
}

}  // namespace

DOMTreeErrorReporter::DOMTreeErrorReporter() { message_[0] = '\0'; }

void DOMTreeErrorReporter::warning(const SAXParseException& e) {
    if (sawErrors_) return;
    recordWithPrefix(e, "WARNING: file '%s', line '%ld', column '%ld', message ", kWarning);
}

void DOMTreeErrorReporter::fatalError(const SAXParseException& e) {
    if (sawErrors_) return;
    recordWithPrefix(e, "FATAL ERROR: file '%s', line '%ld', column '%ld', message ",
                     kFatalError);
}

// Differs from warning and fatalError on purpose, and hosts rely on it: the
// location line goes to standard output with the reporter's current text as
// its format (so a fresh reporter prints nothing), and the recorded text is
// only the quoted message, appended to whatever the text held.
void DOMTreeErrorReporter::error(const SAXParseException& e) {
    if (sawErrors_) return;
    HostString systemId(e.getSystemId());
    HostString text(e.getMessage());
    printOut(message_, {"ERROR: file '%s', line '%d', column '%d', message ", systemId.get(),
                        static_cast<long long>(e.getLineNumber()),
                        static_cast<long long>(e.getColumnNumber())});
    appendQuoted(text.get());
    sawErrors_ = true;
    code_ = kError;
}

void DOMTreeErrorReporter::resetErrors() { sawErrors_ = false; }

void DOMTreeErrorReporter::reportTo(ErrorReport& report) const {
    report.fixed(message_, code_);
}

void DOMTreeErrorReporter::recordWithPrefix(const SAXParseException& e, const char* prefix,
                                            int32_t code) {
    HostString systemId(e.getSystemId());
    HostString text(e.getMessage());
    std::string line;
    safeFormat(line, prefix,
               {systemId.get(), static_cast<long long>(e.getLineNumber()),
                static_cast<long long>(e.getColumnNumber())});
    boundPrefix(line);
    std::memcpy(message_, line.c_str(), line.size() + 1);
    appendQuoted(text.get());
    sawErrors_ = true;
    code_ = code;
}

// The message in single quotes behind the text already held. A message that
// does not fit the room left keeps its first room-5 characters and ends in
// "..." before the closing quote, so the whole text ends at character 256.
void DOMTreeErrorReporter::appendQuoted(const char* text) {
    size_t used = std::strlen(message_);
    size_t room = used < kErrorBudget ? kErrorBudget - used : 0;
    if (room < kShortestCutQuote) return;
    std::string piece(text != nullptr ? text : "");
    if (piece.size() + 2 > room) {
        // Never half a character of the host code page before the dots.
        piece.resize(
            codec::characterBoundary(piece.data(), piece.size(), room - kShortestCutQuote));
        piece.append("...");
    }
    std::string quoted;
    safeFormat(quoted, "'%s'", {piece.c_str()});
    std::memcpy(message_ + used, quoted.c_str(), quoted.size() + 1);
}

}  // namespace lumxml
