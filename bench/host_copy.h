// The 8-bit copy of a string that a host needs, made the way the Xerces
// references of the walks make it: XMLString::transcode, UTF-8 on this
// platform as the host code page of the suite.
#pragma once

#include <cstddef>

#include <xercesc/util/XercesDefs.hpp>

namespace bench {

// Copies `text` (null: the empty string) into `buffer`; answers its length.
size_t hostCopy(const XMLCh* text, char (&buffer)[64]);

}  // namespace bench
