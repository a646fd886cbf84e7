#ifndef ZUM_READ_SUPPORT_H
#define ZUM_READ_SUPPORT_H

// Read plumbing shared by the input streams of this library and by zumcat
// (internal header, not installed).

#include "RVKByteBuffer.h"
#include "ZUMInputStream.h"

namespace zum_detail {

// Reads in a row that deliver nothing (0 bytes) after which a loop that waits
// for input takes the stream as ended.
int const k_max_empty_reads = 1000;

// What readInto() does besides appending the bytes read.
enum ReadIntoFlags : unsigned {
    k_read_into_plain = 0,
    // A read that delivers nothing (0, or -1 at the end) returns -1.
    k_read_into_nothing_is_end = 1,
    // A read that raises leaves the buffer's length and terminator as they
    // were: bytes the read wrote before it failed are not delivered.
    k_read_into_rollback = 2,
};

// Appends up to `count` bytes read by `from.read(char*, int)` to `buffer`:
// room for them is reserved (only when `count` is positive), the read writes
// straight behind the buffer's content and the length grows by what it
// delivered. The read is called whatever `count` is, so its own argument
// checks stand. Returns what the read returned (or -1, see `flags`); a read
// that delivers nothing leaves the buffer's content as it was. Raises what the
// reservation (RVKOutOfMemoryError) or the read raises.
inline int readInto(ZUMInputStream& from, RVKByteBuffer& buffer, int count,
                    unsigned flags = k_read_into_plain)
{
    unsigned const length = static_cast<unsigned>(buffer.pcount());
    if (count > 0) {
        buffer.reserve(length + static_cast<unsigned>(count));  // both below 2^31
    }
    int n = 0;
    try {
        n = from.read(buffer.str() + length, count);
    } catch (...) {
        if (flags & k_read_into_rollback) {
            buffer.setLength(length);
        }
        throw;
    }
    if (n > 0) {
        buffer.setLength(length + static_cast<unsigned>(n));
        return n;
    }
    buffer.setLength(length);  // whatever the read wrote there is not kept
    return (flags & k_read_into_nothing_is_end) ? -1 : n;
}

}  // namespace zum_detail

#endif
