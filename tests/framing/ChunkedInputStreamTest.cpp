#include <gtest/gtest.h>

#include <filesystem>

#include "TestFiles.h"
#include "TestStreams.h"

std::string const k_two_chunks = "5\r\nhello\r\n6\r\n world\r\n0\r\n\r\n";

// Reads never cross a chunk; the final empty line stays in the buffered
// stream; a failure beneath passes and leaves the chunk to read on.
TEST(ChunkedInputStream, DeliversEachChunkWithoutCrossingAndLeavesTheEnd)
{
    for (int count : {100, 3}) {
        ZUMMemoryInputStream mem(k_two_chunks.data(), static_cast<int>(k_two_chunks.size()));
        ZUMBufferedInputStream bis(mem, 64);
        ZUMChunkedInputStream chunked(bis);
        std::vector<int> sizes;
        EXPECT_EQ(drain(chunked, count, Form::Buffer, &sizes), "hello world");
        EXPECT_EQ(sizes, (count == 100 ? std::vector<int>{5, 6} : std::vector<int>{3, 2, 3, 3}));
        EXPECT_EQ((Row{chunked.read(), chunked.read()}), (Row{-1, -1}));
        EXPECT_EQ(drain(bis), "\r\n");
    }
    ScriptedInputStream up({ScriptStep::data("5\r\nab"), ScriptStep::throwIO(), ScriptStep::data("cde\r\n0\r\n\r\n")});
    ZUMChunkedInputStream chunked(up, 64);
    char buf[10];
    ASSERT_EQ(chunked.read(buf, 10), 2);
    EXPECT_THROW(chunked.read(buf, 10), ZUMIOException);
    EXPECT_EQ(drain(chunked, 10), "cde");
}

TEST(ChunkedInputStream, ChunkSizeLinesAreReadLeniently)
{
    std::string const az = "abcdefghijklmnopqrstuvwxyz";
    struct Case { std::string body, data; } const cases[] = {
        {"1a;name=value\r\n" + az + "\r\n0\r\n\r\n", az},
        {"1A\r\n" + az + "\r\n0\r\n\r\n", az},
        // A line of any length is read to its end before its leading digits
        // are taken: 2^32 * k + 5 written with a million digits is 5; an
        // extension of a megabyte is ignored; without CR LF the whole input is
        // one size line, and nothing follows it.
        {"1" + std::string(1 << 20, '0') + "5\r\nhello\r\n0\r\n\r\n", "hello"},
        {"5;" + std::string(1 << 20, 'e') + "\r\nhello\r\n0\r\n\r\n", "hello"},
        {"5" + std::string(1 << 20, ' '), ""},
    };
    for (auto const& c : cases) {
        ZUMMemoryInputStream mem(c.body.data(), static_cast<int>(c.body.size()));
        ZUMChunkedInputStream chunked(mem, 16);
        EXPECT_EQ(drain(chunked, 100), c.data) << c.body.substr(0, 20);
        EXPECT_EQ(chunked.read(), -1);
    }
}

// Bytes pushed back between chunks come before the next size line; after the
// end they are not delivered. unWrap only between
// chunks or after the end (read() ends a cut chunk, the block read does not).
TEST(ChunkedInputStream, UnreadAndUnWrapBetweenChunks)
{
    ZUMMemoryInputStream mem(k_two_chunks.data(), static_cast<int>(k_two_chunks.size()));
    ZUMChunkedInputStream chunked(mem, 64);
    char buf[100];
    ASSERT_EQ(chunked.read(buf, 100), 5);
    EXPECT_EQ(chunked.canUnread(), 1);
    chunked.unread("XY", 2);
    EXPECT_EQ(chunked.read(buf, 100), 2);
    ASSERT_EQ(chunked.read(buf, 2), 2);
    EXPECT_EQ(raised([&] { chunked.unWrap(); }), "RVKAssertError(RVK_ASSERT(m_current_chunk_bytes <= 0);) @-");
    EXPECT_EQ(drain(chunked, 100), "orld");
    chunked.unread("Z", 1);
    EXPECT_EQ(chunked.read(buf, 100), -1);
    // An owned buffered stream holding the final empty line over a memory
    // stream cannot hand it back.
    EXPECT_EQ(raised([&] { chunked.unWrap(); }), "text: can't unwrap");

    for (bool single : {false, true}) {
        ZUMMemoryInputStream cut("5\r\nab", 5);
        ZUMChunkedInputStream in_chunk(cut, 16);
        ASSERT_EQ(in_chunk.read(buf, 10), 2);
        EXPECT_EQ(single ? in_chunk.read() : in_chunk.read(buf, 10), -1);
        EXPECT_EQ(raised([&] { in_chunk.unWrap(); }) == "none", single);
    }
}

// Chunked bodies written by HTTP software of others (tests/data/chunked, made
// by make_fixtures.py there), decoded under many read patterns.
TEST(ChunkedFixtures, DecodeByteForByteUnderEveryReadPattern)
{
    // Bytes per upstream read (0: all at once), an empty read after each piece,
    // the buffered stream's size, and the read form and count on the chunked stream.
    struct Pattern { std::size_t piece; bool zeros; int bis_size; Form form; int count; } const patterns[] = {
        {0, false, 4096, Form::Buffer, 1 << 20},  // one long read
        {1, true, 1, Form::Buffer, 100}, {5, true, 3, Form::Byte, 0}, {13, false, 4096, Form::Array, 1},
    };
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(ZUM_TEST_DATA_DIR "/chunked")) {
        if (entry.path().extension() == ".body") {
            names.push_back("chunked/" + entry.path().stem().string());
        }
    }
    ASSERT_GE(names.size(), 5u);  // Python's and nginx's
    for (auto const& name : names) {
        std::string const body = dataFile(name + ".body");
        std::string const expected = dataFile(name + ".expected");
        std::string const trailer = dataFile(name + ".trailer");
        for (auto const& p : patterns) {
            ScriptedInputStream up(ScriptedInputStream::pieces(body, {p.piece}, p.zeros));
            ZUMBufferedInputStream bis(up, p.bis_size);
            EXPECT_EQ(readChunkedBody(bis, false, p.count, p.form), expected) << name << " piece " << p.piece;
            EXPECT_EQ(drain(bis, 0, Form::Line), trailer) << name << " piece " << p.piece;
        }
    }
}
