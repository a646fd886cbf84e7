#include "ZUMIOCancelException.h"

#include "RVKMacros.h"

ZUMIOCancelException::ZUMIOCancelException(ZUMIOCancelException const& other) = default;

ZUMIOCancelException::ZUMIOCancelException(long code) : ZUMIOException(code)
{
}

ZUMIOCancelException::ZUMIOCancelException(RVKSeverity severity, long code)
    : ZUMIOException(severity, code)
{
}

ZUMIOCancelException::ZUMIOCancelException(char const* text) : ZUMIOException(text)
{
}

ZUMIOCancelException::ZUMIOCancelException(RVKSeverity severity, char const* text)
    : ZUMIOException(severity, text)
{
}

ZUMIOCancelException::~ZUMIOCancelException() = default;

ZUMIOCancelException& ZUMIOCancelException::operator=(ZUMIOCancelException const& other)
{
    ZUMIOException::operator=(other);
    return *this;
}

ZUMIOCancelException& ZUMIOCancelException::operator<<(RVKMessageBase const& message)
{
    ZUMIOException::operator<<(message);
    return *this;
}

RVK_DEFINE_THROWABLE_OPERATIONS(ZUMIOCancelException)
