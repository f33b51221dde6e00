#include "sax/sax_entity_resolver.h"

#include <memory>
#include <string>

#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/URLInputSource.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLURL.hpp>

#include "dom/load/directory_confinement.h"
#include "frame/host_codec.h"
#include "sax/sax_events.h"
#include "sax/sax_handlers.h"

namespace lumxml {

using namespace xercesc;

namespace {

bool isTrimmed(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// True when `source` can open a stream (the stream is discarded).
bool opens(InputSource& source) {
    std::unique_ptr<BinInputStream> stream(source.makeStream());
    return stream != nullptr;
}

InputSource* tryLocalFile(const XMLCh* directory, const XMLCh* systemId, bool confined) {
    try {
        auto source = std::make_unique<LocalFileInputSource>(directory, systemId);
        if (confined && !opensWithin(*source, directory)) return nullptr;
        if (opens(*source)) return source.release();
    } catch (const XMLException&) {
        // A name that cannot be made into a path: not in this directory.
    }
    return nullptr;
}

InputSource* tryUrl(const XMLCh* directory, const XMLCh* systemId, bool confined) {
    if (confined && hasParentSegment(systemId)) return nullptr;
    const std::basic_string<XMLCh> joined = std::basic_string<XMLCh>(directory) + systemId;
    try {
        XMLURL url(joined.c_str());
        auto source = std::make_unique<URLInputSource>(url);
        if (opens(*source)) return source.release();
    } catch (const XMLException&) {
        // Not a URL either (a plain directory makes no URL).
    }
    return nullptr;
}

}  // namespace

LumSAXEntityResolver::LumSAXEntityResolver(SaxParserInstance* instance, const char* searchPath,
                                           sax::IdMemo* memo)
    : instance_(instance), memo_(memo), directories_(new XMLCh*[kMaxDirectories]()) {
    readSearchPath(searchPath);
}

LumSAXEntityResolver::~LumSAXEntityResolver() {
    releaseDirectories();
    delete[] directories_;
}

void LumSAXEntityResolver::releaseDirectories() {
    for (int i = 0; i < kMaxDirectories && directories_[i] != nullptr; ++i) {
        XMLString::release(&directories_[i]);
        directories_[i] = nullptr;
    }
}

void LumSAXEntityResolver::readSearchPath(const char* searchPath) {
    releaseDirectories();
    if (searchPath == nullptr) return;
    const char* piece = searchPath;
    while (true) {
        const char* comma = piece;
        while (*comma != '\0' && *comma != ',') ++comma;
        addDirectory(piece, comma);
        if (*comma == '\0') break;
        piece = comma + 1;
    }
}

void LumSAXEntityResolver::addDirectory(const char* begin, const char* end) {
    int slot = 0;
    while (slot < kMaxDirectories && directories_[slot] != nullptr) ++slot;
    if (slot == kMaxDirectories) return;  // later pieces are ignored
    while (begin < end && isTrimmed(*begin)) ++begin;
    while (end > begin && isTrimmed(end[-1])) --end;
    if (begin == end) return;
    std::string directory(begin, end);
    if (directory.back() != '/' && directory.back() != '\\') directory += '/';
    directories_[slot] = codec::toXml(directory.c_str());
}

const XMLCh* LumSAXEntityResolver::directory(int index) const {
    return index >= 0 && index < kMaxDirectories ? directories_[index] : nullptr;
}

InputSource* LumSAXEntityResolver::resolveEntity(const XMLCh* const publicId,
                                                 const XMLCh* const systemId) {
    if (instance_ != nullptr) {
        InputSource* answer = askHost(publicId, systemId);
        if (answer != nullptr) return answer;  // Xerces adopts it
    }
    if (systemId == nullptr || !XMLPlatformUtils::isRelative(systemId)) return nullptr;
    return searchDirectories(systemId);
}

InputSource* LumSAXEntityResolver::askHost(const XMLCh* publicId, const XMLCh* systemId) {
    SaxEvent* event = sax::pushEventAtHead(*instance_);
    if (event == nullptr) return nullptr;
    // Finished first, as every handler's event: one left half-built by a
    // failed allocation is then released by its kind.
    sax::finishEvent(*event, sax::kResolveEntity, 4);
    event->arg1 = sax::hostCopy(publicId);
    event->arg2 = sax::hostCopy(systemId);
    sax::locateEvent(*instance_, *event, memo_);

    int32_t result = 0;
    ResolveEntityFn callback = instance_->resolveEntityCallback;
    if (callback != nullptr) result = callback();

    // The host's sources are input sources made by the library's
    // input-source export (an InputSource behind a void*).
    auto* supplied = static_cast<InputSource*>(event->arg3);
    auto* alternative = static_cast<InputSource*>(event->arg4);
    // The event is gone before the parse goes on: it never stays queued.
    // Its clearing releases only the two strings.
    sax::dropHeadEvent(*instance_, event);

    InputSource* answer = supplied != nullptr ? supplied : alternative;
    // A source handed over but not used would belong to no one.
    if (supplied != nullptr && alternative != nullptr && alternative != supplied) {
        delete alternative;
    }
    if (result == 1) {
        delete answer;
        throw LumSAXException();
    }
    return answer;
}

InputSource* LumSAXEntityResolver::searchDirectories(const XMLCh* systemId) const {
    // Without default entity resolution (flag bit 2) an id found through a
    // directory must stay inside it.
    const bool confined = instance_ != nullptr && (instance_->flags & 4) != 0;
    for (int i = 0; i < kMaxDirectories && directories_[i] != nullptr; ++i) {
        if (InputSource* source = tryLocalFile(directories_[i], systemId, confined)) return source;
        if (InputSource* source = tryUrl(directories_[i], systemId, confined)) return source;
    }
    return nullptr;
}

}  // namespace lumxml
