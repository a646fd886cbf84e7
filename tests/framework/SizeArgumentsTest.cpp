#include <gtest/gtest.h>

#include <climits>
#include <functional>

#include "TestStreams.h"

// Every size argument of the library, with values that cannot work: each ends
// in RVKIllegalArgumentError naming the argument, at construction, before
// anything is allocated or read. CTest bounds the run, so a size that made a
// stream spin would fail here instead of hanging.
TEST(SizeArguments, ValuesThatCannotWorkAreRefused)
{
    ZUMMemoryInputStream in("abc\r\n", 5);
    ZUMMemoryOutputStream out(16, 16);
    // The class whose constructor refuses the size, and what it says.
    struct Case { int size; std::function<void(int)> make; std::string cls, says = "size must be 1 or more"; };
    std::vector<Case> const cases = {
        {0, [](int n) { ZUMBufferedInputStream s(n); }, "ZUMBufferedInputStream"},
        {0, [&](int n) { ZUMBufferedOutputStream s(out, n); s.write("ab", 2); }, "ZUMBufferedOutputStream"},
        {INT_MIN, [](int n) { ZUMBufferedOutputStream s(n); }, "ZUMBufferedOutputStream"},
        {-4096, [](int n) { ZUMBlockInputStream s(n); }, "ZUMBlockInputStream"},
        {-1, [](int n) { ZUMChunkedInputStream s(n); }, "ZUMChunkedInputStream"},
        {0, [&](int n) { ZUMChunkedOutputStream s(out, n); s.write("ab", 2); }, "ZUMChunkedOutputStream"},
        {INT_MIN, [&](int n) { ZUMChunkedOutputStream s(out, n); }, "ZUMChunkedOutputStream"},
        {0, [&](int n) { ZUMInputStreamBuf b(in, n); }, "ZUMInputStreamBuf", "bufferSize must be 1 or more"},
        {-1, [&](int n) { ZUMOutputStreamBuf b(out, n); }, "ZUMOutputStreamBuf", "bufferSize must be 1 or more"},
    };
    for (auto const& c : cases) {
        std::string const refusal = "RVKIllegalArgumentError() @" + c.cls + "::" + c.cls + " - " + c.says;
        EXPECT_EQ(raised([&] { c.make(c.size); }), refusal) << "size " << c.size;
    }
    EXPECT_EQ(in.read(), 'a') << "nothing was read from the stream beneath";
    EXPECT_EQ(out.length(), 0) << "nothing was written to the stream beneath";
}

// The memory output stream checks no size: it hands both to the byte buffer as
// unsigned values, so a negative one is a huge size. Initial room of -1 can
// never be reserved; a negative growth step matters only once that room is
// used up, so writes within it work.
TEST(SizeArguments, NegativeMemoryOutputSizesReachTheByteBuffer)
{
    EXPECT_EQ(raised([] { ZUMMemoryOutputStream s(-1, 16); }),
              "RVKOutOfMemoryError() @RVKByteBuffer - allocation failed");
    ZUMMemoryOutputStream s(4, -1);
    s.write("abcd", 4);
    EXPECT_EQ(str(s), "abcd");
}

// The smallest sizes that work, and the values whose meaning is fixed (a
// block of 0 or less), keep their behaviour. (A buffered input stream of 1
// byte reads lines in BufferedInputStreamTest, no line breaks in Base64
// output is lineBreak(0) in Base64StreamsTest.)
TEST(SizeArguments, SmallestWorkingValuesKeepTheirBehaviour)
{
    ZUMMemoryOutputStream mem(0, 0);
    ZUMChunkedOutputStream chunked(mem, 1);
    ZUMBufferedOutputStream buffered(chunked, 1);
    buffered.write("ab", 2);
    chunked.close();
    EXPECT_EQ(str(mem), "1\r\na\r\n1\r\nb\r\n0\r\n\r\n");
    ZUMMemoryInputStream raw(mem.bytes(), mem.length());
    ZUMChunkedInputStream dechunk(raw, 1);
    EXPECT_EQ(drain(dechunk, 7), "ab");
    for (int n : {0, -1, INT_MIN}) {
        ZUMMemoryInputStream text("0123456789", 10);
        ZUMBlockInputStream block(text, 1);
        block.resetBlockSize(n);
        EXPECT_EQ(block.read(), -1) << "block size " << n;
        block.resetBlockSize(3);
        EXPECT_EQ(drain(block, 2), "012");
    }
}
