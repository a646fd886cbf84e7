#include <gtest/gtest.h>

#include <functional>

#include "FramingTestUtil.h"
#include "TestStreams.h"
#include "ZUMBufferedInputStream.h"

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
    EXPECT_EQ(readAll(bis, 100, &sizes), "0123456789");
    EXPECT_EQ(sizes, (std::vector<int>{4, 4, 2}));
    EXPECT_EQ(up.counts, (std::vector<int>{4, 4, 4, 4}));

    // Ten bytes buffered: a large read takes them with no upstream call.
    ScriptedInputStream up2({ScriptStep::data("0123456789"), ScriptStep::data("abc")});
    ZUMBufferedInputStream bis2(up2, 16);
    char one;
    ASSERT_EQ(bis2.read(&one, 0), 0);  // refills, delivers nothing, keeps the bytes
    ASSERT_EQ(bis2.buffered(), 10);
    char buf[100];
    EXPECT_EQ(bis2.read(buf, 100), 10);
    EXPECT_EQ(up2.counts.size(), 1u);
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
    RVKByteBuffer line(0, 16);
    EXPECT_EQ(stuck.readline(line), 0);
    EXPECT_EQ(line.pcount(), 0);
    EXPECT_LE(never.reads, 2000);
}

TEST(BufferedInputStream, UnreadPutsBytesInFrontInOrder)
{
    // Unwrapped: delivers the pushed bytes, then ends.
    ZUMBufferedInputStream alone(8);
    alone.unread("abc", 3);
    EXPECT_EQ(readAllBytes(alone), "abc");

    // After a whole refill was read: in place, then the next refill.
    ScriptedInputStream up({ScriptStep::data("abcdef"), ScriptStep::data("gh")});
    ZUMBufferedInputStream bis(up, 6);
    char buf[6];
    ASSERT_EQ(bis.read(buf, 6), 6);
    bis.unread("XY", 2);
    EXPECT_EQ(bis.buffered(), 2);
    EXPECT_EQ(readAll(bis, 100), "XYgh");

    // More than was consumed: the rest follows, no stale bytes.
    ScriptedInputStream up2({ScriptStep::data("abcdef")});
    ZUMBufferedInputStream bis2(up2, 6);
    ASSERT_EQ(bis2.read(buf, 2), 2);
    bis2.unread("VWXYZ", 5);
    EXPECT_EQ(bis2.buffered(), 9);
    EXPECT_EQ(readAll(bis2, 100), "VWXYZcdef");

    // Successive calls stack.
    ZUMBufferedInputStream stack(4);
    stack.unread("b", 1);
    stack.unread("a", 1);
    EXPECT_EQ(readAllBytes(stack), "ab");
}

TEST(BufferedInputStream, ReadlineEndsLinesAtCrLfOnly)
{
    struct Case {
        std::string input;
        std::vector<std::string> lines;
    };
    std::string const nul("ab\0c\r\nd", 7);
    std::string const nul_after("\0c\r\n", 4);
    Case const cases[] = {
        {"abc\r\nde\r\n\r\n", {"abc\r\n", "de\r\n", "\r\n"}},
        {"abc\ndef", {"abc\ndef"}},
        {"a\rb\r\r\n", {"a\rb\r\r\n"}},
        {nul, {nul}},  // a CR LF behind a NUL is not seen
        {"ab\r\n" + nul_after, {"ab\r\n", nul_after}},
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
                    got.push_back(text(line));
                }
                EXPECT_EQ(got, c.lines) << "input " << c.input << " piece " << piece << " size " << size;
            }
        }
    }
}

TEST(BufferedInputStream, ReadlineWithoutUpstreamNeedsAWholeLine)
{
    ZUMBufferedInputStream bis(8);
    bis.unread("xy\r\nabc", 7);
    RVKByteBuffer line(0, 16);
    EXPECT_EQ(bis.readline(line), 4);
    EXPECT_EQ(bis.readline(line), -1);
    char buf[10];
    EXPECT_EQ(bis.read(buf, 10), 3);
    EXPECT_EQ(std::string(buf, 3), "abc");
}

TEST(BufferedInputStream, ReadlineKeepsTheLineStartWhenTheUpstreamThrows)
{
    ScriptedInputStream up({ScriptStep::data("ab\r\ncd"), ScriptStep::throwIO(), ScriptStep::data("e\r\n")});
    ZUMBufferedInputStream bis(up, 100);
    RVKByteBuffer line(0, 16);
    EXPECT_EQ(bis.readline(line), 4);
    line.reset();
    EXPECT_THROW(bis.readline(line), ZUMIOException);
    EXPECT_EQ(bis.readline(line), 5);
    EXPECT_EQ(text(line), "cde\r\n");
}

TEST(BufferedInputStream, UnWrapHandsReadAheadBackOrRefuses)
{
    ZUMMemoryInputStream mem("0123456789", 10);
    ZUMBufferedInputStream over_mem(mem, 8);
    char buf[3];
    ASSERT_EQ(over_mem.read(buf, 3), 3);
    try {
        over_mem.unWrap();
        FAIL() << "unWrap over a memory stream with bytes buffered";
    } catch (char const* e) {
        EXPECT_STREQ(e, "can't unwrap");
    }
    EXPECT_EQ(over_mem.getUpstream(), &mem);
    EXPECT_EQ(over_mem.buffered(), 5);

    // Over another buffered stream: the bytes go back, in order.
    ZUMMemoryInputStream mem2("0123456789", 10);
    ZUMBufferedInputStream lower(mem2, 10);
    ZUMBufferedInputStream upper(lower, 8);
    ASSERT_EQ(upper.read(buf, 3), 3);
    upper.unWrap();
    EXPECT_EQ(upper.buffered(), 0);
    EXPECT_EQ(upper.getUpstream(), nullptr);
    EXPECT_EQ(readAll(lower, 100), "3456789");

    // Nothing buffered: fine over a stream that cannot unread; twice fails.
    ZUMMemoryInputStream mem3("", 0);
    ZUMBufferedInputStream empty(mem3, 8);
    empty.unWrap();
    try {
        empty.unWrap();
        FAIL() << "second unWrap";
    } catch (RVKIllegalStateError const& e) {
        EXPECT_EQ(methodText(e), "void ZUMBufferedInputStream::unWrap()");
    }
}

TEST(BufferedInputStream, NullDestinationsFailTheirAssertions)
{
    ScriptedInputStream up({ScriptStep::data("abc")});
    ZUMBufferedInputStream bis(up, 8);
    struct Call {
        char const* expected;
        std::function<void()> call;
    };
    Call const calls[] = {
        {"RVK_ASSERT(buf);", [&] { bis.read(nullptr, 5); }},
        {"RVK_ASSERT(buf);", [&] { bis.read(nullptr, 0); }},
        {"RVK_ASSERT(bytes);", [&] { bis.unread(nullptr, 0); }},
    };
    for (auto const& c : calls) {
        try {
            c.call();
            ADD_FAILURE() << c.expected;
        } catch (RVKAssertError const& e) {
            EXPECT_EQ(assertText(e), c.expected);
        }
    }
    EXPECT_EQ(readAll(bis, 10), "abc");  // nothing was lost
    EXPECT_EQ(bis.read(nullptr, 5), -1);  // end of stream comes before the copy
}
