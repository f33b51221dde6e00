#include "dom/load/documents.h"
#include "lumxml.h"
#include "dom/methods/document_release.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <xercesc/dom/DOMImplementation.hpp>
#include <xercesc/dom/DOMImplementationRegistry.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLException.hpp>

#include "dom/load/back_slash_path.h"
#include "dom/methods/child_cursor.h"
#include "dom/methods/doc_user_data.h"
#include "dom/load/dom_tree_error_reporter.h"
#include "dom/load/input_source.h"
#include "dom/load/lum_entity_resolver.h"
#include "dom/load/text_gathering_parser.h"
#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "frame/owned_heap.h"
#include "frame/platform.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

constexpr const char* kNotInitialised = "XML Parser not initialized";
constexpr size_t kEncodingBudget = 256;

// An item of the host's locations triple; empty or null means "not given".
const char* locationItem(const char* const* locations, int index) {
    if (locations == nullptr) return nullptr;
    const char* item = locations[index];
    return item != nullptr && item[0] != '\0' ? item : nullptr;
}

// The parser of one load and its helpers. The parser goes first: after an
// allocation failure Xerces leaves the parser marked as parsing, and its
// setters then throw, so nothing is uninstalled from it; it never calls
// its helpers while it is deleted. The heap goes last, once the parser and
// (unless a document took its own reference) what the parser built are
// gone.
struct LoadParts {
    HeapRef heap;
    std::unique_ptr<TextGatheringParser> parser;
    std::unique_ptr<SecurityManager> securityManager;
    std::unique_ptr<LumEntityResolver> resolver;
    std::unique_ptr<DOMTreeErrorReporter> reporter;

    ~LoadParts() { parser.reset(); }
};

// The limits lumxml adds to a load with an expansion limit (after the
// namespace option, which decides the depth limit).
void armLoadBudget(TextGatheringParser& parser, const LoadRequest& request) {
    const uint64_t inputBytes = request.sourceKind == kSourceMemory
                                    ? request.memoryLength
                                    : platform::fileSize(request.fileName);
    parser.armBudget(static_cast<uint64_t>(static_cast<int64_t>(*request.entityExpansionLimit)),
                     inputBytes);
}

std::unique_ptr<LoadParts> makeLoadParts(const LoadRequest& request) {
    const char* directories = locationItem(request.locations, 0);
    const char* schemaLocation = locationItem(request.locations, 1);
    const char* noNamespaceSchemaLocation = locationItem(request.locations, 2);

    auto parts = std::make_unique<LoadParts>();
    parts->heap = HeapRef(OwnedHeap::create());
    parts->parser = std::make_unique<TextGatheringParser>(nullptr, parts->heap.get(), nullptr);
    XercesDOMParser& parser = *parts->parser;
    if (request.entityExpansionLimit != nullptr) {
        parts->securityManager = std::make_unique<SecurityManager>();
        // Sign-extended: a negative limit becomes a very large one.
        parts->securityManager->setEntityExpansionLimit(
            static_cast<XMLSize_t>(static_cast<int64_t>(*request.entityExpansionLimit)));
        parser.setSecurityManager(parts->securityManager.get());
    }
    if (request.flags & kLoadNoDefaultEntityResolution)
        parser.setDisableDefaultEntityResolution(true);
    if (request.flags & kLoadValidate) {
        parser.setValidationScheme(XercesDOMParser::Val_Always);
        parser.setDoSchema(true);
    }
    if (directories != nullptr) {
        parts->resolver = std::make_unique<LumEntityResolver>(directories);
        if (request.flags & kLoadNoDefaultEntityResolution) parts->resolver->confineToDirectories();
        parser.setEntityResolver(parts->resolver.get());
    }
    if (schemaLocation != nullptr)
        parser.setExternalSchemaLocation(XmlString(schemaLocation).get());
    if (noNamespaceSchemaLocation != nullptr)
        parser.setExternalNoNamespaceSchemaLocation(XmlString(noNamespaceSchemaLocation).get());
    if (!(request.flags & kLoadNamespacesOff)) parser.setDoNamespaces(true);
    if (request.entityExpansionLimit != nullptr) armLoadBudget(*parts->parser, request);
    parts->reporter = std::make_unique<DOMTreeErrorReporter>();
    parser.setErrorHandler(parts->reporter.get());
    return parts;
}

// An unsupported source kind leaves the parser and its helpers unreleased.
// Hosts have long seen this behaviour and it is kept as it is. They are
// kept on a list that is never freed rather than lost, so that leak
// checkers see memory held on purpose, not a leak.
void abandonLoadParts(const LoadRequest& request) {
    static std::mutex keptLock;
    static auto* kept = new std::vector<LoadParts*>();
    std::unique_ptr<LoadParts> parts = makeLoadParts(request);
    std::lock_guard<std::mutex> hold(keptLock);
    kept->push_back(parts.get());
    parts.release();
}

std::string messageOf(const XMLException& e) {
    std::string text;
    if (const XMLCh* message = e.getMessage())
        codec::appendHost(text, message, XMLString::stringLen(message));
    return text;
}

// True when the parse ran to its end (problems reported to the reporter
// included); false when Xerces threw.
bool parseFile(TextGatheringParser& parser, const char* fileName, ErrorReport& report) {
    // A null name is parsed as an empty one: Xerces then reports that it
    // cannot open it.
    XmlString name(pathForXerces(fileName).c_str());
    try {
        parser.parseGathering(name.get());
        return true;
    } catch (const XMLException& e) {
        report.prefixed("Error parsing file: ", messageOf(e).c_str(), LUM_ERR_PARSE);
        return false;
    }
}

