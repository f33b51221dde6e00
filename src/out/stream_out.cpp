#include "out/stream_out.h"

#include <limits>

#include "out/byte_order.h"

namespace lumxml {

XMLStreamOut::XMLStreamOut(int64_t handle, StreamWriteFn write, const char* encoding)
    : handle_(handle), write_(write) {
    uint8_t mark[2];
    size_t size = byteOrderMarkBytes(byteOrderMarkFor(encoding), mark);
    if (size != 0) send(mark, static_cast<uint32_t>(size));
}

void XMLStreamOut::send(const void* bytes, uint32_t count) {
    // The host reads a scratch cell of 8 bytes that it may write; its
    // content means nothing to the library.
    int64_t scratch = 0;
    write_(handle_, 1, bytes, count, &scratch);
}

void XMLStreamOut::writeChars(const XMLByte* toWrite, XMLSize_t count,
                              XERCES_CPP_NAMESPACE::XMLFormatter*) {
    // The callback takes a 32-bit count; a larger write (the formatter
    // never makes one) goes out in pieces rather than being cut.
    constexpr XMLSize_t kMaxPiece = std::numeric_limits<uint32_t>::max();
    while (count > kMaxPiece) {
        send(toWrite, static_cast<uint32_t>(kMaxPiece));
        toWrite += kMaxPiece;
        count -= kMaxPiece;
    }
    send(toWrite, static_cast<uint32_t>(count));
}

}  // namespace lumxml
