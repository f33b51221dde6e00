#include "sax/sax_parser.h"
#include "lumxml.h"

#include <cstring>
#include <memory>
#include <string>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/parsers/SAXParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "dom/load/back_slash_path.h"
#include "dom/load/dom_tree_error_reporter.h"
#include "frame/error_report.h"
#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "frame/owned_heap.h"
#include "frame/platform.h"
#include "sax/hardened_reader.h"
#include "sax/sax_entity_resolver.h"
#include "sax/sax_events.h"
#include "sax/sax_handlers.h"

namespace lumxml {
namespace sax {

using namespace xercesc;

namespace {

constexpr uint32_t kFlagNoNamespaces = 1;
constexpr uint32_t kFlagValidate = 2;
constexpr uint32_t kFlagNoDefaultEntityResolution = 4;
constexpr const char* kMemoryBufferId = "MEMPTR";

// ---- Record fields that hold library objects --------------------------------

SAX2XMLReaderImpl* readerOf(const SaxParserInstance& instance) {
    return static_cast<SAX2XMLReaderImpl*>(instance.reader);
}

XMLPScanToken* tokenOf(const SaxParserInstance& instance) {
    return static_cast<XMLPScanToken*>(instance.scanToken);
}

void deleteToken(SaxParserInstance& instance) {
    delete tokenOf(instance);
    instance.scanToken = nullptr;
}

void newToken(SaxParserInstance& instance) {
    deleteToken(instance);
    instance.scanToken = new XMLPScanToken();
}

void deleteInputSource(SaxParserInstance& instance) {
    delete static_cast<MemBufInputSource*>(instance.inputSource);
    instance.inputSource = nullptr;
}

SecurityManager* securityManagerOf(SAX2XMLReaderImpl& reader) {
    return static_cast<SecurityManager*>(reader.getProperty(XMLUni::fgXercesSecurityManager));
}

LumSAXErrorHandler* errorHandlerOf(const SaxParserInstance& instance) {
    SAX2XMLReaderImpl* reader = readerOf(instance);
    return reader != nullptr ? dynamic_cast<LumSAXErrorHandler*>(reader->getErrorHandler())
                             : nullptr;
}

// The reader goes with its security manager. The locator it handed to the
// content handler goes with it, so the record stops pointing at it.
void deleteReader(SaxParserInstance& instance) {
    SAX2XMLReaderImpl* reader = readerOf(instance);
    if (reader == nullptr) return;
    SecurityManager* manager = securityManagerOf(*reader);
    instance.reader = nullptr;
    instance.locator = nullptr;
    delete reader;
    delete manager;
}

// ---- Error text of the record ---------------------------------------------

ErrorReport reportOf(SaxParserInstance& instance) {
    return ErrorReport(instance.errorText, &instance.errorCode);
}

// `prefix` then the Xerces message, cut to the record's 255 characters.
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

bool hasText(const XMLCh* text) { return text != nullptr && text[0] != 0; }
bool hasText(const char* text) { return text != nullptr && text[0] != '\0'; }

// ---- Reader set-up ----------------------------------------------------------

// A reader on a heap of lumxml's own, which it holds in a base made before
// the reader and destroyed after it: what Xerces leaves in the heap goes
// with the reader.
struct HeapHolder {
    HeapRef heap{OwnedHeap::create()};
};

class OwnedHeapReader final : private HeapHolder, public HardenedReader {
public:
    OwnedHeapReader() : HardenedReader(heap.get()) {}
    OwnedHeap* ownHeap() const { return heap.get(); }
};

bool isMemoryInput(int32_t kind) { return kind == 1 || kind == 5; }

SAX2XMLReaderImpl* newReader() {
    std::unique_ptr<SAX2XMLReaderImpl> reader(new OwnedHeapReader());
    // Fatal errors become events and the host drives the parse to its end.
    reader->setExitOnFirstFatalError(false);
    return reader.release();
}

void setStringProperty(SAX2XMLReaderImpl& reader, const XMLCh* property, const char* value) {
    if (!hasText(value)) return;
    XmlString wide(value);  // Xerces keeps its own copy
    reader.setProperty(property, const_cast<XMLCh*>(wide.get()));
}

// lumxml's own limits of a reader with an expansion limit (every reader is
// a HardenedReader: newReader makes no other).
void armReaderBudget(SAX2XMLReaderImpl& reader, const SaxParserInstance& instance) {
    const uint64_t inputBytes = isMemoryInput(instance.inputKind)
                                    ? instance.memoryLength
                                    : platform::fileSize(instance.fileName);
    static_cast<HardenedReader&>(reader).armBudget(
        static_cast<uint64_t>(instance.entityExpansionLimit), inputBytes, &instance);
}

// The options of the record, read as they stand now, onto the reader.
void applyOptions(SAX2XMLReaderImpl& reader, const SaxParserInstance& instance) {
    const bool validate = (instance.flags & kFlagValidate) != 0;
    reader.setFeature(XMLUni::fgSAX2CoreValidation, validate);
    reader.setFeature(XMLUni::fgXercesDynamic, validate);
    reader.setFeature(XMLUni::fgSAX2CoreNameSpaces, (instance.flags & kFlagNoNamespaces) == 0);
    reader.setFeature(XMLUni::fgXercesDisableDefaultEntityResolution,
                      (instance.flags & kFlagNoDefaultEntityResolution) != 0);
    reader.setFeature(XMLUni::fgSAX2CoreNameSpacePrefixes, false);
    reader.setFeature(XMLUni::fgXercesSchema, validate);
    setStringProperty(reader, XMLUni::fgXercesSchemaExternalSchemaLocation,
                      instance.schemaLocation);
    setStringProperty(reader, XMLUni::fgXercesSchemaExternalNoNameSpaceSchemaLocation,
                      instance.noNamespaceSchemaLocation);
    if (instance.entityExpansionLimit >= 0) {
        auto manager = std::make_unique<SecurityManager>();
        manager->setEntityExpansionLimit(static_cast<XMLSize_t>(instance.entityExpansionLimit));
        reader.setProperty(XMLUni::fgXercesSecurityManager, manager.get());
        manager.release();  // owned through the record's reader from now on
        armReaderBudget(reader, instance);
    }
}

void installNewHandlers(SAX2XMLReaderImpl& reader, SaxParserInstance& instance) {
    auto* content = new LumContentHandler(&instance);
    reader.setContentHandler(content);
    // The four share one note of the ids last copied into the record.
    sax::IdMemo* memo = content->idMemo();
    reader.setErrorHandler(new LumSAXErrorHandler(&instance, memo));
    reader.setDTDHandler(new LumSAXDTDHandler(&instance, memo));
    reader.setEntityResolver(new LumSAXEntityResolver(&instance, instance.searchPath, memo));
}

void moveHandlers(SAX2XMLReaderImpl& from, SAX2XMLReaderImpl& to) {
    to.setContentHandler(from.getContentHandler());
    to.setErrorHandler(from.getErrorHandler());
    to.setDTDHandler(from.getDTDHandler());
    to.setEntityResolver(from.getEntityResolver());
}

void deleteHandlers(SAX2XMLReaderImpl& reader) {
    delete reader.getEntityResolver();
    reader.setEntityResolver(nullptr);
    delete reader.getErrorHandler();
    reader.setErrorHandler(nullptr);
    delete reader.getDTDHandler();
    reader.setDTDHandler(nullptr);
    delete reader.getContentHandler();
    reader.setContentHandler(nullptr);
}

// ---- Opening the input and the first Xerces pass ----------------------------

enum class Start {
    Parsed,          // parseFirst returned; `result` holds its answer
    Refused,         // input kind not 0, 1 or 5 ("Not supported", -1)
    NoFile,          // "No input file specified", 11
    XercesFailed,    // "Error parsing ...", 3
    HandlerStopped,  // a LumSAXException; `message` set when it had one
    LimitStopped,    // the entity-expansion limit ended the parse
    Unexpected,      // "Unexpected exception", 13
};

struct StartOutcome {
    Start how = Start::Parsed;
    bool result = false;
};

bool parseFirstOn(SaxParserInstance& instance) {
    SAX2XMLReaderImpl& reader = *readerOf(instance);
    XMLPScanToken& token = *tokenOf(instance);
    if (isMemoryInput(instance.inputKind)) {
        const auto* bytes = static_cast<const XMLByte*>(instance.memoryBuffer);
        const XMLSize_t length = bytes != nullptr ? instance.memoryLength : 0;
        // On the reader's heap: what Xerces loses of it on a failure goes
        // with the reader.
        auto* source = new MemBufInputSource(bytes, length, kMemoryBufferId, false,
                                             static_cast<OwnedHeapReader&>(reader).ownHeap());
        instance.inputSource = source;
        return reader.parseFirst(*source, token);
    }
    // A network path reaches Xerces with backslashes; the name goes through
    // the host codec and the UTF-16 overload.
    XmlString name(pathForXerces(instance.fileName).c_str());
    return reader.parseFirst(name.get(), token);
}

StartOutcome openAndStart(SaxParserInstance& instance) {
    StartOutcome outcome;
    if (!isMemoryInput(instance.inputKind) && instance.inputKind != 0) {
        reportOf(instance).fixed("Not supported", LUM_ERR_NOT_SUPPORTED);
        outcome.how = Start::Refused;
        return outcome;
    }
    if (instance.inputKind == 0 && instance.fileName == nullptr) {
        reportOf(instance).fixed("No input file specified", LUM_ERR_NO_INPUT_FILE);
        outcome.how = Start::NoFile;
        return outcome;
    }
    try {
        outcome.result = parseFirstOn(instance);
    } catch (const EntityExpansionLimitStop&) {
        outcome.how = Start::LimitStopped;
    } catch (const LumSAXException& stop) {
        outcome.how = Start::HandlerStopped;
        if (hasText(stop.getMessage())) appendMessage(instance, stop.getMessage(), 1);
    } catch (const XMLException& failure) {
        writePrefixed(instance,
                      isMemoryInput(instance.inputKind) ? "Error parsing MEMPTR: "
                                                        : "Error parsing file: ",
                      failure.getMessage(), LUM_ERR_PARSE);
        outcome.how = Start::XercesFailed;
    } catch (...) {
        reportOf(instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
        outcome.how = Start::Unexpected;
    }
    return outcome;
}

// ---- The first pass ----------------------------------------------------------

int32_t setUp(SaxParserInstance& instance) {
    resetParserInstance(instance);
    if (instance.errorCode != 0) return 0;  // the reset itself failed
    newToken(instance);
    instance.reader = newReader();
    SAX2XMLReaderImpl& reader = *readerOf(instance);
    applyOptions(reader, instance);
    installNewHandlers(reader, instance);

    const StartOutcome outcome = openAndStart(instance);
    bool result = false;
    switch (outcome.how) {
        case Start::Refused:
            return 0;
        case Start::Parsed:
            result = outcome.result;
            break;
        case Start::HandlerStopped:
            // Without a message this is how "StartDocument" is delivered.
            result = instance.errorCode == 0;
            break;
        default:
            break;
    }
    if (result) return 1;
    if (instance.eventCount != 0) {
        // The parse is over, but the host still receives what was queued.
        deleteToken(instance);
        return 1;
    }
    if (instance.errorCode == 0) reportOf(instance).fixed("Unexpected error", LUM_ERR_PARSE);
    return 0;
}

// ---- Reading on --------------------------------------------------------------

constexpr int32_t kGoOn = 2;

// The second, real pass: a new reader with the same handlers and the
// options of the record as the host left them while "StartDocument" was
// at eventHead. Answers 0 or 1 for the host, or kGoOn.
int32_t restartParse(SaxParserInstance& instance) {
    instance.state = kStateRestarting;
    SAX2XMLReaderImpl* old = readerOf(instance);
    if (old == nullptr) {
        // The record was released (lumSAXDeleteParserInstance) since its
        // "StartDocument": there is nothing to restart.
        reportOf(instance).fixed("Unexpected error", LUM_ERR_PARSE);
        return 0;
    }
    newToken(instance);
    std::unique_ptr<SAX2XMLReaderImpl> fresh(newReader());
    moveHandlers(*old, *fresh);
    // The host may have set another search path while "StartDocument" was
    // at eventHead; the resolver handed over reads it as it stands now.
    if (auto* resolver = dynamic_cast<LumSAXEntityResolver*>(fresh->getEntityResolver())) {
        resolver->readSearchPath(instance.searchPath);
    }
    applyOptions(*fresh, instance);
    deleteInputSource(instance);  // made on the old reader's heap
    deleteReader(instance);
    instance.reader = fresh.release();

    const StartOutcome outcome = openAndStart(instance);
    if (instance.state == kStateRestarting) instance.state = kStateRunning;
    switch (outcome.how) {
        case Start::Refused:
            return 0;
        case Start::Parsed:
            if (!outcome.result) deleteToken(instance);
            return instance.eventCount != 0 ? 1 : kGoOn;
        case Start::HandlerStopped:
            // The host's resolver callback stopped the parse.
            deleteToken(instance);
            return 0;
        case Start::LimitStopped:
            deleteToken(instance);
            return instance.eventCount != 0 ? 1 : 0;
        default:
            // The input could not be opened again: the reason stays in the
            // record rather than being cleared on the way on.
            deleteToken(instance);
            return instance.eventCount != 0 ? 1 : 0;
    }
}

bool endedAtExpansionLimit(const SaxParserInstance& instance) {
    const LumSAXErrorHandler* handler = errorHandlerOf(instance);
    return handler != nullptr && handler->endedAtExpansionLimit();
}

// One or more Xerces steps until something is queued or the input ends.
int32_t readOn(SaxParserInstance& instance) {
    SAX2XMLReaderImpl* reader = readerOf(instance);
    try {
        // A step that raises no event (a comment, say) is followed by the
        // next, so that an answer of 1 always has an event at eventHead.
        while (reader->parseNext(*tokenOf(instance))) {
            if (instance.eventHead != nullptr) return 1;
        }
        deleteToken(instance);
        return instance.eventCount != 0 ? 1 : 0;
    } catch (const EntityExpansionLimitStop&) {
        deleteToken(instance);
        return instance.eventCount != 0 ? 1 : 0;
    } catch (const LumSAXException& stop) {
        deleteToken(instance);
        if (hasText(stop.getMessage())) appendMessage(instance, stop.getMessage(), 1);
        return 0;
    } catch (...) {
        deleteToken(instance);
        if (instance.eventCount != 0) return 1;
        reportOf(instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception in SAXParseNext");
        return 0;
    }
}

// The spare event blocks of the instance's handlers (null without a reader).
// The reader only ever holds the LumContentHandler that installNewHandlers
// made (moveHandlers hands the same one on), so the cast is exact.
EventPool* eventPoolOf(const SaxParserInstance& instance) {
    SAX2XMLReaderImpl* reader = readerOf(instance);
    if (reader == nullptr || reader->getContentHandler() == nullptr) return nullptr;
    return static_cast<LumContentHandler*>(reader->getContentHandler())->eventPool();
}

int32_t step(SaxParserInstance& instance) {
    if (SaxEvent* handled = instance.eventHead) {
        const int32_t countBefore = instance.eventCount;
        instance.eventHead = handled->next;
        if (instance.eventTail == handled) instance.eventTail = nullptr;
        freeEvent(handled, eventPoolOf(instance));
        --instance.eventCount;
        if (countBefore != 1) return 1;
    }
    if (instance.state == kStateFirstPass) {
        const int32_t restarted = restartParse(instance);
        if (restarted != kGoOn) return restarted;
    }
    instance.eventHead = nullptr;
    instance.eventTail = nullptr;
    instance.eventCount = 0;
    instance.errorText[0] = '\0';
    instance.errorCode = 0;

    if (instance.scanToken != nullptr && instance.reader != nullptr) return readOn(instance);
    if (instance.state == kStateEnded || endedAtExpansionLimit(instance)) return 0;
    reportOf(instance).fixed("Unexpected error", LUM_ERR_PARSE);
    return 0;
}

// One step for the host. One Xerces step may queue several events; the
// record's line and column are those of the event left at eventHead.
int32_t next(SaxParserInstance& instance) {
    const int32_t result = step(instance);
    if (result == 1) showLocationOf(instance, instance.eventHead);
    return result;
}

// ---- One-shot validation -------------------------------------------------------

// The reporter's text (budgeted for 256 characters) into the record's 255.
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

int32_t validate(SaxParserInstance& instance) {
    std::unique_ptr<LumSAXEntityResolver> resolver;
    HeapRef heap(OwnedHeap::create());  // outlives the parser
    SAXParser parser(nullptr, heap.get());
    if ((instance.flags & kFlagValidate) != 0) {
        parser.setValidationScheme(SAXParser::Val_Always);
        if (hasText(instance.searchPath)) {
            // Not tied to a driven instance: it only searches the directories.
            resolver = std::make_unique<LumSAXEntityResolver>(nullptr, instance.searchPath);
            parser.setEntityResolver(resolver.get());
        }
    }
    parser.setDoNamespaces((instance.flags & kFlagNoNamespaces) == 0);
    // The record's limit guards the one-shot validation too (it stops at
    // the first fatal error, so the limit error ends it).
    std::unique_ptr<SecurityManager> manager;
    if (instance.entityExpansionLimit >= 0) {
        manager = std::make_unique<SecurityManager>();
        manager->setEntityExpansionLimit(static_cast<XMLSize_t>(instance.entityExpansionLimit));
        parser.setSecurityManager(manager.get());
    }
    DOMTreeErrorReporter reporter;
    parser.setErrorHandler(&reporter);

    if (instance.inputKind != 0) {
        reportOf(instance).fixed("Not supported", LUM_ERR_NOT_SUPPORTED);
        return 0;
    }
    if (instance.fileName == nullptr) {
        reportOf(instance).fixed("No input file specified", LUM_ERR_NO_INPUT_FILE);
        return 0;
    }
    try {
        XmlString name(pathForXerces(instance.fileName).c_str());
        parser.parse(name.get());
    } catch (const XMLException& failure) {
        writePrefixed(instance, "Error parsing file: ", failure.getMessage(), LUM_ERR_PARSE);
        return 0;
    }
    if (reporter.sawErrors()) copyReporterText(instance, reporter);
    parser.setEntityResolver(nullptr);
    parser.setErrorHandler(nullptr);
    return 1;
}

}  // namespace

// ---- Exported operations -------------------------------------------------------

void resetParserInstance(SaxParserInstance& instance) {
    try {
        // The token and the source go even when a failed set-up made no
        // reader; the source before the reader, on whose heap it lies.
        if (SAX2XMLReaderImpl* reader = readerOf(instance)) deleteHandlers(*reader);
        deleteToken(instance);
        deleteInputSource(instance);
        deleteReader(instance);
        freeQueue(instance);
        instance.state = kStateFirstPass;
        instance.eventHead = nullptr;
        instance.eventTail = nullptr;
        instance.reserved432 = nullptr;
        instance.inputSource = nullptr;
        instance.errorText[0] = '\0';
        instance.errorCode = 0;
        // eventCount is deliberately left as it stands: hosts see the count
        // of an abandoned parse until the next step that reads on clears it.
    } catch (...) {
        reportOf(instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
    }
}

int32_t parseFirst(SaxParserInstance* instance) {
    if (instance == nullptr) return 0;
    if (!isInitialised()) {
        reportOf(*instance).fixed("XML Parser not initialized", LUM_ERR_NOT_INITIALIZED);
        return 0;
    }
    try {
        return setUp(*instance);
    } catch (...) {
        reportOf(*instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
        return 0;
    }
}

int32_t parseNext(SaxParserInstance* instance) {
    if (instance == nullptr) return 0;
    try {
        return next(*instance);
    } catch (...) {
        reportOf(*instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
        return 0;
    }
}

void deleteParserInstance(SaxParserInstance* instance) {
    if (instance == nullptr) return;
    try {
        resetParserInstance(*instance);
        codec::release(instance->publicId);
        instance->publicId = nullptr;
        codec::release(instance->systemId);
        instance->systemId = nullptr;
    } catch (...) {
        // Deletion never reports.
    }
}

int32_t validateFile(SaxParserInstance* instance) {
    if (instance == nullptr) return 0;
    if (!isInitialised()) {
        // Deliberately 1: the call "ran" and the reason is in the record.
        reportOf(*instance).fixed("XML Parser not initialized", LUM_ERR_NOT_INITIALIZED);
        return 1;
    }
    try {
        return validate(*instance);
    } catch (...) {
        reportOf(*instance).formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
        return 0;
    }
}

}  // namespace sax
}  // namespace lumxml
