// Fuzz target: the gzip input stream, alone on a source or at the top of the
// typical chain (memory -> buffered -> chunked -> gzip).
//
// Input: 11 setting bytes, then the bytes taken as a gzip member (and
// whatever follows it).
//   0: bit 0 chain (the bytes are framed as a chunked body first), bit 1
//      empty reads from the source, bit 2 source failures, bits 4-7 the
//      buffered stream's refill size
//   1-4: source read sizes; 5-8: gzip read sizes and forms
//   9: chunk size and size-line style; 10: which source reads fail
//
// Checks: every read loop ends (-1 or an exception) within a number of reads
// bounded by the input size; whenever zlib's own gzip decoder accepts the
// member and nothing disturbed the reads, the stream delivers exactly zlib's
// bytes and then -1; whatever the stream delivers before -1 is zlib's output;
// after unWrap() the bytes behind the member come back, and in the chain the
// trailer is still in the buffered stream.

#include "FuzzSupport.h"

namespace {

// The bytes as a chunked body: chunks of `size` bytes, the last chunk, one
// trailer field and the final empty line.
std::string frame(std::string const& bytes, std::uint8_t style)
{
    std::size_t size = 1 + static_cast<std::size_t>(style >> 2) * 64;
    std::string body;
    char line[32];
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        std::size_t n = bytes.size() - at < size ? bytes.size() - at : size;
        std::snprintf(line, sizeof line, (style & 1) ? "%zX" : "%zx", n);
        body += line;
        body += (style & 2) ? ";ext=1\r\n" : "\r\n";
        body.append(bytes, at, n);
        body += "\r\n";
    }
    return body + "0\r\nX-Trailer: 1\r\n\r\n";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    std::uint8_t mode = in.byte();
    Schedule sourceSteps(in.take(4));
    Schedule readSteps(in.take(4));
    std::uint8_t style = in.byte();
    std::uint8_t failures = in.byte();
    std::string member = in.rest();

    bool chain = mode & 1;
    bool disturbed = (mode & 2) || (mode & 4);
    ZlibGunzip ref = zlibGunzip(member);

    FuzzSource source(chain ? frame(member, style) : member, sourceSteps, (mode & 2) ? 16 : 0, true);
    if (mode & 4) {
        source.failAt(1 + failures % 8, 2 + failures / 8);
    }
    ZUMBufferedInputStream bis(source, k_chain_refill_sizes[mode >> 4]);
    ZUMChunkedInputStream chunked(bis);
    if (!chain) {
        bis.unWrap();  // nothing read yet: nothing to hand back
    }
    ZUMGZIPInputStream gzip;
    gzip.wrap(chain ? static_cast<ZUMInputStream&>(chunked) : static_cast<ZUMInputStream&>(source));

    // Every read before the end delivers a byte, and deflate data expands at
    // most 1032 times; each source failure costs one more read.
    std::size_t const limit = 2 * 1040 * (size + 1) + 1000;
    std::string got;
    bool ended = false;      // -1 seen
    bool raised = false;     // an exception that is the stream's own verdict
    std::size_t reads = 0;
    while (!ended && !raised) {
        FUZZ_CHECK(reads < limit);
        std::uint8_t step = readSteps.next();
        int count = reads < 256 ? readCount(step) : 16384;
        ++reads;
        int failuresBefore = source.failures();
        try {
            ended = readOnce(gzip, step, count, got) < 0;
            if (ended && step % 8 >= 4) {
                // The byte-buffer and single-byte forms also give -1 for a
                // read that delivered nothing, as the read that meets damaged
                // deflate data may; an array read tells the end from that.
                char probe;
                FUZZ_CHECK(gzip.read(&probe, 1) == -1);
            }
        } catch (RVKThrowable const&) {
            ended = false;
            raised = source.failures() == failuresBefore;
        }
    }

    if (ended) {
        // What came out is the member's content, and the stream stays ended.
        // (After a source failure inside the header, the next read starts a
        // new header where the input then stands, so only undisturbed runs
        // compare with zlib.)
        if (!source.failed()) {
            FUZZ_CHECK(ref.ok || ref.header_crc_only);
            if (ref.ok) {
                FUZZ_CHECK(got == ref.out);
            }
        }
        FUZZ_CHECK(gzip.read() == -1);
    } else {
        // A damaged member (or a disturbed read) is reported, never passed;
        // later reads raise or end, but never crash.
        FUZZ_CHECK(!ref.ok || disturbed);
        for (int i = 0; i < 3; ++i) {
            try {
                if (gzip.read() == -1) {
                    break;
                }
            } catch (RVKThrowable const&) {
            }
        }
    }

    try {
        gzip.unWrap();
    } catch (RVKThrowable const&) {
        FUZZ_CHECK(!"unWrap raised");
    }

    // What follows the member: behind it in the body (chain), or in the source.
    bool exact = ended && ref.ok && !source.failed();
    std::string behind;
    if (chain) {
        std::size_t drainLimit = size + 64;
        for (std::size_t r = 0;; ++r) {
            FUZZ_CHECK(r < drainLimit);
            try {
                if (readOnce(chunked, 0, 4096, behind) < 0) {
                    break;
                }
            } catch (RVKThrowable const&) {
                exact = false;
            } catch (char const*) {
                exact = false;
            }
        }
        std::string trailer;
        for (std::size_t r = 0;; ++r) {
            FUZZ_CHECK(r < drainLimit);
            RVKByteBuffer line(0, 64);
            int n = -1;
            try {
                n = bis.readline(line);
            } catch (RVKThrowable const&) {
                exact = false;
                continue;
            } catch (char const*) {
                exact = false;
                continue;
            }
            if (n < 0) {
                break;
            }
            trailer.append(line.str(), static_cast<std::size_t>(line.pcount()));
        }
        if (exact) {
            FUZZ_CHECK(trailer == "X-Trailer: 1\r\n\r\n");
        }
    } else {
        behind = source.remaining();
    }
    if (exact) {
        FUZZ_CHECK(behind == member.substr(ref.consumed));
    }
    return 0;
}
