#include "dom/load/text_gathering_parser.h"

#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/validators/DTD/DTDAttDef.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

void TextGatheringParser::flushText() {
    // Pending even when empty: a schema that collapses whitespace to nothing
    // hands over character data of length 0, and the stock parser makes an
    // empty text node of it.
    if (!pending_) return;
    // The text came in pieces: however long, it is not an item the scanner
    // built whole.
    ParseBudget::LargeBlocks textNode(budget_);
    XercesDOMParser::docCharacters(text_.data(), text_.size(), false);
    text_.clear();
    pending_ = false;
}

template <typename Source>
void TextGatheringParser::parseBudgeted(const Source& source) {
    ParseBudget::Scope scope(&budget_);
    budget_.setLocator(getScanner()->getLocator());
    try {
        parse(source);
    } catch (const ParseLimitStop& stop) {
        // Reported as the expansion limit of Xerces is: a fatal error, after
        // which the parse is over.
        if (ErrorHandler* handler = getErrorHandler()) handler->fatalError(asParseException(stop));
    }
}

void TextGatheringParser::parseGathering(const InputSource& source) {
    text_.clear();
    pending_ = false;
    parseBudgeted(source);
    flushText();
}

void TextGatheringParser::parseGathering(const XMLCh* systemId) {
    text_.clear();
    pending_ = false;
    parseBudgeted(systemId);
    flushText();
}

void TextGatheringParser::armBudget(uint64_t expansionLimit, uint64_t inputBytes) {
    budget_.arm(expansionLimit, inputBytes, getDoNamespaces());
    budget_.setReaders(getScanner()->getReaderMgr());
    budget_.setHeap(getMemoryManager());
}

void TextGatheringParser::docCharacters(const XMLCh* chars, XMLSize_t length,
                                        bool cdataSection) {
    if (cdataSection) {
        flushText();
        XercesDOMParser::docCharacters(chars, length, true);
        return;
    }
    text_.append(chars, length);
    pending_ = true;
}

void TextGatheringParser::docComment(const XMLCh* comment) {
    flushText();
    XercesDOMParser::docComment(comment);
}

void TextGatheringParser::docPI(const XMLCh* target, const XMLCh* data) {
    flushText();
    XercesDOMParser::docPI(target, data);
}

void TextGatheringParser::endDocument() {
    flushText();
    XercesDOMParser::endDocument();
}

void TextGatheringParser::endElement(const XMLElementDecl& elemDecl, unsigned int urlId,
                                     bool isRoot, const XMLCh* elemPrefix) {
    flushText();
    budget_.elementEnded();
    XercesDOMParser::endElement(elemDecl, urlId, isRoot, elemPrefix);
}

void TextGatheringParser::endEntityReference(const XMLEntityDecl& entDecl) {
    flushText();
    XercesDOMParser::endEntityReference(entDecl);
}

void TextGatheringParser::ignorableWhitespace(const XMLCh* chars, XMLSize_t length,
                                              bool cdataSection) {
    flushText();
    XercesDOMParser::ignorableWhitespace(chars, length, cdataSection);
}

void TextGatheringParser::notationDecl(const XMLNotationDecl& notDecl, bool isIgnored) {
    // Each becomes a notation node of the document type.
    if (budget_.armed()) budget_.nameUsed(notDecl.getName());
    XercesDOMParser::notationDecl(notDecl, isIgnored);
}

void TextGatheringParser::resetDocument() {
    text_.clear();
    pending_ = false;
    prefixedDefaults_.clear();
    XercesDOMParser::resetDocument();
}

void TextGatheringParser::startDocument() {
    text_.clear();
    pending_ = false;
    prefixedDefaults_.clear();
    XercesDOMParser::startDocument();
}

