#include "ZUMBufferedOutputStream.h"

#include "RVKMacros.h"

ZUMBufferedOutputStream::ZUMBufferedOutputStream(ZUMOutputStream& downstream, int size)
    : ZUMFilterOutputStream(downstream), m_buffer(static_cast<unsigned>(size), 512),
      m_buffer_size(size)
{
}

ZUMBufferedOutputStream::ZUMBufferedOutputStream(int size)
    : m_buffer(static_cast<unsigned>(size), 512), m_buffer_size(size)
{
}

ZUMBufferedOutputStream::~ZUMBufferedOutputStream() = default;

void ZUMBufferedOutputStream::write(char const* bytes, int count)
{
    RVK_ASSERT(bytes);
    while (count > 0) {
        int buffered = m_buffer.pcount();
        if (buffered == 0 && count > m_buffer_size) {
            // Pass a whole piece straight through.
            RVK_ASSERT(p_downstream);
            p_downstream->write(bytes, m_buffer_size);
            bytes += m_buffer_size;
            count -= m_buffer_size;
            continue;
        }
        int room = m_buffer_size - buffered;
        int n = count < room ? count : room;
        if (buffered + n == m_buffer_size) {
            // These bytes fill the buffer, which then has to go on.
            RVK_ASSERT(p_downstream);
        }
        m_buffer.appendChars(bytes, static_cast<unsigned>(n));
        bytes += n;
        count -= n;
        if (m_buffer.pcount() >= m_buffer_size) {
            flush();
        }
    }
}

void ZUMBufferedOutputStream::flush()
{
    if (m_buffer.pcount() == 0) {
        return;
    }
    RVK_ASSERT(p_downstream);
    p_downstream->write(m_buffer.str(), m_buffer.pcount());
    m_buffer.reset();
}
