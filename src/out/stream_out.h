// Output target handing every byte to a write callback of the host.
#pragma once

#include <cstdint>

#include <xercesc/framework/XMLFormatter.hpp>

#include "lumxml.h"

namespace lumxml {

class XMLStreamOut : public XERCES_CPP_NAMESPACE::XMLFormatTarget {
public:
    // Writes the byte-order mark that `encoding` asks for with one call of
    // the callback. The callback's result is not looked at: the host
    // stream has no failure path.
    XMLStreamOut(int64_t handle, StreamWriteFn write, const char* encoding);

    void writeChars(const XMLByte* toWrite, XMLSize_t count,
                    XERCES_CPP_NAMESPACE::XMLFormatter* formatter) override;

private:
    void send(const void* bytes, uint32_t count);

    int64_t handle_;
    StreamWriteFn write_;
};

}  // namespace lumxml
