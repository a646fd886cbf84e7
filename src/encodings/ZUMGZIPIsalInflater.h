#ifndef ZUM_GZIP_ISAL_INFLATER_H
#define ZUM_GZIP_ISAL_INFLATER_H

// The gzip input stream's raw deflate decoder and CRC-32 in the fast inflate
// build: ISA-L's isal_inflate and crc32_gzip_refl (internal header, included
// by ZUMGZIPInputStream.cpp only). The record keeps zlib's statuses, so the
// stream above behaves as with zlib.

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <cstddef>
#include <cstdint>

namespace {
namespace inflater {

// The decoder record that the stream keeps behind its z_stream_s pointer:
// ISA-L's inflate state, which has the same input and output fields as
// zlib's record (next_in, avail_in, next_out, avail_out, total_out).
struct Record : inflate_state {
    // The upstream has ended, found by a refill that zlib would have made
    // only after the bytes that ISA-L held in its bit buffer: the next
    // refill ends the input without asking the upstream again.
    bool upstream_ended;
};

// ISA-L loads up to 8 bytes of input ahead into its bit buffer. When the
// deflate data ends, the whole bytes still in it (the start of the trailer)
// are put back in front of next_in; the input buffer keeps this many bytes
// in front of its input area so that they fit there even when they came
// from the previous refill.
int const k_headroom = 8;

// Clears the output and points the input at `in` with nothing available.
inline void prepare(Record* r, unsigned char* in)
{
    r->next_in = in;
    r->avail_in = 0;
    r->next_out = nullptr;
    r->avail_out = 0;
}

// Initialises a raw inflater with a 32 KiB window, keeping the input
// pointers; never fails.
inline int begin(Record* r)
{
    unsigned char* in = r->next_in;
    std::uint32_t avail = r->avail_in;
    isal_inflate_init(r);
    r->crc_flag = ISAL_DEFLATE;
    r->upstream_ended = false;
    r->hist_bits = ISAL_DEF_MAX_HIST_BITS;
    r->next_in = in;
    r->avail_in = avail;
    return 0;
}

inline void end(Record*)
{
}

// Whether the next refill is to end the input without asking the upstream
// (once).
inline bool takeEnded(Record* r)
{
    bool ended = r->upstream_ended;
    r->upstream_ended = false;
    return ended;
}

// One isal_inflate call over the record's input and output, its result as
// zlib's inflate would give it: 1 when the deflate data has ended and all of
// it is delivered, -3 for invalid data, 0 when the call made progress, -5
// when it could not (it needs input that is not there). `eof` is the
// stream's end-of-input flag.
inline int step(Record* r, int& eof)
{
    std::uint32_t const avail_in = r->avail_in;
    std::uint32_t const avail_out = r->avail_out;
    std::int32_t const bits = r->read_in_length;
    int const block = r->block_state;
    unsigned char* const in_end = r->next_in + avail_in;
    if (isal_inflate(r) < 0) {
        // The input fields are not kept consistent on this path (avail_in
        // can wrap below 0): take next_in, within the input, as the point
        // reached.
        if (r->next_in > in_end) {
            r->next_in = in_end;
        }
        r->avail_in = static_cast<std::uint32_t>(in_end - r->next_in);
        return -3;
    }
    if (r->block_state == ISAL_BLOCK_FINISH) {
        // Drop the rest of the last byte of the deflate data, then give the
        // whole bytes back to the input, lowest first.
        int const whole = r->read_in_length / 8;
        std::uint64_t rest = r->read_in >> (r->read_in_length % 8);
        unsigned char* at = r->next_in - whole;
        for (int i = 0; i < whole; ++i) {
            at[i] = static_cast<unsigned char>(rest);
            rest >>= 8;
        }
        r->next_in = at;
        r->avail_in += static_cast<std::uint32_t>(whole);
        r->read_in = 0;
        r->read_in_length = 0;
        if (whole > 0 && eof) {
            // zlib would still have these bytes in the input buffer and
            // meet the end of the upstream only after them.
            eof = 0;
            r->upstream_ended = true;
        }
        return 1;
    }
    bool const progress = r->avail_in != avail_in || r->avail_out != avail_out ||
                          r->read_in_length != bits || r->block_state != block;
    return progress ? 0 : -5;
}

inline std::uint32_t crc(std::uint32_t value, unsigned char const* bytes, std::size_t n)
{
    return crc32_gzip_refl(value, bytes, n);
}

}  // namespace inflater
}  // namespace

#endif
