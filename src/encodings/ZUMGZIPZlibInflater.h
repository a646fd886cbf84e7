#ifndef ZUM_GZIP_ZLIB_INFLATER_H
#define ZUM_GZIP_ZLIB_INFLATER_H

// The gzip input stream's raw deflate decoder and CRC-32: zlib's inflater,
// through the zlib 1.2.3 interface (internal header, included by
// ZUMGZIPInputStream.cpp only).

#include <zlib.h>

#include <cstddef>
#include <cstdint>

namespace {
namespace inflater {

static_assert(Z_OK == 0 && Z_STREAM_END == 1 && Z_DATA_ERROR == -3 && Z_MEM_ERROR == -4 &&
                  Z_BUF_ERROR == -5,
              "the stream keeps zlib's statuses");

// The decoder record that the stream keeps behind its z_stream_s pointer.
using Record = z_stream;

// Bytes kept in front of the input area of the input buffer.
int const k_headroom = 0;

// Clears the allocator fields and the output, and points the input at `in`
// with nothing available.
inline void prepare(Record* r, unsigned char* in)
{
    r->zalloc = Z_NULL;
    r->zfree = Z_NULL;
    r->opaque = Z_NULL;
    r->next_in = in;
    r->avail_in = 0;
    r->next_out = Z_NULL;
    r->avail_out = 0;
}

// Initialises a raw inflater with a 32 KiB window; zlib's status.
inline int begin(Record* r)
{
    return inflateInit2_(r, -15, "1.2.3", static_cast<int>(sizeof(z_stream)));
}

inline void end(Record* r)
{
    inflateEnd(r);
}

// Whether the next refill is to end the input without asking the upstream:
// never.
inline bool takeEnded(Record*)
{
    return false;
}

// One inflate call over the record's input and output; zlib's status.
inline int step(Record* r, int&)
{
    return inflate(r, Z_NO_FLUSH);
}

inline std::uint32_t crc(std::uint32_t value, unsigned char const* bytes, std::size_t n)
{
    return static_cast<std::uint32_t>(crc32(value, bytes, static_cast<uInt>(n)));
}

}  // namespace inflater
}  // namespace

#endif
