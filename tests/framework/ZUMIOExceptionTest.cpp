#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>

#include "TestStreams.h"
#include "ZUMRaise.h"

namespace {

RVKSeverity const k_error = static_cast<RVKSeverity>(1);
RVKFileLocation const k_here{"here.cpp", 1};

RVKMessageString text(char const* t)
{
    return RVKMessageString(I18NString(t, nullptr, -1, nullptr, nullptr));
}

// The texts of the messages, in order, joined by " | ".
std::string messages(RVKMessageSet const& set)
{
    std::string out;
    for (std::size_t i = 0; i < set.getMessageCount(); ++i) {
        I18NString one;
        set.getMessageAt(i).format(i ? " | " : "", "", one);
        out += one.c_str();
    }
    return out;
}

// Appending a message yields the exception's own class, so a chain of
// appends still ends in an object of that class.
template <class E>
using AppendResult = decltype(std::declval<E&>() << std::declval<RVKMessageBase const&>());
static_assert(std::is_same_v<AppendResult<ZUMIOException>, ZUMIOException&>);
static_assert(std::is_same_v<AppendResult<ZUMIOTimeoutException>, ZUMIOTimeoutException&>);
static_assert(std::is_same_v<AppendResult<ZUMIOCancelException>, ZUMIOCancelException&>);

}  // namespace

TEST(ZUMIOException, NamesAndHurlsItsOwnClassThroughBaseReferences)
{
    ZUMIOException io(k_error, 1L);
    ZUMIOTimeoutException timeout(k_error, 2L);
    ZUMIOCancelException cancelled(k_error, 3L);
    cancelled << text("A") << text("B");
    struct Case {
        ZUMIOException& object;
        char const* name;
    };
    for (Case c : {Case{io, "ZUMIOException"}, Case{timeout, "ZUMIOTimeoutException"},
                   Case{cancelled, "ZUMIOCancelException"}}) {
        RVKThrowable& base = c.object;
        EXPECT_STREQ(base.getThrowableName(), c.name);
        EXPECT_NE(std::string(base.what()).find(c.name), std::string::npos);
        try {
            c.object.hurl(k_here, "m", "RVK_THROW");
        } catch (RVKException const& e) {
            EXPECT_EQ(typeid(e), typeid(c.object)) << c.name;
            EXPECT_EQ(e.getBackTraceSize(), 1u);
        }
    }
    ZUMIOException& base = cancelled;
    try {
        base.hurl(k_here, "m", "RVK_THROW");
    } catch (ZUMIOCancelException const& e) {
        EXPECT_EQ(messages(e), "A | B");
    }
}

TEST(ZUMIOException, CloneKeepsClassAndState)
{
    ZUMIOTimeoutException original(k_error, 110L);
    original << ZUMMessage(0x91fe8ba5UL) << text("slow peer");
    original.addBackTrace(k_here, "first", "RVK_THROW");
    original.addBackTrace(k_here, nullptr, "RVK_RETHROW");
    std::unique_ptr<RVKThrowable> copy(static_cast<ZUMIOException&>(original).clone());
    auto* timeout = dynamic_cast<ZUMIOTimeoutException*>(copy.get());
    ASSERT_NE(timeout, nullptr);
    EXPECT_EQ(timeout->getSeverity(), 1);
    EXPECT_EQ(timeout->getCode(), 110);
    EXPECT_EQ(messages(*timeout), messages(original));
    EXPECT_EQ(dynamic_cast<RVKMessage const&>(timeout->getMessageAt(0)).getMsgNumber(), 0x91fe8ba5UL);
    ASSERT_EQ(timeout->getBackTraceSize(), 2u);
    EXPECT_STREQ(timeout->getBackTraceEntry(0).method, "first");
    EXPECT_STREQ(timeout->getBackTraceEntry(1).macro, "RVK_RETHROW");
}

TEST(ZUMIOException, SelfAssignmentAndMessageConstructor)
{
    ZUMIOCancelException e(k_error, 7L);
    e << text("kept");
    ZUMIOCancelException& self = e;
    e = self;
    EXPECT_EQ(e.getCode(), 7);
    EXPECT_EQ(messages(e), "kept");

    RVKMessageString message = text("with message");
    ZUMIOException six(k_error, -5, message);
    EXPECT_EQ(six.getSeverity(), 1);
    EXPECT_EQ(six.getCode(), -5L);
    EXPECT_EQ(messages(six), "with message");
}

TEST(ZUMTextConversion, TurnsATextExceptionIntoAnIOException)
{
    ZUMMemoryInputStream memory("ab", 2);
    try {
        ZUM_CONVERT_TEXT("Caller::method", (errno = EPIPE, memory.unread("a", 1)));
        FAIL() << "no raise";
    } catch (ZUMIOException const& e) {
        EXPECT_STREQ(e.getThrowableName(), "ZUMIOException");
        EXPECT_EQ(e.getSeverity(), 1);
        EXPECT_EQ(e.getCode(), EPIPE);
        EXPECT_EQ(messages(e), messages(ZUMIOException(0L) << ZUMMessage(0x91fdd700UL)) + " | not implemented");
        ASSERT_EQ(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, "Caller::method");
        EXPECT_STREQ(e.getBackTraceEntry(0).macro, "RVK_THROW");
    }

    // Results and other exceptions pass unchanged.
    int got = 0;
    ZUM_CONVERT_TEXT("Caller::method", got = memory.read());
    EXPECT_EQ(got, 'a');
    EXPECT_EQ(raisedMethod<RVKUnsupportedOperationError>(
                  [&] { ZUM_CONVERT_TEXT("Caller::method", memory.setTimeout(3)); }),
              "RVK_bool ZUMInputStream::setTimeout( int time_limit_sec )");
}
