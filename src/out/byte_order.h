// The byte-order-mark rule shared by every output target.
//
// A target told that its encoding is one of the UTF-16 names writes the
// mark itself, before any text; the names are compared ignoring ASCII case.
// The same answer decides whether a file target opens in binary mode.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lumxml {

enum class ByteOrderMark { None, BigEndian, LittleEndian };

// The mark for `encoding`: the six byte-order-neutral UTF-16 names get the
// platform's own XMLCh order, "utf-16be" and "utf-16le" their own, every
// other name (and null) none.
ByteOrderMark byteOrderMarkFor(const char* encoding);

// The two bytes of a mark (none for ByteOrderMark::None); answers the count.
size_t byteOrderMarkBytes(ByteOrderMark mark, uint8_t bytes[2]);

// "wb" when `encoding` is a UTF-16 name, else "w" (null included).
const char* fileModeFor(const char* encoding);

}  // namespace lumxml
