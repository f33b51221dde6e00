#include "dom/save/document_save.h"
#include "lumxml.h"

#include <memory>

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/XMLFormatter.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>

#include "dom/save/dom_node_list.h"
#include "dom/save/node_writer.h"
#include "frame/host_codec.h"
#include "frame/library_state.h"
#include "frame/owned_heap.h"
#include "out/file_out.h"
#include "out/memio.h"
#include "out/stream_out.h"
#include "out/utf8_escaper.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// Sticky for the life of the process (see textCharEscapesSet).
bool gTextCharEscapes = false;
bool gAttrEscapes = false;

const char kNotInitialised[] = "XML Parser not initialized";
const char kInvalidFile[] = "XML Parser Exception: Invalid file or path name";
const char kNotSupported[] = "Operation not supported";
const char kXmlExceptionPrefix[] = "XML Parser Exception: ";
const char kUnexpected[] = "Unexpected exception";

// The encoding a save names in its declaration and writes with: a UTF-16
// copy of the host's name, or null when none (or an empty one) was given.
class SaveEncoding {
public:
    explicit SaveEncoding(const char* encoding) : name_(encoding) {
        if (name_.get() != nullptr && *name_.get() == 0) codec::release(name_.release());
    }
    const XMLCh* get() const { return name_.get(); }
    const XMLCh* formatterName() const { return name_.get() != nullptr ? name_.get() : u"UTF-8"; }

private:
    XmlString name_;
};

// One save from preparation to clean-up. Members are destroyed in reverse
// order: the formatter goes first, then the encoding, and last the list of
// added declarations, which takes every one of them out of the tree again,
// on success and on failure alike.
class SaveSession {
public:
    SaveSession(const SaveRequest& request) : request_(request), encoding_(request.encoding) {}

    void run(ErrorReport& report) {
        DOMNode* start = startNode();
        switch (request_.target) {
            case kSaveToFile:
                saveToFile(start, report);
                break;
            case kSaveToStream:
                saveToStream(start, report);
                break;
            case kSaveToMemory:
            case kSaveNodeToMemory:
                saveToMemory(start);
                break;
            default:
                report.fixed(kNotSupported, LUM_ERR_NOT_SUPPORTED);
                break;
        }
    }

private:
    DOMNode* startNode() const {
        if (request_.document == nullptr || *request_.document == nullptr) return nullptr;
        // The cell holds a DOMNode address for kind 6 and a DOMDocument
        // address otherwise; the two differ, so the document is converted.
        if (request_.target == kSaveNodeToMemory) return static_cast<DOMNode*>(*request_.document);
        return static_cast<DOMDocument*>(*request_.document);
    }

    void saveToFile(DOMNode* start, ErrorReport& report) {
        if (request_.file == nullptr || request_.file->file() == nullptr) {
            report.fixed(kInvalidFile, LUM_ERR_SAVE);
            return;
        }
        write(start, request_.file);
    }

    void saveToStream(DOMNode* start, ErrorReport& report) {
        // A stream without a write function has nowhere to go: refused
        // rather than called through a null pointer.
        if (request_.streamWrite == nullptr) {
            report.fixed(kNotSupported, LUM_ERR_NOT_SUPPORTED);
            return;
        }
        XMLStreamOut target(request_.streamHandle, request_.streamWrite, request_.encoding);
        write(start, &target);
    }

    void saveToMemory(DOMNode* start) {
        XMLMemOut target(request_.encoding, request_.noByteOrderMark == 0);
        write(start, &target);
        // Without a host variable to receive it the block stays the
        // target's, which frees it when it was the runtime's.
        if (request_.memoryOut != nullptr) target.release(request_.memoryOut, request_.memoryLength);
    }

    void write(DOMNode* start, XMLFormatTarget* target) {
        formatter_.reset(new XMLFormatter(encoding_.formatterName(), target,
                                          XMLFormatter::NoEscapes, XMLFormatter::UnRep_CharRef,
                                          heap_.get()));
        NodeWriterOptions options;
        options.textCharEscapes = gTextCharEscapes;
        options.attrEscapes = gAttrEscapes;
        options.encoding = encoding_.get();
        if (encoding_.get() == nullptr || Utf8Escaper::isUtf8(request_.encoding))
            options.utf8Target = target;
        NodeWriter(*formatter_, options, additions_).write(start);
    }

    const SaveRequest& request_;
    DomNodeList additions_;
    SaveEncoding encoding_;
    // The formatter's heap, freed after it: Xerces loses blocks of a
    // formatter whose construction fails to allocate.
    HeapRef heap_{OwnedHeap::create()};
    std::unique_ptr<XMLFormatter> formatter_;
};

// A DOM error's own text behind what the buffer holds, cut to the room
// left; without text it is an unexpected exception.
void reportDomException(const DOMException& e, ErrorReport& report) {
    const XMLCh* message = e.getMessage();
    if (message == nullptr || *message == 0) {
        report.formatted(LUM_ERR_UNEXPECTED, kUnexpected);
        return;
    }
    HostString text(message);
    report.appended(text.get(), LUM_ERR_UNEXPECTED);
}

}  // namespace

bool textCharEscapesSet() { return gTextCharEscapes; }
bool attrEscapesSet() { return gAttrEscapes; }

void saveDocument(const SaveRequest& request, ErrorReport& report) {
    if (!isInitialised()) {
        report.fixed(kNotInitialised, LUM_ERR_NOT_INITIALIZED);
        return;
    }
    if (request.charEscapes != 0) gTextCharEscapes = true;
    if (request.attributeEscapes != 0) gAttrEscapes = true;
    try {
        SaveSession(request).run(report);
    } catch (const XMLException& e) {
        HostString text(e.getMessage());
        report.prefixed(kXmlExceptionPrefix, text.get(), LUM_ERR_SAVE);
    } catch (const DOMException& e) {
        reportDomException(e, report);
    } catch (int thrown) {
        // The memory target could not grow (it throws the integer 80): the
        // code says so, and there is no message of its own.
        if (thrown == XMLMemOut::kGrowthFailed)
            report.setCode(XMLMemOut::kGrowthFailed);
        else
            report.formatted(LUM_ERR_UNEXPECTED, kUnexpected);
    } catch (...) {
        report.formatted(LUM_ERR_UNEXPECTED, kUnexpected);
    }
}

}  // namespace lumxml
