#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <utility>

#include "RVKCore.h"

namespace {

std::string content(RVKByteBuffer const& b)
{
    return std::string(b.str(), static_cast<std::size_t>(b.pcount()));
}

}  // namespace

TEST(RVKByteBuffer, AppendsAcrossGrowthKeepingContentAndTerminatingNul)
{
    for (unsigned initial : {0u, 1u, 7u, 64u}) {
        RVKByteBuffer b(initial, 3);
        std::string expected;
        for (int i = 0; i < 300; ++i) {
            char piece[3] = {static_cast<char>('a' + i % 26), static_cast<char>(i), 'x'};
            b.appendChars(piece, static_cast<unsigned>(1 + i % 3));
            expected.append(piece, static_cast<std::size_t>(1 + i % 3));
            ASSERT_EQ(b.str()[b.pcount()], '\0');
        }
        EXPECT_EQ(content(b), expected) << "initial " << initial;
        b.appendChars(nullptr, 0);
        EXPECT_EQ(b.pcount(), static_cast<int>(expected.size()));
    }
}

TEST(RVKByteBuffer, ResetEmptiesAndKeepsRoom)
{
    RVKByteBuffer b(16, 16);
    b.appendChars("hello", 5);
    unsigned room = b.capacity();
    b.reset();
    EXPECT_EQ(b.pcount(), 0);
    EXPECT_STREQ(b.str(), "");
    EXPECT_EQ(b.capacity(), room);
    RVKByteBuffer empty(0, 0);
    empty.reset();
    empty.setLength(0);
    empty.chop(3);
    EXPECT_STREQ(empty.str(), "");
}

// Readers reserve room, write behind the content and then set the length.
TEST(RVKByteBuffer, ReserveThenWriteBehindContentThenSetLength)
{
    RVKByteBuffer b(2, 2);
    b.appendChars("ab", 2);
    b.reserve(static_cast<unsigned>(b.pcount()) + 5u);
    ASSERT_GE(b.capacity(), 7u);
    EXPECT_EQ(content(b), "ab");
    std::memcpy(b.str() + b.pcount(), "cdefg", 5);
    b.setLength(7);
    EXPECT_STREQ(b.str(), "abcdefg");

    // Bytes written within the room survive a setLength beyond it; the new
    // bytes are zero.
    RVKByteBuffer c(4, 4);
    std::memcpy(c.str(), "wxyz", 4);
    c.setLength(10);
    EXPECT_EQ(content(c), std::string("wxyz\0\0\0\0\0\0", 10));
    EXPECT_EQ(c.str()[10], '\0');
}

TEST(RVKByteBuffer, ChopDropsLeadingBytes)
{
    struct Case {
        unsigned n;
        char const* rest;
    };
    for (Case c : {Case{0, "abcdef"}, Case{1, "bcdef"}, Case{5, "f"}, Case{6, ""}, Case{99, ""}}) {
        RVKByteBuffer b(4, 4);
        b.appendChars("abcdef", 6);
        b.chop(c.n);
        EXPECT_STREQ(b.str(), c.rest) << "chop " << c.n;
        EXPECT_EQ(b.pcount(), static_cast<int>(std::strlen(c.rest)));
    }
}

TEST(RVKByteBuffer, WritesNumbersInHexOrDecimal)
{
    struct Case {
        int hex;
        int value;
        char const* text;
    };
    Case const cases[] = {
        {1, 0, "0"}, {1, 255, "ff"}, {1, 0x1A2B, "1a2b"}, {1, -1, "ffffffff"},
        {0, 0, "0"}, {0, 42, "42"},  {0, -7, "-7"},       {0, INT_MIN, "-2147483648"},
    };
    for (Case const& c : cases) {
        RVKByteBuffer b(0, 8);
        b.setHexRadix(c.hex);
        b << "[" << c.value << "]";
        EXPECT_EQ(content(b), std::string("[") + c.text + "]") << c.value;
    }
    RVKByteBuffer b;
    b << static_cast<char const*>(nullptr);
    EXPECT_EQ(b.pcount(), 0);
}

TEST(RVKByteBuffer, CopiesAreIndependentAndMovesTransfer)
{
    RVKByteBuffer a(2, 2);
    a.appendChars("abc", 3);
    RVKByteBuffer copy(a);
    copy.appendChars("d", 1);
    EXPECT_EQ(content(a), "abc");
    EXPECT_EQ(content(copy), "abcd");

    RVKByteBuffer assigned;
    assigned = a;
    RVKByteBuffer& self = assigned;
    assigned = self;
    a.reset();
    EXPECT_EQ(content(assigned), "abc");

    RVKByteBuffer moved(std::move(assigned));
    EXPECT_EQ(content(moved), "abc");
    moved.appendChars("e", 1);
    RVKByteBuffer target(8, 8);
    target.appendChars("zz", 2);
    target = std::move(moved);
    EXPECT_EQ(content(target), "abce");
}

TEST(RVKByteBuffer, AppendsItsOwnBytesWhileGrowing)
{
    RVKByteBuffer b(4, 1);
    b.appendChars("abcd", 4);
    for (int i = 0; i < 4; ++i) {
        b.appendChars(b.str(), static_cast<unsigned>(b.pcount()));
    }
    ASSERT_EQ(b.pcount(), 64);
    for (int i = 0; i < 64; ++i) {
        ASSERT_EQ(b.str()[i], "abcd"[i % 4]) << i;
    }
    b.appendChars(b.str() + 62, 2);
    EXPECT_EQ(content(b).substr(64), "cd");
}
