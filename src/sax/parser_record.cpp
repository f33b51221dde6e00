// What the record holds of the reader (the reader, its scan token, the
// memory input source) and the reset that releases all of it.
#include "sax/parser_parts.h"
#include "sax/sax_parser.h"

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "sax/sax_events.h"
#include "sax/sax_handlers.h"

namespace lumxml {
namespace sax {
namespace pull {

using namespace xercesc;

namespace {

SecurityManager* securityManagerOf(SAX2XMLReaderImpl& reader) {
    return static_cast<SecurityManager*>(reader.getProperty(XMLUni::fgXercesSecurityManager));
}

}  // namespace

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

LumSAXErrorHandler* errorHandlerOf(const SaxParserInstance& instance) {
    SAX2XMLReaderImpl* reader = readerOf(instance);
    return reader != nullptr ? dynamic_cast<LumSAXErrorHandler*>(reader->getErrorHandler())
                             : nullptr;
}

void deleteReader(SaxParserInstance& instance) {
    SAX2XMLReaderImpl* reader = readerOf(instance);
    if (reader == nullptr) return;
    SecurityManager* manager = securityManagerOf(*reader);
    instance.reader = nullptr;
    instance.locator = nullptr;
    delete reader;
    delete manager;
}

// The reader only ever holds the LumContentHandler that installNewHandlers
// made (moveHandlers hands the same one on), so the cast is exact.
EventPool* eventPoolOf(const SaxParserInstance& instance) {
    SAX2XMLReaderImpl* reader = readerOf(instance);
    if (reader == nullptr || reader->getContentHandler() == nullptr) return nullptr;
    return static_cast<LumContentHandler*>(reader->getContentHandler())->eventPool();
}

}  // namespace pull

// ---- The reset ------------------------------------------------------------------

using namespace pull;

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

}  // namespace sax
}  // namespace lumxml
