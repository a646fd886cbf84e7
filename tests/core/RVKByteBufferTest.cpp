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
        EXPECT_EQ(content(b), expected) << "initial " << initial;
    }
    RVKByteBuffer own(4, 1);
    own.appendChars("abcd", 4);
    for (int i = 0; i < 4; ++i) {
        own.appendChars(own.str(), static_cast<unsigned>(own.pcount()));
    }
    own.appendChars(own.str() + 2, 2);
    std::string expected;
    for (int i = 0; i < 16; ++i) {
        expected += "abcd";
    }
    EXPECT_EQ(content(own), expected + "cd");
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

    // Bytes written within the room survive a setLength beyond it; the new
    // bytes are zero.
    RVKByteBuffer c(4, 4);
    std::memcpy(c.str(), "wxyz", 4);
    c.setLength(10);
    EXPECT_EQ(content(c), std::string("wxyz\0\0\0\0\0\0", 10));
    EXPECT_EQ(c.str()[10], '\0');

    struct Case {
        unsigned n;
        char const* rest;
    };
    for (Case k : {Case{0, "abcdef"}, Case{1, "bcdef"}, Case{5, "f"}, Case{6, ""}, Case{99, ""}}) {
        RVKByteBuffer d(4, 4);
        d.appendChars("abcdef", 6);
        d.chop(k.n);
        EXPECT_EQ(content(d), k.rest) << "chop " << k.n;
        EXPECT_EQ(d.str()[d.pcount()], '\0');
    }
}

TEST(RVKByteBuffer, WritesNumbersAndCopiesAndMoves)
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
        b << "[" << c.value << "]" << static_cast<char const*>(nullptr);
        EXPECT_EQ(content(b), std::string("[") + c.text + "]") << c.value;
    }

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
    target.appendChars("zz", 2);
    target = std::move(moved);
    RVKByteBuffer copy(target);
    target.appendChars("e", 1);
    EXPECT_EQ(content(copy), "abcd");
    EXPECT_EQ(content(target), "abcde");
}
