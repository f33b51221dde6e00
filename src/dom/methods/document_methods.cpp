#include "dom/methods/document_methods.h"
#include "lumxml.h"
#include "frame/deep_stack.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMImplementation.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLChar.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUniDefs.hpp>


#include "dom/methods/child_cursor.h"
#include "dom/methods/doc_user_data.h"
#include "dom/methods/document_release.h"
#include "dom/methods/method_call.h"
#include "dom/methods/node_methods.h"
#include "frame/dom_errors.h"
#include "frame/host_codec.h"
#include "frame/library_state.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// What a DOMException in a method means to the host.
enum class DomErrors {
    Translated,  // the fixed DOM message, code 6
    Unexpected,  // "Unexpected exception", code 13
    Forwarded,   // the node method reports for itself
};

struct DocumentCall {
    DOMDocument* document;
    int32_t method;
    void** args;
    void* result;
    MethodCall& call;
    ErrorReport& report;
    // Set by method 1 for its type 3, whose DOM errors are unexpected.
    DomErrors domErrors;
};

using DocumentRun = void (*)(DocumentCall& c);

struct DocumentMethod {
    DocumentRun run;
    DomErrors domErrors;
};

DOMDocument& the(DOMDocument* document) {
    if (document == nullptr) throw MissingHostValue("null document handle");
    return *document;
}

// ---- refusals ----------------------------------------------------------------

void notValidOnDocument(DocumentCall& c) {
    c.report.fixed("Method not valid on X-Document", LUM_ERR_NOT_SUPPORTED);
}

void deprecated(DocumentCall& c) {
    c.report.fixed("This method is deprecated. Please use CREATE-NODE-NAMESPACE", LUM_ERR_NOT_SUPPORTED);
}

// ---- forwarded to the node dispatcher, with the document's node interface --

void forwardToNode(DocumentCall& c) {
    nodeExecute(asNode(&the(c.document)), c.method, c.args, c.result, c.report);
}

// ---- document methods ------------------------------------------------------

constexpr XMLCh kEmpty[] = {0};

DOMNode* createNodeOfType(DOMDocument& document, int32_t type, const XMLCh* name,
                          DocumentCall& c, bool& supported) {
    // Element and attribute names are checked by Xerces; a null name counts
    // as the empty one, which it refuses as an invalid character.
    const XMLCh* given = name != nullptr ? name : kEmpty;
    switch (type) {
    case LUM_NODE_NONE: return nullptr;
    case DOMNode::ELEMENT_NODE:
        if (given[0] == 0) throw DOMException(DOMException::INVALID_CHARACTER_ERR, 0);
        return document.createElement(given);
    case DOMNode::ATTRIBUTE_NODE:
        if (given[0] == 0) throw DOMException(DOMException::INVALID_CHARACTER_ERR, 0);
        return document.createAttribute(given);
    case DOMNode::TEXT_NODE:
        c.domErrors = DomErrors::Unexpected;
        return document.createTextNode(kEmpty);
    case DOMNode::CDATA_SECTION_NODE: return document.createCDATASection(kEmpty);
    case DOMNode::ENTITY_REFERENCE_NODE: return document.createEntityReference(given);
    case DOMNode::ENTITY_NODE: return document.createEntity(given);
    case DOMNode::PROCESSING_INSTRUCTION_NODE:
        return document.createProcessingInstruction(given, kEmpty);
    case DOMNode::COMMENT_NODE: return document.createComment(kEmpty);
    case DOMNode::DOCUMENT_TYPE_NODE: return document.createDocumentType(given);
    case DOMNode::DOCUMENT_FRAGMENT_NODE: return document.createDocumentFragment();
    case DOMNode::NOTATION_NODE: return document.createNotation(given);
    default: supported = false; return nullptr;
    }
}

// The new node's address is written only while the host's code is 0.
void createNode(DocumentCall& c) {
    XmlString name(c.call.stringArg(0));
    int32_t type = c.call.intArg(1);
    bool supported = true;
    DOMNode* made = createNodeOfType(the(c.document), type, name, c, supported);
    if (!supported) {
        c.report.fixed("Not supported", LUM_ERR_NOT_SUPPORTED);
        return;
    }
    if (c.report.code() == 0) c.call.writeNode(made);
}

