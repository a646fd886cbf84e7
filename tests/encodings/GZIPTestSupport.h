#ifndef ZUM_GZIP_TEST_SUPPORT_H
#define ZUM_GZIP_TEST_SUPPORT_H

// Helpers shared by the gzip stream tests: members and raw deflate data made
// by zlib itself, deterministic test contents, and checks of the exceptions
// the gzip streams raise.

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "TestStreams.h"
#include "ZUMGZIPInputStream.h"
#include "ZUMGZIPOutputStream.h"

namespace gziptest {

// zlib's deflate over `content` in one Z_FINISH call, with the given window
// bits (-15: raw deflate, 31: zlib's own gzip wrapper).
inline std::string zlibDeflate(std::string const& content, int window_bits, int level = Z_DEFAULT_COMPRESSION)
{
    z_stream z{};
    EXPECT_EQ(deflateInit2(&z, level, Z_DEFLATED, window_bits, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string out(deflateBound(&z, content.size()) + 64, '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    z.avail_in = static_cast<uInt>(content.size());
    z.next_out = reinterpret_cast<Bytef*>(&out[0]);
    z.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

// A gzip member of `content` made by zlib's gzip wrapper.
inline std::string zlibMember(std::string const& content)
{
    return zlibDeflate(content, 31);
}

// `n` bytes of mixed content: text lines, pseudo-random bytes and runs of one
// byte, in turn; the same for the same arguments.
inline std::string mixedData(std::size_t n, std::uint32_t seed = 1)
{
    std::string out;
    out.reserve(n);
    std::uint32_t x = seed * 2654435761u + 1;
    auto next = [&x] {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        return x;
    };
    int section = 0;
    while (out.size() < n) {
        std::size_t len = 200 + next() % 3000;
        switch (section++ % 3) {
        case 0:
            for (std::size_t i = 0; i < len; i += 40) {
                out += "row " + std::to_string(next() % 1000) + ": lorem ipsum dolor sit amet\r\n";
            }
            break;
        case 1:
            for (std::size_t i = 0; i < len; ++i) {
                out += static_cast<char>(next() & 0xFF);
            }
            break;
        default:
            out.append(len, static_cast<char>(next() & 0xFF));
            break;
        }
    }
    out.resize(n);
    return out;
}

// `n` pseudo-random bytes, which deflate cannot compress.
inline std::string noiseData(std::size_t n, std::uint32_t seed = 1)
{
    std::string out(n, '\0');
    std::uint32_t x = seed * 2654435761u + 7;
    for (auto& c : out) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        c = static_cast<char>(x >> 24);
    }
    return out;
}

// Reads `stream` to -1 in block reads of `chunk` bytes (at most `max_reads`
// of them, so a stream that never ends fails the test instead of hanging).
inline std::string readToEnd(ZUMInputStream& stream, int chunk = 4096, int max_reads = 1 << 20)
{
    std::string out;
    std::string buf(static_cast<std::size_t>(chunk), '\0');
    for (int i = 0; i < max_reads; ++i) {
        int n = stream.read(&buf[0], chunk);
        if (n < 0) {
            return out;
        }
        out.append(buf, 0, static_cast<std::size_t>(n));
    }
    ADD_FAILURE() << "stream did not end";
    return out;
}

inline std::string readFile(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in.good()) << path;
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

inline std::string dataPath(std::string const& name)
{
    return std::string(ZUM_TEST_DATA_DIR) + "/gzip/" + name;
}

// The catalog number of message `i` of `e`, or 0 when it is not numbered.
inline unsigned long messageNumber(RVKException const& e, std::size_t i)
{
    auto const* numbered = dynamic_cast<RVKMessage const*>(&e.getMessageAt(i));
    return numbered ? numbered->getMsgNumber() : 0;
}

// The text of message `i` of `e`, or "" when it is not a plain text.
inline std::string messageText(RVKException const& e, std::size_t i)
{
    auto const* text = dynamic_cast<RVKMessageString const*>(&e.getMessageAt(i));
    return text ? text->getString().c_str() : "";
}

// Runs `action`, which must raise a ZUMIOException of severity 1 with `code`
// and the catalog message `number` first; returns the exception.
inline ZUMIOException expectIO(std::function<void()> const& action, long code, unsigned long number)
{
    try {
        action();
    } catch (ZUMIOException const& e) {
        EXPECT_EQ(e.getSeverity(), 1);
        EXPECT_EQ(e.getCode(), code);
        EXPECT_GE(e.getMessageCount(), 1u);
        if (e.getMessageCount() >= 1) {
            EXPECT_EQ(messageNumber(e, 0), number) << std::hex << messageNumber(e, 0);
        }
        return e;
    }
    ADD_FAILURE() << "no ZUMIOException raised";
    return ZUMIOException(0L);
}

}  // namespace gziptest

#endif
