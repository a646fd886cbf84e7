#ifndef ZUM_GZIP_ZLIB_DEFLATER_H
#define ZUM_GZIP_ZLIB_DEFLATER_H

// The gzip output stream's raw deflate compressor and CRC-32: zlib's
// deflater, through the zlib 1.2.3 interface (internal header, included by
// ZUMGZIPOutputStream.cpp only).

#include <zlib.h>

#include <cstddef>
#include <cstdint>

namespace {
namespace deflater {

static_assert(Z_OK == 0 && Z_STREAM_END == 1 && Z_MEM_ERROR == -4 && Z_BUF_ERROR == -5 &&
                  Z_FINISH == 4,
              "the stream keeps zlib's statuses and flush values");

// The compressor record that the stream keeps behind its z_stream_s pointer.
using Record = z_stream;

// Clears the allocator fields and the input, and points the output at `out`
// with no room yet.
inline void prepare(Record* r, unsigned char* out)
{
    r->zalloc = Z_NULL;
    r->zfree = Z_NULL;
    r->opaque = Z_NULL;
    r->next_in = Z_NULL;
    r->avail_in = 0;
    r->next_out = out;
    r->avail_out = 0;
}

// Initialises a raw deflater (default level, 32 KiB window, memory level 8,
// default strategy); zlib's status.
inline int begin(Record* r)
{
    return deflateInit2_(r, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY, "1.2.3",
                         static_cast<int>(sizeof(z_stream)));
}

inline void end(Record* r)
{
    deflateEnd(r);
}

// Points the input at the caller's bytes (zlib does not write through
// next_in; its type lacks the const).
inline void input(Record* r, char const* bytes, int count)
{
    r->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes));
    r->avail_in = static_cast<uInt>(count);
}

// One deflate call with the zlib flush value `flush`; zlib's status.
inline int step(Record* r, int flush)
{
    return deflate(r, flush);
}

inline std::uint32_t crc(std::uint32_t value, unsigned char const* bytes, std::size_t n)
{
    return static_cast<std::uint32_t>(crc32(value, bytes, static_cast<uInt>(n)));
}

}  // namespace deflater
}  // namespace

#endif
