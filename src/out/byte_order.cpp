#include "out/byte_order.h"

#include <xercesc/util/PlatformUtils.hpp>

#include "frame/platform.h"

namespace lumxml {

namespace {

// Compared in this order; the first six carry no byte order of their own.
constexpr const char* kNeutralUtf16Names[] = {"utf-16",   "ucs2",           "ibm1200",
                                              "ibm-1200", "iso-10646-ucs-2", "csUnicode"};

bool isNamed(const char* encoding, const char* name) {
    return platform::compareIgnoringCase(encoding, name) == 0;
}

}  // namespace

ByteOrderMark byteOrderMarkFor(const char* encoding) {
    if (encoding == nullptr) return ByteOrderMark::None;
    for (const char* name : kNeutralUtf16Names) {
        if (isNamed(encoding, name)) {
            return XERCES_CPP_NAMESPACE::XMLPlatformUtils::fgXMLChBigEndian
                       ? ByteOrderMark::BigEndian
                       : ByteOrderMark::LittleEndian;
        }
    }
    if (isNamed(encoding, "utf-16be")) return ByteOrderMark::BigEndian;
    if (isNamed(encoding, "utf-16le")) return ByteOrderMark::LittleEndian;
    return ByteOrderMark::None;
}

size_t byteOrderMarkBytes(ByteOrderMark mark, uint8_t bytes[2]) {
    switch (mark) {
        case ByteOrderMark::BigEndian:
            bytes[0] = 0xFE;
            bytes[1] = 0xFF;
            return 2;
        case ByteOrderMark::LittleEndian:
            bytes[0] = 0xFF;
            bytes[1] = 0xFE;
            return 2;
        case ByteOrderMark::None:
            break;
    }
    return 0;
}

const char* fileModeFor(const char* encoding) {
    return byteOrderMarkFor(encoding) == ByteOrderMark::None ? "w" : "wb";
}

}  // namespace lumxml
