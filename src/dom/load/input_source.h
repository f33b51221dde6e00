// Wrapping a host file name or memory block as a Xerces input source, for
// lumCreateInputSource (a host's answer to the SAX resolve-entity callback
// is made this way).
#pragma once

#include <cstdint>

#include <xercesc/sax/InputSource.hpp>

namespace lumxml {

// The buffer id (and so the system id) of every memory source.
extern const char* const kMemoryBufferId;

// A LocalFileInputSource for a non-empty `fileName` (relative names resolve
// against the current directory), else a MemBufInputSource over `memory`
// (not adopted) when it is not null and `memoryLength` is positive, else
// null. Null also when the file source cannot be made. The caller owns the
// source.
XERCES_CPP_NAMESPACE::InputSource* createInputSource(const char* fileName, const void* memory,
                                                     int32_t memoryLength);

}  // namespace lumxml
