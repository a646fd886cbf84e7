// The bridges between the library's streams and the standard C++ streams.
#include <gtest/gtest.h>

#include <istream>
#include <iterator>

#include "TestStreams.h"

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

    ScriptedInputStream pieces(ScriptedInputStream::pieces("ab\ncd", {2}, true));  // a 0-byte read after each piece
    ZUMInputStreamBuf pieces_buf(pieces, 8);
    std::istream text(&pieces_buf);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(text), {}), "ab\ncd");

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
