#include "ZUMBufferedOutputStream.h"

#include "RVKMacros.h"
#include "ZUMRaise.h"

namespace {

char const k_size_method[] = "ZUMBufferedOutputStream::ZUMBufferedOutputStream - size must be 1 or more";

unsigned checked(int size)
{
    return static_cast<unsigned>(ZUM_POSITIVE_SIZE(size, k_size_method));
}

}  // namespace

ZUMBufferedOutputStream::ZUMBufferedOutputStream(ZUMOutputStream& downstream, int size)
    : ZUMFilterOutputStream(downstream), m_buffer(checked(size), 512),
      m_buffer_size(size)
{
}

ZUMBufferedOutputStream::ZUMBufferedOutputStream(int size)
    : m_buffer(checked(size), 512), m_buffer_size(size)
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
        // Top the buffer up; once full it goes on. Without a downstream the
        // flush fails and the appended bytes stay buffered for a later one.
        int room = m_buffer_size - buffered;
        int n = count < room ? count : room;
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
