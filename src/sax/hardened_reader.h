// The pull reader's Xerces reader: SAX2XMLReaderImpl with the limits of a
// hardened parse (frame/parse_budget.h). Unarmed (no expansion limit) it
// only passes every call on.
#pragma once

#include <cstdint>

#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>

#include "frame/parse_budget.h"
#include "sax/budget_hooks.h"
#include "lumxml.h"

namespace lumxml {

class HardenedReader : public BudgetHooks<xercesc::SAX2XMLReaderImpl> {
public:
    explicit HardenedReader(xercesc::MemoryManager* manager);

    // Arms the limits for the parse that follows; set the namespace
    // feature first. `instance` is the record whose locator locates a stop.
    void armBudget(uint64_t expansionLimit, uint64_t inputBytes, const SaxParserInstance* instance);

    // A limit that is hit becomes a "FatalError" event and ends the parse
    // as the expansion limit of Xerces does (EntityExpansionLimitStop).
    bool parseFirst(const XMLCh* const systemId, xercesc::XMLPScanToken& toFill) override;
    bool parseFirst(const char* const systemId, xercesc::XMLPScanToken& toFill) override;
    bool parseFirst(const xercesc::InputSource& source, xercesc::XMLPScanToken& toFill) override;
    bool parseNext(xercesc::XMLPScanToken& token) override;

    // The budget learns where a stop is.
    void startDocument() override;

private:
    template <typename Step>
    bool budgeted(Step step);
    static void reportStop(void* context, const ParseLimitStop& stop);

    const SaxParserInstance* instance_ = nullptr;
};

}  // namespace lumxml
