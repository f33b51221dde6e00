// The pull reader behind lumSAXParseFirst / lumSAXParseNext: a Xerces
// SAX2 reader driven incrementally, whose handlers queue events in the
// host's SaxParserInstance; and the one-shot validation of lumSAXParse.
#pragma once

#include <cstdint>

#include "lumxml.h"

namespace lumxml {
namespace sax {

// ParseState, the record's state field.
enum ParseState : int32_t {
    kStateFirstPass = LUM_SAX_STATE_FIRST_PASS,   // only "StartDocument" is reported, then the pass is cut short
    kStateRestarting = LUM_SAX_STATE_RESTARTING,  // the second parseFirst is running
    kStateRunning = LUM_SAX_STATE_RUNNING,
    kStateEnded = LUM_SAX_STATE_ENDED,       // "EndDocument" has been queued
};

// The record's error text holds 255 characters and its NUL.
constexpr size_t kRecordErrorBudget = 255;

int32_t parseFirst(SaxParserInstance* instance);
int32_t parseNext(SaxParserInstance* instance);
// Releases everything the library owns in the record (events, reader,
// handlers, ids). Null does nothing; repeating it is harmless.
void deleteParserInstance(SaxParserInstance* instance);
// Frees the queue and the reader with its handlers; state back to 1.
// eventCount is deliberately left as it stands.
void resetParserInstance(SaxParserInstance& instance);
// Validates a whole file, no events.
int32_t validateFile(SaxParserInstance* instance);

}  // namespace sax
}  // namespace lumxml
