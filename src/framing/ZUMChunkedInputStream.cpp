#include "ZUMChunkedInputStream.h"

#include <climits>
#include <cstdint>

#include "RVKMacros.h"
#include "ZUMRaise.h"

// The value of the hexadecimal digits at the start of `s`, accumulated modulo
// 2^32 and returned as a signed 32-bit number; 0 for a null or empty string or
// one that does not begin with a digit.
static int hex_atoi(char const* s)
{
    if (!s) {
        return 0;
    }
    std::uint32_t value = 0;
    for (;; ++s) {
        unsigned char c = static_cast<unsigned char>(*s);
        std::uint32_t digit;
        if (c >= '0' && c <= '9') {
            digit = c - 48u;
        } else if (c >= 'A' && c <= 'F') {
            digit = c - 55u;
        } else if (c >= 'a' && c <= 'f') {
            digit = c - 87u;
        } else {
            break;
        }
        value = value * 16u + digit;
    }
    return static_cast<std::int32_t>(value);
}

ZUMChunkedInputStream::ZUMChunkedInputStream(int size)
    : m_bis(nullptr), m_owns_bis(1), m_current_chunk_bytes(0), m_chunk_line(256, 256)
{
    ZUM_POSITIVE_SIZE(size, "ZUMChunkedInputStream::ZUMChunkedInputStream - size must be 1 or more");
    m_bis = RVK_GUARDED_NEW(new ZUMBufferedInputStream(size));
    ZUMFilterInputStream::wrap(*m_bis);
}

ZUMChunkedInputStream::ZUMChunkedInputStream(ZUMInputStream& in, int size)
    : ZUMChunkedInputStream(size)
{
    ZUMChunkedInputStream::wrap(in);
}

ZUMChunkedInputStream::ZUMChunkedInputStream(ZUMBufferedInputStream& bis)
    : m_bis(&bis), m_owns_bis(0), m_current_chunk_bytes(0), m_chunk_line(256, 256)
{
    ZUMFilterInputStream::wrap(bis);
}

ZUMChunkedInputStream::~ZUMChunkedInputStream()
{
    if (m_owns_bis && m_bis) {
        try {
            delete m_bis;
            m_bis = nullptr;
        } catch (...) {
        }
    }
}

// ---- chunk framing ----------------------------------------------------------

int ZUMChunkedInputStream::getNextChunk()
{
    RVK_ASSERT(!m_current_chunk_bytes);
    do {
        m_chunk_line.reset();
        if (m_bis->readline(m_chunk_line) < 1) {
            return -1;
        }
    } while (m_chunk_line.str()[0] == '\r' && m_chunk_line.str()[1] == '\n');
    m_current_chunk_bytes = hex_atoi(m_chunk_line.str());
    return m_current_chunk_bytes;
}

bool ZUMChunkedInputStream::inChunk()
{
    if (m_current_chunk_bytes == 0 && getNextChunk() <= 0) {
        m_current_chunk_bytes = -1;
    }
    return m_current_chunk_bytes != -1;
}

int ZUMChunkedInputStream::readFromChunk(RVKByteBuffer& buffer, int count)
{
    int r = m_bis->read(buffer, count < m_current_chunk_bytes ? count : m_current_chunk_bytes);
    if (r == -1) {
        return -1;
    }
    m_current_chunk_bytes -= r;
    return r;
}

int ZUMChunkedInputStream::readFromChunk(char* buf, int count)
{
    int r = m_bis->read(buf, count < m_current_chunk_bytes ? count : m_current_chunk_bytes);
    if (r == -1) {
        return -1;
    }
    m_current_chunk_bytes -= r;
    return r;
}

// ---- reads ------------------------------------------------------------------

int ZUMChunkedInputStream::read(RVKByteBuffer& buffer, int count)
{
    return inChunk() ? readFromChunk(buffer, count) : -1;
}

int ZUMChunkedInputStream::read(char* buf, int count)
{
    return inChunk() ? readFromChunk(buf, count) : -1;
}

int ZUMChunkedInputStream::read()
{
    if (!inChunk()) {
        return -1;
    }
    int c = m_bis->read();
    if (c == -1) {
        m_current_chunk_bytes = -1;
        return -1;
    }
    --m_current_chunk_bytes;
    return c;
}

// ---- push-back and wrapping -------------------------------------------------

RVK_bool ZUMChunkedInputStream::canUnread()
{
    return 1;
}

void ZUMChunkedInputStream::unread(char const* bytes, int count)
{
    RVK_ASSERT(m_bis);
    m_bis->unread(bytes, count);
    if (m_current_chunk_bytes != -1 && count > 0) {
        // Saturates rather than overflow on absurd sizes.
        m_current_chunk_bytes =
            m_current_chunk_bytes > INT_MAX - count ? INT_MAX : m_current_chunk_bytes + count;
    }
}

void ZUMChunkedInputStream::wrap(ZUMInputStream& in)
{
    RVK_ASSERT(m_bis);
    m_bis->wrap(in);
}

void ZUMChunkedInputStream::unWrap()
{
    RVK_ASSERT(m_current_chunk_bytes <= 0);
    if (m_owns_bis) {
        RVK_ASSERT(m_bis);
        m_bis->unWrap();
    }
}
