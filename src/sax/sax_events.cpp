#include "sax/sax_events.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <xercesc/framework/XMLEntityDecl.hpp>
#include <xercesc/internal/ReaderMgr.hpp>
#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "frame/host_codec.h"
#include "sax/attr_list.h"

namespace lumxml {
namespace sax {

namespace {

constexpr const char* kEventNames[] = {
    nullptr,
    "StartDocument",
    "EndDocument",
    "StartPrefixMapping",
    "EndPrefixMapping",
    "StartElement",
    "EndElement",
    "Characters",
    "IgnorableWhitespace",
    "ProcessingInstruction",
    "SkippedEntity",
    "SetDocLocator",
    "UnparsedEntityDecl",
    "NotationDecl",
    "ResolveEntity",
    "Warning",
    "Error",
    "FatalError",
};

// A queued event with the location it was queued at. The host sees only the
// SaxEvent at the start of the block.
struct QueuedEvent {
    SaxEvent event;
    uint32_t line;
    uint32_t column;
};
static_assert(offsetof(QueuedEvent, event) == 0, "the host's record comes first");

SaxEvent* newEvent() {
    auto* queued = static_cast<QueuedEvent*>(std::calloc(1, sizeof(QueuedEvent)));
    return queued != nullptr ? &queued->event : nullptr;
}

void releaseSlot(void*& slot, EventPool* pool) {
    char* text = static_cast<char*>(slot);
    if (pool != nullptr)
        pool->strings().give(text);
    else
        codec::release(text);
    slot = nullptr;
}

void releaseString(char*& text, StringPool& strings) {
    strings.give(text);
    text = nullptr;
}

// The "StartElement" list lies in place in arg4/arg5; only its entries
// (and their strings) are separate allocations. With a pool the strings
// (in the order attrlist::releaseEntries releases them) and the array go
// there.
void releaseInPlaceList(SaxEvent& event, EventPool* pool) {
    SaxAttrList* list = LUM_SAX_EVENT_ATTRIBUTES(&event);
    if (list->entries == nullptr) return;
    if (pool == nullptr) {
        attrlist::releaseEntries(*list);
        return;
    }
    StringPool& strings = pool->strings();
    for (int32_t i = 0; i < list->count; ++i) {
        SaxAttribute& entry = list->entries[i];
        releaseString(entry.localName, strings);
        releaseString(entry.type, strings);
        releaseString(entry.value, strings);
        releaseString(entry.uri, strings);
        releaseString(entry.qName, strings);
    }
    pool->giveEntries(list->entries, list->capacity);
    list->entries = nullptr;
    list->capacity = 0;
    list->count = 0;
}

// Replaces a stored id only when the text differs, so that a host that
// keeps the pointer of an unchanged id still reads valid text.
void updateId(char*& stored, const XMLCh* current, IdMemo::Entry* memo) {
    if (current == nullptr) {
        codec::release(stored);
        stored = nullptr;
        if (memo != nullptr) memo->known = false;
        return;
    }
    if (memo != nullptr && memo->known && memo->stored == stored && memo->text == current) {
        return;  // the same text as last time, and the same copy holds it
    }
    char* copy = codec::toHost(current);
    if (stored != nullptr && copy != nullptr && std::strcmp(stored, copy) == 0) {
        codec::release(copy);
    } else {
        codec::release(stored);
        stored = copy;
    }
    if (memo != nullptr) {
        memo->text = current;
        memo->stored = stored;
        memo->known = true;
    }
}

// The text "EMPTY" (equal up to and including the terminator).
bool isEmptyMarker(const XMLCh* text) {
    static const XMLCh kMarker[] = {'E', 'M', 'P', 'T', 'Y', 0};
    int i = 0;
    while (i < 6 && text[i] == kMarker[i]) ++i;
    return i == 6;
}

}  // namespace

const char* eventName(uint32_t kind) {
    return kind < sizeof kEventNames / sizeof kEventNames[0] ? kEventNames[kind] : nullptr;
}

EventPool::~EventPool() {
    while (count_ > 0) std::free(spares_[--count_]);
    for (EntrySpares& spares : entrySpares_) {
        while (spares.count > 0) attrlist::freeEntries(spares.arrays[--spares.count]);
    }
}

SaxAttribute* EventPool::takeEntries(int32_t capacity) {
    if (capacity <= 0 || capacity > kEntryCapacities || entrySpares_[capacity].count == 0)
        return attrlist::allocateEntries(capacity);
    EntrySpares& spares = entrySpares_[capacity];
    SaxAttribute* entries = spares.arrays[--spares.count];
    std::memset(entries, 0, sizeof(SaxAttribute) * static_cast<size_t>(capacity));
    return entries;
}

void EventPool::giveEntries(SaxAttribute* entries, int32_t capacity) {
    if (entries == nullptr) return;
    if (capacity > 0 && capacity <= kEntryCapacities &&
        entrySpares_[capacity].count != kEntrySpares) {
        EntrySpares& spares = entrySpares_[capacity];
        spares.arrays[spares.count++] = entries;
        return;
    }
    attrlist::freeEntries(entries);
}

SaxEvent* EventPool::take() {
    if (count_ == 0) return newEvent();
    auto* queued = static_cast<QueuedEvent*>(spares_[--count_]);
    std::memset(queued, 0, sizeof *queued);
    return &queued->event;
}

void EventPool::give(SaxEvent* event) {
    if (event == nullptr) return;
    if (count_ == kMaxSpares) {
        std::free(event);
        return;
    }
    spares_[count_++] = event;
}

SaxEvent* enqueueEvent(SaxParserInstance& instance, EventPool* pool) {
    SaxEvent* event = pool != nullptr ? pool->take() : newEvent();
    if (event == nullptr) return nullptr;
    if (instance.eventHead == nullptr || instance.eventTail == nullptr) {
        instance.eventHead = event;
    } else {
        instance.eventTail->next = event;
    }
    instance.eventTail = event;
    ++instance.eventCount;
    return event;
}

SaxEvent* pushEventAtHead(SaxParserInstance& instance) {
    SaxEvent* event = newEvent();
    if (event == nullptr) return nullptr;
    event->next = instance.eventHead;
    instance.eventHead = event;
    if (instance.eventTail == nullptr) instance.eventTail = event;
    ++instance.eventCount;
    return event;
}

void dropHeadEvent(SaxParserInstance& instance, SaxEvent* event) {
    if (event == nullptr || instance.eventHead != event) return;
    instance.eventHead = event->next;
    if (instance.eventTail == event) instance.eventTail = nullptr;
    freeEvent(event);
    --instance.eventCount;
}

void freeQueue(SaxParserInstance& instance) {
    SaxEvent* event = instance.eventHead;
    instance.eventHead = nullptr;
    instance.eventTail = nullptr;
    while (event != nullptr) {
        SaxEvent* next = event->next;
        freeEvent(event);
        event = next;
    }
}

void clearEvent(SaxEvent* event, EventPool* pool) {
    if (event == nullptr) return;
    switch (event->kind) {
        case kStartPrefixMapping:
        case kProcessingInstruction:
        case kResolveEntity:  // arg3/arg4 input sources belong to Xerces once returned
            releaseSlot(event->arg1, pool);
            releaseSlot(event->arg2, pool);
            break;
        case kEndPrefixMapping:
        case kCharacters:  // arg2 is the length, not a string
        case kIgnorableWhitespace:
        case kWarning:
        case kError:
        case kFatalError:
            releaseSlot(event->arg1, pool);
            break;
        case kStartElement:
            releaseSlot(event->arg1, pool);
            releaseSlot(event->arg2, pool);
            releaseSlot(event->arg3, pool);
            releaseInPlaceList(*event, pool);
            break;
        case kEndElement:
        case kNotationDecl:
            releaseSlot(event->arg1, pool);
            releaseSlot(event->arg2, pool);
            releaseSlot(event->arg3, pool);
            break;
        case kUnparsedEntityDecl:
            releaseSlot(event->arg1, pool);
            releaseSlot(event->arg2, pool);
            releaseSlot(event->arg3, pool);
            releaseSlot(event->arg4, pool);
            break;
        default:
            break;
    }
    // argCount keeps its value: hosts may still look at it.
    event->arg1 = event->arg2 = event->arg3 = event->arg4 = event->arg5 = nullptr;
    event->kind = 0;
    event->name = nullptr;
    event->next = nullptr;
}

void freeEvent(SaxEvent* event, EventPool* pool) {
    clearEvent(event, pool);
    if (pool != nullptr) {
        pool->give(event);
    } else {
        std::free(event);
    }
}

void finishEvent(SaxEvent& event, EventKind kind, uint32_t argCount) {
    event.kind = kind;
    event.name = eventName(kind);
    event.argCount = argCount;
}

void IdMemo::noteLocator(const xercesc::Locator* locator) {
    reader = ReaderNote();
    reader.locator = locator;
    reader.manager = dynamic_cast<const xercesc::ReaderMgr*>(locator);
}

namespace {

// The location from Xerces' reader manager in one call instead of four
// locator calls. Its answers equal the locator's whenever the manager has a
// current reader and a reader stack (always so while a document is read);
// false otherwise, and the caller asks the locator.
bool updateFromReaderManager(SaxParserInstance& instance, IdMemo& memo) {
    IdMemo::ReaderNote& note = memo.reader;
    const xercesc::ReaderMgr* manager = note.manager;
    if (manager == nullptr || note.locator != instance.locator) return false;
    if (manager->getCurrentReader() == nullptr) return false;
    // Once the manager has a reader stack it keeps it for its life.
    if (!note.stackSeen) {
        if (manager->getReaderDepth() == 0) return false;
        note.stackSeen = true;
    }
    // The location is that of the last external entity's reader: the
    // current reader itself unless it reads an internal entity.
    xercesc::ReaderMgr::LastExtEntityInfo info;
    const xercesc::XMLEntityDecl* entity = manager->getCurrentEntity();
    if (entity == nullptr || entity->isExternal()) {
        const xercesc::XMLReader* reader = manager->getCurrentReader();
        info.systemId = reader->getSystemId();
        info.publicId = reader->getPublicId();
        info.lineNumber = reader->getLineNumber();
        info.colNumber = reader->getColumnNumber();
    } else {
        manager->getLastExtEntityInfo(info);
    }
    instance.column = static_cast<uint32_t>(info.colNumber);
    instance.line = static_cast<uint32_t>(info.lineNumber);
    const XMLSize_t number = manager->getCurrentReaderNum();
    if (note.valid && note.readerNumber == number && note.publicStored == instance.publicId &&
        note.systemStored == instance.systemId) {
        return true;  // the same reader: the ids the record holds are current
    }
    updateId(instance.publicId, info.publicId, &memo.publicId);
    updateId(instance.systemId, info.systemId, &memo.systemId);
    note.readerNumber = number;
    note.publicStored = instance.publicId;
    note.systemStored = instance.systemId;
    note.valid = true;
    return true;
}

}  // namespace

void updateLocation(SaxParserInstance& instance, IdMemo* memo) {
    const auto* locator = static_cast<const xercesc::Locator*>(instance.locator);
    if (locator == nullptr) return;
    if (memo != nullptr && updateFromReaderManager(instance, *memo)) return;
    if (memo != nullptr) memo->reader.valid = false;
    instance.column = static_cast<uint32_t>(locator->getColumnNumber());
    instance.line = static_cast<uint32_t>(locator->getLineNumber());
    updateId(instance.publicId, locator->getPublicId(), memo ? &memo->publicId : nullptr);
    updateId(instance.systemId, locator->getSystemId(), memo ? &memo->systemId : nullptr);
}

void locateEvent(SaxParserInstance& instance, SaxEvent& event, IdMemo* memo) {
    updateLocation(instance, memo);
    auto& queued = reinterpret_cast<QueuedEvent&>(event);
    queued.line = instance.line;
    queued.column = instance.column;
}

void showLocationOf(SaxParserInstance& instance, const SaxEvent* event) {
    if (event == nullptr) return;
    const auto& queued = reinterpret_cast<const QueuedEvent&>(*event);
    instance.line = queued.line;
    instance.column = queued.column;
}

char* EventPool::copy(const XMLCh* text) {
    if (text == nullptr) return nullptr;
    return copy(text, xercesc::XMLString::stringLen(text));
}

namespace {

// Copies the leading ASCII units of `text` to `out` as bytes, several at a
// time while it can; answers how many (all `length` when the text is ASCII).
size_t narrowAscii(const XMLCh* text, size_t length, char* out) {
    size_t i = 0;
#if defined(__SSE2__)
    // Eight units at a time where the processor has the instructions.
    const __m128i high = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    for (; i + 8 <= length; i += 8) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(units, high), zero)) != 0xFFFF) break;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(units, units));
    }
