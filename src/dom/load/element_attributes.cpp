// TextGatheringParser's own handling of an element's attributes.
//
// Xerces' DOM builder adds each attribute of the scanner's list to the
// element's map with a linear search for its namespace and local name and an
// insertion into a vector kept in order of qualified names: an element with
// n attributes costs n^2. It also gives every element the DTD's default
// attributes as the document type keeps them, with a prefixed name bound to
// the XML namespace whatever the prefix means; when the scanner's list holds
// the same attribute in its real namespace, the element then carries that
// qualified name twice, and a default whose namespace and local name equal
// an attribute the author wrote under another prefix replaces it.
//
// Here the scanner's attributes (already checked for duplicates) are made as
// the stock builder makes them and merged into the map through hash tables,
// then the map is put in the same order of qualified names: the same
// element, in linear time, except that an attribute of the scanner's list
// replaces a default of the same qualified name, and a default never
// replaces an attribute the author wrote.
#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include <xercesc/dom/impl/DOMAttrImpl.hpp>
#include <xercesc/dom/impl/DOMAttrMapImpl.hpp>
#include <xercesc/dom/impl/DOMCasts.hpp>
#include <xercesc/dom/impl/DOMDocumentImpl.hpp>
#include <xercesc/dom/impl/DOMElementImpl.hpp>
#include <xercesc/dom/impl/DOMNodeIDMap.hpp>
#include <xercesc/dom/impl/DOMNodeVector.hpp>
#include <xercesc/framework/XMLAttDefList.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "dom/load/text_gathering_parser.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// The map's node vector is protected; a pointer to the member named through
// a derived class reaches it without any cast of the map itself.
struct MapNodes : DOMAttrMapImpl {
    static DOMNodeVector* of(DOMAttrMapImpl* map) { return map->*(&MapNodes::fNodes); }
};

std::u16string textOf(const XMLCh* text) {
    return text != nullptr ? std::u16string(text) : std::u16string();
}

// Namespace and local name as one key ("\0" cannot occur in either).
std::u16string expandedKey(const DOMNode* node) {
    return textOf(node->getNamespaceURI()) + u'\0' + textOf(node->getLocalName());
}

struct Entry {
    DOMNode* node;
    bool fromList;   // made from the scanner's list (not a document-type default)
    bool specified;  // written by the author
};

constexpr size_t kNotFound = static_cast<size_t>(-1);

// The element's attributes as they are merged. Lookups scan the few entries
// of an ordinary element and go through hash tables for a wide one.
class Merge {
public:
    Merge(bool namespaces, DOMNodeVector* nodes, size_t incoming) : namespaces_(namespaces) {
        const XMLSize_t count = nodes != nullptr ? nodes->size() : 0;
        hashed_ = count + incoming >= TextGatheringParser::kWideElement;
        entries_.reserve(count + incoming);
        for (XMLSize_t i = 0; i < count; ++i) add({nodes->elementAt(i), false, false});
    }

    void take(const Entry& entry) {
        const size_t named = findName(entry.node);
        if (!namespaces_) {
            if (named != kNotFound)
                replace(named, entry);
            else
                add(entry);
            return;
        }
        // The document type's copy of a default under this qualified name
        // (bound to the XML namespace) gives way to the scanner's.
        if (named != kNotFound && !entries_[named].fromList) drop(named);
        const size_t same = findExpanded(entry.node);
        if (same == kNotFound) {
            add(entry);
            return;
        }
        const Entry& held = entries_[same];
        // A default never replaces what the author wrote.
        if (held.fromList && held.specified && !entry.specified) return;
        replace(same, entry);
    }

    // The nodes in order of qualified names, as the map keeps them.
    std::vector<DOMNode*> ordered() const {
        std::vector<DOMNode*> nodes;
        nodes.reserve(entries_.size());
        for (const Entry& entry : entries_)
            if (entry.node != nullptr) nodes.push_back(entry.node);
        std::stable_sort(nodes.begin(), nodes.end(), [](DOMNode* a, DOMNode* b) {
            return XMLString::compareString(a->getNodeName(), b->getNodeName()) < 0;
        });
        return nodes;
    }

private:
    size_t findName(const DOMNode* node) const {
        if (hashed_) {
            auto found = byName_.find(textOf(node->getNodeName()));
            return found != byName_.end() ? found->second : kNotFound;
        }
        for (size_t i = 0; i < entries_.size(); ++i) {
            const DOMNode* held = entries_[i].node;
            if (held != nullptr && XMLString::equals(held->getNodeName(), node->getNodeName()))
                return i;
        }
        return kNotFound;
    }

    size_t findExpanded(const DOMNode* node) const {
        if (hashed_) {
            auto found = byExpanded_.find(expandedKey(node));
            return found != byExpanded_.end() ? found->second : kNotFound;
        }
        for (size_t i = 0; i < entries_.size(); ++i) {
            const DOMNode* held = entries_[i].node;
            if (held != nullptr &&
                XMLString::equals(held->getNamespaceURI(), node->getNamespaceURI()) &&
                XMLString::equals(held->getLocalName(), node->getLocalName()))
                return i;
        }
        return kNotFound;
    }

