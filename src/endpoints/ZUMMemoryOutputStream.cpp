#include "ZUMMemoryOutputStream.h"

#include "RVKMacros.h"

// Both sizes go to the byte buffer as they are: a negative one is a huge
// unsigned size, which the buffer refuses with RVKOutOfMemoryError where it
// cannot reserve it.
ZUMMemoryOutputStream::ZUMMemoryOutputStream(int initial, int increment)
    : m_buffer(static_cast<unsigned>(initial), static_cast<unsigned>(increment))
{
}

ZUMMemoryOutputStream::~ZUMMemoryOutputStream() = default;

void ZUMMemoryOutputStream::write(char const* bytes, int count)
{
    RVK_ASSERT(count >= 0);
    RVK_ASSERT(bytes || count == 0);
    m_buffer.appendChars(bytes, static_cast<unsigned>(count));
}

void ZUMMemoryOutputStream::flush()
{
}

void ZUMMemoryOutputStream::close()
{
}