#endif
    for (; i + 4 <= length; i += 4) {
        uint64_t four;
        std::memcpy(&four, text + i, sizeof four);
        if ((four & 0xFF80FF80FF80FF80ull) != 0) break;
        out[i] = static_cast<char>(text[i]);
        out[i + 1] = static_cast<char>(text[i + 1]);
        out[i + 2] = static_cast<char>(text[i + 2]);
        out[i + 3] = static_cast<char>(text[i + 3]);
    }
    while (i < length && text[i] < 0x80) {
        out[i] = static_cast<char>(text[i]);
        ++i;
    }
    return i;
}

}  // namespace

char* EventPool::copy(const XMLCh* text, XMLSize_t length) {
    if (text == nullptr) return nullptr;
    if (!codec::hostIsUtf8()) return codec::toHost(text, length);
    // Most strings are ASCII, one byte a unit: straight into a block of
    // that size; a text that turns out otherwise goes through the scratch.
    char* block = strings_.take(length + 1);
    if (block == nullptr) return nullptr;
    if (narrowAscii(text, length, block) == length) {
        block[length] = '\0';
        return block;
    }
    strings_.putBack(block, length + 1);
    if (scratch_.size() < length * 3 + 1) scratch_.resize(length * 3 + 1);
    const size_t bytes = codec::utf16ToUtf8(text, length, &scratch_[0]);
    char* out = strings_.take(bytes + 1);
    if (out == nullptr) return nullptr;
    std::memcpy(out, scratch_.data(), bytes);
    out[bytes] = '\0';
    return out;
}

