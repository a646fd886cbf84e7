// Fuzz target: the chunked input stream on arbitrary bytes.
//
// Input: 8 setting bytes, then the bytes taken as a chunked body.
//   0: bit 0 the stream owns its buffered stream (else the caller lends it),
//      bit 1 empty reads from the source, bit 2 source failures, bit 3 the
//      source accepts unread bytes, bits 4-7 the refill size
//   1-4: source read sizes; 5-6: read sizes and forms; 7: failing reads
//
// Checks: the reads end within a number bounded by the input size; the
// delivered bytes are exactly those of a plain decoder written here from the
// stream's documented rules (hexadecimal digits at the start of a size line,
// lines of CR LF alone skipped, a size of 0 or less or the end of input ends
// the body, a CR LF behind a NUL byte is not a line end); source failures
// lose nothing; everything behind the body (trailer) is still there
// afterwards, in the lent buffered stream or, after unWrap(), in the source.

#include <memory>

#include "FuzzSupport.h"

namespace {

int const k_refill_sizes[16] = {1, 2, 3, 4, 7, 16, 31, 64, 100, 256, 512, 1000, 1024, 4096, 16384, 65536};

// The index of the first CR LF at or after `from` with no NUL byte before it,
// or npos.
std::size_t lineEnd(std::string const& s, std::size_t from)
{
    for (std::size_t i = from; i < s.size() && s[i] != '\0'; ++i) {
        if (s[i] == '\r' && i + 1 < s.size() && s[i + 1] == '\n') {
            return i;
        }
    }
    return std::string::npos;
}

// The hexadecimal digits at the start, modulo 2^32, as a signed number.
std::int32_t hexSize(std::string const& line)
{
    std::uint32_t value = 0;
    for (char ch : line) {
        unsigned char c = static_cast<unsigned char>(ch);
        std::uint32_t digit;
        if (c >= '0' && c <= '9') {
            digit = c - '0';
        } else if (c >= 'a' && c <= 'f') {
            digit = c - 'a' + 10;
        } else if (c >= 'A' && c <= 'F') {
            digit = c - 'A' + 10;
        } else {
            break;
        }
        value = value * 16u + digit;
    }
    return static_cast<std::int32_t>(value);
}

// Decodes the body; `end` is where the bytes behind it start.
std::string dechunk(std::string const& s, std::size_t& end)
{
    std::string out;
    std::size_t pos = 0;
    for (;;) {
        if (pos >= s.size()) {
            break;
        }
        std::size_t e = lineEnd(s, pos);
        std::string line = e == std::string::npos ? s.substr(pos) : s.substr(pos, e + 2 - pos);
        pos += line.size();
        if (line == "\r\n") {
            continue;
        }
        std::int32_t n = hexSize(line);
        if (n <= 0) {
            break;
        }
        std::size_t take = static_cast<std::size_t>(n) < s.size() - pos ? static_cast<std::size_t>(n) : s.size() - pos;
        out.append(s, pos, take);
        pos += take;
    }
    end = pos;
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    std::uint8_t mode = in.byte();
    Schedule sourceSteps(in.take(4));
    Schedule readSteps(in.take(2));
    std::uint8_t failures = in.byte();
    std::string body = in.rest();

    bool owned = mode & 1;
    bool canUnread = mode & 8;
    int refill = k_refill_sizes[mode >> 4];
    std::size_t end = 0;
    std::string expected = dechunk(body, end);

    FuzzSource source(body, sourceSteps, (mode & 2) ? 64 : 0, canUnread);
    if (mode & 4) {
        source.failAt(1 + failures % 16, 2 + failures / 16, 40 + failures);
    }
    ZUMBufferedInputStream lent(source, refill);
    if (owned) {
        lent.unWrap();  // nothing read yet: nothing to hand back
    }
    std::unique_ptr<ZUMChunkedInputStream> chunked(
        owned ? new ZUMChunkedInputStream(source, refill) : new ZUMChunkedInputStream(lent));

    // Each read that does not end delivers a byte or meets an empty or failing
    // source read.
    std::size_t const limit = 2 * size + 200;
    std::string got;
    for (std::size_t reads = 0;; ++reads) {
        FUZZ_CHECK(reads < limit);
        std::uint8_t step = readSteps.next();
        try {
            if (readOnce(*chunked, step, readCount(step), got) < 0) {
                break;
            }
        } catch (char const* text) {
            FUZZ_CHECK(std::strcmp(text, "source failed") == 0);
        } catch (ZUMIOException const&) {
            FUZZ_CHECK(source.failed());
        }
    }
    FUZZ_CHECK(got == expected);
    FUZZ_CHECK(retrying(source, [&] { return chunked->read(); }) == -1);

    // The bytes behind the body are where the stream's comment says.
    std::string behind;
    if (owned) {
        bool handedBack = false;
        try {
            chunked->unWrap();
            handedBack = true;
        } catch (char const* text) {
            // A source that cannot take bytes back keeps the filter wrapped.
            FUZZ_CHECK(!canUnread && std::strcmp(text, "can't unwrap") == 0);
        }
        if (!handedBack) {
            return 0;
        }
        behind = source.remaining();
    } else {
        for (std::size_t r = 0;; ++r) {
            FUZZ_CHECK(r < limit);
            RVKByteBuffer line(0, 64);
            int n;
            try {
                n = lent.readline(line);
            } catch (char const*) {
                continue;
            } catch (ZUMIOException const&) {
                continue;
            }
            if (n < 0) {
                break;
            }
            FUZZ_CHECK(n == line.pcount());
            behind.append(line.str(), static_cast<std::size_t>(n));
        }
    }
    FUZZ_CHECK(behind == body.substr(end));
    return 0;
}
