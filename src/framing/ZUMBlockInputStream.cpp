#include "ZUMBlockInputStream.h"

#include <climits>

#include "ZUMRaise.h"

ZUMBlockInputStream::ZUMBlockInputStream(int size)
    : m_bis(new ZUMBufferedInputStream(ZUM_POSITIVE_SIZE(
          size, "ZUMBlockInputStream::ZUMBlockInputStream - size must be 1 or more"))),
      m_owns_bis(1), m_current_block_bytes(0)
{
    ZUMFilterInputStream::wrap(*m_bis);
}

ZUMBlockInputStream::ZUMBlockInputStream(ZUMInputStream& in, int size)
    : ZUMBlockInputStream(size)
{
    ZUMBlockInputStream::wrap(in);
}

ZUMBlockInputStream::ZUMBlockInputStream(ZUMBufferedInputStream& bis)
    : m_bis(&bis), m_owns_bis(0), m_current_block_bytes(0)
{
    ZUMFilterInputStream::wrap(bis);
}

ZUMBlockInputStream::~ZUMBlockInputStream()
{
    if (m_owns_bis && m_bis) {
        try {
            delete m_bis;
            m_bis = nullptr;
        } catch (...) {
        }
    }
}

void ZUMBlockInputStream::resetBlockSize(int n)
{
    m_current_block_bytes = n;
}

// ---- reads ------------------------------------------------------------------

int ZUMBlockInputStream::readFromBlock(RVKByteBuffer& buffer, int count)
{
    int r = m_bis->read(buffer, count < m_current_block_bytes ? count : m_current_block_bytes);
    if (r == -1) {
        m_current_block_bytes = -1;
        return -1;
    }
    m_current_block_bytes -= r;
    return r;
}

int ZUMBlockInputStream::readFromBlock(char* buf, int count)
{
    int r = m_bis->read(buf, count < m_current_block_bytes ? count : m_current_block_bytes);
    if (r == -1) {
        m_current_block_bytes = -1;
        return -1;
    }
    m_current_block_bytes -= r;
    return r;
}

int ZUMBlockInputStream::read(RVKByteBuffer& buffer, int count)
{
    if (m_current_block_bytes < 1) {
        m_current_block_bytes = -1;
        return -1;
    }
    return readFromBlock(buffer, count);
}

int ZUMBlockInputStream::read(char* buf, int count)
{
    if (m_current_block_bytes < 1) {
        m_current_block_bytes = -1;
        return -1;
    }
    return readFromBlock(buf, count);
}

int ZUMBlockInputStream::read()
{
    if (m_current_block_bytes < 1) {
        m_current_block_bytes = -1;
        return -1;
    }
    int c = m_bis->read();
    if (c == -1) {
        m_current_block_bytes = -1;
    } else {
        --m_current_block_bytes;
    }
    return c;
}

// ---- push-back and wrapping -------------------------------------------------

RVK_bool ZUMBlockInputStream::canUnread()
{
    return 1;
}

void ZUMBlockInputStream::unread(char const* bytes, int count)
{
    m_bis->unread(bytes, count);
    if (m_current_block_bytes != -1 && count > 0) {
        // Saturates rather than overflow on absurd sizes.
        m_current_block_bytes =
            m_current_block_bytes > INT_MAX - count ? INT_MAX : m_current_block_bytes + count;
    }
}

void ZUMBlockInputStream::wrap(ZUMInputStream& in)
{
    m_bis->wrap(in);
}

void ZUMBlockInputStream::unWrap()
{
    if (m_owns_bis) {
        m_bis->unWrap();
    }
}
