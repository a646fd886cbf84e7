#ifndef I18N_STRING_H
#define I18N_STRING_H

#include <string>

#include "RVKExport.h"

// Converter hook of I18NString: called as converter(context, text, length,
// &outLength) and returns the converted bytes (outLength of them), which stay
// the converter's; the string copies them. A null result means "no
// conversion": the original bytes are kept.
typedef char* (*I18NConverter)(void* context, char* text, int length, int* outLength);

// An internationalised string: UTF-8 in, UTF-8 out. The text is copied; the
// encoding name is recorded but every encoding is taken as UTF-8.
class RVK_API I18NString {
public:
    // The empty string.
    I18NString();
    // From `length` bytes of `text` (up to the first NUL when length is -1).
    // A null text gives the empty string. When `converter` is given it
    // converts the bytes first (see I18NConverter).
    I18NString(char const* text, char const* encoding, int length,
               I18NConverter converter, void* context);
    // Copies hold their own text.
    I18NString(I18NString const&) = default;
    I18NString& operator=(I18NString const&) = default;
    ~I18NString();

    // Replaces the content with a NUL-terminated UTF-8 text (null: empty).
    I18NString& operator=(char const* text);

    // The text, NUL-terminated.
    char const* c_str() const { return m_text.c_str(); }
    // Its length in bytes.
    int length() const { return static_cast<int>(m_text.size()); }
    // Whether the length is 0.
    bool empty() const { return m_text.empty(); }

    // Appends a NUL-terminated text.
    I18NString& append(char const* text);
    I18NString& append(char const* text, std::size_t n);

private:
    std::string m_text;
};

// The name of the platform's default text encoding ("UTF-8").
RVK_API char const* I18NGetPlatformDefaultEncoding();

#endif
