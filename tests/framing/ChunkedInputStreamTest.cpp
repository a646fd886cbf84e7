#include <gtest/gtest.h>

#include "TestStreams.h"

namespace {

std::string const k_two_chunks = "5\r\nhello\r\n6\r\n world\r\n0\r\n\r\n";

}  // namespace

TEST(ChunkedInputStream, DeliversEachChunkWithoutCrossingAndLeavesTheEnd)
{
    for (int count : {100, 3}) {
        ZUMMemoryInputStream mem(k_two_chunks.data(), static_cast<int>(k_two_chunks.size()));
        ZUMBufferedInputStream bis(mem, 64);
        ZUMChunkedInputStream chunked(bis);
        std::vector<int> sizes;
        EXPECT_EQ(drain(chunked, count, Form::Buffer, &sizes), "hello world");
        EXPECT_EQ(sizes, (count == 100 ? std::vector<int>{5, 6} : std::vector<int>{3, 2, 3, 3}));
        char buf[4];
        EXPECT_EQ(chunked.read(buf, 4) + chunked.read(), -2);
        RVKByteBuffer line(0, 16);
        EXPECT_EQ(bis.readline(line), 2);  // the final empty line stays in bis
    }
}

TEST(ChunkedInputStream, ChunkSizeLinesAreReadLeniently)
{
    std::string const az = "abcdefghijklmnopqrstuvwxyz";
    struct Case {
        std::string body, data;
    } const cases[] = {
        {"1a;name=value\r\n" + az + "\r\n0\r\n\r\n", az},
        {"1A\r\n" + az + "\r\n0\r\n\r\n", az},
        {"5 \r\nhello\r\n0\r\n\r\n", "hello"},
        {" 5\r\nhello\r\n0\r\n\r\n", ""},
        {"0x5\r\nhello\r\n0\r\n\r\n", ""},
        {"\r\n\r\n\r\n3\r\nabc\r\n0\r\n\r\n", "abc"},
        {"80000000\r\nhello", ""},
        {"FFFFFFFF\r\nhello", ""},
        {"100000005\r\nhello\r\n0\r\n\r\n", "hello"},  // 32-bit overflow
        {"5\nxyz\r\nhello\r\n0\r\n\r\n", "hello"},     // a bare LF does not end the line
        {"3\r\nabc2\r\nde", "abcde"},                  // no check of the CR LF after data
        {"", ""},
    };
    for (auto const& c : cases) {
        ZUMMemoryInputStream mem(c.body.data(), static_cast<int>(c.body.size()));
        ZUMChunkedInputStream chunked(mem, 16);
        EXPECT_EQ(drain(chunked, 100), c.data) << c.body;
    }
}

TEST(ChunkedInputStream, UnreadBetweenChunksComesBeforeTheNextSizeLine)
{
    ZUMMemoryInputStream mem(k_two_chunks.data(), static_cast<int>(k_two_chunks.size()));
    ZUMChunkedInputStream chunked(mem, 64);
    char buf[100];
    ASSERT_EQ(chunked.read(buf, 100), 5);
    chunked.unread("XY", 2);
    EXPECT_EQ(chunked.read(buf, 100), 2);
    EXPECT_EQ(drain(chunked, 100), " world");
    // After the end, pushed-back bytes are not delivered, nor after a new wrap.
    chunked.unread("Z", 1);
    EXPECT_EQ(chunked.read(buf, 100), -1);
    ZUMBufferedInputStream lower(8);
    lower.unread("AB", 2);
    ZUMChunkedInputStream ended(lower);
    ASSERT_EQ(ended.read(), -1);
    ended.unWrap();
    EXPECT_EQ(ended.read(buf, 100), -1);
}

TEST(ChunkedInputStream, UnWrapOnlyBetweenChunksOrAfterTheEnd)
{
    ZUMMemoryInputStream mem("5\r\nhello\r\n0\r\n\r\n", 15);
    ZUMBufferedInputStream bis(mem, 64);
    ZUMChunkedInputStream chunked(bis);
    char buf[10];
    ASSERT_EQ(chunked.read(buf, 2), 2);
    EXPECT_EQ(raised([&] { chunked.unWrap(); }), "RVKAssertError(RVK_ASSERT(m_current_chunk_bytes <= 0);) @-");
    // An owned buffered stream holding the final empty line over a memory
    // stream cannot hand it back.
    ZUMMemoryInputStream mem2("5\r\nhello\r\n0\r\n\r\n", 15);
    ZUMChunkedInputStream owned(mem2, 64);
    ASSERT_EQ(drain(owned, 100), "hello");
    EXPECT_EQ(raised([&] { owned.unWrap(); }), "text: can't unwrap");

    // Before wrap the body ends, and stays ended after wrap.
    ZUMChunkedInputStream unwrapped(16);
    EXPECT_EQ(unwrapped.read(), -1);
    ZUMMemoryInputStream more("3\r\nabc\r\n0\r\n\r\n", 13);
    unwrapped.wrap(more);
    EXPECT_EQ(drain(unwrapped, 10), "");
    // The stream beneath ends inside a chunk: the block read keeps the chunk
    // open, read() ends it.
    for (bool single : {false, true}) {
        ZUMMemoryInputStream cut("5\r\nab", 5);
        ZUMChunkedInputStream in_chunk(cut, 16);
        ASSERT_EQ(in_chunk.read(buf, 10), 2);
        EXPECT_EQ(single ? in_chunk.read() : in_chunk.read(buf, 10), -1);
        EXPECT_EQ(raised([&] { in_chunk.unWrap(); }) == "none", single);
    }
}

TEST(ChunkedInputStream, FailuresBeneathPassAndKeepTheChunk)
{
    ScriptedInputStream up({ScriptStep::data("5\r\nab"), ScriptStep::throwIO(), ScriptStep::data("cde\r\n0\r\n\r\n")});
    ZUMChunkedInputStream chunked(up, 64);
    char buf[10];
    ASSERT_EQ(chunked.read(buf, 10), 2);
    EXPECT_THROW(chunked.read(buf, 10), ZUMIOException);
    EXPECT_EQ(drain(chunked, 10), "cde");
}
