#include "sax/hardened_reader.h"

#include <xercesc/framework/XMLValidator.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "sax/sax_handlers.h"

namespace lumxml {

using namespace xercesc;

namespace {

// The scanner's reader manager, whose depth is the entities' nesting. The
// stock reader keeps its scanner private; the scanner's validator knows the
// manager through a getter protected in XMLValidator, named here through a
// derived class (a pointer to a member of XMLValidator, callable on any).
struct ValidatorReaders : XMLValidator {
    static const ReaderMgr* of(XMLValidator* validator) {
        if (validator == nullptr) return nullptr;
        ReaderMgr* (XMLValidator::*readers)() = &ValidatorReaders::getReaderMgr;
        return (validator->*readers)();
    }
};

const ReaderMgr* scannerReaders(XMLValidator* validator) { return ValidatorReaders::of(validator); }

}  // namespace

HardenedReader::HardenedReader(MemoryManager* manager) : BudgetHooks(manager) {
    budget_.setHeap(manager);
}

void HardenedReader::armBudget(uint64_t expansionLimit, uint64_t inputBytes,
                               const SaxParserInstance* instance) {
    instance_ = instance;
    budget_.setStopHandler(&HardenedReader::reportStop, this);
    budget_.arm(expansionLimit, inputBytes, getFeature(XMLUni::fgSAX2CoreNameSpaces));
    budget_.setReaders(scannerReaders(getValidator()));
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
    if (instance_ != nullptr) budget_.setLocator(static_cast<const Locator*>(instance_->locator));
}

}  // namespace lumxml
