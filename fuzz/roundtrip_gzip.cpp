// Fuzz target: gzip out and back in, plain or inside a chunked body.
//
// Input: 8 setting bytes, then the content.
//   0: bit 0 through the chunked streams, bits 4-7 the refill size
//   1-4: write sizes (0: a write of nothing, then 64); 5-6: read sizes and forms
//   7: chunk size
//
// Checks: zlib's own gzip decoder reads the member back to the content; our
// reading chain does too, with -1 after it, nothing left in the body behind
// the member and the empty trailer behind the body.

#include <memory>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    std::uint8_t mode = in.byte();
    Schedule writeSteps(in.take(4));
    Schedule readSteps(in.take(2));
    int chunkSize = 1 + in.byte() * 8;
    std::string content = in.rest();
    bool chunkedBody = mode & 1;

    ZUMMemoryOutputStream out;
    {
        std::unique_ptr<ZUMChunkedOutputStream> chunker;
        if (chunkedBody) {
            chunker.reset(new ZUMChunkedOutputStream(out, chunkSize));
        }
        ZUMGZIPOutputStream gzip(chunker ? static_cast<ZUMOutputStream&>(*chunker)
                                         : static_cast<ZUMOutputStream&>(out));
        std::size_t at = 0;
        do {
            std::size_t n = writeSteps.next();
            if (n == 0) {
                gzip.write(content.data() + at, 0);
                n = 64;
            }
            n = n < content.size() - at ? n : content.size() - at;
            gzip.write(content.data() + at, static_cast<int>(n));
            at += n;
        } while (at < content.size());
        gzip.finish();
        if (chunker) {
            chunker->close();
        }
    }
    std::string wire = collected(out);

    ZUMMemoryInputStream raw(wire.data(), static_cast<int>(wire.size()));
    ZUMBufferedInputStream bis(raw, k_chain_refill_sizes[mode >> 4]);
    ZUMChunkedInputStream body(bis);
    if (!chunkedBody) {
        ZlibGunzip ref = zlibGunzip(wire);
        FUZZ_CHECK(ref.ok && ref.consumed == wire.size() && ref.out == content);
    }
    ZUMGZIPInputStream gunzip(chunkedBody ? static_cast<ZUMInputStream&>(body)
                                          : static_cast<ZUMInputStream&>(bis));
    std::string got;
    std::size_t const limit = 2 * size + 100;  // deflate output is never smaller than a byte per read
    for (std::size_t reads = 0;; ++reads) {
        FUZZ_CHECK(reads < limit + content.size());
        std::uint8_t step = readSteps.next();
        if (readOnce(gunzip, step, readCount(step), got) < 0) {
            break;
        }
    }
    FUZZ_CHECK(got == content);
    gunzip.unWrap();
    if (chunkedBody) {
        std::string behind;
        FUZZ_CHECK(readOnce(body, 0, 16, behind) == -1);
        RVKByteBuffer line(0, 16);
        FUZZ_CHECK(bis.readline(line) == 2 && std::strcmp(line.str(), "\r\n") == 0);
    }
    FUZZ_CHECK(bis.read() == -1);
    return 0;
}
