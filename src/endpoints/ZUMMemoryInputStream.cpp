#include "ZUMMemoryInputStream.h"

#include <cstring>

#include "RVKMacros.h"

ZUMMemoryInputStream::ZUMMemoryInputStream()
    : m_open(0), m_byte_buffer(nullptr), m_bytes(nullptr), m_length(0), m_position(0)
{
}

ZUMMemoryInputStream::ZUMMemoryInputStream(char const* bytes, int length)
    : m_open(bytes && length >= 0 ? 1 : 0), m_byte_buffer(nullptr), m_bytes(bytes),
      m_length(length < 0 ? 0u : static_cast<std::uint32_t>(length)), m_position(0)
{
}

ZUMMemoryInputStream::ZUMMemoryInputStream(RVKByteBuffer& buffer)
    : m_open(1), m_byte_buffer(&buffer), m_bytes(nullptr), m_length(0), m_position(0)
{
}

ZUMMemoryInputStream::~ZUMMemoryInputStream()
{
    m_byte_buffer = nullptr;
    m_bytes = nullptr;
}

bool ZUMMemoryInputStream::refreshAndCheck()
{
    if (m_byte_buffer) {
        m_bytes = m_byte_buffer->str();
        m_length = static_cast<std::uint32_t>(m_byte_buffer->pcount());
    }
    return m_position < m_length && m_bytes;
}

int ZUMMemoryInputStream::read(RVKByteBuffer& buffer, int count)
{
    if (count < 0 || !m_open || !refreshAndCheck()) {
        return -1;
    }
    std::uint32_t left = m_length - m_position;
    std::uint32_t n = static_cast<std::uint32_t>(count) < left ? static_cast<std::uint32_t>(count) : left;
    buffer.appendChars(m_bytes + m_position, n);
    m_position += n;
    return static_cast<int>(n);
}

int ZUMMemoryInputStream::read(char* buf, int count)
{
    RVK_ASSERT(buf);
    if (count < 0 || !m_open || !refreshAndCheck()) {
        return -1;
    }
    std::uint32_t left = m_length - m_position;
    std::uint32_t n = static_cast<std::uint32_t>(count) < left ? static_cast<std::uint32_t>(count) : left;
    if (n == 0) {
        return 0;
    }
    std::memcpy(buf, m_bytes + m_position, n);
    m_position += n;
    return static_cast<int>(n);
}

int ZUMMemoryInputStream::read()
{
    if (!m_open || !refreshAndCheck()) {
        return -1;
    }
    return static_cast<unsigned char>(m_bytes[m_position++]);
}

void ZUMMemoryInputStream::close()
{
    m_open = 0;
}

RVK_bool ZUMMemoryInputStream::canUnread()
{
    return 0;
}

RVK_bool ZUMMemoryInputStream::open(char const* bytes, int length)
{
    RVK_bool ok = bytes && length >= 0 ? 1 : 0;
    m_bytes = bytes;
    m_open = ok;
    m_byte_buffer = nullptr;
    m_position = 0;
    m_length = ok ? static_cast<std::uint32_t>(length) : 0u;
    return ok;
}

RVK_bool ZUMMemoryInputStream::open(RVKByteBuffer& buffer)
{
    m_open = 1;
    m_byte_buffer = &buffer;
    m_bytes = nullptr;
    m_length = 0;
    m_position = 0;
    return 1;
}

RVK_bool ZUMMemoryInputStream::open()
{
    m_position = 0;
    m_open = m_byte_buffer || m_bytes ? 1 : 0;
    return m_open;
}

RVK_bool ZUMMemoryInputStream::isOpen()
{
    return m_open != 0;
}
