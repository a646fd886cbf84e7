#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

using Writes = std::vector<std::string>;

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

// Bodies of every size in chunks of every size, written in pieces of varying
// sizes, and the writing mirror of the typical response (gzip on chunked on
// buffered on a file, ended the way a sender does: finish, close, flush) read
// back through our input chain.
TEST(ChunkedOutputStream, OurReaderReadsEveryBody)
{
    TempDir dir;
    for (int chunk : {1, 4, 4096, 16384}) {
        for (std::size_t size : {0, 1, 3, 4, 5, 4095, 4096, 4097, 16383, 16384, 16385, 100000}) {
            std::string body = testBytes(size, static_cast<unsigned>(size));
            ZUMMemoryOutputStream wire;
            ZUMChunkedOutputStream out(wire, chunk);
            writeInPieces(out, body, {1, 7, 100, 5000, 3, 20000});
            out.close();
            // The empty trailer is left in the buffered stream, then what follows.
            std::string const then = str(wire) + "after";
            ZUMMemoryInputStream source(then.data(), static_cast<int>(then.size()));
            ZUMBufferedInputStream bis(source, 1000);
            EXPECT_TRUE(readChunkedBody(bis, false, 3000) == body) << "chunk " << chunk << ", " << size << " bytes";
            EXPECT_EQ(drain(bis, 0, Form::Line), "\r\nafter");
        }
    }
    std::string const data = mixedData(150000, 3);
    for (auto [chunk, buffer] : {std::pair{4096, 8192}, {1000, 4096}, {16384, 1000}, {7, 3}}) {
        std::string path = dir.file("body-" + std::to_string(chunk) + "-" + std::to_string(buffer));
        {
            ZUMFileOutputStream file(path.c_str(), 0);
            ZUMBufferedOutputStream buffered(file, buffer);
            ZUMChunkedOutputStream chunked(buffered, chunk);
            ZUMGZIPOutputStream gzip(chunked);
            writeInPieces(gzip, data, {1, 13, 700, 5000, 40000});
            gzip.finish();
            chunked.close();
            buffered.flush();
            file.close();
        }
        // The member fills the body; behind the last chunk: the empty trailer,
        // then the end of the file.
        ZUMFileInputStream file(path.c_str());
        ZUMBufferedInputStream buffered(file, 4096);
        EXPECT_TRUE(readChunkedBody(buffered, true, 16384) == data + "|") << path;
        EXPECT_EQ(drain(buffered, 0, Form::Line), "\r\n");
    }
}
