#include "frame/parse_budget.h"

#include <xercesc/util/XMLString.hpp>

namespace lumxml {

namespace {

thread_local ParseBudget* current = nullptr;

std::u16string copyOf(const XMLCh* text) {
    return text != nullptr ? std::u16string(text) : std::u16string();
}

}  // namespace

xercesc::SAXParseException asParseException(const ParseLimitStop& stop) {
    // The messages are ASCII.
    const std::basic_string<XMLCh> message(stop.message.begin(), stop.message.end());
    return xercesc::SAXParseException(message.c_str(), stop.publicId.c_str(),
                                      stop.systemId.c_str(), stop.line, stop.column);
}

void ParseBudget::arm(uint64_t expansionLimit, uint64_t inputBytes, bool limitDepth) {
    armed_ = true;
    limitDepth_ = limitDepth;
    inDtd_ = false;
    largeBlocks_ = false;
    expansionLimit_ = expansionLimit;
    const uint64_t scaled = inputBytes * kAmplificationFactor;
    characterBudget_ = scaled > kAmplificationThreshold ? scaled : kAmplificationThreshold;
    dtdExpansions_ = 0;
    characters_ = 0;
    longestValue_ = 0;
    depth_ = 0;
    names_.clear();
    declarations_.clear();
    uris_.clear();
}

void ParseBudget::stop(std::string message) const {
    ParseLimitStop stop;
    stop.message = std::move(message);
    if (locator_ != nullptr) {
        stop.systemId = copyOf(locator_->getSystemId());
        stop.publicId = copyOf(locator_->getPublicId());
        stop.line = locator_->getLineNumber();
        stop.column = locator_->getColumnNumber();
    }
    if (stopHandler_ != nullptr) stopHandler_(stopContext_, stop);
    throw stop;
}

void ParseBudget::charge(uint64_t characters) {
    characters_ += characters;
    if (characters_ > characterBudget_)
        stop("entity expansions in the document produce more than '" +
             std::to_string(characterBudget_) +
             "' characters; this is the amplification limit imposed by the application");
}

void ParseBudget::readerMade() {
    if (!armed_) return;  // stopped: the parse is unwinding
    // The readers open besides the document's own are the entities the new
    // one nests in (the external subset counts as one).
    if (readers_ != nullptr && readers_->getReaderDepth() > kMaxEntityDepth)
        stop("entity references in the document are nested more than '" +
             std::to_string(kMaxEntityDepth) +
             "' deep; this is the entity nesting limit imposed by the application");
    if (inDtd_ && ++dtdExpansions_ > expansionLimit_)
        stop("parser has encountered more than '" + std::to_string(expansionLimit_) +
             "' parameter entity expansions in the document; this is the limit imposed by "
             "the application");
    charge(longestValue_);
}

void ParseBudget::entityDeclared(uint64_t valueLength) {
    if (valueLength > longestValue_) longestValue_ = valueLength;
}

void ParseBudget::contentReferenceStarted(uint64_t valueLength) {
    // The reader of this reference was charged the longest value.
    const uint64_t refund = longestValue_ - (valueLength < longestValue_ ? valueLength : longestValue_);
    characters_ = characters_ > refund ? characters_ - refund : 0;
}

void ParseBudget::elementStarted(const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                                 XMLSize_t count, bool counted) {
    for (XMLSize_t i = 0; i < count; ++i) {
        const xercesc::XMLAttr* attribute = attributes.elementAt(i);
        if (attribute->getSpecified()) continue;
        charge(xercesc::XMLString::stringLen(attribute->getQName()) +
               xercesc::XMLString::stringLen(attribute->getValue()) + kDefaultedAttributeCharge);
    }
    if (!counted) return;
    if (++depth_ > kMaxDepth && limitDepth_)
        stop("elements in the document are nested more than '" + std::to_string(kMaxDepth) +
             "' deep; this is the nesting limit imposed by the application");
}

void ParseBudget::attributesDefined(uint64_t count) {
    if (count > kMaxAttributeDefinitions)
        stop("an element type in the document declares more than '" +
             std::to_string(kMaxAttributeDefinitions) +
             "' attributes; this is the limit imposed by the application");
}

void ParseBudget::nameUsed(const XMLCh* name) {
    // No namespace is no URI: nothing is pooled for it.
    if (name == nullptr || *name == 0) return;
    // The scratch copy keeps its room: a name seen before costs no allocation.
    scratch_.assign(name);
    if (names_.count(scratch_) != 0) return;
    if (names_.size() >= kMaxDistinctNames)
        stop("the document uses more than '" + std::to_string(kMaxDistinctNames) +
             "' distinct names and namespace URIs; this is the limit imposed by the "
             "application");
    names_.insert(scratch_);
}

void ParseBudget::elementUsed(const void* declaration, const XMLCh* name) {
    if (declarations_.insert(declaration).second) nameUsed(name);
}

void ParseBudget::uriUsed(unsigned int uriId, const XMLCh* uri) {
    if (uris_.insert(uriId).second) nameUsed(uri);
}

ParseBudget::Scope::Scope(ParseBudget* budget)
    : previous_(nullptr), installed_(budget != nullptr && budget->armed()) {
    // An unarmed parse does not touch the thread's slot at all.
    if (!installed_) return;
    previous_ = current;
    current = budget;
}

ParseBudget::Scope::~Scope() {
    if (installed_) current = previous_;
}

void ParseBudget::noteReaderMade() {
    if (current != nullptr) current->readerMade();
}

void ParseBudget::noteLargeBlock(const xercesc::MemoryManager* heap) {
    if (current != nullptr) current->largeBlockRequested(heap);
}

void ParseBudget::largeBlockRequested(const xercesc::MemoryManager* heap) {
    if (!armed_ || largeBlocks_ || heap != heap_) return;
    // Unwinding after the stop may not be stopped again.
    armed_ = false;
    // Short, so that the host's 256 characters keep it whole after the location.
    stop("an item in the document is longer than '" +
         std::to_string(kMaxItemCharacters) +
         "' characters; this is the size limit imposed by the application");
}

}  // namespace lumxml
