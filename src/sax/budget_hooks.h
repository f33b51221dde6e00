// The callbacks through which a Xerces SAX parser tells a hardened parse's
// budget (frame/parse_budget.h) what it meets, for the pull reader's
// SAX2XMLReaderImpl and the one-shot validation's SAXParser alike: each
// tells the budget, then does what the stock parser does. Unarmed, the
// budget ignores them.
#pragma once

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLElementDecl.hpp>
#include <xercesc/framework/XMLEntityDecl.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/validators/DTD/DTDAttDef.hpp>
#include <xercesc/validators/DTD/DTDElementDecl.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "frame/parse_budget.h"

namespace lumxml {

template <class StockParser>
class BudgetHooks : public StockParser {
public:
    using StockParser::StockParser;

    void startElement(const xercesc::XMLElementDecl& elemDecl, const unsigned int urlId,
                      const XMLCh* const elemPrefix,
                      const xercesc::RefVectorOf<xercesc::XMLAttr>& attrList,
                      const XMLSize_t attrCount, const bool isEmpty, const bool isRoot) override {
        // An empty element gets no endElement call here.
        if (budget_.armed()) {
            budget_.elementStarted(attrList, attrCount, !isEmpty);
            // The scanner keeps a declaration of about 500 bytes for every
            // element name it meets.
            budget_.elementUsed(&elemDecl, elemDecl.getFullName());
        }
        StockParser::startElement(elemDecl, urlId, elemPrefix, attrList, attrCount, isEmpty,
                                  isRoot);
    }

    void endElement(const xercesc::XMLElementDecl& elemDecl, const unsigned int urlId,
                    const bool isRoot, const XMLCh* const elemPrefix) override {
        budget_.elementEnded();
        StockParser::endElement(elemDecl, urlId, isRoot, elemPrefix);
    }

    void startEntityReference(const xercesc::XMLEntityDecl& entityDecl) override {
        if (budget_.armed()) budget_.contentReferenceStarted(entityDecl.getValueLen());
        StockParser::startEntityReference(entityDecl);
    }

    void startIntSubset() override {
        budget_.enterDtd();
        StockParser::startIntSubset();
    }

    void endIntSubset() override {
        budget_.leaveDtd();
        StockParser::endIntSubset();
    }

    void startExtSubset() override {
        budget_.enterDtd();
        StockParser::startExtSubset();
    }

    void endExtSubset() override {
        budget_.leaveDtd();
        StockParser::endExtSubset();
    }

    void attDef(const xercesc::DTDElementDecl& elemDecl, const xercesc::DTDAttDef& attDef,
                const bool ignoring) override {
        if (budget_.armed()) budget_.attributesDefined(elemDecl.getAttDefList().getAttDefCount());
        StockParser::attDef(elemDecl, attDef, ignoring);
    }

    void entityDecl(const xercesc::DTDEntityDecl& entityDecl, const bool isPEDecl,
                    const bool isIgnored) override {
        if (!entityDecl.isExternal()) budget_.entityDeclared(entityDecl.getValueLen());
        StockParser::entityDecl(entityDecl, isPEDecl, isIgnored);
    }

protected:
    ParseBudget budget_;
};

}  // namespace lumxml