void documentElement(DocumentCall& c) {
    DOMElement* element = the(c.document).getDocumentElement();
    c.call.writeNode(element);
}

void childByIndex(DocumentCall& c) {
    int64_t index = c.call.intArg(0);
    const DOMNode* node = asNode(&the(c.document));
    DOMNode* child = index < 0 ? nullptr : childAt(node, static_cast<uint64_t>(index));
    if (child == nullptr) {
        c.report.fixed("Invalid child index", LUM_ERR_CHILD_INDEX);
        c.call.writeNode(nullptr);
        return;
    }
    c.call.writeNode(child);
}

void importNode(DocumentCall& c) {
    DOMNode* node = c.call.nodeArg(0);
    bool deep = c.call.intArg(1) != 0;
    if (node == nullptr) throw MissingHostValue("no node to import");
    DOMNode* copy = nullptr;
    if (deep)
        runForSubtree(node, [&] { copy = the(c.document).importNode(node, true); });
    else
        copy = the(c.document).importNode(node, false);
    c.call.writeNode(copy);
}

void createNodeNS(DocumentCall& c) {
    XmlString namespaceURI(c.call.stringArg(0));
    XmlString qualifiedName(c.call.stringArg(1));
    int32_t type = c.call.intArg(2);
    switch (type) {
    case LUM_NODE_NONE: return;
    case DOMNode::ELEMENT_NODE:
        c.call.writeNode(the(c.document).createElementNS(namespaceURI, qualifiedName));
        return;
    case DOMNode::ATTRIBUTE_NODE:
        c.call.writeNode(the(c.document).createAttributeNS(namespaceURI, qualifiedName));
        return;
    default: c.report.fixed("Method not valid on the Node type", LUM_ERR_NODE_TYPE);
    }
}

// The checks Xerces makes of a document type's qualified name, in its
// order: a valid XML 1.0 name (else the invalid-character error), at most
// one colon, neither first nor last, with a valid name on each side (else
// the namespace error).
void checkTypeName(const XMLCh* qualifiedName) {
    // A missing name counts as the empty one, as for the other factories.
    if (qualifiedName == nullptr || !XMLChar1_0::isValidName(qualifiedName))
        throw DOMException(DOMException::INVALID_CHARACTER_ERR, 0);
    XMLSize_t length = 0;
    XMLSize_t colon = 0;
    int colons = 0;
    for (; qualifiedName[length] != 0; ++length)
        if (qualifiedName[length] == chColon) {
            ++colons;
            colon = length;
        }
    if (colons == 0) return;
    if (colons > 1 || colon == 0 || colon + 1 == length ||
        !XMLChar1_0::isValidName(qualifiedName, colon) ||
        !XMLChar1_0::isValidName(qualifiedName + colon + 1))
        throw DOMException(DOMException::NAMESPACE_ERR, 0);
}

// A new document with a document type replaces this one behind the host
// object: the host record moves to it and this one is released. The host
// must put the new address in its document cell.
//
// The type is made by the new document itself, on its heap, and inserted
// before the document element: that is the tree Xerces builds when handed a
// type made by DOMImplementation, but such a type takes its strings and maps
// from a process-wide heap that is never freed (several KB per call), and
// when the document's own checks fail, that type is left pointing into the
// document Xerces has just freed. The type's name is checked first, as
// Xerces would have, so that the same error answers the same name.
void newDocumentWithType(DocumentCall& c) {
    c.call.writeDocument(nullptr);
    XmlString namespaceURI(c.call.stringArg(0));
    XmlString qualifiedName(c.call.stringArg(1));
    XmlString publicId(c.call.stringArg(2));
    XmlString systemId(c.call.stringArg(3));
    checkTypeName(qualifiedName);
    DOMImplementation* implementation = the(c.document).getImplementation();
    DOMDocument* made = implementation->createDocument(namespaceURI, qualifiedName, nullptr,
                                                       XMLPlatformUtils::fgMemoryManager);
    try {
        DOMDocumentType* type = made->createDocumentType(qualifiedName, publicId, systemId);
        made->insertBefore(type, made->getDocumentElement());
    } catch (...) {
        releaseDocument(made);
        throw;
    }
    c.call.writeDocument(replaceDocument(c.document, made));
}

