#include "out/file_out.h"

#include "frame/platform.h"
#include "out/byte_order.h"

namespace lumxml {

XMLFileOut::XMLFileOut(const char* fileName, const char* encoding)
    : file_(platform::openFile(fileName, fileModeFor(encoding))) {
    writeByteOrderMark(encoding);
}

XMLFileOut::XMLFileOut(const lum_wchar_t* fileName, const char* encoding)
    : file_(platform::openFile(fileName, fileModeFor(encoding))) {
    writeByteOrderMark(encoding);
}

XMLFileOut::~XMLFileOut() {
    if (file_ != nullptr) {
        std::fflush(file_);
        std::fclose(file_);
    }
}

void XMLFileOut::writeByteOrderMark(const char* encoding) {
    // A failed open gets no mark: there is no stream to write it to.
    if (file_ == nullptr) return;
    uint8_t mark[2];
    size_t size = byteOrderMarkBytes(byteOrderMarkFor(encoding), mark);
    if (size != 0) std::fwrite(mark, 1, size, file_);
}

void XMLFileOut::writeChars(const XMLByte* toWrite, XMLSize_t count,
                            XERCES_CPP_NAMESPACE::XMLFormatter*) {
    if (file_ != nullptr) std::fwrite(toWrite, 1, count, file_);
}

void XMLFileOut::flush() {
    if (file_ != nullptr) std::fflush(file_);
}

}  // namespace lumxml
