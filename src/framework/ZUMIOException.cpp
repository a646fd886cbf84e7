#include "ZUMIOException.h"

#include <cstring>

#include "RVKMacros.h"
#include "RVKMessage.h"

ZUMIOException::ZUMIOException(ZUMIOException const& other) = default;

ZUMIOException::ZUMIOException(long code) : RVKException(code)
{
}

ZUMIOException::ZUMIOException(RVKSeverity severity, long code) : RVKException(severity, code)
{
}

ZUMIOException::ZUMIOException(char const* text) : RVKException(text)
{
}

ZUMIOException::ZUMIOException(RVKSeverity severity, char const* text)
    : RVKException(severity, text)
{
}

ZUMIOException::ZUMIOException(RVKSeverity severity, int code, RVKMessageBase& message)
    : RVKException(severity, static_cast<long>(code))
{
    addMessage(message);
}

ZUMIOException::~ZUMIOException() = default;

ZUMIOException& ZUMIOException::operator=(ZUMIOException const& other)
{
    if (this != &other) {
        RVKException::operator=(other);
    }
    return *this;
}

ZUMIOException& ZUMIOException::operator<<(RVKMessageBase const& message)
{
    RVKException::operator<<(message);
    return *this;
}

bool ZUMIOException::hasMessage(unsigned long number) const
{
    for (std::size_t i = 0; i < getMessageCount(); ++i) {
        auto const* message = dynamic_cast<RVKMessage const*>(&getMessageAt(i));
        if (message && message->getMsgNumber() == number &&
            std::strcmp(message->getMsgFile().c_str(), "rvkzummsgs") == 0) {
            return true;
        }
    }
    return false;
}

RVK_DEFINE_THROWABLE_OPERATIONS(ZUMIOException)