void documentTypeId(DocumentCall& c, bool systemId) {
    c.call.writeEmptyString();
    uint32_t limit = static_cast<uint32_t>(c.call.intArg(0));
    DOMDocumentType* type = the(c.document).getDoctype();
    if (type == nullptr) return;
    c.call.stringOut(systemId ? type->getSystemId() : type->getPublicId(), limit);
}

void publicIdOfType(DocumentCall& c) { documentTypeId(c, false); }
void systemIdOfType(DocumentCall& c) { documentTypeId(c, true); }

// ---- the table ---------------------------------------------------------------

constexpr DomErrors kTranslated = DomErrors::Translated;
constexpr DomErrors kUnexpected = DomErrors::Unexpected;
constexpr DomErrors kForwarded = DomErrors::Forwarded;

const DocumentMethod kDocumentMethods[kHighestDocumentMethod] = {
    /* 1 */ {createNode, kTranslated},
    /* 2 */ {forwardToNode, kForwarded},
    /* 3 */ {notValidOnDocument, kUnexpected},
    /* 4 */ {documentElement, kUnexpected},
    /* 5 */ {forwardToNode, kForwarded},
    /* 6 */ {notValidOnDocument, kUnexpected},
    /* 7 */ {forwardToNode, kForwarded},
    /* 8 */ {childByIndex, kUnexpected},
    /* 9 */ {forwardToNode, kForwarded},
    /* 10 */ {forwardToNode, kForwarded},
    /* 11 */ {forwardToNode, kForwarded},
    /* 12 */ {notValidOnDocument, kUnexpected},
    /* 13 */ {notValidOnDocument, kUnexpected},
    /* 14 */ {notValidOnDocument, kUnexpected},
    /* 15 */ {notValidOnDocument, kUnexpected},
    /* 16 */ {notValidOnDocument, kUnexpected},
    /* 17 */ {forwardToNode, kForwarded},
    /* 18 */ {forwardToNode, kForwarded},
    /* 19 */ {forwardToNode, kForwarded},
    /* 20 */ {forwardToNode, kForwarded},
    /* 21 */ {forwardToNode, kForwarded},
    /* 22 */ {importNode, kUnexpected},
    /* 23 */ {notValidOnDocument, kUnexpected},
    /* 24 */ {deprecated, kUnexpected},
    /* 25 */ {deprecated, kUnexpected},
    /* 26 */ {notValidOnDocument, kUnexpected},
    /* 27 */ {notValidOnDocument, kUnexpected},
    /* 28 */ {notValidOnDocument, kUnexpected},
    /* 29 */ {notValidOnDocument, kUnexpected},
    /* 30 */ {createNodeNS, kTranslated},
    /* 31 */ {newDocumentWithType, kTranslated},
    /* 32 */ {publicIdOfType, kUnexpected},
    /* 33 */ {systemIdOfType, kUnexpected},
    /* 34 */ {notValidOnDocument, kUnexpected},
    /* 35 */ {notValidOnDocument, kUnexpected},
    /* 36 */ {notValidOnDocument, kUnexpected},
    /* 37 */ {notValidOnDocument, kUnexpected},
    /* 38 */ {notValidOnDocument, kUnexpected},
};

}  // namespace

void documentExecute(DOMDocument* document, int32_t method, void** args, void* result,
                     ErrorReport& report) {
    if (!isInitialised()) {
        report.fixed("XML Parser not initialized", LUM_ERR_NOT_INITIALIZED);
        return;
    }
    // Code 4 here, where the node dispatcher answers the same text with
    // code 3: hosts tell the two apart by it.
    if (static_cast<uint32_t>(method) - 1 > kHighestDocumentMethod - 1) {
        report.fixed("Invalid method number", LUM_ERR_DOC_METHOD_NUMBER);
        return;
    }
    const DocumentMethod& entry = kDocumentMethods[method - 1];
    MethodCall call(args, result, report);
    DocumentCall c{document, method, args, result, call, report, entry.domErrors};
    try {
        entry.run(c);
    } catch (const DOMException& e) {
        if (c.domErrors == DomErrors::Translated)
            reportDomError(e, report);
        else
            report.formatted(LUM_ERR_UNEXPECTED, "Unexpected exception");
    }
}

}  // namespace lumxml
