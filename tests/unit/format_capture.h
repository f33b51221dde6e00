// An XMLFormatTarget that keeps every byte a formatter writes, for tests
// that compare lumxml's own encoding with Xerces' formatter.
#pragma once

#include <string>

#include <xercesc/framework/XMLFormatter.hpp>

namespace lumtest {

class FormatCapture : public XERCES_CPP_NAMESPACE::XMLFormatTarget {
public:
    void writeChars(const XMLByte* toWrite, XMLSize_t count,
                    XERCES_CPP_NAMESPACE::XMLFormatter*) override {
        bytes.append(reinterpret_cast<const char*>(toWrite), count);
    }
    std::string bytes;
};

}  // namespace lumtest
