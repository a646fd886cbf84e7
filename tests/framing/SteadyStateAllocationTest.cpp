// Reads in steady state allocate nothing: the buffered stream reuses its
// buffer for every refill and line, the chunked stream its chunk-size line,
// the gzip stream its zlib record and input buffer, the line-break filter
// the caller's buffer.

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

}  // namespace

TEST(SteadyStateAllocation, ChunkedLineAndGzipReadsAllocateNothing)
{
    std::string body, data;
    for (int i = 0; i < 400; ++i) {
        std::string chunk(static_cast<std::size_t>(100 + i % 900), static_cast<char>('a' + i % 26));
        char size[32];
        std::snprintf(size, sizeof size, "%x;ext=%d\r\n", static_cast<unsigned>(chunk.size()), i);
        body += size + chunk + "\r\n";
        data += chunk;
    }
    // Two bodies one after the other: the first brings the buffer to its
    // working size (it grows once, when a size line straddles a refill), the
    // second is read in steady state, its trailer line by line.
    std::string const twice = body + "0\r\nX: y\r\n\r\n" + body + "0\r\nX: y\r\n\r\n";
    ZUMMemoryInputStream mem(twice.data(), static_cast<int>(twice.size()));
    ZUMBufferedInputStream bis(mem, 4096);
    ZUMChunkedInputStream first(bis), second(bis);
    RVKByteBuffer line(256, 256);
    std::vector<char> out(data.size() + 1);
    ASSERT_EQ(readInto(first, out, 700), data.size());
    while (bis.readline(line) > 2) {
    }
    std::size_t before = allocationCount();
    std::size_t done = readInto(second, out, 700);
    for (line.reset(); bis.readline(line) > 2; line.reset()) {
    }
    EXPECT_EQ(allocationCount() - before, 0u) << "chunked";
    EXPECT_TRUE(std::string(out.data(), done) == data);

    // After the first read of a gzip stream, also for the next member after
    // unWrap and wrap.
    std::string content = mixedData(200000, 13), member = zlibDeflate(content);
    ZUMMemoryInputStream gz_first(member.data(), static_cast<int>(member.size()));
    ZUMMemoryInputStream gz_second(member.data(), static_cast<int>(member.size()));
    ZUMGZIPInputStream gz(gz_first);
    std::vector<char> plain(content.size() + 1);
    ASSERT_EQ(gz.read(plain.data(), 1), 1);
    before = allocationCount();
    EXPECT_EQ(readInto(gz, plain, 3000), content.size() - 1);
    gz.unWrap();
    gz.wrap(gz_second);
    done = readInto(gz, plain, 5000);
    EXPECT_EQ(allocationCount() - before, 0u) << "gzip";
    EXPECT_TRUE(std::string(plain.data(), done) == content);
}

TEST(SteadyStateAllocation, LineBreakFilterReadsAllocateNothing)
{
    std::string text;
    for (int i = 0; i < 200; ++i) {
        text += "QUJDREVGR0hJSktMTU5PUFFSU1RVVldYWVo=\r\n";
    }
    ZUMMemoryInputStream raw(text.data(), static_cast<int>(text.size()));
    ZUMStripLineBreaksInputStream strip(raw);
    RVKByteBuffer into(static_cast<unsigned>(text.size()) + 1, 16);
    std::size_t const before = allocationCount();
    while (strip.read(into, 50) >= 0) {
    }
    EXPECT_EQ(allocationCount() - before, 0u);
    EXPECT_EQ(into.pcount(), 200 * 36);
}
