#include "dom/load/directory_confinement.h"

#include <string>

#include <xercesc/util/XMLString.hpp>

#include "frame/platform.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

// A path in the form Xerces opens files with (its local code page).
std::string localPath(const XMLCh* path) {
    char* local = XMLString::transcode(path);
    std::string copy(local != nullptr ? local : "");
    XMLString::release(&local);
    return copy;
}

bool isSegmentEnd(XMLCh c) { return c == 0 || c == u'/' || c == u'\\'; }

}  // namespace

bool opensWithin(const InputSource& source, const XMLCh* directory) {
    if (source.getSystemId() == nullptr || directory == nullptr) return false;
    std::string file, root;
    return platform::resolvePath(localPath(source.getSystemId()), file) &&
           platform::resolvePath(localPath(directory), root) && platform::isWithin(file, root);
}

bool hasParentSegment(const XMLCh* systemId) {
    if (systemId == nullptr) return false;
    bool segmentStart = true;
    for (const XMLCh* c = systemId; *c != 0; ++c) {
        if (segmentStart && c[0] == u'.' && c[1] == u'.' && isSegmentEnd(c[2])) return true;
        segmentStart = *c == u'/' || *c == u'\\';
    }
    return false;
}

}  // namespace lumxml