char* EventPool::copyType(const XMLCh* type) {
    static const char kCData[] = "CDATA";
    if (type != xercesc::XMLUni::fgCDATAString || !codec::hostIsUtf8()) return copy(type);
    char* block = strings_.take(sizeof kCData);
    if (block != nullptr) std::memcpy(block, kCData, sizeof kCData);
    return block;
}

char* EventPool::copyUnlessEmptyMarker(const XMLCh* text, bool emptyToo) {
    if (text == nullptr) return nullptr;
    if (!codec::hostIsUtf8()) return hostCopyUnlessEmptyMarker(text, emptyToo);
    if (emptyToo && text[0] == 0) return nullptr;
    if (isEmptyMarker(text)) return nullptr;
    return copy(text);
}

char* hostCopy(const XMLCh* text) { return codec::toHost(text); }

char* hostCopy(const XMLCh* text, XMLSize_t length) {
    return text == nullptr ? nullptr : codec::toHost(text, length);
}

char* hostCopyUnlessEmptyMarker(const XMLCh* text, bool emptyToo) {
    if (text == nullptr) return nullptr;
    if (!codec::hostIsUtf8()) return nullIfEmptyMarker(hostCopy(text), emptyToo);
    if (emptyToo && text[0] == 0) return nullptr;
    if (isEmptyMarker(text)) return nullptr;
    return hostCopy(text);
}

char* nullIfEmptyMarker(char* text, bool emptyToo) {
    if (text == nullptr) return nullptr;
    if (std::strcmp(text, "EMPTY") == 0 || (emptyToo && text[0] == '\0')) {
        codec::release(text);
        return nullptr;
    }
    return text;
}

}  // namespace sax
}  // namespace lumxml
