#include "ZUMBlockInputStream.h"

#include "ZUMRaise.h"
#include "ZUMReadSupport.h"

namespace {

// The end of the stream beneath ends the block: no byte of it can follow, so
// reads return -1 until resetBlockSize() opens the next block.
constexpr zum_detail::EndBeneath k_end_beneath = zum_detail::EndBeneath::k_ends_region;

// Whether the block has bytes left; one used up ends here.
bool hasBytes(int& left)
{
    if (left < 1) {
        left = -1;
    }
    return left > 0;
}

}  // namespace

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
    if (m_owns_bis) {
        delete m_bis;
    }
}

void ZUMBlockInputStream::resetBlockSize(int n)
{
    m_current_block_bytes = n;
}

// ---- reads ------------------------------------------------------------------

int ZUMBlockInputStream::readFromBlock(RVKByteBuffer& buffer, int count)
{
    return zum_detail::readCounted(*m_bis, m_current_block_bytes, buffer, count, k_end_beneath);
}

int ZUMBlockInputStream::readFromBlock(char* buf, int count)
{
    return zum_detail::readCounted(*m_bis, m_current_block_bytes, buf, count, k_end_beneath);
}

int ZUMBlockInputStream::read(RVKByteBuffer& buffer, int count)
{
    return hasBytes(m_current_block_bytes) ? readFromBlock(buffer, count) : -1;
}

int ZUMBlockInputStream::read(char* buf, int count)
{
    return hasBytes(m_current_block_bytes) ? readFromBlock(buf, count) : -1;
}

int ZUMBlockInputStream::read()
{
    return hasBytes(m_current_block_bytes) ? zum_detail::readCountedByte(*m_bis, m_current_block_bytes)
                                           : -1;
}

// ---- push-back and wrapping -------------------------------------------------

RVK_bool ZUMBlockInputStream::canUnread()
{
    return 1;
}

void ZUMBlockInputStream::unread(char const* bytes, int count)
{
    m_bis->unread(bytes, count);
    zum_detail::countUnread(m_current_block_bytes, count);
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
