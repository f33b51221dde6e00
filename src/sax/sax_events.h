// The event queue of a SaxParserInstance: SaxEvent records that the
// handlers append at the tail and lumSAXParseNext hands out from the head.
// The records are laid out for the host, who reads the event at eventHead.
#pragma once

#include <cstdint>
#include <string>

#include <xercesc/util/XercesDefs.hpp>

#include "lumxml.h"

namespace lumxml {
namespace sax {

enum EventKind : uint32_t {
    kNoEvent = 0,
    kStartDocument = 1,
    kEndDocument = 2,
    kStartPrefixMapping = 3,
    kEndPrefixMapping = 4,
    kStartElement = 5,
    kEndElement = 6,
    kCharacters = 7,
    kIgnorableWhitespace = 8,
    kProcessingInstruction = 9,
    kSkippedEntity = 10,
    kSetDocLocator = 11,
    kUnparsedEntityDecl = 12,
    kNotationDecl = 13,
    kResolveEntity = 14,
    kWarning = 15,
    kError = 16,
    kFatalError = 17,
};

// The library's constant name of an event kind; null for kind 0 and for
// kinds outside the table.
const char* eventName(uint32_t kind);

// A zero-filled event appended at eventTail (eventCount + 1); null when
// memory runs out (the caller then drops the event).
SaxEvent* enqueueEvent(SaxParserInstance& instance);
// A zero-filled event pushed at eventHead (eventCount + 1).
SaxEvent* pushEventAtHead(SaxParserInstance& instance);
// Unlinks `event` when it is at eventHead, releases its strings and frees
// it (eventCount - 1).
void dropHeadEvent(SaxParserInstance& instance, SaxEvent* event);
// Releases and frees every queued event; head and tail become null.
// eventCount is left to the caller.
void freeQueue(SaxParserInstance& instance);
// Releases the strings an event owns by its kind (null does nothing).
void clearEvent(SaxEvent* event);
void freeEvent(SaxEvent* event);

// Sets kind, name and argument count: the last step of every handler.
void finishEvent(SaxEvent& event, EventKind kind, uint32_t argCount);

// The UTF-16 text each stored id was last checked against, shared by the
// handlers of one instance: an id that is the same as at the last event
// (every event of one entity) is then recognised without transcoding it.
struct IdMemo {
    struct Entry {
        std::u16string text;
        const char* stored = nullptr;  // the record's copy it was checked against
        bool known = false;
    };
    Entry publicId;
    Entry systemId;
};

// Copies the locator's line, column, public and system id into the record.
// A new id replaces the stored copy only when its text differs.
void updateLocation(SaxParserInstance& instance, IdMemo* memo = nullptr);
// updateLocation, and the line and column noted with the queued `event`
// (outside the 72 bytes the host reads), so that the record can show them
// again when the event reaches eventHead behind others of the same step.
void locateEvent(SaxParserInstance& instance, SaxEvent& event, IdMemo* memo = nullptr);
// Puts the line and column noted with `event` back into the record.
void showLocationOf(SaxParserInstance& instance, const SaxEvent* event);

// UTF-16 from the parser -> library-owned host 8-bit copy (null stays null).
char* hostCopy(const XMLCh* text);
char* hostCopy(const XMLCh* text, XMLSize_t length);
// Releases `text` and answers null when it is the text "EMPTY" (and, with
// `emptyToo`, when it is ""); otherwise answers `text`.
char* nullIfEmptyMarker(char* text, bool emptyToo = false);

}  // namespace sax
}  // namespace lumxml
