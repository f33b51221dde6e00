// The event queue of a SaxParserInstance: SaxEvent records that the
// handlers append at the tail and lumSAXParseNext hands out from the head.
// The records are laid out for the host, who reads the event at eventHead.
#pragma once

#include <cstdint>
#include <string>

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class Locator;
class ReaderMgr;
XERCES_CPP_NAMESPACE_END

#include "lumxml.h"
#include "sax/string_pool.h"

namespace lumxml {
namespace sax {

enum EventKind : uint32_t {
    kNoEvent = LUM_SAX_EVENT_EMPTY,
    kStartDocument = LUM_SAX_EVENT_START_DOCUMENT,
    kEndDocument = LUM_SAX_EVENT_END_DOCUMENT,
    kStartPrefixMapping = LUM_SAX_EVENT_START_PREFIX_MAPPING,
    kEndPrefixMapping = LUM_SAX_EVENT_END_PREFIX_MAPPING,
    kStartElement = LUM_SAX_EVENT_START_ELEMENT,
    kEndElement = LUM_SAX_EVENT_END_ELEMENT,
    kCharacters = LUM_SAX_EVENT_CHARACTERS,
    kIgnorableWhitespace = LUM_SAX_EVENT_IGNORABLE_WHITESPACE,
    kProcessingInstruction = LUM_SAX_EVENT_PROCESSING_INSTRUCTION,
    kSkippedEntity = LUM_SAX_EVENT_SKIPPED_ENTITY,
    kSetDocLocator = LUM_SAX_EVENT_SET_DOC_LOCATOR,
    kUnparsedEntityDecl = LUM_SAX_EVENT_UNPARSED_ENTITY_DECL,
    kNotationDecl = LUM_SAX_EVENT_NOTATION_DECL,
    kResolveEntity = LUM_SAX_EVENT_RESOLVE_ENTITY,
    kWarning = LUM_SAX_EVENT_WARNING,
    kError = LUM_SAX_EVENT_ERROR,
    kFatalError = LUM_SAX_EVENT_FATAL_ERROR,
};

// The library's constant name of an event kind; null for kind 0 and for
// kinds outside the table.
const char* eventName(uint32_t kind);

// Spare event blocks of one instance: an event the host has handled is
// kept here and handed out again for a later event, instead of a heap
// allocation and release per event. Blocks are plain heap blocks, so an
// event taken from the pool may also be freed to the heap and the other
// way round. The strings of the handled events are kept too (StringPool),
// and the pool makes the copies of the instance's events from them.
class EventPool {
public:
    static constexpr int kMaxSpares = 16;

    EventPool() = default;
    ~EventPool();
    EventPool(const EventPool&) = delete;
    EventPool& operator=(const EventPool&) = delete;

    // A zero-filled event block: a spare when there is one, else a new
    // heap block; null when memory runs out.
    SaxEvent* take();
    // Keeps the block of a cleared event as a spare (freed when the pool
    // is full).
    void give(SaxEvent* event);
    int spareCount() const { return count_; }

    StringPool& strings() { return strings_; }

    // The zero-filled entries array of a "StartElement" list of
    // `capacity` entries (attrlist::allocateEntries), a spare one when
    // there is one; and the array of a cleared list, kept by the capacity
    // its list records (or freed).
    SaxAttribute* takeEntries(int32_t capacity);
    void giveEntries(SaxAttribute* entries, int32_t capacity);

    // hostCopy and hostCopyUnlessEmptyMarker, the same bytes in a block of
    // the string pool when the host code page is UTF-8 (exactly the
    // string's size: blocks are filed by length).
    char* copy(const XMLCh* text);
    char* copy(const XMLCh* text, XMLSize_t length);
    char* copyUnlessEmptyMarker(const XMLCh* text, bool emptyToo = false);
    // copy() of an attribute's type, which is nearly always Xerces' own
    // constant "CDATA": that one is copied without being read.
    char* copyType(const XMLCh* type);

private:
    void* spares_[kMaxSpares] = {};
    int count_ = 0;
    StringPool strings_;
    // Spare entries arrays by capacity (1 to kEntryCapacities).
    static constexpr int kEntryCapacities = 16;
    static constexpr int kEntrySpares = 4;
    struct EntrySpares {
        SaxAttribute* arrays[kEntrySpares];
        int count = 0;
    };
    EntrySpares entrySpares_[kEntryCapacities + 1];
    std::string scratch_;  // the UTF-8 bytes of the copy being made
};

// A zero-filled event appended at eventTail (eventCount + 1); null when
// memory runs out (the caller then drops the event). With a pool the block
// comes from its spares.
SaxEvent* enqueueEvent(SaxParserInstance& instance, EventPool* pool = nullptr);
// A zero-filled event pushed at eventHead (eventCount + 1).
SaxEvent* pushEventAtHead(SaxParserInstance& instance);
// Unlinks `event` when it is at eventHead, releases its strings and frees
// it (eventCount - 1).
void dropHeadEvent(SaxParserInstance& instance, SaxEvent* event);
// Releases and frees every queued event; head and tail become null.
// eventCount is left to the caller.
void freeQueue(SaxParserInstance& instance);
// Releases the strings an event owns by its kind (null does nothing); with
// a pool their blocks (and a list's entries array) are kept there.
class EventPool;
void clearEvent(SaxEvent* event, EventPool* pool = nullptr);
// Clears the event and frees its block (to the pool's spares, if given,
// and its strings to the pool's strings).
void freeEvent(SaxEvent* event, EventPool* pool = nullptr);

// Sets kind, name and argument count: the first step of every handler
// once its event is queued, so that an event left half-built by a failed
// allocation is released by its kind like any other.
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

    // When the locator is Xerces' reader manager, the number of its current
    // reader at the last event and the record's ids it left. Reader numbers
    // are never reused by one manager, and the ids are those of the last
    // external entity below the current reader, which cannot change while
    // that reader stays current: the same number means the same ids.
    struct ReaderNote {
        const xercesc::Locator* locator = nullptr;
        const xercesc::ReaderMgr* manager = nullptr;  // null: not a reader manager
        XMLSize_t readerNumber = 0;
        const char* publicStored = nullptr;
        const char* systemStored = nullptr;
        bool valid = false;
        bool stackSeen = false;  // the manager was seen with a reader stack
    };
    ReaderNote reader;

    // A new locator (each parse hands one over): forget what was noted of
    // the previous one.
    void noteLocator(const xercesc::Locator* locator);
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
// nullIfEmptyMarker(hostCopy(text), emptyToo), without making the copy
// when the host code page is UTF-8 and the text is the marker (there the
// UTF-16 text is "EMPTY" exactly when its copy is).
char* hostCopyUnlessEmptyMarker(const XMLCh* text, bool emptyToo = false);

}  // namespace sax
}  // namespace lumxml
