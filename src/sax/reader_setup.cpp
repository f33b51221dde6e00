// The reader's set-up: a reader on a heap of its own, the options of the
// record onto it (read again for the restart, as the host left them), and
// the handlers it reports to, made for the first pass, handed on to the
// restart's reader and deleted with the reset.
#include "sax/parser_parts.h"

#include <memory>

#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "frame/host_codec.h"
#include "frame/platform.h"
#include "sax/sax_entity_resolver.h"
#include "sax/sax_events.h"
#include "sax/sax_handlers.h"

namespace lumxml {
namespace sax {
namespace pull {

using namespace xercesc;

namespace {

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

}  // namespace

// ---- Reader set-up ----------------------------------------------------------

bool isMemoryInput(int32_t kind) { return kind == 1 || kind == 5; }

SAX2XMLReaderImpl* newReader() {
    std::unique_ptr<SAX2XMLReaderImpl> reader(new OwnedHeapReader());
    // Fatal errors become events and the host drives the parse to its end.
    reader->setExitOnFirstFatalError(false);
    return reader.release();
}

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

// ---- Handlers -------------------------------------------------------------------

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

}  // namespace pull
}  // namespace sax
}  // namespace lumxml
