#include "sax/hardened_validator.h"

#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/ErrorHandler.hpp>

namespace lumxml {

using namespace xercesc;

HardenedValidator::HardenedValidator(MemoryManager* manager) : BudgetHooks(nullptr, manager) {
    budget_.setHeap(manager);
}

void HardenedValidator::armBudget(uint64_t expansionLimit, uint64_t inputBytes) {
    setDocumentHandler(&silent_);
    setDTDHandler(&silent_);
    budget_.arm(expansionLimit, inputBytes, getDoNamespaces());
    budget_.setReaders(getScanner().getReaderMgr());
    budget_.setLocator(getScanner().getLocator());
}

void HardenedValidator::parseBudgeted(const XMLCh* systemId) {
    ParseBudget::Scope scope(&budget_);
    try {
        parse(systemId);
    } catch (const ParseLimitStop& stop) {
        if (ErrorHandler* handler = getErrorHandler()) handler->fatalError(asParseException(stop));
    }
}

}  // namespace lumxml
