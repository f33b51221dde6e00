// The two passes that start a parse. lumSAXParseFirst runs the first one,
// which Xerces' parseFirst cuts short once "StartDocument" is queued; the
// pull step that follows it restarts the parse with a new reader, so that
// options the host set while "StartDocument" was at eventHead apply to the
// whole document. Both open the input the same way (openAndStart).
#include "sax/parser_parts.h"
#include "sax/sax_parser.h"

#include <memory>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/XMLException.hpp>

#include "dom/load/back_slash_path.h"
#include "frame/host_codec.h"
#include "sax/sax_entity_resolver.h"
#include "sax/sax_handlers.h"

namespace lumxml {
namespace sax {
namespace pull {

using namespace xercesc;

namespace {

constexpr const char* kMemoryBufferId = "MEMPTR";

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

}  // namespace

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

// ---- The restart -------------------------------------------------------------

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

}  // namespace pull
}  // namespace sax
}  // namespace lumxml
