#include <gtest/gtest.h>

#include "TestStreams.h"

namespace {

// An upstream that never ends and never delivers.
class EmptyForever : public ZUMInputStream {
public:
    int read(RVKByteBuffer&, int) override { return ++reads, 0; }
    int read() override { return -1; }
    int reads = 0;
};

}  // namespace

TEST(BufferedInputStream, RefillsAskForTheBufferSizeAndReadsDeliverOnlyBufferedBytes)
{
    ScriptedInputStream up({ScriptStep::data("0123456789")});
    ZUMBufferedInputStream bis(up, 4);
    std::vector<int> sizes;
    EXPECT_EQ(drain(bis, 100, Form::Buffer, &sizes), "0123456789");
    EXPECT_EQ(sizes, (std::vector<int>{4, 4, 2}));
    EXPECT_EQ(up.counts, (std::vector<int>{4, 4, 4, 4}));

    ScriptedInputStream up2({ScriptStep::data("0123456789"), ScriptStep::data("abc")});
    ZUMBufferedInputStream bis2(up2, 16);
    char buf[100];
    ASSERT_EQ(bis2.read(buf, 0), 0);  // refills, delivers nothing, keeps the bytes
    ASSERT_EQ(bis2.buffered(), 10);
    EXPECT_EQ(bis2.read(buf, 100), 10);  // no upstream call
    EXPECT_EQ(bis2.read(buf, 100), 3);
    EXPECT_EQ(up2.counts, (std::vector<int>{16, 16}));
}

TEST(BufferedInputStream, EmptyRefillsAreNotEndOfStream)
{
    ScriptedInputStream up({ScriptStep::zero(), ScriptStep::data("\xff\x80"), ScriptStep::zero(),
                            ScriptStep::zero(), ScriptStep::data(std::string(1, '\0'))});
    ZUMBufferedInputStream bis(up, 8);
    RVKByteBuffer dst(0, 16);
    EXPECT_EQ(bis.read(dst, 10), 0);
    EXPECT_EQ(bis.read(), 255);
    EXPECT_EQ(bis.read(), 128);
    EXPECT_EQ(bis.read(), 0);  // read() refills past the empty refills
    EXPECT_EQ(bis.read(), -1);

    // A source that delivers nothing forever ends read() and readline(), with
    // a bounded number of upstream calls.
    EmptyForever never;
    ZUMBufferedInputStream stuck(never, 8);
    EXPECT_EQ(stuck.read(), -1);
    EXPECT_EQ(stuck.readline(dst), 0);
    EXPECT_LE(never.reads, 2000);
}

TEST(BufferedInputStream, UnreadPutsBytesInFrontInOrder)
{
    struct Case {
        int size, consumed;
        std::string pushed, rest;
    } const cases[] = {
        {6, 6, "XY", "XYgh"},          // after a whole refill: in place, then the next refill
        {6, 2, "VWXYZ", "VWXYZcdefgh"},  // more than was consumed: no stale bytes
    };
    for (auto const& c : cases) {
        ScriptedInputStream up({ScriptStep::data("abcdef"), ScriptStep::data("gh")});
        ZUMBufferedInputStream bis(up, c.size);
        char buf[6];
        ASSERT_EQ(bis.read(buf, c.consumed), c.consumed);
        bis.unread(c.pushed.data(), static_cast<int>(c.pushed.size()));
        EXPECT_EQ(drain(bis, 100), c.rest);
    }
    // Unwrapped: delivers the pushed bytes (successive calls stack), then ends;
    // readline needs a whole line.
    ZUMBufferedInputStream alone(4);
    alone.unread("abc", 3);
    alone.unread("xy\r\n", 4);
    RVKByteBuffer line(0, 16);
    EXPECT_EQ(alone.readline(line), 4);
    EXPECT_EQ(alone.readline(line), -1);
    EXPECT_EQ(drain(alone, 100, Form::Byte), "abc");
    EXPECT_EQ(raised([&] { alone.unread(nullptr, 0); }), "RVKAssertError(RVK_ASSERT(bytes);) @-");
}

TEST(BufferedInputStream, ReadlineEndsLinesAtCrLfOnly)
{
    std::string const nul("ab\0c\r\nd", 7);
    struct Case {
        std::string input;
        std::vector<std::string> lines;
    } const cases[] = {
        {"abc\r\nde\r\n\r\n", {"abc\r\n", "de\r\n", "\r\n"}},
        {"abc\ndef", {"abc\ndef"}},
        {"a\rb\r\r\n", {"a\rb\r\r\n"}},
        {nul, {nul}},  // a CR LF behind a NUL is not seen
        {"", {}},
    };
    for (auto const& c : cases) {
        // Whole, and one byte per upstream read with empty reads between.
        for (int piece : {0, 1}) {
            for (int size : {1, 3, 64}) {
                ScriptedInputStream up(piece ? ScriptedInputStream::pieces(c.input, 1, true)
                                             : std::vector<ScriptStep>{ScriptStep::data(c.input)});
                ZUMBufferedInputStream bis(up, size);
                std::vector<std::string> got;
                RVKByteBuffer line(0, 16);
                for (int n; (n = bis.readline(line)) != -1; line.reset()) {
                    ASSERT_EQ(n, line.pcount());
                    got.push_back(str(line));
                }
                EXPECT_EQ(got, c.lines) << "input " << c.input << " piece " << piece << " size " << size;
            }
        }
    }
    // A failure beneath keeps the start of the line.
    ScriptedInputStream up({ScriptStep::data("ab\r\ncd"), ScriptStep::throwIO(), ScriptStep::data("e\r\n")});
    ZUMBufferedInputStream bis(up, 100);
    RVKByteBuffer line(0, 16);
    EXPECT_EQ(bis.readline(line), 4);
    line.reset();
    EXPECT_THROW(bis.readline(line), ZUMIOException);
    EXPECT_EQ(bis.readline(line), 5);
    EXPECT_EQ(str(line), "cde\r\n");
}

TEST(BufferedInputStream, UnWrapHandsReadAheadBackOrRefuses)
{
    ZUMMemoryInputStream mem("0123456789", 10);
    ZUMBufferedInputStream over_mem(mem, 8);
    char buf[3];
    ASSERT_EQ(over_mem.read(buf, 3), 3);
    EXPECT_EQ(raised([&] { over_mem.unWrap(); }), "text: can't unwrap");
    EXPECT_EQ(over_mem.getUpstream(), &mem);
    EXPECT_EQ(over_mem.buffered(), 5);
    EXPECT_EQ(raised([&] { over_mem.read(nullptr, 0); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_EQ(drain(over_mem, 100), "3456789");  // nothing was lost
    EXPECT_EQ(over_mem.read(nullptr, 5), -1);     // the end comes before the copy

    // Over another buffered stream: the bytes go back, in order.
    ZUMMemoryInputStream mem2("0123456789", 10);
    ZUMBufferedInputStream lower(mem2, 10);
    ZUMBufferedInputStream upper(lower, 8);
    ASSERT_EQ(upper.read(buf, 3), 3);
    upper.unWrap();
    EXPECT_EQ(upper.buffered(), 0);
    EXPECT_EQ(upper.getUpstream(), nullptr);
    EXPECT_EQ(drain(lower, 100), "3456789");

    // Nothing buffered: fine over a stream that cannot unread; twice fails.
    ZUMBufferedInputStream empty(mem, 8);
    empty.unWrap();
    EXPECT_EQ(raised([&] { empty.unWrap(); }), "RVKIllegalStateError() @void ZUMBufferedInputStream::unWrap()");
}
