#ifndef RVK_BYTE_BUFFER_H
#define RVK_BYTE_BUFFER_H

#include <cstring>

#include "RVKExport.h"

// A growable, contiguous byte buffer.
//
// Invariant: 0 <= m_length <= m_capacity, and m_data[m_length] is always a NUL
// byte, so str() can be read as a C string up to the first NUL. m_data points
// to m_capacity + 1 bytes of owned storage, or, while the capacity is 0, to a
// shared empty string that is never written.
//
// Growth is geometric (at least doubling, and never by fewer than the
// increment given at construction), so a run of appends costs amortised O(1)
// per byte. reset() keeps the storage: a buffer reused for every refill of a
// stream allocates only when it must grow. A failed allocation raises
// RVKOutOfMemoryError and leaves the buffer as it was.
class RVK_API RVKByteBuffer {
public:
    // An empty buffer with room for `initial` bytes; later growth steps are
    // never smaller than `increment`. Raises RVKOutOfMemoryError.
    RVKByteBuffer(unsigned initial = 0, unsigned increment = 256);
    RVKByteBuffer(RVKByteBuffer const& other);
    RVKByteBuffer(RVKByteBuffer&& other) noexcept;
    RVKByteBuffer& operator=(RVKByteBuffer const& other);
    RVKByteBuffer& operator=(RVKByteBuffer&& other) noexcept;
    ~RVKByteBuffer();

    // The bytes, followed by a NUL byte. Writable up to capacity(): readers
    // write at str() + pcount() after reserve(), then call setLength().
    char* str() { return m_data; }
    char const* str() const { return m_data; }

    // The number of bytes held.
    int pcount() const { return static_cast<int>(m_length); }

    // The number of bytes the buffer can hold without growing.
    unsigned capacity() const { return m_capacity; }

    // Appends n bytes (bytes may be null only when n is 0). May alias the
    // buffer's own content. Raises RVKOutOfMemoryError.
    void appendChars(char const* bytes, unsigned n)
    {
        if (n == 0) {
            return;
        }
        if (m_capacity - m_length < n) {
            appendSlow(bytes, n);
            return;
        }
        std::memcpy(m_data + m_length, bytes, n);
        m_length += n;
        m_data[m_length] = '\0';
    }

    // Length 0; the storage is kept.
    void reset()
    {
        if (m_length != 0) {
            m_length = 0;
            m_data[0] = '\0';
        }
    }

    // Room for at least n bytes in all; the content is unchanged.
    // Raises RVKOutOfMemoryError.
    void reserve(unsigned n)
    {
        if (n > m_capacity) {
            grow(n);
        }
    }

    // Sets the length to n. Bytes up to capacity() keep what was written into
    // them; if n is beyond the capacity the buffer grows and the new bytes are
    // zero. Raises RVKOutOfMemoryError.
    void setLength(unsigned n);

    // Drops the first n bytes and moves the rest to the front (all of them
    // when n is at least the length).
    void chop(unsigned n);

    // 1: operator<<(int) appends hexadecimal digits (lower case, no prefix;
    // a negative number is written as its 32-bit two's complement). 0: decimal.
    void setHexRadix(int hex) { m_hex = hex != 0; }

    // Appends a number in the current radix. Returns the buffer.
    RVKByteBuffer& operator<<(int value);

    // Appends a NUL-terminated string (nothing for null). Returns the buffer.
    RVKByteBuffer& operator<<(char const* text);

private:
    void grow(unsigned needed);
    void appendSlow(char const* bytes, unsigned n);

    char* m_data;
    unsigned m_length;
    unsigned m_capacity;
    unsigned m_increment;
    bool m_hex;
};

#endif
