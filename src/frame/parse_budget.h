// The limits a hardened parse (one with an entity-expansion limit) adds to
// Xerces' own count of general-entity expansions:
//
// - Expansions inside the document type declaration (parameter entities,
//   and general entities in default attribute values), which Xerces never
//   counts, are counted against the same limit.
// - Characters produced by entity expansions (content, attribute values,
//   the DTD) may not exceed the larger of kAmplificationThreshold and
//   kAmplificationFactor times the size of the document handed over.
// - With namespaces on, elements may not nest deeper than kMaxDepth (Xerces'
//   namespace scopes make each level cost as much as the depth).
// - An element type may declare at most kMaxAttributeDefinitions attributes
//   (the DOM builds each element's defaults in time quadratic in their
//   number), and every attribute a DTD default adds to an element counts
//   against the character limit with its name, its value and
//   kDefaultedAttributeCharge characters for its node.
// - A DOM may hold at most kMaxDistinctNames distinct names and namespace
//   URIs (of elements, attributes, declared entities and notations): Xerces'
//   DOM keeps every one in a pool of 257 chains, so each new one costs as
//   much as those before it, and adds each entity and notation to its
//   document type's map by a linear search.
//   A pull reader counts element names only: the scanner keeps a
//   declaration for each one it meets.
// - Entity references may not nest deeper than kMaxEntityDepth: every
//   level keeps a reader of about 16 KB open, and a DOM's entity-reference
//   nodes cost more than the square of the depth (a chain of 10^4 entities,
//   each referring to the one before, took 4.8 GB and more than a minute).
// - No item the scanner builds whole (a name, an attribute value, a comment,
//   a processing instruction, a CDATA section, an entity value) may grow
//   past kMaxItemCharacters: Xerces holds four or five copies of such an
//   item at once, about 9 bytes per character. The heap (owned_heap.cpp)
//   reports every block bigger than kMaxItemBlockBytes, which is what the
//   scanner's doubling buffer asks for once it must hold more than
//   kMaxItemCharacters characters. The check is made when a buffer grows, so
//   an item of up to twice the limit may pass when an earlier item already
//   grew the buffer; the cost stays bounded all the same. Text content is
//   handed over in pieces and has no such limit: a DOM's text node is made
//   with large blocks allowed (LargeBlocks).
//
// Xerces has no hook for entity expansions: every expansion makes a new
// reader, and every reader asks the transcoding service once whether it
// supports source offsets (frame/guarded_trans_service.cpp), which reports
// it here. Each reader is charged the longest replacement text declared so
// far; a reader for a general entity in content is then charged its
// entity's own length instead when the parser announces the reference.
// Charges are therefore an upper bound of the characters produced.
//
// A limit that is hit throws ParseLimitStop; the parser that armed the
// budget catches it and reports a fatal error with its message.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_set>

#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/internal/ReaderMgr.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/RefVectorOf.hpp>
#include <xercesc/sax/SAXParseException.hpp>

namespace lumxml {

// Ends a parse at one of the budget's limits.
struct ParseLimitStop {
    std::string message;
    std::u16string systemId;
    std::u16string publicId;
    uint64_t line = 0;
    uint64_t column = 0;
};

// The stop as the fatal error an error handler receives.
xercesc::SAXParseException asParseException(const ParseLimitStop& stop);

class ParseBudget {
public:
    static constexpr uint64_t kAmplificationThreshold = 8u * 1024u * 1024u;  // characters
    static constexpr uint64_t kAmplificationFactor = 10;
    static constexpr uint64_t kMaxDepth = 10000;
    static constexpr uint64_t kMaxAttributeDefinitions = 256;
    static constexpr uint64_t kDefaultedAttributeCharge = 16;
    static constexpr uint64_t kMaxDistinctNames = 20000;
    static constexpr uint64_t kMaxEntityDepth = 64;
    static constexpr uint64_t kMaxItemCharacters = 16u * 1024u * 1024u;
    // Xerces' XMLBuffer asks for (2n + 1) * 2 bytes when it must hold n
    // characters: a bigger block means more than kMaxItemCharacters.
    static constexpr size_t kMaxItemBlockBytes = 4 * kMaxItemCharacters + 2;

