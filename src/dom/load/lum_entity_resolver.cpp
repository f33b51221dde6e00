#include "dom/load/lum_entity_resolver.h"

#include <cstring>
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

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// Exactly these four count as white space around a directory name.
bool isListBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool isAsciiLetter(XMLCh c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }

// "scheme:" with a scheme of two or more characters (one letter before the
// colon is a drive letter).
bool hasUrlScheme(const XMLCh* id) {
    if (!isAsciiLetter(id[0])) return false;
    size_t i = 1;
    while (isAsciiLetter(id[i]) || (id[i] >= u'0' && id[i] <= u'9') || id[i] == u'+' ||
           id[i] == u'-' || id[i] == u'.')
        ++i;
    return i >= 2 && id[i] == u':';
}

bool hasDriveLetter(const XMLCh* id) {
    return isAsciiLetter(id[0]) && id[1] == u':' && (id[2] == u'/' || id[2] == u'\\');
}

// True when the source opens: the probe stream is discarded at once.
bool opens(InputSource& source) {
    std::unique_ptr<BinInputStream> probe(source.makeStream());
    return probe != nullptr;
}

// Owns a UTF-16 text from Xerces' memory manager.
struct XercesText {
    XMLCh* text;
    ~XercesText() { XMLString::release(&text); }
};

XMLCh* join(const XMLCh* first, const XMLCh* second) {
    XMLSize_t length = XMLString::stringLen(first) + XMLString::stringLen(second);
    auto* joined = static_cast<XMLCh*>(
        XMLPlatformUtils::fgMemoryManager->allocate((length + 1) * sizeof(XMLCh)));
    XMLString::copyString(joined, first);
    XMLString::catString(joined, second);
    return joined;
}

}  // namespace

bool isAbsoluteSystemId(const XMLCh* systemId) {
    if (systemId == nullptr) return false;
    // Xerces alone calls a URL or a drive path on this platform relative.
    return !XMLPlatformUtils::isRelative(systemId) || hasUrlScheme(systemId) ||
           hasDriveLetter(systemId);
}

LumEntityResolver::LumEntityResolver(const char* list) {
    if (list == nullptr) return;
    const std::string copy(list);
    size_t start = 0;
    while (directoryCount() < kMaxDirectories) {
        size_t comma = copy.find(',', start);
        size_t end = comma == std::string::npos ? copy.size() : comma;
        storeDirectory(copy.c_str() + start, end - start);
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
}

LumEntityResolver::~LumEntityResolver() {
    for (size_t i = 0; i < kMaxDirectories && directories_[i] != nullptr; ++i)
        codec::release(directories_[i]);
}

size_t LumEntityResolver::directoryCount() const {
    size_t count = 0;
    while (count < kMaxDirectories && directories_[count] != nullptr) ++count;
    return count;
}

// Every stored directory ends in a separator, so that Xerces weaves the
// entity name onto the directory itself rather than onto its parent.
void LumEntityResolver::storeDirectory(const char* piece, size_t length) {
    size_t first = 0;
    while (first < length && isListBlank(piece[first])) ++first;
    size_t last = length;
    while (last > first && isListBlank(piece[last - 1])) --last;
    if (first == last) return;
    std::string directory(piece + first, last - first);
    if (directory.back() != '/' && directory.back() != '\\') directory.push_back('/');
    directories_[directoryCount()] = codec::toXml(directory.c_str());
}

InputSource* LumEntityResolver::resolveEntity(const XMLCh* const, const XMLCh* const systemId) {
    if (systemId == nullptr || isAbsoluteSystemId(systemId)) return nullptr;
    for (size_t i = 0; i < kMaxDirectories && directories_[i] != nullptr; ++i) {
        if (InputSource* found = findIn(directories_[i], systemId)) return found;
    }
    return nullptr;
}

// A local file first (its failures reach the parser), then a URL (its
// failures only abandon this directory).
InputSource* LumEntityResolver::findIn(const XMLCh* directory, const XMLCh* systemId) {
    auto local = std::make_unique<LocalFileInputSource>(directory, systemId);
    XercesText full{join(directory, systemId)};
    if (confined_ && !opensWithin(*local, directory)) return nullptr;
    if (opens(*local)) return local.release();
    local.reset();
    if (confined_ && hasParentSegment(systemId)) return nullptr;
    try {
        XMLURL url(full.text);
        auto remote = std::make_unique<URLInputSource>(url);
        if (opens(*remote)) return remote.release();
    } catch (const XMLException&) {
        // A malformed URL or an unreachable host: try the next directory.
    }
    return nullptr;
}

}  // namespace lumxml
