// The SAX writer record and the functions its command table dispatches to.
//
// The host holds only a pointer to a SAXWriter and drives it with command
// numbers through lumSAXWriterExecute (commands.cpp). Output, the XML
// declaration and the text commands are in output.cpp; elements,
// attributes and namespaces in elements.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <xercesc/framework/XMLFormatter.hpp>

#include "frame/host_codec.h"
#include "frame/owned_heap.h"
#include "lumxml.h"
#include "writer/markup.h"
#include "writer/name_cache.h"
#include "writer/text_buffer.h"

namespace lumxml {

class XMLMemOut;
class Utf8Escaper;

// A text that may be absent, held by value: no block of its own beside the
// string, and a reused holder keeps its string's room for the next text.
class MaybeText {
public:
    MaybeText() = default;
    MaybeText(std::nullptr_t) {}  // NOLINT: reads as "no text"
    explicit MaybeText(const char* text) { assign(text); }
    MaybeText(const char* begin, const char* end) : present_(true), text_(begin, end) {}
    explicit MaybeText(std::string text) : present_(true), text_(std::move(text)) {}

    explicit operator bool() const { return present_; }
    const std::string& operator*() const { return text_; }
    const std::string* operator->() const { return &text_; }
    const std::string* get() const { return present_ ? &text_ : nullptr; }

    void assign(const char* text) {
        present_ = text != nullptr;
        if (present_) text_.assign(text); else text_.clear();
    }
    void assign(const char* begin, const char* end) {
        present_ = true;
        text_.assign(begin, end);
    }
    void reset() {
        present_ = false;
        text_.clear();
    }

private:
    bool present_ = false;
    std::string text_;
};

// A namespace binding in scope: made at the writer's depth of the element
// that needed or declared it, dropped when that element ends.
struct NamespaceBinding {
    MaybeText prefix;  // absent: no prefix (default namespace)
    MaybeText uri;     // absent: none (yet)
    int32_t depth = 0;
    NamespaceBinding* next = nullptr;
};

// The element or one attribute of the start tag being built. Items are
// kept for reuse once their tag is written (SAXWriter::spareItems).
struct PendingItem {
    MaybeText prefix;
    std::string local;
    MaybeText value;
    MaybeText uri;
    // A later attribute with the same local name that must not resolve to
    // the same namespace (strict duplicate bookkeeping).
    PendingItem* link = nullptr;
    PendingItem* next = nullptr;
    // The element only: the host gave a URI alone, and `prefix` is the one
    // of the binding found for it when the element started.
    bool prefixFromBinding = false;
};

// An open element (strict mode only). Records are kept for reuse once
// popped (SAXWriter::spareRecords).
struct ElementRecord {
    MaybeText uri;
    std::string local;
    MaybeText prefix;
    const NamespaceBinding* binding = nullptr;  // compared, never read
    ElementRecord* next = nullptr;
};

// The element and namespace scope of one open output.
struct WriterScope {
    ElementRecord* open = nullptr;           // stack, top first
    bool rootStarted = false;                // a root element has started
    ElementRecord* current = nullptr;        // most recently popped
    ~WriterScope();
};

// Writer states (the public numbers of lumxml.h).
enum WriterState : uint32_t {
    kStateCreated = LUM_WRITER_STATE_CREATED,
    kStateProlog = LUM_WRITER_STATE_PROLOG,
    kStateStartTagOpen = LUM_WRITER_STATE_START_TAG_OPEN,
    kStateAfterEndTag = LUM_WRITER_STATE_AFTER_END_TAG,
    kStateAfterText = LUM_WRITER_STATE_AFTER_TEXT,
    kStateEnded = LUM_WRITER_STATE_ENDED,
    kStateFailed = LUM_WRITER_STATE_FAILED,
};

// Result and error codes of the writer (the public numbers of lumxml.h).
enum WriterCode : int32_t {
    kWriterOk = LUM_WRITER_OK,
    kWriterRefused = LUM_WRITER_REFUSED,
    kErrBadOutput = LUM_WRITER_ERR_OUTPUT_KIND,
    kErrOpenFailed = LUM_WRITER_ERR_OPEN,
    kErrInvalidName = LUM_WRITER_ERR_INVALID_NAME,
    kErrSecondRoot = LUM_WRITER_ERR_SECOND_ROOT,
    kErrEndTagMismatch = LUM_WRITER_ERR_END_TAG_MISMATCH,
    kErrElementStillOpen = LUM_WRITER_ERR_ELEMENT_OPEN,
    kErrPrefixWithoutUri = LUM_WRITER_ERR_PREFIX_WITHOUT_URI,
    kErrDuplicateNamespacedAttribute = LUM_WRITER_ERR_DUPLICATE_NS_ATTRIBUTE,
    kErrUnboundPrefix = LUM_WRITER_ERR_UNBOUND,
    kErrTextOutsideRoot = LUM_WRITER_ERR_TEXT_OUTSIDE_ROOT,
    kErrRootNotDoctype = LUM_WRITER_ERR_ROOT_NOT_DOCTYPE,
    kErrDoctypeInFragment = LUM_WRITER_ERR_DOCTYPE_IN_FRAGMENT,
    kErrPendingPrefixRebound = LUM_WRITER_ERR_PREFIX_REBOUND,
    kErrDuplicateAttribute = LUM_WRITER_ERR_DUPLICATE_ATTRIBUTE,
    kErrUndeclaredPrefix = LUM_WRITER_ERR_UNDECLARED_PREFIX,
    kErrCdataEnd = LUM_WRITER_ERR_CDATA_END,
    kErrMemory = LUM_WRITER_ERR_MEMORY,
    kErrUnexpected = LUM_WRITER_ERR_UNEXPECTED,
};

}  // namespace lumxml

