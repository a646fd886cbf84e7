#include "ZUMBufferedInputStream.h"

#include <cstring>

#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "ZUMRaise.h"
#include "ZUMReadSupport.h"

namespace {

char const k_size_method[] = "ZUMBufferedInputStream::ZUMBufferedInputStream - size must be 1 or more";

}  // namespace

ZUMBufferedInputStream::ZUMBufferedInputStream(int size)
    : m_buffer(static_cast<unsigned>(ZUM_POSITIVE_SIZE(size, k_size_method)),
               static_cast<unsigned>(size)),
      m_buffer_size(size), m_read_pos(0)
{
}

ZUMBufferedInputStream::ZUMBufferedInputStream(ZUMInputStream& upstream, int size)
    : ZUMBufferedInputStream(size)
{
    wrap(upstream);
}

ZUMBufferedInputStream::~ZUMBufferedInputStream() = default;

// ---- buffer steps -----------------------------------------------------------

inline void ZUMBufferedInputStream::takeFromBuffer(RVKByteBuffer& dst, int n)
{
    dst.appendChars(m_buffer.str() + m_read_pos, static_cast<unsigned>(n));
    m_read_pos += n;
}

inline void ZUMBufferedInputStream::takeFromBuffer(char* buf, int n)
{
    RVK_ASSERT(buf);
    std::memcpy(buf, m_buffer.str() + m_read_pos, static_cast<std::size_t>(n));
    m_read_pos += n;
}

template <class Destination>
inline int ZUMBufferedInputStream::readFromBufferInto(Destination& dst, int n)
{
    int have = buffered();
    if (have < n) {
        if (have <= 0) {
            return 0;
        }
        n = have;
    }
    n = n < 0 ? 0 : n;
    takeFromBuffer(dst, n);
    return n;
}

inline int ZUMBufferedInputStream::readFromBuffer(RVKByteBuffer& dst, int n)
{
    return readFromBufferInto(dst, n);
}

inline int ZUMBufferedInputStream::readFromBuffer(char* buf, int n)
{
    return readFromBufferInto(buf, n);
}

inline int ZUMBufferedInputStream::readMore()
{
    m_buffer.reset();
    m_read_pos = 0;
    if (!p_upstream) {
        return -1;
    }
    return p_upstream->read(m_buffer, m_buffer_size);
}

// ---- reads ------------------------------------------------------------------

template <class Destination>
inline int ZUMBufferedInputStream::readInto(Destination& dst, int count)
{
    int r = readFromBuffer(dst, count);
    if (r > 0 || buffered() > 0) {
        // Buffered bytes are delivered without a refill, and never discarded
        // by one (a count of 0 returns 0 and keeps them).
        return r;
    }
    if (readMore() < 0) {
        return -1;
    }
    return readFromBuffer(dst, count);
}

int ZUMBufferedInputStream::read(RVKByteBuffer& buffer, int count)
{
    return readInto(buffer, count);
}

int ZUMBufferedInputStream::read(char* buf, int count)
{
    return readInto(buf, count);
}

int ZUMBufferedInputStream::read()
{
    for (int empty = 0; buffered() <= 0; ++empty) {
        if (empty == zum_detail::k_max_empty_reads || readMore() < 0) {
            return -1;
        }
    }
    return static_cast<unsigned char>(m_buffer.str()[m_read_pos++]);
}

// ---- push-back and unwrapping -----------------------------------------------

RVK_bool ZUMBufferedInputStream::canUnread()
{
    return 1;
}

void ZUMBufferedInputStream::unread(char const* bytes, int count)
{
    RVK_ASSERT(bytes);
    if (count <= 0) {
        return;
    }
    if (m_buffer.pcount() == 0) {
        m_buffer.appendChars(bytes, static_cast<unsigned>(count));
    } else if (count <= m_read_pos) {
        // Over the consumed bytes in front of the position: no move, no growth.
        m_read_pos -= count;
        std::memmove(m_buffer.str() + m_read_pos, bytes, static_cast<std::size_t>(count));
    } else {
        int rest = buffered();
        m_buffer.reserve(static_cast<unsigned>(rest) + static_cast<unsigned>(count));
        char* data = m_buffer.str();
        std::memmove(data + count, data + m_read_pos, static_cast<std::size_t>(rest));
        std::memcpy(data, bytes, static_cast<std::size_t>(count));
        m_read_pos = 0;
        m_buffer.setLength(static_cast<unsigned>(rest) + static_cast<unsigned>(count));
    }
}

void ZUMBufferedInputStream::unWrap()
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "void ZUMBufferedInputStream::unWrap()");
    }
    int rest = buffered();
    if (rest > 0) {
        if (!p_upstream->canUnread()) {
            throw "can't unwrap";
        }
        p_upstream->unread(m_buffer.str() + m_read_pos, rest);
        m_buffer.reset();
        m_read_pos = 0;
    }
    p_upstream = nullptr;
}

// ---- lines ------------------------------------------------------------------

inline int ZUMBufferedInputStream::findLineEnd(int& from) const
{
    // The byte behind the buffered ones is the buffer's terminating NUL, so
    // one search for "a CR or a NUL" stops at a CR, at a NUL byte in the data
    // or at the end.
    char const* p = m_buffer.str() + m_read_pos;
    char const* at = p + from;
    for (;;) {
        at = strchrnul(at, '\r');
        if (*at == '\0') {
            break;
        }
        if (at[1] == '\n') {  // at[1] is at most the terminating NUL
            return static_cast<int>(at - p);
        }
        ++at;
    }
    // Resume at a NUL (the search stops there again) or at a final CR whose
    // LF may come with the next refill.
    int i = static_cast<int>(at - p);
    from = (i == buffered() && i > 0) ? i - 1 : i;
    return -1;
}

int ZUMBufferedInputStream::readline(RVKByteBuffer& line)
{
    int from = 0;  // offset from m_read_pos: bytes before it hold no CR LF
    int empty = 0;
    for (;;) {
        int k = findLineEnd(from);
        if (k >= 0) {
            takeFromBuffer(line, k + 2);
            return k + 2;
        }
        if (m_read_pos != 0) {
            // Keep only the unconsumed bytes, at the front; offsets from
            // m_read_pos stay valid.
            m_buffer.chop(static_cast<unsigned>(m_read_pos));
            m_read_pos = 0;
        }
        if (!p_upstream) {
            return -1;
        }
        int got = p_upstream->read(m_buffer, m_buffer_size);
        if (got < 0) {
            int rest = buffered();
            return rest > 0 ? readFromBuffer(line, rest) : -1;
        }
        empty = got == 0 ? empty + 1 : 0;
        if (empty == zum_detail::k_max_empty_reads) {
            return 0;
        }
    }
}