    // A budget does nothing until it is armed.
    void arm(uint64_t expansionLimit, uint64_t inputBytes, bool limitDepth);
    void disarm() { armed_ = false; }
    bool armed() const { return armed_; }
    // Where a stop is located (the scanner's locator; may be null).
    void setLocator(const xercesc::Locator* locator) { locator_ = locator; }
    // The scanner's readers, whose depth is the entities' nesting.
    void setReaders(const xercesc::ReaderMgr* readers) { readers_ = readers; }
    // The heap the parse allocates from: only its large blocks are checked
    // (a host callback during the parse may work on other documents).
    void setHeap(const xercesc::MemoryManager* heap) { heap_ = heap; }
    // Called with a stop before it is thrown, while the scanner still knows
    // where it is; it may throw an exception of its own instead.
    using StopHandler = void (*)(void* context, const ParseLimitStop& stop);
    void setStopHandler(StopHandler handler, void* context) {
        stopHandler_ = handler;
        stopContext_ = context;
    }

    // Hooks, called from the parser's handlers. Each may throw ParseLimitStop.
    void readerMade();
    void enterDtd() { inDtd_ = true; }
    void leaveDtd() { inDtd_ = false; }
    void entityDeclared(uint64_t valueLength);
    void contentReferenceStarted(uint64_t valueLength);
    // An element starts with the scanner's attribute list (defaults
    // included); `closes` is false for an empty element whose end is not
    // reported.
    void elementStarted(const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                        XMLSize_t count, bool counted = true);
    void attributesDefined(uint64_t count);
    // A name or namespace URI a DOM node is given, or an element name the
    // scanner meets.
    void nameUsed(const XMLCh* name);
    // The same for an element's name, looked up by its declaration (one per
    // name in the scanner's pools), and for a namespace URI, by the
    // scanner's id of it: a name or URI met before costs no string hash.
    void elementUsed(const void* declaration, const XMLCh* name);
    void uriUsed(unsigned int uriId, const XMLCh* uri);
    void elementEnded() {
        if (depth_ != 0) --depth_;
    }

    // Makes `budget` the one readers of this thread report to while it
    // lives (the previous one afterwards); null budgets and unarmed ones
    // are not installed.
    class Scope {
    public:
        explicit Scope(ParseBudget* budget);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        ParseBudget* previous_;
        bool installed_;
    };

    // For the transcoding service: a reader was made on this thread.
    static void noteReaderMade();
    // For the heap: `heap` is asked for a block of more than
    // kMaxItemBlockBytes on this thread. May throw ParseLimitStop.
    static void noteLargeBlock(const xercesc::MemoryManager* heap);

    // While one lives, the budget lets large blocks through (a DOM's text
    // node, whose text came in pieces).
    class LargeBlocks {
    public:
        explicit LargeBlocks(ParseBudget& budget) : budget_(budget), before_(budget.largeBlocks_) {
            budget_.largeBlocks_ = true;
        }
        ~LargeBlocks() { budget_.largeBlocks_ = before_; }
        LargeBlocks(const LargeBlocks&) = delete;
        LargeBlocks& operator=(const LargeBlocks&) = delete;

    private:
        ParseBudget& budget_;
        bool before_;
    };

private:
    [[noreturn]] void stop(std::string message) const;
    void charge(uint64_t characters);
    void largeBlockRequested(const xercesc::MemoryManager* heap);

    bool armed_ = false;
    bool limitDepth_ = false;
    bool inDtd_ = false;
    bool largeBlocks_ = false;
    uint64_t expansionLimit_ = 0;
    uint64_t characterBudget_ = 0;
    uint64_t dtdExpansions_ = 0;
    uint64_t characters_ = 0;
    uint64_t longestValue_ = 0;
    uint64_t depth_ = 0;
    std::unordered_set<std::u16string> names_;
    std::u16string scratch_;
    std::unordered_set<const void*> declarations_;
    std::unordered_set<unsigned int> uris_;
    const xercesc::Locator* locator_ = nullptr;
    const xercesc::ReaderMgr* readers_ = nullptr;
    const xercesc::MemoryManager* heap_ = nullptr;
    StopHandler stopHandler_ = nullptr;
    void* stopContext_ = nullptr;
};

}  // namespace lumxml
