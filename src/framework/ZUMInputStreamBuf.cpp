#include "ZUMInputStreamBuf.h"

#include <algorithm>
#include <climits>

#include "ZUMRaise.h"
#include "ZUMReadSupport.h"

ZUMInputStreamBuf::ZUMInputStreamBuf(ZUMInputStream& stream, int bufferSize)
    : m_stream(stream), m_buffer(static_cast<std::size_t>(ZUM_POSITIVE_SIZE(
          bufferSize, "ZUMInputStreamBuf::ZUMInputStreamBuf - bufferSize must be 1 or more"))),
      m_at_end(false)
{
    setg(m_buffer.data(), m_buffer.data(), m_buffer.data());
}

ZUMInputStreamBuf::~ZUMInputStreamBuf() = default;

int ZUMInputStreamBuf::fill(char* dst, int count)
{
    if (m_at_end) {
        return 0;
    }
    for (int empty = 0; empty < zum_detail::k_max_empty_reads; ++empty) {
        int n = m_stream.read(dst, count);
        if (n > 0) {
            return n;
        }
        if (n < 0) {
            break;
        }
    }
    m_at_end = true;
    return 0;
}

ZUMInputStreamBuf::int_type ZUMInputStreamBuf::underflow()
{
    if (gptr() < egptr()) {
        return traits_type::to_int_type(*gptr());
    }
    int n = fill(m_buffer.data(), static_cast<int>(m_buffer.size()));
    setg(m_buffer.data(), m_buffer.data(), m_buffer.data() + n);
    return n == 0 ? traits_type::eof() : traits_type::to_int_type(*gptr());
}

std::streamsize ZUMInputStreamBuf::xsgetn(char_type* s, std::streamsize n)
{
    std::streamsize done = 0;
    while (done < n) {
        std::streamsize buffered = egptr() - gptr();
        if (buffered > 0) {
            std::streamsize take = std::min(buffered, n - done);
            traits_type::copy(s + done, gptr(), static_cast<std::size_t>(take));
            gbump(static_cast<int>(take));
            done += take;
            continue;
        }
        std::streamsize want = n - done;
        if (want >= static_cast<std::streamsize>(m_buffer.size())) {
            // Large reads go straight into the caller's memory.
            int got = fill(s + done, static_cast<int>(std::min<std::streamsize>(want, INT_MAX)));
            if (got == 0) {
                break;
            }
            done += got;
        } else if (traits_type::eq_int_type(underflow(), traits_type::eof())) {
            break;
        }
    }
    return done;
}

std::streamsize ZUMInputStreamBuf::showmanyc()
{
    return m_at_end ? -1 : 0;
}

int ZUMInputStreamBuf::giveBack()
{
    int held = static_cast<int>(egptr() - gptr());
    if (held == 0) {
        return 0;
    }
    if (!m_stream.canUnread()) {
        return -1;
    }
    m_stream.unread(gptr(), held);
    setg(m_buffer.data(), m_buffer.data(), m_buffer.data());
    m_at_end = false;
    return held;
}