// The writer record (opaque to the host).
struct SAXWriter {
    uint32_t state = lumxml::kStateCreated;
    uint32_t errorCode = 0;
    XERCES_CPP_NAMESPACE::XMLFormatter* formatter = nullptr;
    XERCES_CPP_NAMESPACE::XMLFormatTarget* target = nullptr;
    lumxml::WriterScope* scope = nullptr;
    lumxml::NamespaceBinding* bindings = nullptr;
    lumxml::PendingItem* pending = nullptr;
    lumxml::PendingItem* pendingTail = nullptr;
    lumxml::NamespaceBinding* pendingBinding = nullptr;
    lumxml::TextBuffer nameBuffer;
    std::basic_string<XMLCh> scratch;  // reused by each transcoding
    int32_t depth = 0;
    uint32_t lastCommand = 0;
    bool formatted = false;
    bool strict = false;
    bool fragment = false;
    lumxml::TextBuffer message;

    // Kept beside the documented fields:
    lumxml::XMLMemOut* memory = nullptr;   // the target when it is host memory
    WriterOptions* currentOptions = nullptr;  // the record of the command being run
    uint32_t finalLength = 0;        // the host's length cell once the memory target is gone
    void* closedBlock = nullptr;     // runtime-allocated block of the output just closed
    WriterOptions* openOptions = nullptr;  // the record the message address was published to
    const char* publishedMessage = nullptr;
    std::vector<char*> retiredMessages;    // earlier message blocks, kept until the writer goes
    // UTF-8 output is encoded and escaped by the writer itself, into these
    // bytes, with exactly the formatter's result (out/utf8_escaper.h).
    const lumxml::Utf8Escaper* utf8Direct = nullptr;
    std::string directBytes;
    // Two shortcuts of the UTF-8 way, chosen with it (tests turn them off
    // to compare with the way through UTF-16 and writeChars):
    bool hostBytesDirect = false;  // host texts (UTF-8 code page) encoded without UTF-16
    bool memoryDirect = false;     // bytes encoded straight into the memory block
    // Records of written tags and ended elements, reused by the next ones
    // so that a command makes no allocation of its own once warm.
    lumxml::PendingItem* spareItems = nullptr;
    lumxml::ElementRecord* spareRecords = nullptr;
    // Answers of the strict QName check for names seen lately (UTF-8
    // host only).
    lumxml::NameCache checkedQNames;
    // The heap of the writer's formatters, made with the first: Xerces
    // loses blocks of a formatter whose construction fails to allocate,
    // and they go with the writer.
    lumxml::HeapRef formatterHeap;

    ~SAXWriter();
};

namespace lumxml {

// ---- commands.cpp ------------------------------------------------------
int32_t executeWriterCommand(SAXWriter* writer, int32_t command, WriterOptions* options,
                             WriterArgs* args);

// ---- output.cpp --------------------------------------------------------
// Writing through the formatter; all do nothing when no output is open.
void put(SAXWriter& w, const MarkupPiece& piece);
void putUnits(SAXWriter& w, const XMLCh* text, XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags flags);
// Transcodes a host text into the writer's scratch and writes it.
void putHost(SAXWriter& w, const char* text,
             XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags flags =
                 XERCES_CPP_NAMESPACE::XMLFormatter::NoEscapes);
void putHost(SAXWriter& w, const std::string& text,
             XERCES_CPP_NAMESPACE::XMLFormatter::EscapeFlags flags =
                 XERCES_CPP_NAMESPACE::XMLFormatter::NoEscapes);
void indent(SAXWriter& w);
void lineFeedIfFormatted(SAXWriter& w);
// The host text argument, null when it is null or empty.
const char* textArgument(void* slot);
// Stores a message text, keeping the address the host reads valid.
void setMessage(SAXWriter& w, const char* text);
void setMessage(SAXWriter& w, const std::string& text);
void setError(SAXWriter& w, int32_t code);

void openOutput(SAXWriter& w, WriterOptions* options);              // 21
void endDocument(SAXWriter& w, WriterOptions* options);             // 22
void restartMemoryOutput(SAXWriter& w, WriterOptions* options);     // 12
void discardUnreachableMemory(SAXWriter& w);
void deleteOutput(SAXWriter& w);
void writeCharacters(SAXWriter& w, const char* text);              // 25
void writeRaw(SAXWriter& w, const char* text);                     // 30
void writeComment(SAXWriter& w, const char* text);                 // 28
void writeProcessingInstruction(SAXWriter& w, const char* target, const char* data);  // 29
void writeDoctype(SAXWriter& w, const char* name, const char* first, const char* second);  // 31
void writeEntityReference(SAXWriter& w, const char* name);         // 32
void writeCdata(SAXWriter& w, const char* text);                   // 33
// Strict QName / Name checks of a host text.
bool isValidQName(SAXWriter& w, const char* name);
bool isValidName(SAXWriter& w, const char* name);

// ---- elements.cpp ------------------------------------------------------
void completeStartTag(SAXWriter& w, uint32_t command);
void startElement(SAXWriter& w, const char* qName, const char* uri, const SaxAttrList* attributes);
void addAttribute(SAXWriter& w, const char* qName, const char* value, const char* uri);  // 10
void declareNamespace(SAXWriter& w, const char* uri, const char* prefix);              // 11
void endElement(SAXWriter& w, const char* qName, const char* uri);                     // 24
void clearPending(SAXWriter& w);
void freeSpareRecords(SAXWriter& w);
void dropBindings(SAXWriter& w, int32_t depth);
void freeBindings(SAXWriter& w);

}  // namespace lumxml
