#include "ZUMOutputStreamBuf.h"

#include <algorithm>
#include <climits>

#include "ZUMRaise.h"

ZUMOutputStreamBuf::ZUMOutputStreamBuf(ZUMOutputStream& stream, int bufferSize)
    : m_stream(stream), m_buffer(static_cast<std::size_t>(ZUM_POSITIVE_SIZE(
          bufferSize, "ZUMOutputStreamBuf::ZUMOutputStreamBuf - bufferSize must be 1 or more")))
{
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
}

ZUMOutputStreamBuf::~ZUMOutputStreamBuf()
{
    try {
        drain();
    } catch (...) {
        // A destructor never throws; the collected bytes are lost.
    }
}

void ZUMOutputStreamBuf::drain()
{
    int n = static_cast<int>(pptr() - pbase());
    if (n > 0) {
        m_stream.write(pbase(), n);
        setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
    }
}

ZUMOutputStreamBuf::int_type ZUMOutputStreamBuf::overflow(int_type c)
{
    drain();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    return traits_type::not_eof(c);
}

std::streamsize ZUMOutputStreamBuf::xsputn(char_type const* s, std::streamsize n)
{
    std::streamsize room = epptr() - pptr();
    if (n < room) {
        traits_type::copy(pptr(), s, static_cast<std::size_t>(n));
        pbump(static_cast<int>(n));
        return n;
    }
    drain();
    if (n < static_cast<std::streamsize>(m_buffer.size())) {
        traits_type::copy(pptr(), s, static_cast<std::size_t>(n));
        pbump(static_cast<int>(n));
        return n;
    }
    // Writes of at least the buffer's size go straight through.
    std::streamsize done = 0;
    while (done < n) {
        int piece = static_cast<int>(std::min<std::streamsize>(n - done, INT_MAX));
        m_stream.write(s + done, piece);
        done += piece;
    }
    return n;
}

int ZUMOutputStreamBuf::sync()
{
    drain();
    m_stream.flush();
    return 0;
}
