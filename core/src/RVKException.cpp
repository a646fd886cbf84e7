#include "RVKException.h"

#include "RVKMacros.h"

RVKException::RVKException(RVKException const& other) = default;

RVKException::RVKException(long code)
    : RVKThrowable(code, nullptr), m_severity(RVK_SEVERITY_NONE)
{
}

RVKException::RVKException(RVKSeverity severity, long code)
    : RVKThrowable(code, nullptr), m_severity(severity)
{
}

RVKException::RVKException(char const* text)
    : RVKThrowable(0, text), m_severity(RVK_SEVERITY_NONE)
{
}

RVKException::RVKException(RVKSeverity severity, char const* text)
    : RVKThrowable(0, text), m_severity(severity)
{
}

RVKException::~RVKException() = default;

RVKException& RVKException::operator=(RVKException const& other)
{
    if (this != &other) {
        RVKThrowable::operator=(other);
        RVKMessageSet::operator=(other);
        m_severity = other.m_severity;
    }
    return *this;
}

RVKException& RVKException::operator<<(RVKMessageBase const& message)
{
    addMessage(message);
    return *this;
}

RVK_DEFINE_THROWABLE_OPERATIONS(RVKException)

I18NString RVKException::getMessage()
{
    return RVKThrowable::getMessage();
}

I18NString RVKException::toString()
{
    return RVKThrowable::toString();
}

I18NString RVKException::getMessage() const
{
    return RVKThrowable::getMessage();
}

I18NString& RVKException::toString(char const* prefix, char const* suffix, I18NString& out,
                                   int withTrace)
{
    return RVKThrowable::toString(prefix, suffix, out, withTrace);
}

void RVKException::renderTail(std::string& out) const
{
    // The messages, in order: "; " between them, each as its text.
    for (std::size_t i = 0; i < getMessageCount(); ++i) {
        I18NString text;
        getMessageAt(i).format(i == 0 ? ": " : "; ", "", text);
        out.append(text.c_str(), static_cast<std::size_t>(text.length()));
    }
}
