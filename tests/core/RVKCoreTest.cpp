#include <gtest/gtest.h>

#include "TestStreams.h"

// Appends keep the content and the terminating NUL while the storage grows,
// also when the bytes come from the buffer's own storage.
TEST(RVKByteBuffer, GrowsKeepingContentAndTerminatingNulAlsoFromItsOwnBytes)
{
    for (unsigned initial : {0u, 1u, 7u}) {
        RVKByteBuffer b(initial, 3);
        std::string expected;
        for (int i = 0; i < 300; ++i) {
            std::string piece = testBytes(static_cast<std::size_t>(1 + i % 3), static_cast<unsigned>(i));
            b.appendChars(piece.data(), static_cast<unsigned>(piece.size()));
            expected += piece;
            ASSERT_EQ(b.str()[b.pcount()], '\0');
        }
        EXPECT_EQ(str(b), expected) << "initial " << initial;
        for (int i = 0; i < 4; ++i) {
            b.appendChars(b.str(), static_cast<unsigned>(b.pcount()));  // moves its own storage
            expected += expected;
        }
        b.appendChars(b.str() + 2, 2);
        EXPECT_TRUE(str(b) == expected + expected.substr(2, 2));
    }
}

// Readers reserve room, write behind the content and then set the length;
// growing keeps the bytes within the room and zeroes the rest.
TEST(RVKByteBuffer, ReserveAndSetLength)
{
    RVKByteBuffer b(2, 2);
    b.appendChars("ab", 2);
    b.reserve(7);
    std::memcpy(b.str() + b.pcount(), "cdefg", 5);
    b.setLength(9);
    EXPECT_EQ(str(b), std::string("abcdefg\0\0", 9));
    EXPECT_EQ(b.str()[9], '\0');
}
