#include <gtest/gtest.h>

#include "ExternalTool.h"
#include "RaiseChecks.h"
#include "TestStreams.h"
#include "ZUMBufferedInputStream.h"
#include "ZUMBufferedOutputStream.h"
#include "ZUMChunkedInputStream.h"
#include "ZUMChunkedOutputStream.h"
#include "ZUMFileInputStream.h"
#include "ZUMFileOutputStream.h"
#include "ZUMGZIPInputStream.h"
#include "ZUMGZIPOutputStream.h"

namespace {

// Text that compresses well, with stretches of bytes that do not.
std::string content()
{
    std::string data;
    for (int i = 0; data.size() < 150000; ++i) {
        data += "line " + std::to_string(i) + ": the quick brown fox jumps over the lazy dog\r\n";
        if (i % 97 == 0) {
            data += testBytes(static_cast<std::size_t>(500 + i % 1000), static_cast<unsigned>(i));
        }
    }
    return data;
}

// Writes `data` through gzip, chunked and buffered streams to a file, and
// ends the body the way a sender does: finish, close, flush.
void writeChain(std::string const& path, std::string const& data, int chunk, int buffer)
{
    ZUMFileOutputStream file(path.c_str(), 0);
    ZUMBufferedOutputStream buffered(file, buffer);
    ZUMChunkedOutputStream chunked(buffered, chunk);
    ZUMGZIPOutputStream gzip(chunked);
    static int const pieces[] = {1, 13, 700, 5000, 40000};
    std::size_t at = 0;
    for (std::size_t i = 0; at < data.size(); ++i) {
        std::size_t n = std::min<std::size_t>(pieces[i % 5], data.size() - at);
        gzip.write(data.data() + at, static_cast<int>(n));
        at += n;
    }
    gzip.finish();
    chunked.close();
    buffered.flush();
    file.close();
}

}  // namespace

TEST(OutputChain, GzipChunkedBufferedFileReadsBackThroughTheInputChain)
{
    ScratchDir dir;
    ASSERT_TRUE(dir.ok());
    std::string const data = content();
    struct Sizes {
        int chunk;
        int buffer;
    };
    for (Sizes s : {Sizes{4096, 8192}, Sizes{1000, 4096}, Sizes{16384, 1000}, Sizes{7, 3}}) {
        std::string path = dir.file("body-" + std::to_string(s.chunk) + "-" + std::to_string(s.buffer));
        writeChain(path, data, s.chunk, s.buffer);

        ZUMFileInputStream file(path.c_str());
        ZUMBufferedInputStream buffered(file, 4096);
        ZUMChunkedInputStream chunked(buffered);
        ZUMGZIPInputStream gzip(chunked);
        RVKByteBuffer decoded;
        while (gzip.read(decoded, 16384) != -1) {
        }
        EXPECT_TRUE(std::string(decoded.str(), decoded.pcount()) == data) << path;
        gzip.unWrap();
        char rest[16];
        EXPECT_EQ(chunked.read(rest, 16), -1);
        // Behind the last chunk: the empty trailer, then the end of the file.
        RVKByteBuffer line;
        EXPECT_EQ(buffered.readline(line), 2);
        EXPECT_EQ(buffered.read(rest, 16), -1);
    }
}

TEST(OutputChain, IndependentToolsDecodeTheBody)
{
    if (!haveProgram("python3") || !haveProgram("gzip")) {
        GTEST_SKIP() << "python3 or gzip not found: the independent decoders cannot run";
    }
    ScratchDir dir;
    ASSERT_TRUE(dir.ok());
    std::string const data = content();
    std::string path = dir.file("body");
    writeChain(path, data, 4096, 8192);
    // De-chunk with Python's HTTP client (path.out), then gunzip.
    ASSERT_TRUE(runCommand("python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/chunked/dechunk.py") + " " +
                           shellQuoted(path)));
    ASSERT_TRUE(runCommand("gzip -dc < " + shellQuoted(path + ".out") + " > " +
                           shellQuoted(path + ".plain")));
    EXPECT_TRUE(readFile(path + ".plain") == data);
}
