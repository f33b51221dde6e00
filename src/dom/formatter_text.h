// Text handed to the XMLFormatter of a save.
//
// The formatter misbehaves on a high surrogate that no low surrogate
// follows: with a UTF-8 transcoder it loops for ever when the lone unit ends
// the buffer, and when it writes character references it reads past the
// buffer and pairs the unit with whatever follows (a bogus "&#x2400;" at the
// end of a buffer). Every piece of a save therefore goes through
// writeFormatted, which hands the formatter only well-paired runs and
// writes each lone high surrogate itself as a character reference.
#pragma once

#include <xercesc/framework/XMLFormatter.hpp>

namespace lumxml {

// Formats `count` units of `text` with `escapes` and the formatter's own
// unrepresentable-character flag.
void writeFormatted(XERCES_CPP_NAMESPACE::XMLFormatter& formatter, const XMLCh* text,
                    XMLSize_t count, XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags escapes);

// A NUL-terminated text (null writes nothing) with `escapes`.
void writeFormatted(XERCES_CPP_NAMESPACE::XMLFormatter& formatter, const XMLCh* text,
                    XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags escapes);

}  // namespace lumxml
