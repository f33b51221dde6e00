// The DOM parser behind lumDocLoad: a XercesDOMParser that hands each run
// of character data to the tree in one piece.
//
// Xerces' scanner delivers a text node's characters in pieces (one before
// and one after every entity or character reference, and one per filled
// scanner buffer), and the stock parser appends each piece to the text
// node, growing its buffer in the document heap step by step. Every step
// releases the old buffer, and DOMDocument's heap finds a buffer to release
// by walking its list of large blocks, which holds one entry per large text
// node made so far: text dense with references loads in quadratic time and
// leaves every outgrown buffer behind in the heap. Gathering the pieces here
// and handing the whole run over once gives the same tree (Xerces itself
// merges consecutive pieces into one text node) with one buffer of the
// right size.
#pragma once

#include <string>
#include <unordered_map>

#include <xercesc/parsers/XercesDOMParser.hpp>

#include "frame/parse_budget.h"

namespace lumxml {

class TextGatheringParser final : public XERCES_CPP_NAMESPACE::XercesDOMParser {
public:
    using XercesDOMParser::XercesDOMParser;

    // An element with this many attributes or more is wide: lumxml adds
    // its attributes itself, through hash tables (element_attributes.cpp).
    static constexpr XMLSize_t kWideElement = 32;

    // XercesDOMParser::parse, then the last gathered run into the tree: a
    // fatal error ends a parse without any further event, and the stock
    // parser would have appended the text it had seen before the error.
    void parseGathering(const XERCES_CPP_NAMESPACE::InputSource& source);
    void parseGathering(const XMLCh* systemId);

    // The limits of a hardened parse (frame/parse_budget.h), for the parses
    // that follow; set the namespace option first. A limit that is hit is
    // reported to the error handler as a fatal error and ends the parse.
    void armBudget(uint64_t expansionLimit, uint64_t inputBytes);

    // Character data outside CDATA sections is gathered; everything else
    // first hands the gathered run over, then does what the stock parser
    // does.
    void docCharacters(const XMLCh* chars, XMLSize_t length, bool cdataSection) override;
    void docComment(const XMLCh* comment) override;
    void docPI(const XMLCh* target, const XMLCh* data) override;
    void endDocument() override;
    void endElement(const XERCES_CPP_NAMESPACE::XMLElementDecl& elemDecl, unsigned int urlId,
                    bool isRoot, const XMLCh* elemPrefix) override;
    void endEntityReference(const XERCES_CPP_NAMESPACE::XMLEntityDecl& entDecl) override;
    void ignorableWhitespace(const XMLCh* chars, XMLSize_t length, bool cdataSection) override;
    void resetDocument() override;
    void startDocument() override;
    void startElement(const XERCES_CPP_NAMESPACE::XMLElementDecl& elemDecl, unsigned int urlId,
                      const XMLCh* elemPrefix,
                      const XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>& attrList,
                      XMLSize_t attrCount, bool isEmpty, bool isRoot) override;
    void startEntityReference(const XERCES_CPP_NAMESPACE::XMLEntityDecl& entDecl) override;
    // Only tell the budget where the document type declaration starts and
    // ends and how long the entities it declares are.
    void startIntSubset() override;
    void endIntSubset() override;
    void startExtSubset() override;
    void endExtSubset() override;
    void attDef(const XERCES_CPP_NAMESPACE::DTDElementDecl& elemDecl,
                const XERCES_CPP_NAMESPACE::DTDAttDef& attDef,
                const bool ignoring) override;
    void entityDecl(const XERCES_CPP_NAMESPACE::DTDEntityDecl& entityDecl, bool isPEDecl,
                    bool isIgnored) override;
    void notationDecl(const XERCES_CPP_NAMESPACE::XMLNotationDecl& notDecl,
                      bool isIgnored) override;
    void handleElementPSVI(const XMLCh* localName, const XMLCh* uri,
                           XERCES_CPP_NAMESPACE::PSVIElement* elementInfo) override;
    void handlePartialElementPSVI(const XMLCh* localName, const XMLCh* uri,
                                  XERCES_CPP_NAMESPACE::PSVIElement* elementInfo) override;
    void handleAttributesPSVI(const XMLCh* localName, const XMLCh* uri,
                              XERCES_CPP_NAMESPACE::PSVIAttributeList* psviAttributes) override;

private:
    // Hands the gathered run to the tree as the stock parser's one call.
    void flushText();
    // Tells the budget the names and URIs the element's nodes will pool.
    void countNames(const XERCES_CPP_NAMESPACE::XMLElementDecl& elemDecl, unsigned int urlId,
                    const XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>& attrList,
                    XMLSize_t attrCount);
    // Elements whose attributes lumxml adds itself (element_attributes.cpp):
    // wide ones, and with namespaces on those whose type has DTD defaults.
    bool buildsOwnAttributes(const XERCES_CPP_NAMESPACE::XMLElementDecl& elemDecl,
                             XMLSize_t attrCount);
    bool hasPrefixedDefault(const XERCES_CPP_NAMESPACE::XMLElementDecl& elemDecl);
    XERCES_CPP_NAMESPACE::DOMNode* makeAttribute(const XERCES_CPP_NAMESPACE::XMLAttr& scanned);
    // The scanner's attributes onto the element just started.
    void addAttributes(const XERCES_CPP_NAMESPACE::RefVectorOf<XERCES_CPP_NAMESPACE::XMLAttr>& attrList,
                       XMLSize_t attrCount);
    // XercesDOMParser::parse under the budget.
    template <typename Source>
    void parseBudgeted(const Source& source);

    std::basic_string<XMLCh> text_;
    bool pending_ = false;  // character data seen since the last hand-over
    ParseBudget budget_;
    // Per element type of the parse: whether it has a prefixed default.
    std::unordered_map<const void*, bool> prefixedDefaults_;

};

}  // namespace lumxml
