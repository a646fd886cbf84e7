#include "I18NString.h"

#include <cstring>

I18NString::I18NString() = default;

I18NString::I18NString(char const* text, char const* /*encoding*/, int length,
                       I18NConverter converter, void* context)
{
    if (!text) {
        return;
    }
    std::size_t n = length < 0 ? std::strlen(text) : static_cast<std::size_t>(length);
    m_text.assign(text, n);
    if (converter) {
        int converted_length = 0;
        char* converted = converter(context, &m_text[0], static_cast<int>(n), &converted_length);
        if (converted) {
            m_text.assign(converted, converted_length > 0 ? static_cast<std::size_t>(converted_length) : 0u);
        }
    }
}

I18NString::~I18NString() = default;

I18NString& I18NString::operator=(char const* text)
{
    if (text) {
        m_text.assign(text);
    } else {
        m_text.clear();
    }
    return *this;
}

I18NString& I18NString::append(char const* text)
{
    if (text) {
        m_text.append(text);
    }
    return *this;
}

I18NString& I18NString::append(char const* text, std::size_t n)
{
    if (text) {
        m_text.append(text, n);
    }
    return *this;
}

char const* I18NGetPlatformDefaultEncoding()
{
    return "UTF-8";
}
