#include "sax/sax_handlers.h"

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLMsgLoader.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "frame/host_codec.h"
#include "sax/attr_list.h"
#include "sax/sax_events.h"

namespace lumxml {

using namespace xercesc;
using namespace sax;

namespace {

constexpr int32_t kFirstPass = 1;
constexpr int32_t kRunning = 3;
constexpr int32_t kEnded = 4;
constexpr uint32_t kNamespacesOffFlag = 1;

bool inFirstPass(const SaxParserInstance* instance) { return instance->state == kFirstPass; }

// The text Xerces gives the entity-expansion limit error for `limit`,
// loaded from the same message set the scanner uses.
bool isLimitMessage(const XMLCh* message, XMLSize_t limit) {
    // Kept for the life of the process (reachable, never freed): loading a
    // message set is costly and the set is read-only once loaded.
    static XMLMsgLoader* const loader = XMLPlatformUtils::loadMsgSet(XMLUni::fgXMLErrDomain);
    if (loader == nullptr || message == nullptr) return false;
    XMLCh limitText[32];
    XMLString::sizeToText(limit, limitText, 31, 10);
    XMLCh expected[1024];
    if (!loader->loadMsg(XMLErrs::EntityExpansionLimitExceeded, expected, 1023, limitText)) {
        return false;
    }
    return XMLString::equals(message, expected);
}

}  // namespace

// ---- LumContentHandler ----------------------------------------------------

bool LumContentHandler::namespacesOff() const {
    return (instance_->flags & kNamespacesOffFlag) != 0;
}

void LumContentHandler::characters(const XMLCh* const chars, const XMLSize_t length) {
    queueText(chars, length, kCharacters);
}

void LumContentHandler::ignorableWhitespace(const XMLCh* const chars, const XMLSize_t length) {
    queueText(chars, length, kIgnorableWhitespace);
}

void LumContentHandler::queueText(const XMLCh* chars, XMLSize_t length, uint32_t kind) {
    SaxEvent* event = enqueueEvent(*instance_, &pool_);
    if (event == nullptr) return;
    finishEvent(*event, static_cast<EventKind>(kind), 2);
    event->arg1 = pool_.copy(chars, length);
    // The length is the parser's count of UTF-16 units, cut to 32 bits.
    event->arg2 = reinterpret_cast<void*>(static_cast<uintptr_t>(static_cast<uint32_t>(length)));
    locateEvent(*instance_, *event, &memo_);
}

void LumContentHandler::endDocument() {
    SaxEvent* event = enqueueEvent(*instance_, &pool_);
    instance_->state = kEnded;
    if (event == nullptr) return;
    locateEvent(*instance_, *event, &memo_);
    finishEvent(*event, kEndDocument, 0);
}

void LumContentHandler::fillElementName(SaxEvent& event, const XMLCh* uri,
                                        const XMLCh* localname, const XMLCh* qname) {
    // An element's empty URI stays "", only the text "EMPTY" becomes null.
    event.arg1 = pool_.copyUnlessEmptyMarker(uri);
    event.arg2 = namespacesOff() ? nullptr : pool_.copy(localname);
    event.arg3 = pool_.copy(qname);
}

void LumContentHandler::fillAttributes(SaxEvent& event, const Attributes& attrs) {
    SaxAttrList* list = LUM_SAX_EVENT_ATTRIBUTES(&event);
    const auto count = static_cast<int32_t>(attrs.getLength());
    list->count = count;
    list->capacity = static_cast<int32_t>(static_cast<int64_t>(count) * 3 / 2);
    list->entries = pool_.takeEntries(list->capacity);
    if (list->entries == nullptr) {
        // No array for an element without attributes; for one with
        // attributes the handler stops here (an empty list is left).
        list->capacity = 0;
        list->count = 0;
        return;
    }
    const bool noNamespaces = namespacesOff();
    for (int32_t i = 0; i < count; ++i) {
        SaxAttribute& entry = list->entries[i];
        const XMLSize_t index = static_cast<XMLSize_t>(i);
        entry.uri = pool_.copyUnlessEmptyMarker(attrs.getURI(index), true);
        entry.localName = noNamespaces ? nullptr : pool_.copy(attrs.getLocalName(index));
        entry.qName = pool_.copy(attrs.getQName(index));
        entry.type = pool_.copyType(attrs.getType(index));
        entry.value = pool_.copy(attrs.getValue(index));
    }
}

void LumContentHandler::startElement(const XMLCh* const uri, const XMLCh* const localname,
                                     const XMLCh* const qname, const Attributes& attrs) {
    instance_->state = kRunning;
    SaxEvent* event = enqueueEvent(*instance_, &pool_);
    if (event == nullptr) return;
    finishEvent(*event, kStartElement, 4);
    fillElementName(*event, uri, localname, qname);
    fillAttributes(*event, attrs);
    locateEvent(*instance_, *event, &memo_);
}

void LumContentHandler::endElement(const XMLCh* const uri, const XMLCh* const localname,
                                   const XMLCh* const qname) {
    SaxEvent* event = enqueueEvent(*instance_, &pool_);
    if (event == nullptr) return;
    finishEvent(*event, kEndElement, 3);
    fillElementName(*event, uri, localname, qname);
    locateEvent(*instance_, *event, &memo_);
}

void LumContentHandler::processingInstruction(const XMLCh* const target,
                                              const XMLCh* const data) {
    if (inFirstPass(instance_)) return;
    SaxEvent* event = enqueueEvent(*instance_, &pool_);
    if (event == nullptr) return;
    finishEvent(*event, kProcessingInstruction, 2);
    event->arg1 = pool_.copy(target);
    event->arg2 = pool_.copy(data);
    locateEvent(*instance_, *event, &memo_);
}

void LumContentHandler::setDocumentLocator(const Locator* const locator) {
    instance_->locator = const_cast<Locator*>(locator);
    memo_.noteLocator(locator);
}

void LumContentHandler::startDocument() {
    // The first pass reports only "StartDocument" and is then cut short, so
    // that the host can change the options before the document is read.
    if (!inFirstPass(instance_)) return;
    SaxEvent* event = enqueueEvent(*instance_, &pool_);
    if (event != nullptr) {
        locateEvent(*instance_, *event, &memo_);
        finishEvent(*event, kStartDocument, 0);
    }
    throw LumSAXException();
}

void LumContentHandler::startPrefixMapping(const XMLCh* const prefix, const XMLCh* const uri) {
    SaxEvent* event = enqueueEvent(*instance_, &pool_);
    if (event == nullptr) return;
    finishEvent(*event, kStartPrefixMapping, 2);
    event->arg1 = pool_.copyUnlessEmptyMarker(prefix);
    event->arg2 = pool_.copy(uri);
    locateEvent(*instance_, *event, &memo_);
}

void LumContentHandler::endPrefixMapping(const XMLCh* const prefix) {
    SaxEvent* event = enqueueEvent(*instance_, &pool_);
    if (event == nullptr) return;
    finishEvent(*event, kEndPrefixMapping, 1);
    event->arg1 = pool_.copy(prefix);
    locateEvent(*instance_, *event, &memo_);
}

void LumContentHandler::skippedEntity(const XMLCh* const) {
    // Deliberately an empty kind-0 event: no name, no arguments.
    if (inFirstPass(instance_)) return;
    queueEmptyEvent();
}

void LumContentHandler::queueEmptyEvent() {
    SaxEvent* event = enqueueEvent(*instance_, &pool_);
    if (event == nullptr) return;
    locateEvent(*instance_, *event, &memo_);
}

// ---- LumSAXDTDHandler -----------------------------------------------------

void LumSAXDTDHandler::notationDecl(const XMLCh* const name, const XMLCh* const publicId,
                                    const XMLCh* const systemId) {
    if (inFirstPass(instance_)) return;
    SaxEvent* event = enqueueEvent(*instance_);
    if (event == nullptr) return;
    finishEvent(*event, kNotationDecl, 3);
    event->arg1 = hostCopy(name);
    event->arg2 = hostCopy(publicId);
    event->arg3 = hostCopy(systemId);
    locateEvent(*instance_, *event, memo_);
}

void LumSAXDTDHandler::unparsedEntityDecl(const XMLCh* const name, const XMLCh* const publicId,
                                          const XMLCh* const systemId,
                                          const XMLCh* const notationName) {
    if (inFirstPass(instance_)) return;
    SaxEvent* event = enqueueEvent(*instance_);
    if (event == nullptr) return;
    finishEvent(*event, kUnparsedEntityDecl, 4);
    event->arg1 = hostCopy(name);
    event->arg2 = hostCopy(publicId);
    event->arg3 = hostCopy(systemId);
    event->arg4 = hostCopy(notationName);
    locateEvent(*instance_, *event, memo_);
}

// ---- LumSAXErrorHandler ---------------------------------------------------

void LumSAXErrorHandler::queueError(const SAXParseException& exc, uint32_t kind) {
    SaxEvent* event = enqueueEvent(*instance_);
    if (event == nullptr) return;
    finishEvent(*event, static_cast<EventKind>(kind), 1);
    event->arg1 = hostCopy(exc.getMessage());
    locateEvent(*instance_, *event, memo_);
}

void LumSAXErrorHandler::warning(const SAXParseException& exc) { queueError(exc, kWarning); }

void LumSAXErrorHandler::error(const SAXParseException& exc) { queueError(exc, kError); }

void LumSAXErrorHandler::fatalError(const SAXParseException& exc) {
    queueError(exc, kFatalError);
    // Xerces goes on after a fatal error (the reader is told not to stop at
    // the first one), but after the entity-expansion limit error it also
    // resets its expansion counter, so an exponential entity document would
    // then run on without bound. That error therefore ends the parse once
    // its event is queued.
    if (isExpansionLimitError(exc)) {
        endedAtLimit_ = true;
        throw EntityExpansionLimitStop();
    }
}

void LumSAXErrorHandler::stopAtLimit(const SAXParseException& exc) {
    queueError(exc, kFatalError);
    endedAtLimit_ = true;
    throw EntityExpansionLimitStop();
}

bool LumSAXErrorHandler::isExpansionLimitError(const SAXParseException& exc) const {
    auto* reader = static_cast<SAX2XMLReaderImpl*>(instance_->reader);
    if (reader == nullptr) return false;
    auto* manager =
        static_cast<SecurityManager*>(reader->getProperty(XMLUni::fgXercesSecurityManager));
    if (manager == nullptr) return false;
    return isLimitMessage(exc.getMessage(), manager->getEntityExpansionLimit());
}

}  // namespace lumxml
