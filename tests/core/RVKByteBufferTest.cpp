#include <gtest/gtest.h>

#include <utility>

#include "TestStreams.h"

TEST(RVKByteBuffer, GrowsKeepingContentAndTerminatingNulAlsoFromItsOwnBytes)
{
    for (unsigned initial : {0u, 1u, 7u}) {
        RVKByteBuffer b(initial, 3);
        std::string expected;
        for (int i = 0; i < 300; ++i) {
            char piece[3] = {static_cast<char>('a' + i % 26), static_cast<char>(i), 'x'};
            b.appendChars(piece, static_cast<unsigned>(1 + i % 3));
            expected.append(piece, static_cast<std::size_t>(1 + i % 3));
            ASSERT_EQ(b.str()[b.pcount()], '\0');
        }
        EXPECT_EQ(str(b), expected) << "initial " << initial;
    }
    RVKByteBuffer own(4, 1);
    own.appendChars("abcd", 4);
    for (int i = 0; i < 4; ++i) {
        own.appendChars(own.str(), static_cast<unsigned>(own.pcount()));  // moves its own storage
    }
    own.appendChars(own.str() + 2, 2);
    EXPECT_EQ(str(own).size(), 66u);
    EXPECT_EQ(str(own).substr(60), "abcdcd");
}

// Readers reserve room, write behind the content and then set the length.
TEST(RVKByteBuffer, ReserveSetLengthResetAndChop)
{
    RVKByteBuffer b(2, 2);
    b.appendChars("ab", 2);
    b.reserve(7);
    ASSERT_GE(b.capacity(), 7u);
    std::memcpy(b.str() + b.pcount(), "cdefg", 5);
    b.setLength(7);
    EXPECT_STREQ(b.str(), "abcdefg");
    unsigned room = b.capacity();
    b.reset();
    EXPECT_STREQ(b.str(), "");
    EXPECT_EQ(b.capacity(), room);
    // Growing by setLength keeps the bytes within the room and zeroes the rest.
    RVKByteBuffer c(4, 4);
    std::memcpy(c.str(), "wxyz", 4);
    c.setLength(10);
    EXPECT_EQ(str(c), std::string("wxyz\0\0\0\0\0\0", 10));
    EXPECT_EQ(c.str()[10], '\0');

    using Chop = std::pair<unsigned, char const*>;
    for (auto [n, rest] : {Chop{0, "abcdef"}, Chop{1, "bcdef"}, Chop{6, ""}, Chop{99, ""}}) {
        RVKByteBuffer d(4, 4);
        d.appendChars("abcdef", 6);
        d.chop(n);
        EXPECT_EQ(str(d), rest) << "chop " << n;
        EXPECT_EQ(d.str()[d.pcount()], '\0');
    }
}

TEST(RVKByteBuffer, CopiesAndMovesOwnTheirBytes)
{
    RVKByteBuffer a(2, 2);
    a.appendChars("abc", 3);
    RVKByteBuffer assigned;
    assigned = a;
    RVKByteBuffer& self = assigned;
    assigned = self;
    a.reset();
    RVKByteBuffer moved(std::move(assigned));
    moved.appendChars("d", 1);
    RVKByteBuffer target(8, 8);
    target = std::move(moved);
    RVKByteBuffer copy(target);
    target.appendChars("e", 1);
    EXPECT_EQ(str(copy), "abcd");
    EXPECT_EQ(str(target), "abcde");
}
