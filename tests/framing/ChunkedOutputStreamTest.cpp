#include <gtest/gtest.h>

#include "TestStreams.h"

using Writes = std::vector<std::string>;

// Three writes per full chunk during write(), the rest at close() and one
// write for the last chunk; flush() writes what is collected as a chunk.
TEST(ChunkedOutputStream, WritePatternUnwrapAndDestruction)
{
    std::string const y(4096, 'y');
    struct Case { int chunk; std::string body; bool flush_first; Writes during_write, at_close; } const cases[] = {
        {4, "abcdefghij", false, {"4\r\n", "abcd", "\r\n", "4\r\n", "efgh", "\r\n"},
         {"2\r\n", "ij", "\r\n", "0\r\n\r\n"}},
        {5, "hello", false, {"5\r\n", "hello", "\r\n"}, {"0\r\n\r\n"}},
        {3, "hello", true, {"3\r\n", "hel", "\r\n"}, {"2\r\n", "lo", "\r\n", "0\r\n\r\n"}},
        {8, "", true, {}, {"0\r\n\r\n"}},
        {4096, y, false, {"1000\r\n", y, "\r\n"}, {"0\r\n\r\n"}},
    };
    for (auto const& c : cases) {
        RecordingOutputStream down;
        ZUMChunkedOutputStream out(down, c.chunk);
        out.write(c.body.data(), static_cast<int>(c.body.size()));
        EXPECT_EQ(down.writes, c.during_write) << c.body;
        down.writes.clear();
        if (c.flush_first) {
            out.flush();
        }
        out.close();
        EXPECT_EQ(down.writes, c.at_close) << c.body;
        EXPECT_EQ(down.closes, 0);
    }

    // unWrap writes the collected chunk (no last chunk); the destructor drops it.
    RecordingOutputStream down;
    {
        ZUMChunkedOutputStream out(down, 8);
        out.write("abc", 0);
        out.flush();
        EXPECT_TRUE(down.writes.empty());  // nothing without data
        EXPECT_EQ(raised([&] { out.write(nullptr, 0); }), "RVKAssertError(RVK_ASSERT(bytes);) @-");
        out.write("abc", 3);
    }
    EXPECT_TRUE(down.writes.empty());  // no chunk, and no last chunk

    ZUMChunkedOutputStream out(down, 8);
    out.write("abc", 3);
    out.unWrap();
    EXPECT_EQ(down.all(), "3\r\nabc\r\n");
    out.write("d", 1);  // still usable, still writing to the constructor's stream
    out.close();
    out.close();
    EXPECT_EQ(down.all(), "3\r\nabc\r\n1\r\nd\r\n0\r\n\r\n0\r\n\r\n");
}
