// Chunked bodies written by HTTP software of others (tests/data/chunked, made
// by make_fixtures.py there), decoded under many read patterns, and the whole
// typical request: header lines, a chunked body, its trailer.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "FramingTestUtil.h"
#include "TestStreams.h"
#include "ZUMChunkedInputStream.h"

namespace {

std::string const k_dir = std::string(ZUM_TEST_DATA_DIR) + "/chunked/";

std::string slurp(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::vector<std::string> fixtureNames()
{
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(k_dir)) {
        if (entry.path().extension() == ".body") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

enum class Mode { Buffer, Array, Byte };

// Decodes with the chosen read form; counts of 0 results are tolerated.
std::string decode(ZUMChunkedInputStream& chunked, Mode mode, int count)
{
    if (mode == Mode::Buffer) {
        return readAll(chunked, count);
    }
    if (mode == Mode::Byte) {
        return readAllBytes(chunked);
    }
    std::string got;
    std::vector<char> buf(static_cast<std::size_t>(count));
    for (int n, empty = 0; empty < 10000 && (n = chunked.read(buf.data(), count)) != -1;) {
        got.append(buf.data(), static_cast<std::size_t>(n));
        empty = n == 0 ? empty + 1 : 0;
    }
    return got;
}

std::string remainingLines(ZUMBufferedInputStream& bis)
{
    std::string rest;
    RVKByteBuffer line(0, 64);
    while (bis.readline(line) != -1 && rest.size() < 100000) {
        rest += text(line);
        line.reset();
    }
    return rest;
}

}  // namespace

TEST(ChunkedFixtures, DecodeByteForByteUnderEveryReadPattern)
{
    struct Pattern {
        std::size_t piece;  // bytes per upstream read, 0: all at once
        bool zeros;         // an empty upstream read after each piece
        int bis_size;
        Mode mode;
        int count;
    };
    Pattern const patterns[] = {
        {0, false, 4096, Mode::Buffer, 1 << 20},  // one long read
        {1, false, 64, Mode::Buffer, 100},
        {1, true, 1, Mode::Buffer, 100},
        {1, true, 7, Mode::Array, 7},
        {5, true, 3, Mode::Byte, 0},
        {13, false, 4096, Mode::Array, 1},
        {3, true, 16, Mode::Buffer, 4096},
    };
    auto const names = fixtureNames();
    ASSERT_GE(names.size(), 5u);  // Python's and nginx's
    for (auto const& name : names) {
        std::string const body = slurp(k_dir + name + ".body");
        std::string const expected = slurp(k_dir + name + ".expected");
        std::string const trailer = slurp(k_dir + name + ".trailer");
        for (auto const& p : patterns) {
            ScriptedInputStream up(p.piece ? ScriptedInputStream::pieces(body, p.piece, p.zeros)
                                           : std::vector<ScriptStep>{ScriptStep::data(body)});
            ZUMBufferedInputStream bis(up, p.bis_size);
            ZUMChunkedInputStream chunked(bis);
            EXPECT_EQ(decode(chunked, p.mode, p.count), expected)
                << name << " piece " << p.piece << " size " << p.bis_size;
            EXPECT_EQ(remainingLines(bis), trailer) << name << " piece " << p.piece;
        }

        // An owned buffered stream hands the trailer back to the stream beneath.
        ZUMMemoryInputStream mem(body.data(), static_cast<int>(body.size()));
        ZUMBufferedInputStream lower(mem, 100);
        ZUMChunkedInputStream owned(static_cast<ZUMInputStream&>(lower), 32);
        EXPECT_EQ(readAll(owned, 50), expected) << name;
        owned.unWrap();
        EXPECT_EQ(remainingLines(lower), trailer) << name;
    }
}

TEST(ChunkedFixtures, TypicalRequestReadsHeadersBodyAndTrailerFromOneStream)
{
    std::string const message =
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nTrailer: X-Sum\r\n\r\n"
        "5;name=value\r\nhello\r\n7\r\n, world\r\n1\r\n!\r\n0\r\nX-Sum: 42\r\n\r\n"
        "NEXT";
    for (bool owned : {false, true}) {
        ZUMMemoryInputStream mem(message.data(), static_cast<int>(message.size()));
        ZUMBufferedInputStream bis(mem, 16);
        std::vector<std::string> headers;
        RVKByteBuffer line(0, 64);
        while (bis.readline(line) > 2) {
            headers.push_back(text(line));
            line.reset();
        }
        ASSERT_EQ(headers.size(), 3u);
        EXPECT_EQ(headers[1], "Transfer-Encoding: chunked\r\n");

        if (owned) {
            // Its own buffered stream reads from ours; unWrap gives back the rest.
            ZUMChunkedInputStream chunked(static_cast<ZUMInputStream&>(bis), 8);
            EXPECT_EQ(readAll(chunked, 100), "hello, world!");
            chunked.unWrap();
        } else {
            ZUMChunkedInputStream chunked(bis);
            EXPECT_EQ(readAll(chunked, 100), "hello, world!");
        }
        line.reset();
        EXPECT_EQ(bis.readline(line), 11);
        EXPECT_EQ(text(line), "X-Sum: 42\r\n");
        line.reset();
        EXPECT_EQ(bis.readline(line), 2);
        EXPECT_EQ(readAll(bis, 100), "NEXT");
    }
}
