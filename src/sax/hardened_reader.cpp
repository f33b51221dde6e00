#include "sax/hardened_reader.h"

#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDAttDef.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "sax/sax_handlers.h"

namespace lumxml {

using namespace xercesc;

HardenedReader::HardenedReader(MemoryManager* manager) : SAX2XMLReaderImpl(manager) {
    budget_.setHeap(manager);
}

void HardenedReader::armBudget(uint64_t expansionLimit, uint64_t inputBytes,
                               const SaxParserInstance* instance) {
    instance_ = instance;
    budget_.setStopHandler(&HardenedReader::reportStop, this);
    budget_.arm(expansionLimit, inputBytes, getFeature(XMLUni::fgSAX2CoreNameSpaces));
}

// The event is queued where the stop is thrown: once the exception has
// left the scanner, its locator no longer knows where the parse was.
void HardenedReader::reportStop(void* context, const ParseLimitStop& stop) {
    auto* reader = static_cast<HardenedReader*>(context);
    reader->budget_.disarm();
    if (auto* handler = dynamic_cast<LumSAXErrorHandler*>(reader->getErrorHandler()))
        handler->stopAtLimit(asParseException(stop));
}

template <typename Step>
bool HardenedReader::budgeted(Step step) {
    if (!budget_.armed()) return step();
    ParseBudget::Scope scope(&budget_);
    try {
        return step();
    } catch (const ParseLimitStop&) {
        // No handler of lumxml's to report to: end the parse all the same.
        throw EntityExpansionLimitStop();
    }
}

bool HardenedReader::parseFirst(const XMLCh* const systemId, XMLPScanToken& toFill) {
    return budgeted([&] { return SAX2XMLReaderImpl::parseFirst(systemId, toFill); });
}

bool HardenedReader::parseFirst(const char* const systemId, XMLPScanToken& toFill) {
    return budgeted([&] { return SAX2XMLReaderImpl::parseFirst(systemId, toFill); });
}

bool HardenedReader::parseFirst(const InputSource& source, XMLPScanToken& toFill) {
    return budgeted([&] { return SAX2XMLReaderImpl::parseFirst(source, toFill); });
}

bool HardenedReader::parseNext(XMLPScanToken& token) {
    return budgeted([&] { return SAX2XMLReaderImpl::parseNext(token); });
}

void HardenedReader::startDocument() {
    SAX2XMLReaderImpl::startDocument();
    // The stock reader has just handed its locator to the content handler.
    if (instance_ == nullptr) return;
    const auto* locator = static_cast<const Locator*>(instance_->locator);
    budget_.setLocator(locator);
    // That locator is the scanner's reader manager (the scanner itself is
    // private to the stock reader).
    budget_.setReaders(dynamic_cast<const ReaderMgr*>(locator));
}

void HardenedReader::startElement(const XMLElementDecl& elemDecl, const unsigned int urlId,
                                  const XMLCh* const elemPrefix,
                                  const RefVectorOf<XMLAttr>& attrList, const XMLSize_t attrCount,
                                  const bool isEmpty, const bool isRoot) {
    // An empty element gets no endElement call here.
    if (budget_.armed()) {
        budget_.elementStarted(attrList, attrCount, !isEmpty);
        // The scanner keeps a declaration of about 500 bytes for every
        // element name it meets.
        budget_.nameUsed(elemDecl.getFullName());
    }
    SAX2XMLReaderImpl::startElement(elemDecl, urlId, elemPrefix, attrList, attrCount, isEmpty,
                                    isRoot);
}

void HardenedReader::endElement(const XMLElementDecl& elemDecl, const unsigned int urlId,
                                const bool isRoot, const XMLCh* const elemPrefix) {
    budget_.elementEnded();
    SAX2XMLReaderImpl::endElement(elemDecl, urlId, isRoot, elemPrefix);
}

void HardenedReader::startEntityReference(const XMLEntityDecl& entityDecl) {
    if (budget_.armed()) budget_.contentReferenceStarted(entityDecl.getValueLen());
    SAX2XMLReaderImpl::startEntityReference(entityDecl);
}

void HardenedReader::startIntSubset() {
    budget_.enterDtd();
    SAX2XMLReaderImpl::startIntSubset();
}

void HardenedReader::endIntSubset() {
    budget_.leaveDtd();
    SAX2XMLReaderImpl::endIntSubset();
}

void HardenedReader::startExtSubset() {
    budget_.enterDtd();
    SAX2XMLReaderImpl::startExtSubset();
}

void HardenedReader::endExtSubset() {
    budget_.leaveDtd();
    SAX2XMLReaderImpl::endExtSubset();
}

void HardenedReader::attDef(const DTDElementDecl& elemDecl, const DTDAttDef& attDef,
                          const bool ignoring) {
    if (budget_.armed()) budget_.attributesDefined(elemDecl.getAttDefList().getAttDefCount());
    SAX2XMLReaderImpl::attDef(elemDecl, attDef, ignoring);
}

void HardenedReader::entityDecl(const DTDEntityDecl& entityDecl, const bool isPEDecl,
                                const bool isIgnored) {
    if (!entityDecl.isExternal()) budget_.entityDeclared(entityDecl.getValueLen());
    SAX2XMLReaderImpl::entityDecl(entityDecl, isPEDecl, isIgnored);
}

}  // namespace lumxml