bool parseMemory(LoadParts& parts, const LoadRequest& request, ErrorReport& report) {
    static const XMLByte kNoBytes[1] = {0};
    const XMLByte* bytes = static_cast<const XMLByte*>(request.memory);
    XMLSize_t length = request.memoryLength;
    if (bytes == nullptr) {
        bytes = kNoBytes;
        length = 0;
    }
    // The host's system id is the buffer id the source is made with: a
    // later setSystemId that fails to allocate leaves Xerces' source
    // holding a freed id, which its destructor frees again. The source is
    // on the parse's heap, which takes back what Xerces loses of it when
    // an allocation fails.
    std::unique_ptr<MemBufInputSource> made;
    if (request.systemId != nullptr)
        made = std::make_unique<MemBufInputSource>(
            bytes, length, XmlString(request.systemId).get(), false, parts.heap.get());
    else
        made = std::make_unique<MemBufInputSource>(bytes, length, kMemoryBufferId, false,
                                                   parts.heap.get());
    MemBufInputSource& source = *made;
    // The parse ends before lumDocLoad returns, while the host's block is
    // still there: no need for Xerces to copy it first.
    source.setCopyBufToStream(false);
    try {
        parts.parser->parseGathering(source);
        return true;
    } catch (const XMLException& e) {
        report.prefixed("Error parsing MEMPTR: ", messageOf(e).c_str(), LUM_ERR_PARSE);
        return false;
    }
}

void writeEncoding(char* encodingOut, const DOMDocument* document) {
    if (encodingOut == nullptr) return;
    const XMLCh* name = document->getInputEncoding();
    if (name == nullptr) name = document->getXmlEncoding();
    if (name == nullptr) {
        std::strcpy(encodingOut, "UTF-8");
        return;
    }
    HostString host(name);
    size_t length = std::min(std::strlen(host.get()), kEncodingBudget);
    std::memcpy(encodingOut, host.get(), length);
    encodingOut[length] = '\0';
}

// The parsed document replaces the host's current one and takes over its
// record; when the parser built nothing the current one stays. The host's
// cell is written only once the parsed document holds the record, and the
// current document is released only after that: a failure on the way
// leaves the host with its document as it was.
void adoptParsedDocument(XercesDOMParser& parser, const LoadRequest& request) {
    if (request.document == nullptr) {
        // No cell to write to: the parser keeps (and frees) what it built.
        return;
    }
    DOMDocument* current = static_cast<DOMDocument*>(*request.document);
    OwnedDocument parsed(adoptDocument(parser));
    if (parsed == nullptr) {
        if (current != nullptr) writeEncoding(request.encodingOut, current);
        return;
    }
    char encoding[kEncodingBudget + 1];
    writeEncoding(encoding, parsed.get());
    DocUserData* record = current != nullptr ? userDataOf(asNode(current)) : nullptr;
    attachUserData(asNode(parsed.get()), record);
    if (current != nullptr) detachUserData(asNode(current));
    *request.document = parsed.release();
    if (request.encodingOut != nullptr) std::strcpy(request.encodingOut, encoding);
    noteDocumentReleased(current);
    releaseDocument(current);
}

}  // namespace

void initDocument(void** documentOut, int64_t hostHandle, ErrorReport& report) {
    if (!isInitialised()) {
        report.fixed(kNotInitialised, LUM_ERR_NOT_INITIALIZED);
        return;
    }
    // Looked up once: the registry answers the same implementation every
    // time, and its lookup can leave blocks behind when an allocation fails.
    static DOMImplementation* const implementation =
        DOMImplementationRegistry::getDOMImplementation(XmlString("Core").get());
    // The document holds its heap's one reference from the start.
    HeapRef heap(OwnedHeap::create());
    OwnedDocument document(
        implementation->createDocument(nullptr, nullptr, nullptr, heap.get()));
    heap.release();
    auto record = std::make_unique<DocUserData>();
    record->hostHandle = hostHandle;
    attachUserData(asNode(document.get()), record.get());
    record.release();
    *documentOut = document.release();
}

void loadDocument(const LoadRequest& request, ErrorReport& report) {
    if (!isInitialised()) {
        report.fixed(kNotInitialised, LUM_ERR_NOT_INITIALIZED);
        return;
    }
    if (request.sourceKind != kSourceFile && request.sourceKind != kSourceMemory) {
        abandonLoadParts(request);
        report.fixed("Not supported", LUM_ERR_NOT_SUPPORTED);
        return;
    }
    std::unique_ptr<LoadParts> parts = makeLoadParts(request);
    bool parsed = request.sourceKind == kSourceFile
                      ? parseFile(*parts->parser, request.fileName, report)
                      : parseMemory(*parts, request, report);
    if (parsed) adoptParsedDocument(*parts->parser, request);
    // After the parse and the adoption, so that the reporter's text and
    // code replace an "Error parsing ..." message, loaded document or not.
    if (parts->reporter->code() != 0) parts->reporter->reportTo(report);
}

void deleteDocument(void* document) {
    DOMDocument* doc = static_cast<DOMDocument*>(document);
    if (doc == nullptr) return;
    delete detachUserData(asNode(doc));
    noteDocumentReleased(doc);
    releaseDocument(doc);
}

}  // namespace lumxml
