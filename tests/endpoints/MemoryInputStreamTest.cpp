#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "TestStreams.h"

namespace {

std::string content(RVKByteBuffer const& b)
{
    return std::string(b.str(), static_cast<std::size_t>(b.pcount()));
}

}  // namespace

TEST(ZUMMemoryInputStream, ReadsAnArrayInPiecesAndRewindsOnOpen)
{
    char const bytes[] = {'a', 'b', 'c', 'd', 'X'};
    ZUMMemoryInputStream in(bytes, 4);
    char buf[4] = {};
    EXPECT_EQ(in.read(buf, 3), 3);
    EXPECT_EQ(std::string(buf, 3), "abc");
    EXPECT_EQ(in.read(buf, 3), 1);
    EXPECT_EQ(buf[0], 'd');
    EXPECT_EQ(in.read(buf, 3), -1);
    EXPECT_EQ(in.read(), -1);
    EXPECT_EQ(in.open(), 1);
    EXPECT_EQ(in.read(), 'a');
    RVKByteBuffer b;
    b.appendChars(">", 1);
    EXPECT_EQ(in.read(b, 10), 3);
    EXPECT_EQ(content(b), ">bcd");

    in.close();
    EXPECT_FALSE(in.isOpen());
    EXPECT_EQ(in.read() + in.read(buf, 3) + in.read(b, 3) + in.readFully(b, 1), -4);
    EXPECT_EQ(in.open(), 1);
    EXPECT_EQ(in.readFully(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 4), "abcd");
}

TEST(ZUMMemoryInputStream, ZeroAndNegativeCounts)
{
    ZUMMemoryInputStream in("ab", 2);
    char buf[2] = {'#', '#'};
    RVKByteBuffer b;
    b.appendChars("k", 1);
    EXPECT_EQ(in.read(buf, 0), 0);
    EXPECT_EQ(in.read(b, 0), 0);
    EXPECT_EQ(in.read(buf, -1), -1);
    EXPECT_EQ(in.read(b, -1), -1);
    EXPECT_EQ(buf[0], '#');
    EXPECT_EQ(in.read(buf, 2), 2);
    EXPECT_EQ(in.read(buf, 0), -1);
    EXPECT_EQ(in.read(b, 0), -1);
    EXPECT_EQ(content(b), "k");
}

TEST(ZUMMemoryInputStream, NullDestinationAssertsEvenWhenClosed)
{
    ZUMMemoryInputStream open("ab", 2);
    ZUMMemoryInputStream closed;
    EXPECT_EQ(raisedText<RVKAssertError>([&] { open.read(nullptr, 5); }), "RVK_ASSERT(buf);");
    EXPECT_EQ(raisedText<RVKAssertError>([&] { closed.read(nullptr, -1); }), "RVK_ASSERT(buf);");
    EXPECT_EQ(open.read(), 'a');
}

TEST(ZUMMemoryInputStream, DeliversEveryByteValueAsZeroTo255)
{
    char bytes[256];
    for (int i = 0; i < 256; ++i) {
        bytes[i] = static_cast<char>(255 - i);
    }
    ZUMMemoryInputStream in(bytes, 256);
    for (int i = 0; i <= 256; ++i) {
        ASSERT_EQ(in.read(), i < 256 ? 255 - i : -1);
    }
}

TEST(ZUMMemoryInputStream, BufferModeReadsWhatTheCallerAppendsLater)
{
    RVKByteBuffer source(0, 1);
    ZUMMemoryInputStream in(source);
    EXPECT_EQ(in.read(), -1);
    source.appendChars("xy", 2);
    EXPECT_EQ(in.read(), 'x');
    EXPECT_EQ(in.read(), 'y');
    EXPECT_EQ(in.read(), -1);

    // Appends that move the buffer's storage between reads.
    char buf[64];
    for (int i = 0; i < 50; ++i) {
        std::string piece(static_cast<std::size_t>(i + 1), static_cast<char>('A' + i % 26));
        source.appendChars(piece.data(), static_cast<unsigned>(piece.size()));
        ASSERT_EQ(in.read(buf, 64), i + 1);
        ASSERT_EQ(std::string(buf, piece.size()), piece);
    }
    source.reset();  // shrunk below the position
    EXPECT_EQ(in.read(), -1);
    EXPECT_EQ(in.open(), 1);
    source.appendChars("z", 1);
    EXPECT_EQ(in.read(), 'z');
    EXPECT_EQ(in.canUnread(), 0);
    {
        ZUMMemoryInputStream other(source);
    }
    EXPECT_EQ(std::string(source.str()), "z");  // destroying a stream leaves its source alone
}

TEST(ZUMMemoryInputStream, BadArgumentsLeaveTheStreamClosed)
{
    ZUMMemoryInputStream none(nullptr, 10);
    EXPECT_FALSE(none.isOpen());
    EXPECT_EQ(none.open(), 0);
    EXPECT_EQ(none.read(), -1);

    ZUMMemoryInputStream negative("abc", -1);
    EXPECT_FALSE(negative.isOpen());
    EXPECT_EQ(negative.open(), 1);
    char buf[4];
    RVKByteBuffer b;
    EXPECT_EQ(negative.read() + negative.read(buf, 4) + negative.read(b, 4), -3);

    RVKByteBuffer source;
    source.appendChars("q", 1);
    ZUMMemoryInputStream in(source);
    EXPECT_EQ(in.open(nullptr, 5), 0);
    EXPECT_FALSE(in.isOpen());
    EXPECT_EQ(in.read(), -1);
    EXPECT_EQ(in.open(), 0);
    EXPECT_EQ(in.open("", 0), 1);
    EXPECT_EQ(in.read(buf, 4), -1);
    EXPECT_EQ(in.open(source), 1);
    EXPECT_EQ(in.read(), 'q');
}
