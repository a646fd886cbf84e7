// Fuzz target: a chunked body out and back in.
//
// Input: 10 setting bytes, then the content.
//   0: bit 0 the input stream owns its buffered stream, bits 4-7 the refill
//      size
//   1-4: write sizes (a step of 0 mod 7 flushes after its write);
//   5-6: source read sizes; 7-8: read sizes and forms; 9: chunk size
//
// Checks: the body decodes to the content, then -1; the final empty line is left behind the body (in the lent
// buffered stream, or handed back to the source by unWrap()).

#include <memory>

#include "FuzzSupport.h"

namespace {

int const k_refill_sizes[16] = {1, 2, 3, 4, 7, 16, 31, 64, 100, 256, 512, 1000, 1024, 4096, 16384, 65536};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    std::uint8_t mode = in.byte();
    Schedule writeSteps(in.take(4));
    Schedule sourceSteps(in.take(2));
    Schedule readSteps(in.take(2));
    int chunkSize = 1 + in.byte();
    std::string content = in.rest();

    ZUMMemoryOutputStream out;
    {
        ZUMChunkedOutputStream chunker(out, chunkSize);
        std::size_t at = 0;
        while (at < content.size()) {
            std::uint8_t step = writeSteps.next();
            std::size_t n = step == 0 ? 1 : step;
            n = n < content.size() - at ? n : content.size() - at;
            chunker.write(content.data() + at, static_cast<int>(n));
            at += n;
            if (step % 7 == 0) {
                chunker.flush();
            }
        }
        chunker.close();
    }
    std::string wire = collected(out);

    // The body ends in the last chunk and the empty trailer.
    FUZZ_CHECK(wire.size() >= 5 && wire.compare(wire.size() - 5, 5, "0\r\n\r\n") == 0);

    bool owned = mode & 1;
    int refill = k_refill_sizes[mode >> 4];
    FuzzSource source(wire, sourceSteps, 0, true);
    ZUMBufferedInputStream lent(source, refill);
    if (owned) {
        lent.unWrap();
    }
    std::unique_ptr<ZUMChunkedInputStream> body(
        owned ? new ZUMChunkedInputStream(source, refill) : new ZUMChunkedInputStream(lent));

    std::string got;
    for (std::size_t reads = 0;; ++reads) {
        FUZZ_CHECK(reads < 2 * size + 100);
        std::uint8_t step = readSteps.next();
        if (readOnce(*body, step, readCount(step), got) < 0) {
            break;
        }
    }
    FUZZ_CHECK(got == content);
    FUZZ_CHECK(body->read() == -1);
    if (owned) {
        body->unWrap();
        FUZZ_CHECK(source.remaining() == "\r\n");
    } else {
        RVKByteBuffer line(0, 16);
        FUZZ_CHECK(lent.readline(line) == 2 && std::strcmp(line.str(), "\r\n") == 0);
        line.reset();
        FUZZ_CHECK(lent.readline(line) == -1);
    }
    return 0;
}
