// The handler objects that a SAX reader reports to. They never call the
// host: each notification becomes a SaxEvent appended to the queue of the
// owning SaxParserInstance (sax_events.h).
#pragma once

#include <xercesc/sax/DTDHandler.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXException.hpp>
#include <xercesc/sax2/ContentHandler.hpp>

#include "lumxml.h"
#include "sax/sax_events.h"

namespace lumxml {

// The one way a handler stops the parse. Always made without a message.
class LumSAXException : public xercesc::SAXException {
public:
    LumSAXException() = default;
    ~LumSAXException() override = default;
};

// Thrown by the error handler after delivering the fatal error of the
// entity-expansion limit, to end a parse that Xerces would otherwise run on
// without bound (see LumSAXErrorHandler::fatalError).
struct EntityExpansionLimitStop {};

class LumContentHandler : public xercesc::ContentHandler {
public:
    explicit LumContentHandler(SaxParserInstance* instance) : instance_(instance) {}
    ~LumContentHandler() override = default;

    void characters(const XMLCh* const chars, const XMLSize_t length) override;
    void endDocument() override;
    void endElement(const XMLCh* const uri, const XMLCh* const localname,
                    const XMLCh* const qname) override;
    void ignorableWhitespace(const XMLCh* const chars, const XMLSize_t length) override;
    void processingInstruction(const XMLCh* const target, const XMLCh* const data) override;
    void setDocumentLocator(const xercesc::Locator* const locator) override;
    void startDocument() override;
    void startElement(const XMLCh* const uri, const XMLCh* const localname,
                      const XMLCh* const qname, const xercesc::Attributes& attrs) override;
    void startPrefixMapping(const XMLCh* const prefix, const XMLCh* const uri) override;
    void endPrefixMapping(const XMLCh* const prefix) override;
    void skippedEntity(const XMLCh* const name) override;
    // Queues an empty kind-0 event (no name, no arguments).
    virtual void queueEmptyEvent();

    // Shared with the instance's other handlers (see sax::IdMemo).
    sax::IdMemo* idMemo() { return &memo_; }
    // The instance's spare event blocks: the content handler's events come
    // from here and handled events go back (lumSAXParseNext).
    sax::EventPool* eventPool() { return &pool_; }

private:
    bool namespacesOff() const;
    // Slots 1..3 of "StartElement" and "EndElement".
    void fillElementName(SaxEvent& event, const XMLCh* uri, const XMLCh* localname,
                         const XMLCh* qname);
    void fillAttributes(SaxEvent& event, const xercesc::Attributes& attrs);
    void queueText(const XMLCh* chars, XMLSize_t length, uint32_t kind);

    SaxParserInstance* instance_;
    sax::IdMemo memo_;
    sax::EventPool pool_;
};

class LumSAXDTDHandler : public xercesc::DTDHandler {
public:
    explicit LumSAXDTDHandler(SaxParserInstance* instance, sax::IdMemo* memo = nullptr)
        : instance_(instance), memo_(memo) {}
    ~LumSAXDTDHandler() override = default;

    void notationDecl(const XMLCh* const name, const XMLCh* const publicId,
                      const XMLCh* const systemId) override;
    void unparsedEntityDecl(const XMLCh* const name, const XMLCh* const publicId,
                            const XMLCh* const systemId, const XMLCh* const notationName) override;
    void resetDocType() override {}

private:
    SaxParserInstance* instance_;
    sax::IdMemo* memo_;
};

class LumSAXErrorHandler : public xercesc::ErrorHandler {
public:
    explicit LumSAXErrorHandler(SaxParserInstance* instance, sax::IdMemo* memo = nullptr)
        : instance_(instance), memo_(memo) {}
    ~LumSAXErrorHandler() override = default;

    void warning(const xercesc::SAXParseException& exc) override;
    void error(const xercesc::SAXParseException& exc) override;
    void fatalError(const xercesc::SAXParseException& exc) override;
    void resetErrors() override {}

    // True once the parse was ended at the entity-expansion limit.
    bool endedAtExpansionLimit() const { return endedAtLimit_; }
    // Ends the parse at one of lumxml's own limits (sax/hardened_reader.h)
    // the way the expansion limit ends it: the fatal error, then the end.
    [[noreturn]] void stopAtLimit(const xercesc::SAXParseException& exc);

private:
    void queueError(const xercesc::SAXParseException& exc, uint32_t kind);
    bool isExpansionLimitError(const xercesc::SAXParseException& exc) const;

    SaxParserInstance* instance_;
    sax::IdMemo* memo_;
    bool endedAtLimit_ = false;
};

}  // namespace lumxml
