// Fuzz target: the multi-member gzip input stream against a reference that
// walks the members by the rules: each member is judged by zlib's own gzip
// decoder; after a member comes the end of the input, another member (1F 8B)
// or NUL bytes up to the end; anything else is trailing garbage.
//
// Input: 10 setting bytes, then the bytes under test.
//   0: bit 0 the source can take bytes back, bit 1 empty source reads,
//      bit 2 source failures
//   1-4: source read sizes; 5-8: read sizes and forms; 9: failing reads
//
// Checks: every read loop ends within a number of reads bounded by the input
// size; undisturbed, the stream ends exactly where the reference ends with
// exactly its bytes, raises GZIP_TRAILING_GARBAGE naming the reference's
// offset after delivering every member, or raises for a damaged member after
// delivering a prefix of the reference's bytes; every ZUMIOException of the
// stream's own ends in a text that names a byte offset; after unWrap() the
// source gets back exactly the garbage, from the offset named.

#include <regex>

#include "FuzzSupport.h"

namespace {

struct Reference {
    enum Verdict { END, GARBAGE, DAMAGED, UNKNOWN } verdict = END;
    std::string out;
    std::size_t garbage_at = 0;
};

Reference reference(std::string const& in)
{
    Reference ref;
    for (std::size_t p = 0, member = 0;; ++member) {
        if (member > 0) {
            if (p == in.size()) {
                return ref;
            }
            bool magic = p + 1 < in.size() && in[p] == '\x1f' && in[p + 1] == '\x8b';
            if (!magic) {
                std::size_t q = p;
                while (q < in.size() && in[q] == '\0') {
                    ++q;
                }
                if (q < in.size()) {
                    ref.verdict = Reference::GARBAGE;
                    ref.garbage_at = q;
                }
                return ref;
            }
        }
        ZlibGunzip m = zlibGunzip(in.substr(p));
        ref.out += m.out;
        if (!m.ok) {
            // zlib checks the header CRC16, which the stream skips.
            ref.verdict = m.header_crc_only ? Reference::UNKNOWN : Reference::DAMAGED;
            return ref;
        }
        p += m.consumed;
    }
}

// Whether the last message of `e` is a text that ends in "at byte N"; N
// goes to `offset`.
bool namesPlace(ZUMIOException const& e, std::size_t& offset)
{
    std::size_t count = e.getMessageCount();
    auto const* text = count ? dynamic_cast<RVKMessageString const*>(&e.getMessageAt(count - 1)) : nullptr;
    static std::regex const place(".*, at byte ([0-9]+)$");
    std::cmatch m;
    if (!text || !std::regex_match(text->getString().c_str(), m, place)) {
        return false;
    }
    offset = std::stoull(m[1].str());
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    std::uint8_t mode = in.byte();
    Schedule sourceSteps(in.take(4));
    Schedule readSteps(in.take(4));
    std::uint8_t failures = in.byte();
    std::string input = in.rest();

    bool disturbed = (mode & 2) || (mode & 4);
    Reference ref = reference(input);

    FuzzSource source(input, sourceSteps, (mode & 2) ? 16 : 0, mode & 1);
    if (mode & 4) {
        source.failAt(1 + failures % 8, 2 + failures / 8);
    }
    ZUMMultiMemberGZIPInputStream gzip(source);

    // Every read before the end delivers a byte or starts a member, and
    // deflate data expands at most 1032 times; each source failure costs one
    // more read.
    std::size_t const limit = 2 * 1040 * (size + 1) + 1000;
    std::string got;
    bool ended = false;
    bool raised = false;  // a failure that is the stream's own verdict
    bool garbage = false;
    std::size_t offset = 0;
    for (std::size_t reads = 0; !ended && !raised; ++reads) {
        FUZZ_CHECK(reads < limit);
        std::uint8_t step = readSteps.next();
        int failuresBefore = source.failures();
        try {
            ended = readOnce(gzip, step, reads < 256 ? readCount(step) : 16384, got) < 0;
            if (ended && step % 8 >= 4) {
                // The byte-buffer and single-byte forms give -1 also for a
                // read that delivered nothing; an array read tells.
                char probe;
                ended = gzip.read(&probe, 1) == -1;
            }
        } catch (ZUMIOException const& e) {
            raised = source.failures() == failuresBefore;
            if (raised) {
                FUZZ_CHECK(namesPlace(e, offset));
                garbage = e.hasMessage(ZUMMessage::GZIP_TRAILING_GARBAGE);
            }
        } catch (RVKThrowable const&) {
            raised = source.failures() == failuresBefore;
        }
    }

    if (!disturbed && ref.verdict != Reference::UNKNOWN) {
        FUZZ_CHECK(ended == (ref.verdict == Reference::END));
        FUZZ_CHECK(garbage == (ref.verdict == Reference::GARBAGE));
        if (ref.verdict == Reference::DAMAGED) {
            FUZZ_CHECK(got.size() <= ref.out.size() && ref.out.compare(0, got.size(), got) == 0);
        } else {
            FUZZ_CHECK(got == ref.out);
        }
        if (garbage) {
            FUZZ_CHECK(offset == ref.garbage_at);
        }
    }
    // The verdict stays: an end stays an end, a failure raises again.
    try {
        FUZZ_CHECK(gzip.read() == -1 && ended);
    } catch (ZUMIOException const& e) {
        FUZZ_CHECK(!ended && namesPlace(e, offset));
    } catch (RVKThrowable const&) {
        FUZZ_CHECK(!ended);
    }

    try {
        gzip.unWrap();
    } catch (RVKThrowable const&) {
        FUZZ_CHECK(!"unWrap raised");
    }
    if (garbage && !disturbed && (mode & 1)) {
        FUZZ_CHECK(offset < input.size() && source.remaining() == input.substr(offset));
    }
    return 0;
}
