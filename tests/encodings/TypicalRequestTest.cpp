// A message read the way components read one: header lines through a
// buffered stream, a chunked body (gzip-encoded or not) decoded by a chunked
// stream on that buffered stream or on one of its own, and a gzip stream on
// the chunked stream, then the trailer lines from the buffered stream again.

#include <gtest/gtest.h>

#include "TestStreams.h"

namespace {

// `body` in the chunked coding, in chunks of at most `chunk` bytes (with an
// extension on the first), then the last chunk and the trailer.
std::string chunkedBody(std::string const& body, std::size_t chunk)
{
    std::string out;
    char size[32];
    for (std::size_t at = 0; at < body.size(); at += chunk) {
        std::snprintf(size, sizeof size, at ? "%zx\r\n" : "%zx;part=first\r\n", std::min(chunk, body.size() - at));
        out += size + body.substr(at, chunk) + "\r\n";
    }
    return out + "0\r\nX-Checksum: 42\r\nX-Done: yes\r\n\r\n";
}

}  // namespace

TEST(TypicalRequest, HeadersChunkedGzipBodyAndTrailerFromOneBufferedStream)
{
    std::string const text = mixedData(70000, 21), noise = testBytes(50000, 22), after = "AFTER THE MEMBER";
    struct Case { bool gzip, owned; std::string content, after_member; std::size_t chunk; int buffer; };
    Case const cases[] = {
        {false, false, "hello, world!", "", 5, 16},      {false, true, "hello, world!", "", 5, 16},
        {true, false, text, "", 7, 100},                 {true, false, text, "", 5000, 4096},
        {true, false, noise, "", 20000, 1000},           {true, false, noise, "", 16384, 16384},
        {true, false, text, after, 3000, 512},           {true, true, text, after, 3000, 512},
        {true, false, "", "", 4, 16},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.gzip << c.owned << " " << c.content.size() << " bytes in " << c.chunk);
        RecordingOutputStream member;
        // The member, finished by the destructor of the writer.
        ZUMGZIPOutputStream(member).write(c.content.data(), static_cast<int>(c.content.size()));
        std::string const message = "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nTransfer-Encoding: chunked\r\n\r\n" +
                                    chunkedBody(c.gzip ? member.all() + c.after_member : c.content, c.chunk) + "NEXT";
        // 1, 2. The buffered stream on the message, the header lines up to the empty line.
        ZUMMemoryInputStream source(message.data(), static_cast<int>(message.size()));
        ZUMBufferedInputStream bis(source, c.buffer);
        RVKByteBuffer line(0, 128);
        for (int n : {17, 24, 28, 2}) {
            ASSERT_EQ(bis.readline(line), n) << str(line);
        }
        // 3-6. A chunked stream on the caller's buffered stream (or on its
        //      own, reading from ours), a gzip stream on the chunked stream
        //      read to -1, the gzip trailer checked on the way; unwrapping
        //      hands what the gzip stream read ahead back to the chunked
        //      stream, which then reads to the end of the body.
        std::string got = readChunkedBody(bis, c.gzip, 1500, Form::Buffer, c.owned);
        EXPECT_TRUE(got == c.content + (c.gzip ? "|" + c.after_member : ""));
        // 7. The trailer and the final empty line are left in the buffered
        //    stream, and behind them the next message.
        EXPECT_EQ(drain(bis, 0, Form::Line), "X-Checksum: 42\r\nX-Done: yes\r\n\r\nNEXT");
    }
}
