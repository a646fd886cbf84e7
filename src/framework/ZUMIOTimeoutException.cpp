#include "ZUMIOTimeoutException.h"

#include "RVKMacros.h"

ZUMIOTimeoutException::ZUMIOTimeoutException(ZUMIOTimeoutException const& other) = default;

ZUMIOTimeoutException::ZUMIOTimeoutException(long code) : ZUMIOException(code)
{
}

ZUMIOTimeoutException::ZUMIOTimeoutException(RVKSeverity severity, long code)
    : ZUMIOException(severity, code)
{
}

ZUMIOTimeoutException::ZUMIOTimeoutException(char const* text) : ZUMIOException(text)
{
}

ZUMIOTimeoutException::ZUMIOTimeoutException(RVKSeverity severity, char const* text)
    : ZUMIOException(severity, text)
{
}

ZUMIOTimeoutException::~ZUMIOTimeoutException() = default;

ZUMIOTimeoutException& ZUMIOTimeoutException::operator=(ZUMIOTimeoutException const& other)
{
    ZUMIOException::operator=(other);
    return *this;
}

ZUMIOTimeoutException& ZUMIOTimeoutException::operator<<(RVKMessageBase const& message)
{
    ZUMIOException::operator<<(message);
    return *this;
}

RVK_DEFINE_THROWABLE_OPERATIONS(ZUMIOTimeoutException)
