#include "ZUMMemoryOutputStream.h"

#include "RVKMacros.h"
#include "ZUMRaise.h"

namespace {

unsigned checked(int size)
{
    return static_cast<unsigned>(::zum_detail::checkedSize(
        RVK_HERE, size, 0, "ZUMMemoryOutputStream::ZUMMemoryOutputStream - sizes must be 0 or more"));
}

}  // namespace

ZUMMemoryOutputStream::ZUMMemoryOutputStream(int initial, int increment)
    : m_buffer(checked(initial), checked(increment))
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
