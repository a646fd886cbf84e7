#ifndef ZUM_GZIP_ISAL_DEFLATER_H
#define ZUM_GZIP_ISAL_DEFLATER_H

// The gzip output stream's raw deflate compressor and CRC-32 in the fast
// deflate build: ISA-L's streaming isal_deflate and crc32_gzip_refl (internal
// header, included by ZUMGZIPOutputStream.cpp only). The record takes zlib's
// flush values and gives zlib's statuses, so the stream above behaves as with
// zlib.

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <cstddef>
#include <cstdint>

namespace {
namespace deflater {

// ISA-L's compression level: 2 of 0 to 3 (see the README for the
// measurements behind it).
unsigned const k_level = 2;
std::size_t const k_level_buf_size = ISAL_DEF_LVL2_DEFAULT;

// zlib's statuses and flush values, as the stream keeps and passes them.
int const k_ok = 0;
int const k_stream_end = 1;
int const k_stream_error = -2;
int const k_buf_error = -5;
int const k_no_flush = 0;
int const k_full_flush = 3;
int const k_finish = 4;
int const k_block = 5;  // the largest flush value of zlib's deflate

// Calls in a row that may pass without consuming input or producing output
// (ISA-L moving between its internal states) before a step gives up.
int const k_idle_calls = 8;

// The compressor record that the stream keeps behind its z_stream_s pointer:
// ISA-L's stream, which has the same input and output fields as zlib's
// record (next_in, avail_in, total_in, next_out, avail_out), with the work
// buffer of the level, allocated with it once.
struct Record : isal_zstream {
    bool active;     // from begin() to end(), as zlib's record is initialised
    bool finishing;  // a finishing step has run: only finishing steps follow
    std::uint8_t level_buffer[k_level_buf_size];
};

// Clears the input and points the output at `out` with no room yet.
inline void prepare(Record* r, unsigned char* out)
{
    r->next_in = nullptr;
    r->avail_in = 0;
    r->next_out = out;
    r->avail_out = 0;
}

// Starts a raw deflate stream with a 32 KiB window at the level, keeping the
// input and output pointers; never fails.
inline int begin(Record* r)
{
    std::uint8_t* const out = r->next_out;
    std::uint32_t const room = r->avail_out;
    isal_deflate_init(r);
    r->level = k_level;
    r->level_buf = r->level_buffer;
    r->level_buf_size = static_cast<std::uint32_t>(k_level_buf_size);
    r->gzip_flag = IGZIP_DEFLATE;
    r->hist_bits = ISAL_DEF_MAX_HIST_BITS;
    r->next_out = out;
    r->avail_out = room;
    r->active = true;
    r->finishing = false;
    return k_ok;
}

inline void end(Record* r)
{
    r->active = false;
}

inline void input(Record* r, char const* bytes, int count)
{
    r->next_in = reinterpret_cast<std::uint8_t*>(const_cast<char*>(bytes));
    r->avail_in = static_cast<std::uint32_t>(count);
}

// Runs isal_deflate with zlib's flush value `flush` until the output buffer
// is full, or all input is taken (and, when flushing, written out), or the
// deflate data has ended; returns what zlib's deflate would: 1 when the data
// has ended (after 4, Z_FINISH), 0 after progress, -5 when no progress was
// possible; -2 for a flush value out of range, for another flush value after
// a finishing one, for a stream that is not started, and for any failure of
// ISA-L's own. Partial, sync and block flushes (1, 2, 5) are all sync
// flushes (an empty stored block); 3 is a full flush.
inline int step(Record* r, int flush)
{
    if (!r->active || flush < k_no_flush || flush > k_block || (r->finishing && flush != k_finish)) {
        return k_stream_error;
    }
    bool const finishing = flush == k_finish;
    if (finishing) {
        r->finishing = true;
        r->end_of_stream = 1;
        r->flush = NO_FLUSH;
    } else {
        r->flush = flush == k_no_flush ? NO_FLUSH : flush == k_full_flush ? FULL_FLUSH : SYNC_FLUSH;
    }
    bool progress = false;
    int idle = 0;
    for (;;) {
        if (r->internal_state.state == ZSTATE_END) {
            return k_stream_end;
        }
        // With room left, ISA-L has taken all input, and written out all of
        // it after a flush.
        if (r->avail_out == 0 || (!finishing && r->avail_in == 0 && (progress || idle > 0))) {
            return progress ? k_ok : k_buf_error;
        }
        if (idle == k_idle_calls) {
            return progress || finishing ? k_stream_error : k_buf_error;
        }
        std::uint32_t const avail_in = r->avail_in;
        std::uint32_t const avail_out = r->avail_out;
        if (isal_deflate(r) != COMP_OK) {
            return k_stream_error;
        }
        if (r->avail_in == avail_in && r->avail_out == avail_out) {
            ++idle;
        } else {
            progress = true;
            idle = 0;
        }
    }
}

inline std::uint32_t crc(std::uint32_t value, unsigned char const* bytes, std::size_t n)
{
    return crc32_gzip_refl(value, bytes, static_cast<std::uint64_t>(n));
}

}  // namespace deflater
}  // namespace

#endif
