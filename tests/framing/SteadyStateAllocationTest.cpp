// Reads in steady state allocate nothing: the buffered stream reuses its
// buffer for every refill and line, the chunked stream its chunk-size line
// (the strict one reads size lines byte by byte into no buffer at all),
// the gzip streams their zlib record and input buffer, the strict Base64
// stream its text buffer; the line-break filter reads into the caller's
// memory.

#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

// Reads `in` to -1 into `out` (which has room to spare) in reads of at most
// `count`; returns the length.
std::size_t readInto(ZUMInputStream& in, std::vector<char>& out, int count)
{
    std::size_t done = 0;
    for (int n = 0, zeros = 0; n >= 0 && zeros < 1000; zeros = n ? 0 : zeros + 1) {
        n = in.read(out.data() + done, std::min<int>(count, static_cast<int>(out.size() - done)));
        done += n > 0 ? static_cast<std::size_t>(n) : 0;
    }
    return done;
}

// Reads `twice`, two chunked bodies one after the other, each through a new
// Chunked stream on one buffered stream: the first brings the buffer to its
// working size (it grows once, when a size line straddles a refill), the
// second, with its trailer read line by line, allocates nothing.
template <class Chunked>
void expectSecondBodyAllocatesNothing(std::string const& twice, std::string const& data, char const* name)
{
    ZUMMemoryInputStream mem(twice.data(), static_cast<int>(twice.size()));
    ZUMBufferedInputStream bis(mem, 4096);
    Chunked first(bis), second(bis);
    RVKByteBuffer line(256, 256);
    std::vector<char> out(data.size() + 1);
    ASSERT_EQ(readInto(first, out, 700), data.size()) << name;
    while (bis.readline(line) > 2) {
    }
    std::size_t before = allocationCount();
    std::size_t done = readInto(second, out, 700);
    for (line.reset(); bis.readline(line) > 2; line.reset()) {
    }
    EXPECT_EQ(allocationCount() - before, 0u) << name;
    EXPECT_TRUE(std::string(out.data(), done) == data) << name;
}

// After the first read of a Stream over `input` (constructed with `args`
// after the stream beneath), the rest of it and all of `input` again after
// unWrap and wrap allocate nothing and decode to `expected`.
template <class Stream, class... Args>
void expectReadsAfterTheFirstAllocateNothing(std::string const& input, std::string const& expected, char const* name,
                                             Args... args)
{
    ZUMMemoryInputStream first(input.data(), static_cast<int>(input.size()));
    ZUMMemoryInputStream second(input.data(), static_cast<int>(input.size()));
    Stream stream(first, args...);
    std::vector<char> out(expected.size() + 1);
    ASSERT_EQ(stream.read(out.data(), 1), 1) << name;
    std::size_t const before = allocationCount();
    EXPECT_EQ(readInto(stream, out, 3000), expected.size() - 1) << name;
    stream.unWrap();
    stream.wrap(second);
    std::size_t const done = readInto(stream, out, 5000);
    EXPECT_EQ(allocationCount() - before, 0u) << name;
    EXPECT_TRUE(std::string(out.data(), done) == expected) << name;
}

}  // namespace

TEST(SteadyStateAllocation, ChunkedGzipBase64AndLineBreakReadsAllocateNothing)
{
    std::string body, data;
    for (int i = 0; i < 400; ++i) {
        std::string chunk(static_cast<std::size_t>(100 + i % 900), static_cast<char>('a' + i % 26));
        char size[32];
        std::snprintf(size, sizeof size, "%x;ext=%d\r\n", static_cast<unsigned>(chunk.size()), i);
        body += size + chunk + "\r\n";
        data += chunk;
    }
    std::string const twice = body + "0\r\nX: y\r\n\r\n" + body + "0\r\nX: y\r\n\r\n";
    expectSecondBodyAllocatesNothing<ZUMChunkedInputStream>(twice, data, "chunked");
    expectSecondBodyAllocatesNothing<ZUMStrictChunkedInputStream>(twice, data, "strict chunked");

    // Gzip input, single- and multi-member (member boundaries included), and
    // strict Base64 text, blanks skipped or not.
    std::string content = mixedData(200000, 13), member = zlibDeflate(content);
    expectReadsAfterTheFirstAllocateNothing<ZUMGZIPInputStream>(member, content, "gzip");
    expectReadsAfterTheFirstAllocateNothing<ZUMMultiMemberGZIPInputStream>(member + member, content + content,
                                                                           "multi-member gzip");
    std::string text(RVKBase64EncodedSize(200000, 0), '\0'), mime;
    text.resize(RVKBase64Encode(content.data(), 200000, &text[0], 0));
    for (std::size_t at = 0; at < text.size(); at += 76) {
        mime += text.substr(at, 76) + "\r\n";
    }
    expectReadsAfterTheFirstAllocateNothing<ZUMStrictBase64InputStream>(text, content, "strict Base64", 0);
    expectReadsAfterTheFirstAllocateNothing<ZUMStrictBase64InputStream>(mime, content, "strict Base64, blanks", 1);
    expectReadsAfterTheFirstAllocateNothing<ZUMStripLineBreaksInputStream>(mime, text, "line-break filter");

    // gzip output after the first write, also for the next member.
    ZUMMemoryOutputStream sink(static_cast<int>(4 * member.size() + 65536), 4096);
    ZUMGZIPOutputStream gzip_out(sink);
    std::string const rest = content.substr(1000);
    std::vector<std::size_t> const pieces_3000 = {3000}, pieces_5000 = {5000};
    gzip_out.write(content.data(), 1000);
    std::size_t const before = allocationCount();
    writeInPieces(gzip_out, rest, pieces_3000);
    gzip_out.finish();
    writeInPieces(gzip_out, content, pieces_5000);
    gzip_out.finish();
    EXPECT_EQ(allocationCount() - before, 0u) << "gzip output";
}
