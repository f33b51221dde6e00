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

#include <string>

#include <xercesc/framework/XMLFormatter.hpp>

namespace lumxml {

// Formats `count` units of `text` with `escapes` and the formatter's own
// unrepresentable-character flag.
void writeFormatted(XERCES_CPP_NAMESPACE::XMLFormatter& formatter, const XMLCh* text,
                    XMLSize_t count, XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags escapes);

// A NUL-terminated text (null writes nothing) with `escapes`.
void writeFormatted(XERCES_CPP_NAMESPACE::XMLFormatter& formatter, const XMLCh* text,
                    XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags escapes);

// Appends `count` units of `text` to `out` for a later NoEscapes write,
// with every lone high surrogate replaced by its reference text, so that
// pieces joined in one buffer are written as they would be one by one.
void appendMarkup(std::u16string& out, const XMLCh* text, XMLSize_t count);

}  // namespace lumxml
