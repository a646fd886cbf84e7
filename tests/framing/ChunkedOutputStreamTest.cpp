#include <gtest/gtest.h>

#include <vector>

#include "ExternalTool.h"
#include "RaiseChecks.h"
#include "TestStreams.h"
#include "ZUMBufferedInputStream.h"
#include "ZUMChunkedInputStream.h"
#include "ZUMChunkedOutputStream.h"

namespace {

using Writes = std::vector<std::string>;

// Writes `body` to a chunked stream of `chunk` bytes, in pieces of varying
// sizes, closes it and returns the bytes on the wire.
std::string chunkedBody(std::string const& body, int chunk)
{
    ZUMMemoryOutputStream wire;
    ZUMChunkedOutputStream out(wire, chunk);
    static int const pieces[] = {1, 7, 100, 5000, 3, 20000};
    std::size_t at = 0;
    for (std::size_t i = 0; at < body.size(); ++i) {
        std::size_t n = std::min<std::size_t>(pieces[i % 6], body.size() - at);
        out.write(body.data() + at, static_cast<int>(n));
        at += n;
    }
    out.close();
    return std::string(wire.bytes(), static_cast<std::size_t>(wire.length()));
}

int const k_chunk_sizes[] = {1, 4, 4096, 16384};
std::size_t const k_body_sizes[] = {0, 1, 3, 4, 5, 4095, 4096, 4097, 16383, 16384, 16385, 100000};

}  // namespace

TEST(ChunkedOutputStream, FullChunksAreWrittenDuringTheWrite)
{
    RecordingOutputStream down;
    ZUMChunkedOutputStream out(down, 4);
    out.write("abcdefghij", 10);
    EXPECT_EQ(down.writes, (Writes{"4\r\n", "abcd", "\r\n", "4\r\n", "efgh", "\r\n"}));
    down.writes.clear();
    out.close();
    EXPECT_EQ(down.writes, (Writes{"2\r\n", "ij", "\r\n", "0\r\n\r\n"}));
    EXPECT_EQ(down.closes, 0);
    EXPECT_EQ(down.flushes, 0);
}

TEST(ChunkedOutputStream, WireFormat)
{
    struct Case {
        int chunk;
        std::string body;
        bool flush_first;
        std::string wire;
    };
    Case const cases[] = {
        {8, "hello", false, "5\r\nhello\r\n0\r\n\r\n"},
        {5, "hello", false, "5\r\nhello\r\n0\r\n\r\n"},
        {8, "", false, "0\r\n\r\n"},
        {8, "", true, "0\r\n\r\n"},
        {3, "hello", true, "3\r\nhel\r\n2\r\nlo\r\n0\r\n\r\n"},
        {255, std::string(255, 'x'), false, "ff\r\n" + std::string(255, 'x') + "\r\n0\r\n\r\n"},
        {4096, std::string(4096, 'y'), false, "1000\r\n" + std::string(4096, 'y') + "\r\n0\r\n\r\n"},
    };
    for (auto const& c : cases) {
        RecordingOutputStream down;
        ZUMChunkedOutputStream out(down, c.chunk);
        out.write(c.body.data(), static_cast<int>(c.body.size()));
        if (c.flush_first) {
            out.flush();
        }
        out.close();
        EXPECT_EQ(down.all(), c.wire) << "chunk " << c.chunk << ", " << c.body.size() << " bytes";
    }
}

TEST(ChunkedOutputStream, WritesNothingWithoutData)
{
    RecordingOutputStream down;
    {
        ZUMChunkedOutputStream out(down, 8);
        out.write("abc", 0);
        out.flush();
        EXPECT_TRUE(down.writes.empty());
        expectAssert([&] { out.write(nullptr, 0); }, "RVK_ASSERT(bytes);");
        out.write("abc", 3);
    }
    // The destructor dropped the collected bytes and wrote no last chunk.
    EXPECT_TRUE(down.writes.empty());
}

TEST(ChunkedOutputStream, UnwrapWritesTheCollectedChunkButNoLastChunk)
{
    RecordingOutputStream down;
    ZUMChunkedOutputStream out(down, 8);
    out.write("abc", 3);
    out.unWrap();
    EXPECT_EQ(down.all(), "3\r\nabc\r\n");
    // Still usable, still writing to the constructor's stream.
    out.write("d", 1);
    out.close();
    out.close();
    EXPECT_EQ(down.all(), "3\r\nabc\r\n1\r\nd\r\n0\r\n\r\n0\r\n\r\n");
}

TEST(ChunkedOutputStream, IndependentDecoderReadsEveryBody)
{
    if (!haveProgram("python3")) {
        GTEST_SKIP() << "python3 not found: the independent chunked decoder cannot run";
    }
    ScratchDir dir;
    ASSERT_TRUE(dir.ok());
    std::string command = "python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/chunked/dechunk.py");
    std::vector<std::pair<std::string, std::string>> expected;
    for (int chunk : k_chunk_sizes) {
        for (std::size_t size : k_body_sizes) {
            std::string body = testBytes(size, static_cast<unsigned>(size));
            std::string name = dir.file("c" + std::to_string(chunk) + "-" + std::to_string(size));
            writeFile(name, chunkedBody(body, chunk));
            command += " " + shellQuoted(name);
            expected.emplace_back(name, body);
        }
    }
    ASSERT_TRUE(runCommand(command));
    for (auto const& [name, body] : expected) {
        EXPECT_TRUE(readFile(name + ".out") == body) << name;
    }
}

TEST(ChunkedOutputStream, ChunkedInputStreamReadsEveryBody)
{
    for (int chunk : k_chunk_sizes) {
        for (std::size_t size : k_body_sizes) {
            std::string body = testBytes(size, static_cast<unsigned>(size));
            std::string wire = chunkedBody(body, chunk) + "after";
            ZUMMemoryInputStream source(wire.data(), static_cast<int>(wire.size()));
            ZUMBufferedInputStream bis(source, 1000);
            ZUMChunkedInputStream in(bis);
            RVKByteBuffer decoded;
            while (in.read(decoded, 3000) != -1) {
            }
            EXPECT_TRUE(std::string(decoded.str(), decoded.pcount()) == body)
                << "chunk " << chunk << ", " << size << " bytes";
            // The empty trailer is left in the buffered stream, then what follows.
            RVKByteBuffer line;
            bis.readline(line);
            EXPECT_EQ(std::string(line.str(), line.pcount()), "\r\n");
            char rest[8];
            EXPECT_EQ(bis.read(rest, 8), 5);
        }
    }
}
