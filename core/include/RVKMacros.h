#ifndef RVK_MACROS_H
#define RVK_MACROS_H

#include <cerrno>
#include <new>

#include "RVKAssertError.h"
#include "RVKExport.h"
#include "RVKMessageString.h"
#include "RVKOutOfMemoryError.h"
#include "RVKStdExceptionError.h"

// The location of the statement that uses it.
#define RVK_HERE (RVKFileLocation{__FILE__, __LINE__})

// Raises RVKAssertError(0, "RVK_ASSERT(<condition>);") when the condition is
// false; the back-trace entry has a null method text and "RVK_THROW".
#define RVK_ASSERT(condition)                                                  \
    do {                                                                       \
        if (__builtin_expect(!(condition), 0)) {                               \
            ::rvk_detail::failAssertion(RVK_HERE, "RVK_ASSERT(" #condition ");"); \
        }                                                                      \
    } while (0)

// Raises `error` (an object of a throwable class) with the method text.
#define RVK_THROW(error, method) (error).hurl(RVK_HERE, (method), "RVK_THROW")

namespace rvk_detail {

// Raises RVKAssertError(0, text) as RVK_ASSERT describes. Out of line, so that
// a function that checks stays small on its path that passes.
[[noreturn]] [[gnu::cold]] RVK_API void failAssertion(RVKFileLocation const& where, char const* text);

// The method guard around one allocation: a null result becomes
// RVKOutOfMemoryError, std::bad_alloc too, other standard exceptions become
// RVKStdExceptionError, and core throwables passing through gain an
// "RVK_RETHROW" entry. Every entry carries the guard's location.
template <class Allocate>
auto guardAllocation(RVKFileLocation const& where, Allocate allocate) -> decltype(allocate())
{
    try {
        auto result = allocate();
        if (!result) {
            RVKOutOfMemoryError(0, nullptr).hurl(where, nullptr, "RVK_THROW");
        }
        return result;
    } catch (RVKThrowable& thrown) {
        thrown.addBackTrace(where, nullptr, "RVK_RETHROW");
        throw;
    } catch (std::bad_alloc const&) {
        RVKOutOfMemoryError(0, nullptr).hurl(where, nullptr, "RVK_THROW");
    } catch (std::exception const& caught) {
        RVKStdExceptionError(caught).hurl(where, nullptr, "RVK_THROW");
    }
}

// The text-exception conversion: builds Exception(severity 1, errno) with
// Message(number) and the text as two messages, and hurls it.
template <class Exception, class Message>
[[noreturn]] void hurlText(RVKFileLocation const& where, char const* text, unsigned long number,
                           char const* method)
{
    RVKMessageString textMessage(I18NString(text, nullptr, -1, nullptr, nullptr));
    Message catalogMessage(number);
    Exception raised(static_cast<RVKSeverity>(1), static_cast<long>(errno));
    raised << catalogMessage;
    raised << textMessage;
    raised.hurl(where, method, "RVK_THROW");
}

}  // namespace rvk_detail

// Evaluates an allocation expression (`new T(...)` or `new T[n]`) under the
// method guard and yields its result.
#define RVK_GUARDED_NEW(expression)                                            \
    (::rvk_detail::guardAllocation(RVK_HERE, [&] { return (expression); }))

// Runs `statement` with the text-exception conversion: a `char const*` thrown
// inside becomes Exception(severity 1, errno) carrying Message(number) and
// the text, raised with the method text. Other exceptions pass unchanged.
#define RVK_CONVERT_TEXT(Exception, Message, number, method, statement)        \
    do {                                                                       \
        try {                                                                  \
            statement;                                                         \
        } catch (char const* rvk_thrown_text_) {                               \
            ::rvk_detail::hurlText<Exception, Message>(RVK_HERE, rvk_thrown_text_, \
                                                       (number), (method));    \
        }                                                                      \
    } while (0)

#endif
