// Bytes put in place at an XMLMemOut's room and committed are exactly a
// writeChars of them: room is offered only when such a write would not
// grow the block.
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "out/memio.h"

using lumxml::XMLMemOut;

namespace {

TEST(MemoryTargetRoom, OfferedOnlyWhenAWriteWouldNotGrow) {
    XMLMemOut out(nullptr, false);
    // 16383 + 1 + 0 reaches the capacity: writeChars would grow first.
    EXPECT_EQ(out.room(16383), nullptr);
    ASSERT_NE(out.room(16382), nullptr);
    EXPECT_EQ(out.room(16382), out.buffer());
}

TEST(MemoryTargetRoom, CommittedBytesAreThoseOfAWrite) {
    XMLMemOut viaRoom(nullptr, false);
    XMLMemOut viaWrite(nullptr, false);
    std::string piece = "<item id=\"x\">text &amp; more</item>";
    for (int i = 0; i < 1000; ++i) {
        viaWrite.writeChars(reinterpret_cast<const XMLByte*>(piece.data()), piece.size(), nullptr);
        if (uint8_t* room = viaRoom.room(piece.size() * 3)) {
            std::memcpy(room, piece.data(), piece.size());
            viaRoom.commit(piece.size());
        } else {
            viaRoom.writeChars(reinterpret_cast<const XMLByte*>(piece.data()), piece.size(), nullptr);
        }
        ASSERT_EQ(viaRoom.length(), viaWrite.length());
        ASSERT_EQ(viaRoom.capacity(), viaWrite.capacity()) << "piece " << i;
    }
    EXPECT_EQ(std::memcmp(viaRoom.buffer(), viaWrite.buffer(), viaWrite.length()), 0);
}

TEST(MemoryTargetRoom, AfterTheRoomTheBlockStillHasItsSpareByte) {
    XMLMemOut out(nullptr, false);
    uint8_t* room = out.room(16382);
    ASSERT_NE(room, nullptr);
    std::memset(room, 'x', 16382);
    out.commit(16382);
    EXPECT_EQ(out.length(), 16382u);
    EXPECT_LT(out.length() + 1u, out.capacity());
    EXPECT_EQ(out.room(1), nullptr);  // 1 + 1 + 16382 reaches 16384
}

TEST(MemoryTargetRoom, NoRoomOnceTheBlockIsGone) {
    XMLMemOut out(nullptr, false);
    out.discard();
    EXPECT_EQ(out.room(1), nullptr);
}

}  // namespace