void TextGatheringParser::startElement(const XMLElementDecl& elemDecl, unsigned int urlId,
                                       const XMLCh* elemPrefix,
                                       const RefVectorOf<XMLAttr>& attrList,
                                       XMLSize_t attrCount, bool isEmpty, bool isRoot) {
    flushText();
    if (budget_.armed()) {
        budget_.elementStarted(attrList, attrCount);
        countNames(elemDecl, urlId, attrList, attrCount);
    }
    if (!buildsOwnAttributes(elemDecl, attrCount)) {
        XercesDOMParser::startElement(elemDecl, urlId, elemPrefix, attrList, attrCount, isEmpty,
                                      isRoot);
        return;
    }
    // The stock builder makes the element and its document-type defaults;
    // the scanner's attributes are added here. An empty element then ends
    // as the stock builder ends it.
    XercesDOMParser::startElement(elemDecl, urlId, elemPrefix, attrList, 0, false, isRoot);
    addAttributes(attrList, attrCount);
    if (isEmpty) endElement(elemDecl, urlId, isRoot, elemPrefix);
}

void TextGatheringParser::startEntityReference(const XMLEntityDecl& entDecl) {
    flushText();
    if (budget_.armed()) budget_.contentReferenceStarted(entDecl.getValueLen());
    XercesDOMParser::startEntityReference(entDecl);
}

void TextGatheringParser::startIntSubset() {
    budget_.enterDtd();
    XercesDOMParser::startIntSubset();
}

void TextGatheringParser::endIntSubset() {
    budget_.leaveDtd();
    XercesDOMParser::endIntSubset();
}

void TextGatheringParser::startExtSubset() {
    budget_.enterDtd();
    XercesDOMParser::startExtSubset();
}

void TextGatheringParser::endExtSubset() {
    budget_.leaveDtd();
    XercesDOMParser::endExtSubset();
}

void TextGatheringParser::attDef(const DTDElementDecl& elemDecl, const DTDAttDef& attDef,
                          const bool ignoring) {
    if (budget_.armed()) budget_.attributesDefined(elemDecl.getAttDefList().getAttDefCount());
    XercesDOMParser::attDef(elemDecl, attDef, ignoring);
}

void TextGatheringParser::countNames(const XMLElementDecl& elemDecl, unsigned int urlId,
                                     const RefVectorOf<XMLAttr>& attrList, XMLSize_t attrCount) {
    // The DOM pools the qualified names and, with namespaces on, the URIs.
    const bool namespaces = getDoNamespaces();
    const XMLScanner* scanner = getScanner();
    budget_.elementUsed(&elemDecl, elemDecl.getFullName());
    if (namespaces) budget_.uriUsed(urlId, scanner->getURIText(urlId));
    for (XMLSize_t i = 0; i < attrCount; ++i) {
        const XMLAttr* attribute = attrList.elementAt(i);
        budget_.nameUsed(attribute->getQName());
        if (namespaces) {
            const unsigned int uriId = attribute->getURIId();
            budget_.uriUsed(uriId, scanner->getURIText(uriId));
        }
    }
}

void TextGatheringParser::entityDecl(const DTDEntityDecl& entityDecl, bool isPEDecl,
                                     bool isIgnored) {
    if (!entityDecl.isExternal()) budget_.entityDeclared(entityDecl.getValueLen());
    // Each becomes an entity node of the document type.
    if (budget_.armed()) budget_.nameUsed(entityDecl.getName());
    XercesDOMParser::entityDecl(entityDecl, isPEDecl, isIgnored);
}

void TextGatheringParser::handleElementPSVI(const XMLCh* localName, const XMLCh* uri,
                                            PSVIElement* elementInfo) {
    flushText();
    XercesDOMParser::handleElementPSVI(localName, uri, elementInfo);
}

void TextGatheringParser::handlePartialElementPSVI(const XMLCh* localName, const XMLCh* uri,
                                                   PSVIElement* elementInfo) {
    flushText();
    XercesDOMParser::handlePartialElementPSVI(localName, uri, elementInfo);
}

void TextGatheringParser::handleAttributesPSVI(const XMLCh* localName, const XMLCh* uri,
                                               PSVIAttributeList* psviAttributes) {
    flushText();
    XercesDOMParser::handleAttributesPSVI(localName, uri, psviAttributes);
}

}  // namespace lumxml
