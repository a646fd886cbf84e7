#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

using Writes = std::vector<std::string>;

namespace {

// Writes `body` to a chunked stream of `chunk` bytes, in pieces of varying
// sizes, closes it and returns the bytes on the wire.
std::string chunkedBody(std::string const& body, int chunk)
{
    ZUMMemoryOutputStream wire;
    ZUMChunkedOutputStream out(wire, chunk);
    writeInPieces(out, body, {1, 7, 100, 5000, 3, 20000});
    out.close();
    return std::string(wire.bytes(), static_cast<std::size_t>(wire.length()));
}

int const k_chunk_sizes[] = {1, 4, 4096, 16384};
std::size_t const k_body_sizes[] = {0, 1, 3, 4, 5, 4095, 4096, 4097, 16383, 16384, 16385, 100000};

}  // namespace

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

TEST(ChunkedOutputStream, IndependentDecoderAndOurReaderReadEveryBody)
{
    bool python = haveProgram("python3");
    TempDir dir;
    std::string command = "python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/chunked/dechunk.py");
    std::vector<std::pair<std::string, std::string>> expected;
    for (int chunk : k_chunk_sizes) {
        for (std::size_t size : k_body_sizes) {
            std::string body = testBytes(size, static_cast<unsigned>(size));
            std::string wire = chunkedBody(body, chunk);
            std::string name = dir.write("c" + std::to_string(chunk) + "-" + std::to_string(size), wire);
            command += " " + shellQuoted(name);
            expected.emplace_back(name, body);

            wire += "after";
            ZUMMemoryInputStream source(wire.data(), static_cast<int>(wire.size()));
            ZUMBufferedInputStream bis(source, 1000);
            EXPECT_TRUE(readChunkedBody(bis, false, 3000) == body) << "chunk " << chunk << ", " << size << " bytes";
            // The empty trailer is left in the buffered stream, then what follows.
            EXPECT_EQ(drain(bis, 0, Form::Line), "\r\nafter");
        }
    }
    if (!python) {
        GTEST_SKIP() << "python3 not found: the independent chunked decoder cannot run";
    }
    ASSERT_TRUE(runCommand(command));
    for (auto const& [name, body] : expected) {
        EXPECT_TRUE(readFile(name + ".out") == body) << name;
    }
}
