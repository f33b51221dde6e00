// The one-shot validation's Xerces parser: SAXParser with the limits of a
// hardened parse (frame/parse_budget.h), as the pull reader has them.
// Unarmed (no expansion limit) it only passes every call on.
#pragma once

#include <cstdint>

#include <xercesc/parsers/SAXParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>

#include "sax/budget_hooks.h"

namespace lumxml {

class HardenedValidator : public BudgetHooks<xercesc::SAXParser> {
public:
    explicit HardenedValidator(xercesc::MemoryManager* manager);

    // Arms the limits for the parse that follows; set namespaces first.
    void armBudget(uint64_t expansionLimit, uint64_t inputBytes);

    // Parses the file; a limit that is hit is the error handler's fatal
    // error, after which the parse is over (as Xerces' own limit ends it).
    void parseBudgeted(const XMLCh* systemId);

private:
    // SAXParser hands the scanner's callbacks to itself (and so to the
    // budget) only while a document handler and a DTD handler are set:
    // these do nothing.
    xercesc::HandlerBase silent_;
};

}  // namespace lumxml
