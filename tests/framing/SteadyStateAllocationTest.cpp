// Reads in steady state allocate nothing: the buffered stream reuses its
// buffer for every refill and line, the chunked stream its chunk-size line.

#include <gtest/gtest.h>

#include "AllocationCounter.h"
#include "FramingTestUtil.h"
#include "ZUMBlockInputStream.h"
#include "ZUMChunkedInputStream.h"
#include "ZUMMemoryInputStream.h"

TEST(SteadyStateAllocation, ChunkedBlockAndLineReadsAllocateNothing)
{
    std::string body;
    std::string data;
    for (int i = 0; i < 400; ++i) {
        std::string chunk(static_cast<std::size_t>(100 + i % 900), static_cast<char>('a' + i % 26));
        char size[32];
        std::snprintf(size, sizeof size, "%x;ext=%d\r\n", static_cast<unsigned>(chunk.size()), i);
        body += size + chunk + "\r\n";
        data += chunk;
    }
    body += "0\r\nX: y\r\n\r\n";

    // Two bodies one after the other: the first brings the buffer to its
    // working size (it grows once, when a size line straddles a refill), the
    // second is read in steady state.
    std::string const twice = body + body;
    ZUMMemoryInputStream mem(twice.data(), static_cast<int>(twice.size()));
    ZUMBufferedInputStream bis(mem, 4096);
    ZUMChunkedInputStream first(bis);
    ZUMChunkedInputStream second(bis);
    RVKByteBuffer line(256, 256);
    std::vector<char> out(data.size());
    auto decode = [&](ZUMChunkedInputStream& chunked) {
        std::size_t done = 0;
        for (int n; (n = chunked.read(out.data() + done, 700)) > 0;) {
            done += static_cast<std::size_t>(n);
        }
        for (line.reset(); bis.readline(line) > 2; line.reset()) {
        }
        return done;
    };
    ASSERT_EQ(std::string(out.data(), decode(first)), data);
    std::size_t before = allocationCount();
    std::size_t done = decode(second);
    EXPECT_EQ(allocationCount() - before, 0u);
    EXPECT_EQ(std::string(out.data(), done), data);

    // A block stream reading lines of text, likewise.
    std::string lines;
    for (int i = 0; i < 2000; ++i) {
        lines += "line " + std::to_string(i) + "\r\n";
    }
    ZUMMemoryInputStream mem2(lines.data(), static_cast<int>(lines.size()));
    ZUMBlockInputStream block(mem2, 512);
    block.resetBlockSize(static_cast<int>(lines.size()));
    char buf[100];
    ASSERT_EQ(block.read(buf, 100), 100);
    before = allocationCount();
    while (block.read(buf, 100) > 0) {
    }
    EXPECT_EQ(allocationCount() - before, 0u);
}
