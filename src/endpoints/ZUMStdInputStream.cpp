#include "ZUMStdInputStream.h"

#include <cerrno>

#include "ZUMRaise.h"
#include "ZUMReadSupport.h"

ZUMStdInputStream::ZUMStdInputStream(std::istream& stream) : m_stream(stream)
{
}

ZUMStdInputStream::~ZUMStdInputStream() = default;

int ZUMStdInputStream::read(RVKByteBuffer& buffer, int count)
{
    if (count < 1) {
        return count < 0 ? -1 : 0;
    }
    return zum_detail::readInto(*this, buffer, count);
}

int ZUMStdInputStream::read(char* buf, int count)
{
    if (!buf || count < 1) {
        return 0;
    }
    errno = 0;
    m_stream.read(buf, count);
    std::streamsize n = m_stream.gcount();
    if (m_stream.bad()) {
        ZUM_RAISE_IO("int ZUMStdInputStream::read(char *, int)", errno, ZUMMessage::FILE_READ_FAILED);
    }
    if (n == 0 && m_stream.eof()) {
        return -1;
    }
    return static_cast<int>(n);
}

int ZUMStdInputStream::read()
{
    errno = 0;
    int c = m_stream.get();
    if (m_stream.bad()) {
        ZUM_RAISE_IO("int ZUMStdInputStream::read()", errno, ZUMMessage::FILE_READ_FAILED);
    }
    return c == std::istream::traits_type::eof() ? -1 : static_cast<unsigned char>(c);
}
