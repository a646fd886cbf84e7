#include "ZUMStdOutputStream.h"

#include <cerrno>

#include "ZUMRaise.h"

ZUMStdOutputStream::ZUMStdOutputStream(std::ostream& stream) : m_stream(stream)
{
}

ZUMStdOutputStream::~ZUMStdOutputStream() = default;

void ZUMStdOutputStream::check(char const* method)
{
    if (m_stream.bad()) {
        ZUM_CONVERT_TEXT(method, throw "std::ostream write failed");
    }
}

void ZUMStdOutputStream::write(char const* bytes, int count)
{
    RVK_ASSERT(count >= 0);
    RVK_ASSERT(bytes || count == 0);
    errno = 0;
    m_stream.write(bytes, count);
    check("void ZUMStdOutputStream::write(const char *, int)");
}

void ZUMStdOutputStream::flush()
{
    errno = 0;
    m_stream.flush();
    check("void ZUMStdOutputStream::flush()");
}

void ZUMStdOutputStream::close()
{
    flush();
}
