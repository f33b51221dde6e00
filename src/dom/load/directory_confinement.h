// Keeping an entity looked up in a host's entity directory inside that
// directory: used by both entity resolvers when default entity resolution
// is off (the hardened settings).
#pragma once

#include <xercesc/sax/InputSource.hpp>

namespace lumxml {

// True when the local file `source` opens (a LocalFileInputSource made from
// `directory` and a relative id) lies within `directory` once ".", ".." and
// symbolic links are resolved. False when either cannot be resolved (the
// file does not exist, say).
bool opensWithin(const XERCES_CPP_NAMESPACE::InputSource& source, const XMLCh* directory);

// True when `systemId` has a ".." path segment: a URL built from it could
// leave the directory's URL.
bool hasParentSegment(const XMLCh* systemId);

}  // namespace lumxml
