#ifndef ZUM_READ_SUPPORT_H
#define ZUM_READ_SUPPORT_H

// Read plumbing shared by the input streams of this library and by zumcat
// (internal header, not installed).

#include <climits>

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

// Appends what `from.read(char*, int)` delivers to `buffer`: reserves room for
// `count` bytes (when positive) and lets the read write behind the content.
// The read runs whatever `count` is, so its own checks stand. Returns what it
// returned (or -1, see `flags`). Raises what the reservation or the read raises.
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

// One byte through `from.read(char*, 1)`, tried at most k_max_empty_reads
// times while reads deliver nothing: 0..255, or -1. Raises what the read raises.
inline int readByte(ZUMInputStream& from)
{
    unsigned char byte = 0;
    for (int empty = 0; empty < k_max_empty_reads; ++empty) {
        int n = from.read(reinterpret_cast<char*>(&byte), 1);
        if (n != 0) {
            return n == 1 ? byte : -1;
        }
    }
    return -1;
}

// ---- counted regions ----------------------------------------------------------
// A run of a set number of bytes read through a buffered stream (a block, a
// chunk), kept as one count `left`: > 0 bytes to come, 0 used up, -1 ended.

// What a read of a counted region does when the stream beneath it ends.
enum class EndBeneath {
    k_ends_region,   // `left` becomes -1: the region has ended
    k_keeps_region,  // `left` stays: a later read asks the stream beneath again
};

// Reads at most min(count, left) bytes of the region from `from` into `dest`
// (a char* or an RVKByteBuffer) and counts them off. Returns what the read
// returned; at the end beneath (-1) `left` is as `end` says.
template <class Dest>
int readCounted(ZUMInputStream& from, int& left, Dest&& dest, int count, EndBeneath end)
{
    int n = from.read(dest, count < left ? count : left);
    if (n == -1) {
        if (end == EndBeneath::k_ends_region) {
            left = -1;
        }
        return -1;
    }
    left -= n;
    return n;
}

// The next byte of the region as 0..255, or -1 (the end beneath ends it).
inline int readCountedByte(ZUMInputStream& from, int& left)
{
    int c = from.read();
    if (c == -1) {
        left = -1;
    } else {
        --left;
    }
    return c;
}

// Counts `count` bytes pushed back beneath the region as bytes of it, unless
// the region has ended. Saturates at INT_MAX rather than overflow.
inline void countUnread(int& left, int count)
{
    if (left != -1 && count > 0) {
        left = left > INT_MAX - count ? INT_MAX : left + count;
    }
}

}  // namespace zum_detail

#endif
