// The bridges between the library's streams and the standard C++ streams.
#include <gtest/gtest.h>

#include <istream>
#include <sstream>

#include "TestStreams.h"

TEST(ZUMInputStreamBuf, GetlineOverShortReadsSeesEveryLine)
{
    std::string text = "first line\nsecond\n\nlast without end";
    // Pieces of 3 bytes with a 0-byte read after each: the streambuf must
    // neither lose nor repeat bytes.
    ScriptedInputStream raw(ScriptedInputStream::pieces(text, {3}, true));
    ZUMInputStreamBuf buf(raw, 8);
    std::istream in(&buf);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    EXPECT_EQ(lines, (std::vector<std::string>{"first line", "second", "", "last without end"}));
}

TEST(ZUMInputStreamBuf, LargeReadGoesStraightToTheCallerGiveBackAndFailures)
{
    ScriptedInputStream raw({ScriptStep::data(std::string(100, 'x') + "TAIL")}, true);
    ZUMInputStreamBuf buf(raw, 16);
    std::istream in(&buf);
    char first[2];
    in.read(first, 2);  // fills the 16-byte buffer
    char big[80];
    in.read(big, sizeof big);  // 14 from the buffer, then one direct read of 66
    EXPECT_EQ(raw.counts, (std::vector<int>{16, 66}));
    EXPECT_EQ(in.get(), 'x');  // refills: 16 more asked
    EXPECT_EQ(buf.giveBack(), 15);
    EXPECT_EQ(raw.unreads.back(), std::string(15, 'x'));
    EXPECT_EQ(in.get(), 'x');  // the bytes handed back are read again through the stream

    ScriptedInputStream failing({ScriptStep::throwIO()});
    ZUMInputStreamBuf failing_buf(failing);
    std::istream asks(&failing_buf);
    asks.exceptions(std::ios::badbit);  // the stream's exception reaches an istream that asks for it
    EXPECT_THROW(asks.get(), ZUMIOException);
}

TEST(ZUMOutputStreamBuf, CollectsSmallWritesAndSyncFlushesTheStream)
{
    RecordingOutputStream rec;
    {
        ZUMOutputStreamBuf buf(rec, 8);
        std::ostream out(&buf);
        out << "ab" << 12;
        EXPECT_TRUE(rec.writes.empty());
        out << "cdefgh" << std::flush;  // 4 + 6 bytes: the buffer fills
        EXPECT_EQ(rec.all(), "ab12cdefgh");
        EXPECT_EQ(rec.flushes, 1);
        out << std::string(20, 'z');  // larger than the buffer: passed straight on
        EXPECT_EQ(rec.writes.back(), std::string(20, 'z'));
        out << "end";
    }
    // The destructor passes on what is collected, without a flush.
    EXPECT_EQ(rec.all(), "ab12cdefgh" + std::string(20, 'z') + "end");
    EXPECT_EQ(rec.flushes, 1);
}

TEST(ZUMStdStreams, ReadAndWriteStandardStreams)
{
    std::istringstream source(std::string("\xff" "abcdef", 7));
    ZUMStdInputStream in(source);
    EXPECT_EQ(in.read(), 255);
    char buf[4];
    EXPECT_EQ(in.read(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 4), "abcd");
    RVKByteBuffer rest(0, 16);
    EXPECT_EQ(in.read(rest, 10), 2);
    EXPECT_EQ(str(rest), "ef");
    EXPECT_EQ(in.read(buf, 4) + in.read(), -2);

    std::ostringstream sink;
    ZUMStdOutputStream out(sink);
    out.write("hello", 5);
    out.close();
    EXPECT_EQ(sink.str(), "hello");
    sink.setstate(std::ios::badbit);
    std::string failure = raised([&] { out.write("x", 1); });
    EXPECT_EQ(failure.rfind("ZUMIOException(1,", 0), 0u) << failure;
    EXPECT_NE(failure.find(" #TEXT_ERROR 'std::ostream write failed' @"), std::string::npos) << failure;
}
