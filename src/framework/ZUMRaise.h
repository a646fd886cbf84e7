#ifndef ZUM_RAISE_H
#define ZUM_RAISE_H

// Raising helpers shared by the streams of this library (internal header).

#include "RVKIllegalArgumentError.h"
#include "RVKMacros.h"
#include "RVKMessageString.h"
#include "ZUMIOException.h"
#include "ZUMMessage.h"

// Runs `statement`; a text exception thrown inside becomes a ZUMIOException
// (severity 1, errno) with the message 0x91fdd700 and the text, raised with
// `method`.
#define ZUM_CONVERT_TEXT(method, statement)                                    \
    RVK_CONVERT_TEXT(ZUMIOException, ZUMMessage, ZUMMessage::TEXT_ERROR, method, statement)

namespace zum_detail {

// Raises ZUMIOException(severity 1, code) with the catalog message `number`
// and, when `texts` is positive, the texts text1 and text2 (null counts as
// the empty text) as two further messages.
[[noreturn]] inline void raiseIO(RVKFileLocation const& where, char const* method, long code,
                                 unsigned long number, int texts = 0,
                                 char const* text1 = nullptr, char const* text2 = nullptr)
{
    ZUMIOException raised(static_cast<RVKSeverity>(1), code);
    raised << ZUMMessage(number);
    if (texts > 0) {
        raised << RVKMessageString(I18NString(text1 ? text1 : "", nullptr, -1, nullptr, nullptr));
        raised << RVKMessageString(I18NString(text2 ? text2 : "", nullptr, -1, nullptr, nullptr));
    }
    raised.hurl(where, method, "RVK_THROW");
}

// `size` when it is at least `minimum`; otherwise raises
// RVKIllegalArgumentError with the method text, which names the argument.
inline int checkedSize(RVKFileLocation const& where, int size, int minimum, char const* method)
{
    if (size < minimum) {
        RVKIllegalArgumentError(0, nullptr).hurl(where, method, "RVK_THROW");
    }
    return size;
}

}  // namespace zum_detail

// Raises the I/O failure `number` with `code` from the calling statement.
#define ZUM_RAISE_IO(method, code, number)                                     \
    ::zum_detail::raiseIO(RVK_HERE, (method), (code), (number))

// As ZUM_RAISE_IO, with two texts (file name and error text) as messages.
#define ZUM_RAISE_IO_TEXTS(method, code, number, text1, text2)                 \
    ::zum_detail::raiseIO(RVK_HERE, (method), (code), (number), 2, (text1), (text2))

// A size argument of 1 or more, checked where the calling statement stands.
#define ZUM_POSITIVE_SIZE(size, method) ::zum_detail::checkedSize(RVK_HERE, (size), 1, (method))

#endif
