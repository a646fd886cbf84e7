// The writing mirror of the typical response: gzip on chunked on buffered on
// a file, read back through the input chain and by independent tools.
#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

// Writes `data` through gzip, chunked and buffered streams to a file, and
// ends the body the way a sender does: finish, close, flush.
void writeChain(std::string const& path, std::string const& data, int chunk, int buffer)
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

}  // namespace

TEST(OutputChain, GzipChunkedBufferedFileReadsBackThroughOurChainAndIndependentTools)
{
    TempDir dir;
    std::string const data = mixedData(150000, 3);
    struct Sizes { int chunk, buffer; };
    for (Sizes s : {Sizes{4096, 8192}, Sizes{1000, 4096}, Sizes{16384, 1000}, Sizes{7, 3}}) {
        std::string path = dir.file("body-" + std::to_string(s.chunk) + "-" + std::to_string(s.buffer));
        writeChain(path, data, s.chunk, s.buffer);
        ZUMFileInputStream file(path.c_str());
        ZUMBufferedInputStream buffered(file, 4096);
        // The member fills the body; behind the last chunk: the empty trailer,
        // then the end of the file.
        EXPECT_TRUE(readChunkedBody(buffered, true, 16384) == data + "|") << path;
        EXPECT_EQ(drain(buffered, 0, Form::Line), "\r\n");
    }
    if (!haveProgram("python3") || !haveProgram("gzip")) {
        GTEST_SKIP() << "python3 or gzip not found: the independent decoders cannot run";
    }
    // De-chunk with Python's HTTP client (to path.out), then gunzip.
    std::string path = dir.file("body-4096-8192");
    std::string dechunk = "python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/chunked/dechunk.py") + " ";
    ASSERT_TRUE(runCommand(dechunk + shellQuoted(path)));
    ASSERT_TRUE(runCommand("gzip -dc < " + shellQuoted(path + ".out") + " > " + shellQuoted(path + ".plain")));
    EXPECT_TRUE(readFile(path + ".plain") == data);
}
