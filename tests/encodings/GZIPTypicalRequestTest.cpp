// A response read the way components read one: header lines through a
// buffered stream, a gzip body in the chunked coding decoded through a
// chunked and a gzip stream stacked on that buffered stream, then the
// trailer lines from the buffered stream again.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GZIPTestSupport.h"
#include "TestStreams.h"
#include "ZUMBufferedInputStream.h"
#include "ZUMChunkedInputStream.h"

using namespace gziptest;

namespace {

// `body` in the chunked coding, in chunks of at most `chunk` bytes (with an
// extension on the first), then the last chunk and the trailer.
std::string chunkedBody(std::string const& body, std::size_t chunk)
{
    std::string out;
    char size[32];
    for (std::size_t at = 0; at < body.size(); at += chunk) {
        std::size_t n = std::min(chunk, body.size() - at);
        std::snprintf(size, sizeof size, "%zx", n);
        out += size;
        out += at == 0 ? ";part=first\r\n" : "\r\n";
        out += body.substr(at, n);
        out += "\r\n";
    }
    return out + "0\r\nX-Checksum: 42\r\nX-Done: yes\r\n\r\n";
}

// The member, made by our own writer.
std::string gzipOf(std::string const& content)
{
    RecordingOutputStream down;
    ZUMGZIPOutputStream gz(down);
    gz.write(content.data(), static_cast<int>(content.size()));
    gz.finish();
    return down.all();
}

std::string lineText(RVKByteBuffer const& line)
{
    return std::string(line.str(), static_cast<std::size_t>(line.pcount()));
}

}  // namespace

TEST(GZIPTypicalRequest, HeadersGzipChunkedBodyTrailer)
{
    std::string const headers =
        "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nTransfer-Encoding: chunked\r\n\r\n";
    struct Case {
        std::string content;
        std::string after_member;  // body bytes behind the gzip member
        std::size_t chunk;
        int buffer_size;
    };
    std::string const text = mixedData(70000, 21);
    std::string const noise = noiseData(50000, 22);
    std::vector<Case> const cases = {
        {"Hello, gzip over chunks!", "", 1000, 64},
        {text, "", 7, 100},
        {text, "", 5000, 4096},
        {noise, "", 20000, 1000},
        {noise, "", 16384, 16384},
        {text, "AFTER THE MEMBER", 3000, 512},
        {"", "", 4, 16},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.content.size() << " bytes, chunks of " << c.chunk
                                        << ", buffer " << c.buffer_size);
        std::string const message =
            headers + chunkedBody(gzipOf(c.content) + c.after_member, c.chunk) + "NEXT MESSAGE";

        // 1. The buffered stream on the response.
        ZUMMemoryInputStream response(message.data(), static_cast<int>(message.size()));
        ZUMBufferedInputStream bis(response, c.buffer_size);

        // 2. The header lines, up to the empty line.
        RVKByteBuffer line(0, 128);
        std::vector<std::string> header_lines;
        for (int i = 0; i < 10; ++i) {
            line.reset();
            ASSERT_GT(bis.readline(line), 0);
            if (lineText(line) == "\r\n") {
                break;
            }
            header_lines.push_back(lineText(line));
        }
        ASSERT_EQ(header_lines.size(), 3u);
        EXPECT_EQ(header_lines[1], "Content-Encoding: gzip\r\n");

        // 3. A chunked stream on the caller's buffered stream, a gzip stream
        //    on the chunked stream.
        ZUMChunkedInputStream chunked(bis);
        ZUMGZIPInputStream gz(chunked);

        // 4, 5. The gzip stream to -1, its trailer checked on the way.
        EXPECT_EQ(readToEnd(gz, 1500), c.content);
        EXPECT_EQ(gz.read(), -1);

        // 6. Unwrapping hands what the gzip stream read ahead back to the
        //    chunked stream, which then reads to the end of the body.
        gz.unWrap();
        EXPECT_EQ(readToEnd(chunked, 100), c.after_member);

        // 7. The trailer and the final empty line are left in the buffered
        //    stream, and behind them the next message.
        std::vector<std::string> trailer;
        for (int i = 0; i < 3; ++i) {
            line.reset();
            ASSERT_GT(bis.readline(line), 0);
            trailer.push_back(lineText(line));
        }
        EXPECT_EQ(trailer, (std::vector<std::string>{"X-Checksum: 42\r\n", "X-Done: yes\r\n", "\r\n"}));
        line.reset();
        EXPECT_EQ(bis.readline(line), 12);
        EXPECT_EQ(lineText(line), "NEXT MESSAGE");
    }
}
