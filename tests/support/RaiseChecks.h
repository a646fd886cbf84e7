#ifndef ZUM_RAISE_CHECKS_H
#define ZUM_RAISE_CHECKS_H

// Checks of what a call raises, for the suites of the filters.

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "RVKCore.h"
#include "ZUMStreams.h"

// The call raises RVKAssertError whose text is `text`.
template <class Call>
void expectAssert(Call call, char const* text)
{
    try {
        call();
        ADD_FAILURE() << "no RVKAssertError, expected " << text;
    } catch (RVKAssertError const& e) {
        EXPECT_STREQ(e.getText(), text);
    }
}

// The call raises RVKIllegalStateError with the method text `method`.
template <class Call>
void expectIllegalState(Call call, char const* method)
{
    try {
        call();
        ADD_FAILURE() << "no RVKIllegalStateError, expected " << method;
    } catch (RVKIllegalStateError const& e) {
        ASSERT_GE(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, method);
    }
}

// The call raises ZUMIOException (severity 1) carrying the text-error message
// 0x91fdd700 and then `text`, hurled with the method text `method`.
template <class Call>
void expectConvertedText(Call call, char const* method, char const* text)
{
    try {
        call();
        ADD_FAILURE() << "no ZUMIOException, expected " << text;
    } catch (ZUMIOException const& e) {
        EXPECT_EQ(static_cast<int>(e.getSeverity()), 1);
        ASSERT_EQ(e.getMessageCount(), 2u);
        auto const* number = dynamic_cast<RVKMessage const*>(&e.getMessageAt(0));
        ASSERT_NE(number, nullptr);
        EXPECT_EQ(number->getMsgNumber(), 0x91fdd700UL);
        auto const* words = dynamic_cast<RVKMessageString const*>(&e.getMessageAt(1));
        ASSERT_NE(words, nullptr);
        EXPECT_STREQ(words->getString().c_str(), text);
        ASSERT_EQ(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, method);
    }
}

// `n` bytes of every value, in a fixed pseudo-random order.
inline std::string testBytes(std::size_t n, unsigned seed = 1)
{
    std::string bytes(n, '\0');
    unsigned state = seed * 2654435761u + 12345u;
    for (auto& b : bytes) {
        state = state * 1103515245u + 12345u;
        b = static_cast<char>(state >> 23);
    }
    return bytes;
}

#endif
