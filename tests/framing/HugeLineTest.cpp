// Lines far longer than any buffer: readline has no length limit, so a
// line is delivered whole however many refills it spans, and a chunk-size
// line of any length is read to its end before its leading digits are taken.

#include <gtest/gtest.h>

#include <string>

#include "RVKCore.h"
#include "ZUMStreams.h"

TEST(HugeLines, AreDeliveredWholeAcrossRefills)
{
    std::string const big(3 << 20, 'x');
    struct Case {
        std::string input;
        std::string first;  // what the first readline delivers
    };
    Case const cases[] = {
        {big + "\r\nnext\r\n", big + "\r\n"},
        {big, big},                             // no CR LF: the rest, at the end
        {big + "\r" + big + "\n", big + "\r" + big + "\n"},  // a lone CR or LF ends nothing
    };
    for (auto const& c : cases) {
        ZUMMemoryInputStream mem(c.input.data(), static_cast<int>(c.input.size()));
        ZUMBufferedInputStream bis(mem, 4096);
        RVKByteBuffer line(0, 256);
        ASSERT_EQ(bis.readline(line), static_cast<int>(c.first.size()));
        EXPECT_TRUE(std::string(line.str(), static_cast<std::size_t>(line.pcount())) == c.first);
    }
}

TEST(HugeLines, ChunkSizeLinesOfAnyLengthTakeTheirLeadingDigits)
{
    struct Case {
        std::string body;
        std::string data;
    };
    Case const cases[] = {
        // 2^32 * k + 5, written with a million digits: a chunk of 5 bytes.
        {"1" + std::string(1 << 20, '0') + "5\r\nhello\r\n0\r\n\r\n", "hello"},
        // A chunk extension of a megabyte is read and ignored.
        {"5;" + std::string(1 << 20, 'e') + "\r\nhello\r\n0\r\n\r\n", "hello"},
        // No CR LF at all: the whole input is one size line, and nothing follows it.
        {"5" + std::string(1 << 20, ' '), ""},
    };
    for (auto const& c : cases) {
        ZUMMemoryInputStream mem(c.body.data(), static_cast<int>(c.body.size()));
        ZUMChunkedInputStream chunked(mem, 4096);
        std::string got;
        char buf[4096];
        int n;
        for (int reads = 0; (n = chunked.read(buf, sizeof buf)) != -1; ++reads) {
            ASSERT_LT(reads, 100);
            got.append(buf, static_cast<std::size_t>(n));
        }
        EXPECT_EQ(got, c.data);
    }
}
