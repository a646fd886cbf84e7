#include <gtest/gtest.h>

#include <vector>

#include "RaiseChecks.h"
#include "TestStreams.h"
#include "ZUMBufferedOutputStream.h"

namespace {

std::vector<std::size_t> sizes(RecordingOutputStream const& out)
{
    std::vector<std::size_t> s;
    for (auto const& w : out.writes) {
        s.push_back(w.size());
    }
    return s;
}

// Remembers where each write's bytes lay.
struct PointerRecorder : ZUMOutputStream {
    void write(char const* bytes, int count) override { calls.push_back({bytes, count}); }
    std::vector<std::pair<char const*, int>> calls;
};

}  // namespace

TEST(BufferedOutputStream, DownstreamSeesOnlyBufferSizedWritesUntilFlush)
{
    struct Case {
        std::vector<int> writes;
        std::vector<std::size_t> downstream;
        int buffered;
    };
    Case const cases[] = {
        {{1, 1, 1}, {}, 3},
        {{1, 1, 1, 1}, {4}, 0},
        {{4}, {4}, 0},
        {{9}, {4, 4}, 1},
        {{3, 10}, {4, 4, 4}, 1},
        {{2, 6}, {4, 4}, 0},
        {{0, 5, 0}, {4}, 1},
    };
    for (auto const& c : cases) {
        RecordingOutputStream down;
        ZUMBufferedOutputStream out(down, 4);
        std::string all = testBytes(64);
        std::size_t at = 0;
        for (int n : c.writes) {
            out.write(all.data() + at, n);
            at += static_cast<std::size_t>(n);
        }
        EXPECT_EQ(sizes(down), c.downstream) << "case with " << c.writes.size() << " writes";
        out.flush();
        EXPECT_EQ(down.writes.size(), c.downstream.size() + (c.buffered ? 1 : 0));
        EXPECT_EQ(down.all(), all.substr(0, at));
        EXPECT_EQ(down.flushes, 0);
    }
}

TEST(BufferedOutputStream, LargeWritesPassThroughWithoutCopy)
{
    PointerRecorder down;
    ZUMBufferedOutputStream out(down, 4);
    char bytes[13] = {};
    out.write(bytes, 1);
    out.write(bytes + 1, 12);
    // Top-up flush from the buffer, then two pieces straight from the caller.
    ASSERT_EQ(down.calls.size(), 3u);
    EXPECT_NE(down.calls[0].first, bytes);
    EXPECT_EQ(down.calls[1].first, bytes + 4);
    EXPECT_EQ(down.calls[2].first, bytes + 8);
}

TEST(BufferedOutputStream, FlushCloseUnwrapAndDestruction)
{
    RecordingOutputStream down;
    {
        ZUMBufferedOutputStream out(down, 8);
        out.write("abc", 3);
        out.close();
        EXPECT_TRUE(down.writes.empty());
        EXPECT_EQ(down.closes, 0);
        out.unWrap();
        EXPECT_EQ(down.writes, std::vector<std::string>{"abc"});
        out.flush();  // empty and unwrapped: nothing
        out.wrap(down);
        out.write("de", 2);
    }
    // The destructor dropped "de".
    EXPECT_EQ(down.all(), "abc");
    EXPECT_EQ(down.flushes, 0);
}

TEST(BufferedOutputStream, Misuse)
{
    ZUMBufferedOutputStream out(4);
    expectAssert([&] { out.write(nullptr, 0); }, "RVK_ASSERT(bytes);");
    out.write("ab", 2);
    // Bytes that would have to be passed on need a downstream; none is taken.
    expectAssert([&] { out.write("cdef", 4); }, "RVK_ASSERT(p_downstream);");
    expectAssert([&] { out.write("0123456789", 10); }, "RVK_ASSERT(p_downstream);");
    expectAssert([&] { out.flush(); }, "RVK_ASSERT(p_downstream);");
    RecordingOutputStream down;
    out.wrap(down);
    expectAssert([&] { out.wrap(down); }, "RVK_ASSERT(!p_downstream);");
    out.flush();
    EXPECT_EQ(down.all(), "ab");
}

TEST(BufferedOutputStream, FailedFlushKeepsTheBytes)
{
    RecordingOutputStream down;
    ZUMBufferedOutputStream out(down, 4);
    out.write("abc", 3);
    down.throw_text_on_write = "disk full";
    EXPECT_THROW(out.write("d", 1), char const*);
    down.throw_text_on_write = nullptr;
    out.write("e", 1);
    out.flush();
    EXPECT_EQ(down.writes, (std::vector<std::string>{"abcd", "e"}));
}
