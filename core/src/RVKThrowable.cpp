#include "RVKThrowable.h"

#include <cstdio>

#include "RVKAssertError.h"
#include "RVKIllegalArgumentError.h"
#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "RVKOutOfMemoryError.h"
#include "RVKStdExceptionError.h"
#include "RVKUnexpectedError.h"
#include "RVKUnsupportedOperationError.h"

// ---- RVKBackTraceEntry ------------------------------------------------------

RVKBackTraceEntry::RVKBackTraceEntry(RVKFileLocation const& where, char const* methodText,
                                     char const* macroName)
    : location(where), method(nullptr), macro(nullptr),
      m_method_text(methodText ? methodText : ""), m_macro_text(macroName ? macroName : ""),
      m_has_method(methodText != nullptr)
{
    point();
}

RVKBackTraceEntry::RVKBackTraceEntry(RVKBackTraceEntry const& other)
    : location(other.location), method(nullptr), macro(nullptr),
      m_method_text(other.m_method_text), m_macro_text(other.m_macro_text),
      m_has_method(other.m_has_method)
{
    point();
}

RVKBackTraceEntry& RVKBackTraceEntry::operator=(RVKBackTraceEntry const& other)
{
    location = other.location;
    m_method_text = other.m_method_text;
    m_macro_text = other.m_macro_text;
    m_has_method = other.m_has_method;
    point();
    return *this;
}

void RVKBackTraceEntry::point()
{
    method = m_has_method ? m_method_text.c_str() : nullptr;
    macro = m_macro_text.c_str();
}

// ---- RVKThrowable -----------------------------------------------------------

RVKThrowable::RVKThrowable(long code, char const* text)
    : m_code(code), m_text(text ? text : ""), m_has_text(text != nullptr)
{
}

RVKThrowable::~RVKThrowable() = default;

RVKThrowable* RVKThrowable::clone() const
{
    return RVK_GUARDED_NEW(new RVKThrowable(*this));
}

void RVKThrowable::hurl(RVKFileLocation const& where, char const* method, char const* macro)
{
    addBackTrace(where, method, macro);
    throw RVKThrowable(*this);
}

char const* RVKThrowable::getThrowableName() const
{
    return "RVKThrowable";
}

I18NString RVKThrowable::getMessage()
{
    return static_cast<RVKThrowable const*>(this)->getMessage();
}

I18NString RVKThrowable::getMessage() const
{
    std::string text = render();
    return I18NString(text.c_str(), nullptr, static_cast<int>(text.size()), nullptr, nullptr);
}

I18NString RVKThrowable::toString()
{
    return getMessage();
}

I18NString& RVKThrowable::toString(char const* prefix, char const* suffix, I18NString& out,
                                   int withTrace)
{
    std::string text = render();
    out.append(prefix);
    out.append(text.c_str(), text.size());
    out.append(suffix);
    if (withTrace) {
        for (RVKBackTraceEntry const& entry : m_trace) {
            char line[32];
            std::snprintf(line, sizeof line, ":%d ", entry.location.line);
            out.append("\n  at ");
            out.append(entry.location.file);
            out.append(line);
            out.append(entry.macro);
            if (entry.method) {
                out.append(" ");
                out.append(entry.method);
            }
        }
    }
    return out;
}

char const* RVKThrowable::what() const noexcept
{
    try {
        m_what = render();
        return m_what.c_str();
    } catch (...) {
        return getThrowableName();
    }
}

void RVKThrowable::addBackTrace(RVKFileLocation const& where, char const* method, char const* macro)
{
    m_trace.emplace_back(where, method, macro);
}

RVKBackTraceEntry const& RVKThrowable::getBackTraceEntry(std::size_t i) const
{
    if (i >= m_trace.size()) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr), "RVKThrowable::getBackTraceEntry");
    }
    return m_trace[i];
}

void RVKThrowable::renderHead(std::string& out) const
{
    char code[48];
    std::snprintf(code, sizeof code, " (code %ld)", m_code);
    out += getThrowableName();
    out += code;
    if (m_has_text) {
        out += ": ";
        out += m_text;
    }
    // The method text of the raising statement says where it went wrong.
    if (!m_trace.empty() && m_trace.front().method) {
        out += " [";
        out += m_trace.front().method;
        out += "]";
    }
}

void RVKThrowable::renderTail(std::string&) const
{
}

std::string RVKThrowable::render() const
{
    std::string out;
    renderHead(out);
    renderTail(out);
    return out;
}

// ---- the error classes ------------------------------------------------------

RVK_DEFINE_THROWABLE_OPERATIONS(RVKAssertError)
RVK_DEFINE_THROWABLE_OPERATIONS(RVKIllegalStateError)
RVK_DEFINE_THROWABLE_OPERATIONS(RVKIllegalArgumentError)
RVK_DEFINE_THROWABLE_OPERATIONS(RVKUnsupportedOperationError)
RVK_DEFINE_THROWABLE_OPERATIONS(RVKUnexpectedError)
RVK_DEFINE_THROWABLE_OPERATIONS(RVKOutOfMemoryError)
RVK_DEFINE_THROWABLE_OPERATIONS(RVKStdExceptionError)

RVKStdExceptionError::RVKStdExceptionError(std::exception const& caught)
    : RVKThrowable(0, caught.what())
{
}
