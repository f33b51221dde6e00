#include "dom/load/input_source.h"

#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "frame/host_codec.h"
#include "frame/library_state.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

const char* const kMemoryBufferId = "MEMPTR";

namespace {

InputSource* fileSource(const char* fileName) {
    try {
        XmlString name(fileName);
        return new LocalFileInputSource(name.get());
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

InputSource* createInputSource(const char* fileName, const void* memory, int32_t memoryLength) {
    // Before lumInitParser nothing can be made (Xerces has no memory
    // manager yet): null, as for any source that cannot be made.
    if (!isInitialised()) return nullptr;
    if (fileName != nullptr && fileName[0] != '\0') return fileSource(fileName);
    // A negative length would make a source over the whole address space:
    // it is treated like a zero length, as no memory.
    if (memory != nullptr && memoryLength > 0)
        return new MemBufInputSource(static_cast<const XMLByte*>(memory),
                                     static_cast<XMLSize_t>(memoryLength), kMemoryBufferId,
                                     false);
    return nullptr;
}

}  // namespace lumxml
