#include <gtest/gtest.h>

#include "TestStreams.h"

// Writes that fill the buffer go down in buffer-sized pieces, the rest at
// flush(); a large write tops up the buffer, then passes the caller's bytes on
// in buffer-sized pieces.
TEST(BufferedOutputStream, DownstreamSeesOnlyBufferSizedWritesUntilFlush)
{
    struct Case { std::vector<int> writes; std::vector<std::size_t> downstream; int buffered; } const cases[] = {
        {{1, 1, 1}, {}, 3}, {{1, 1, 1, 1}, {4}, 0}, {{4}, {4}, 0}, {{9}, {4, 4}, 1},
        {{3, 10}, {4, 4, 4}, 1}, {{2, 6}, {4, 4}, 0}, {{0, 5, 0}, {4}, 1},
    };
    std::string const all = testBytes(64);
    for (auto const& c : cases) {
        RecordingOutputStream down;
        ZUMBufferedOutputStream out(down, 4);
        std::size_t at = 0;
        for (int n : c.writes) {
            out.write(all.data() + at, n);
            at += static_cast<std::size_t>(n);
        }
        EXPECT_EQ(down.sizes(), c.downstream) << "case with " << c.writes.size() << " writes";
        out.flush();
        EXPECT_EQ(down.writes.size(), c.downstream.size() + (c.buffered ? 1 : 0));
        EXPECT_EQ(down.all(), all.substr(0, at));
        EXPECT_EQ(down.flushes, 0);
    }
}

// close() passes nothing down, unWrap() flushes, the destructor drops what is
// collected; a failed flush keeps the bytes. Bytes that would have to be
// passed on need a downstream.
TEST(BufferedOutputStream, FlushCloseUnwrapDestructionFailuresAndMisuse)
{
    RecordingOutputStream down;
    {
        ZUMBufferedOutputStream out(down, 4);
        out.write("abc", 3);
        out.close();
        EXPECT_TRUE(down.writes.empty());
        out.unWrap();
        out.flush();  // empty and unwrapped: nothing
        EXPECT_EQ(raised([&] { out.write(nullptr, 0); }), "RVKAssertError(RVK_ASSERT(bytes);) @-");
        out.write("ab", 2);
        // "cd" fills the buffer and stays in it when the flush fails; "ef" is
        // not taken, nor anything of a later write while the buffer is full.
        std::string const unwrapped = "RVKAssertError(RVK_ASSERT(p_downstream);) @-";
        EXPECT_EQ(raised([&] { out.write("cdef", 4); }), unwrapped);
        EXPECT_EQ(raised([&] { out.write("0123456789", 10); }), unwrapped);
        EXPECT_EQ(raised([&] { out.flush(); }), unwrapped);
        out.wrap(down);
        EXPECT_EQ(raised([&] { out.wrap(down); }), "RVKAssertError(RVK_ASSERT(!p_downstream);) @-");
        out.flush();
        out.write("abc", 3);
        down.failAt(1, "disk full");
        EXPECT_EQ(raised([&] { out.write("d", 1); }), "text: disk full");
        out.write("e", 1);
        out.flush();
        out.write("fg", 2);
    }
    EXPECT_EQ(down.writes, (std::vector<std::string>{"abc", "abcd", "abcd", "e"}));
    EXPECT_EQ(down.flushes + down.closes, 0);
}
