#include <gtest/gtest.h>

#include "TestStreams.h"

// Refills ask for the buffer size; a read delivers only buffered bytes; an
// empty refill is not the end; over a source that delivers nothing forever
// read() ends (-1) and readline() gives no line (0) after a bounded number of
// calls.
TEST(BufferedInputStream, RefillsAskForTheBufferSizeAndReadsDeliverOnlyBufferedBytes)
{
    ScriptedInputStream up({ScriptStep::data("0123456789")});
    ZUMBufferedInputStream bis(up, 4);
    std::vector<int> sizes;
    EXPECT_EQ(drain(bis, 100, Form::Buffer, &sizes), "0123456789");
    EXPECT_EQ(sizes, (std::vector<int>{4, 4, 2}));
    EXPECT_EQ(up.counts, (std::vector<int>{4, 4, 4, 4}));

    ScriptedInputStream up2({ScriptStep::zero(), ScriptStep::data("0123456789"), ScriptStep::zero(),
                             ScriptStep::data(std::string(1, '\0'))});
    ZUMBufferedInputStream bis2(up2, 16);
    char buf[100];
    EXPECT_EQ(bis2.read(buf, 100), 0);
    ASSERT_EQ(bis2.read(buf, 0), 0);  // refills, delivers nothing, keeps the bytes
    ASSERT_EQ(bis2.buffered(), 10);
    EXPECT_EQ(bis2.read(), '0');
    EXPECT_EQ(bis2.read(buf, 100), 9);  // no upstream call
    EXPECT_EQ(bis2.read(), 0);          // read() refills past the empty refill
    EXPECT_EQ(bis2.read(), -1);
    EXPECT_EQ(up2.counts, (std::vector<int>{16, 16, 16, 16, 16}));

    ScriptedInputStream never(std::vector<ScriptStep>(100000, ScriptStep::zero()));
    ZUMBufferedInputStream stuck(never, 8);
    RVKByteBuffer line(0, 16);
    EXPECT_EQ((Row{stuck.read(), stuck.readline(line)}), (Row{-1, 0}));
    EXPECT_LE(never.counts.size(), 2000u);
}

TEST(BufferedInputStream, UnreadAndUnWrapHandBytesBack)
{
    // Unwrapped: delivers the pushed bytes (successive calls stack), then
    // ends; readline needs a whole line.
    ZUMBufferedInputStream alone(4);
    alone.unread("abc", 3);
    alone.unread("xy\r\n", 4);
    RVKByteBuffer line(0, 16);
    EXPECT_EQ(alone.readline(line), 4);
    EXPECT_EQ(alone.readline(line), -1);
    EXPECT_EQ(drain(alone, 100, Form::Byte), "abc");
    EXPECT_EQ(raised([&] { alone.unread(nullptr, 0); }), "RVKAssertError(RVK_ASSERT(bytes);) @-");

    // unWrap hands the read-ahead back to a stream that can take it, or refuses.
    ZUMMemoryInputStream mem("0123456789", 10), mem2("0123456789", 10);
    ZUMBufferedInputStream over_mem(mem, 8), lower(mem2, 10), upper(lower, 8);
    char buf[3];
    ASSERT_EQ((Row{over_mem.read(buf, 3), upper.read(buf, 3)}), (Row{3, 3}));
    EXPECT_EQ(raised([&] { over_mem.unWrap(); }), "text: can't unwrap");
    EXPECT_EQ(over_mem.getUpstream(), &mem);
    EXPECT_EQ(raised([&] { over_mem.read(nullptr, 0); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_EQ(drain(over_mem, 100), "3456789");  // nothing was lost
    EXPECT_EQ(over_mem.read(nullptr, 5), -1);     // the end comes before the copy
    upper.unWrap();  // over another buffered stream: the bytes go back, in order
    EXPECT_EQ(upper.buffered(), 0);
    EXPECT_EQ(upper.getUpstream(), nullptr);
    EXPECT_EQ(drain(lower, 100), "3456789");
    // Nothing buffered: fine over a stream that cannot unread; twice fails.
    ZUMBufferedInputStream empty(mem, 8);
    empty.unWrap();
    EXPECT_EQ(raised([&] { empty.unWrap(); }), "RVKIllegalStateError() @void ZUMBufferedInputStream::unWrap()");
}

// A failure beneath during readline keeps the start of the line.
TEST(BufferedInputStream, ReadlineKeepsTheLineOverAFailure)
{
    ScriptedInputStream up(  // the first line's CR and LF in two refills
        {ScriptStep::data("ab\r"), ScriptStep::data("\ncd"), ScriptStep::throwIO(), ScriptStep::data("e\r\n")});
    ZUMBufferedInputStream bis(up, 100);
    RVKByteBuffer line(0, 16);
    EXPECT_EQ(bis.readline(line), 4);
    line.reset();
    EXPECT_THROW(bis.readline(line), ZUMIOException);
    EXPECT_EQ(bis.readline(line), 5);
    EXPECT_EQ(str(line), "cde\r\n");
    std::string const nul_line("ab\0c\r\nd", 7);  // a CR LF behind a NUL is not seen: one line
    ZUMMemoryInputStream nul(nul_line.data(), 7);
    ZUMBufferedInputStream past_nul(nul, 64);
    std::vector<int> lines;
    EXPECT_EQ(drain(past_nul, 0, Form::Line, &lines), nul_line);
    EXPECT_EQ(lines, std::vector<int>{7});
}