    void add(const Entry& entry) {
        index(entry.node, entries_.size());
        entries_.push_back(entry);
    }

    void replace(size_t at, const Entry& entry) {
        drop(at);
        entries_[at] = entry;
        index(entry.node, at);
    }

    void drop(size_t at) {
        DOMNode* old = entries_[at].node;
        if (hashed_) {
            if (namespaces_) byExpanded_.erase(expandedKey(old));
            byName_.erase(textOf(old->getNodeName()));
        }
        entries_[at].node = nullptr;
    }

    void index(DOMNode* node, size_t at) {
        if (!hashed_) return;
        if (namespaces_) byExpanded_[expandedKey(node)] = at;
        byName_[textOf(node->getNodeName())] = at;
    }

    bool namespaces_;
    bool hashed_ = false;
    std::vector<Entry> entries_;
    std::unordered_map<std::u16string, size_t> byExpanded_;
    std::unordered_map<std::u16string, size_t> byName_;
};

}  // namespace

bool TextGatheringParser::buildsOwnAttributes(const XMLElementDecl& elemDecl,
                                              XMLSize_t attrCount) {
    if (attrCount == 0 || getCreateSchemaInfo()) return false;
    if (attrCount >= kWideElement) return true;
    return getDoNamespaces() && elemDecl.hasAttDefs() && hasPrefixedDefault(elemDecl);
}

// A default whose prefix is neither "xml" nor "xmlns": the document type
// keeps it bound to the XML namespace, whatever the prefix means.
bool TextGatheringParser::hasPrefixedDefault(const XMLElementDecl& elemDecl) {
    auto known = prefixedDefaults_.find(&elemDecl);
    if (known != prefixedDefaults_.end()) return known->second;
    bool found = false;
    XMLAttDefList& definitions = elemDecl.getAttDefList();
    for (XMLSize_t i = 0; i < definitions.getAttDefCount() && !found; ++i) {
        const XMLAttDef& definition = definitions.getAttDef(i);
        const XMLAttDef::DefAttTypes type = definition.getDefaultType();
        if (type != XMLAttDef::Default && type != XMLAttDef::Fixed) continue;
        const XMLCh* name = definition.getFullName();
        const int colon = XMLString::indexOf(name, chColon);
        if (colon <= 0) continue;
        const std::u16string prefix(name, static_cast<size_t>(colon));
        found = prefix != u"xml" && prefix != u"xmlns";
    }
    prefixedDefaults_.emplace(&elemDecl, found);
    return found;
}

DOMNode* TextGatheringParser::makeAttribute(const XMLAttr& scanned) {
    DOMAttrImpl* attr = nullptr;
    if (getDoNamespaces()) {
        XMLScanner* scanner = getScanner();
        const XMLCh* localName = scanned.getName();
        const XMLCh* prefix = scanned.getPrefix();
        unsigned int uriId = scanned.getURIId();
        // A default namespace declaration belongs to the xmlns namespace.
        if ((prefix == nullptr || *prefix == 0) && XMLString::equals(localName, XMLUni::fgXMLNSString))
            uriId = scanner->getXMLNSNamespaceId();
        const XMLCh* uri = uriId != scanner->getEmptyNamespaceId() ? scanner->getURIText(uriId)
                                                                   : nullptr;
        attr = static_cast<DOMAttrImpl*>(createAttrNS(uri, prefix, localName, scanned.getQName()));
    } else {
        attr = static_cast<DOMAttrImpl*>(createAttr(scanned.getName()));
    }
    attr->setValueFast(scanned.getValue());
    if (scanned.getType() == XMLAttDef::ID) {
        DOMDocumentImpl* document = fDocument;
        if (document->fNodeIDMap == nullptr)
            document->fNodeIDMap = new (document) DOMNodeIDMap(500, document);
        document->fNodeIDMap->add(attr);
        attr->fNode.isIdAttr(true);
    }
    attr->setSpecified(scanned.getSpecified());
    return attr;
}

void TextGatheringParser::addAttributes(const RefVectorOf<XMLAttr>& attrList,
                                        XMLSize_t attrCount) {
    auto* element = static_cast<DOMElementImpl*>(static_cast<DOMElement*>(fCurrentNode));
    DOMAttrMapImpl* map = element->fAttributes;
    Merge merge(getDoNamespaces(), MapNodes::of(map), attrCount);
    for (XMLSize_t i = 0; i < attrCount; ++i) {
        const XMLAttr* scanned = attrList.elementAt(i);
        merge.take({makeAttribute(*scanned), true, scanned->getSpecified()});
    }
    const std::vector<DOMNode*> nodes = merge.ordered();
    map->reserve(nodes.size());
    DOMNodeVector* vector = MapNodes::of(map);
    vector->reset();
    for (DOMNode* node : nodes) {
        DOMNodeImpl* impl = castToNodeImpl(node);
        impl->fOwnerNode = element;
        impl->isOwned(true);
        vector->addElement(node);
    }
}

}  // namespace lumxml
