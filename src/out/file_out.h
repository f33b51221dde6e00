// Output target writing to a file that the target opens itself.
#pragma once

#include <cstdio>

#include <xercesc/framework/XMLFormatter.hpp>

#include "lumxml.h"

namespace lumxml {

class XMLFileOut : public XERCES_CPP_NAMESPACE::XMLFormatTarget {
public:
    // Opens `fileName` in binary mode for a UTF-16 encoding, else in text
    // mode, and writes the byte-order mark that the encoding asks for. A
    // file that cannot be opened leaves file() null and nothing is written:
    // the creator tests file() and reports the failure.
    XMLFileOut(const char* fileName, const char* encoding);
    // The same with a UTF-16 file name (through the platform seam).
    XMLFileOut(const lum_wchar_t* fileName, const char* encoding);
    ~XMLFileOut() override;

    XMLFileOut(const XMLFileOut&) = delete;
    XMLFileOut& operator=(const XMLFileOut&) = delete;

    void writeChars(const XMLByte* toWrite, XMLSize_t count,
                    XERCES_CPP_NAMESPACE::XMLFormatter* formatter) override;
    void flush() override;

    std::FILE* file() const { return file_; }

private:
    void writeByteOrderMark(const char* encoding);

    std::FILE* file_ = nullptr;
};

}  // namespace lumxml
