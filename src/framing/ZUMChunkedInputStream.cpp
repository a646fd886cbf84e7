#include "ZUMChunkedInputStream.h"

#include <cstdint>

#include "RVKMacros.h"
#include "ZUMRaise.h"
#include "ZUMReadSupport.h"

namespace {

// The end of the stream beneath inside a chunk keeps the chunk open: only the
// framing ends the body, and a lent m_bis wrapped again around more input goes
// on with the chunk where it stopped. (A single-byte read still ends the body.)
constexpr zum_detail::EndBeneath k_end_beneath = zum_detail::EndBeneath::k_keeps_region;

}  // namespace

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
            digit = c - '0';
        } else if (c >= 'A' && c <= 'F') {
            digit = c - 'A' + 10;
        } else if (c >= 'a' && c <= 'f') {
            digit = c - 'a' + 10;
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
    if (m_owns_bis) {
        delete m_bis;
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
    return zum_detail::readCounted(*m_bis, m_current_chunk_bytes, buffer, count, k_end_beneath);
}

int ZUMChunkedInputStream::readFromChunk(char* buf, int count)
{
    return zum_detail::readCounted(*m_bis, m_current_chunk_bytes, buf, count, k_end_beneath);
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
    return inChunk() ? zum_detail::readCountedByte(*m_bis, m_current_chunk_bytes) : -1;
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
    zum_detail::countUnread(m_current_chunk_bytes, count);
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
