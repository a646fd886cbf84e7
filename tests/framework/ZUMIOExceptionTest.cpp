#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <type_traits>

#include "TestStreams.h"
#include "ZUMRaise.h"

namespace {

RVKSeverity const k_error = static_cast<RVKSeverity>(1);
RVKFileLocation const k_here{"here.cpp", 1};

RVKMessageString text(char const* t)
{
    return RVKMessageString(I18NString(t, nullptr, -1, nullptr, nullptr));
}

std::string messageText(RVKMessageBase const& m)
{
    I18NString out;
    m.format("", "", out);
    return out.c_str();
}

template <class E>
using AppendResult = decltype(std::declval<E&>() << std::declval<RVKMessageBase const&>());
static_assert(std::is_same_v<AppendResult<ZUMIOException>, ZUMIOException&>);
static_assert(std::is_same_v<AppendResult<ZUMIOTimeoutException>, ZUMIOTimeoutException&>);
static_assert(std::is_same_v<AppendResult<ZUMIOCancelException>, ZUMIOCancelException&>);

}  // namespace

TEST(ZUMIOException, NamesItsClassThroughBaseReferences)
{
    ZUMIOException io(k_error, 1L);
    ZUMIOTimeoutException timeout(k_error, 2L);
    ZUMIOCancelException cancelled(k_error, 3L);
    struct Case {
        ZUMIOException& object;
        char const* name;
    };
    for (Case c : {Case{io, "ZUMIOException"}, Case{timeout, "ZUMIOTimeoutException"},
                   Case{cancelled, "ZUMIOCancelException"}}) {
        RVKThrowable& base = c.object;
        EXPECT_STREQ(base.getThrowableName(), c.name);
        EXPECT_NE(std::string(base.what()).find(c.name), std::string::npos);
    }
}

TEST(ZUMIOException, HurlThroughABaseReferenceThrowsTheOwnClass)
{
    ZUMIOCancelException cancelled(k_error, 3L);
    cancelled << text("A") << text("B");
    ZUMIOException& base = cancelled;
    try {
        base.hurl(k_here, "m", "RVK_THROW");
        ADD_FAILURE() << "no raise";
    } catch (ZUMIOCancelException const& e) {
        ASSERT_EQ(e.getMessageCount(), 2u);
        EXPECT_EQ(messageText(e.getMessageAt(0)), "A");
        EXPECT_EQ(messageText(e.getMessageAt(1)), "B");
        EXPECT_EQ(e.getBackTraceSize(), 1u);
    }
    EXPECT_THROW(base.hurl(k_here, "m", "RVK_THROW"), ZUMIOException);
    EXPECT_THROW(base.hurl(k_here, "m", "RVK_THROW"), RVKException);
    ZUMIOTimeoutException timeout(k_error, 2L);
    ZUMIOException& timeoutBase = timeout;
    EXPECT_THROW(timeoutBase.hurl(k_here, nullptr, "RVK_THROW"), ZUMIOTimeoutException);
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
    ASSERT_EQ(timeout->getMessageCount(), 2u);
    EXPECT_EQ(static_cast<RVKMessage const&>(timeout->getMessageAt(0)).getMsgNumber(), 0x91fe8ba5UL);
    EXPECT_EQ(messageText(timeout->getMessageAt(1)), "slow peer");
    ASSERT_EQ(timeout->getBackTraceSize(), 2u);
    EXPECT_STREQ(timeout->getBackTraceEntry(0).method, "first");
    EXPECT_STREQ(timeout->getBackTraceEntry(1).macro, "RVK_RETHROW");
}

TEST(ZUMIOException, AssignmentCopiesStateAndSelfAssignmentChangesNothing)
{
    ZUMIOCancelException e(k_error, 7L);
    e << text("kept");
    ZUMIOCancelException& self = e;
    e = self;
    EXPECT_EQ(e.getCode(), 7);
    ASSERT_EQ(e.getMessageCount(), 1u);
    EXPECT_EQ(messageText(e.getMessageAt(0)), "kept");

    ZUMIOException target("old text");
    ZUMIOException source(k_error, 8L);
    source << text("new");
    target = source;
    EXPECT_EQ(target.getCode(), 8);
    EXPECT_EQ(target.getText(), nullptr);
    EXPECT_EQ(target.getSeverity(), 1);
    EXPECT_EQ(target.getMessageCount(), 1u);
}

TEST(ZUMIOException, ConstructorFormsKeepTheirArguments)
{
    RVKMessageString message = text("with message");
    ZUMIOException six(k_error, -5, message);
    EXPECT_EQ(six.getSeverity(), 1);
    EXPECT_EQ(six.getCode(), -5L);
    ASSERT_EQ(six.getMessageCount(), 1u);
    EXPECT_EQ(messageText(six.getMessageAt(0)), "with message");

    EXPECT_EQ(ZUMIOException(9L).getCode(), 9);
    EXPECT_STREQ(ZUMIOException("t").getText(), "t");
    EXPECT_STREQ(ZUMIOTimeoutException(k_error, "u").getText(), "u");
    EXPECT_EQ(ZUMIOCancelException(k_error, "v").getSeverity(), 1);

    ZUMMessage m(0xc1c66a72UL);
    EXPECT_STREQ(m.getMsgFile().c_str(), "rvkzummsgs");
    EXPECT_EQ(m.getMsgNumber(), 0xc1c66a72UL);
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
        ASSERT_EQ(e.getMessageCount(), 2u);
        auto const& catalog = dynamic_cast<RVKMessage const&>(e.getMessageAt(0));
        EXPECT_EQ(catalog.getMsgNumber(), 0x91fdd700UL);
        EXPECT_STREQ(catalog.getMsgFile().c_str(), "rvkzummsgs");
        auto const& thrown = dynamic_cast<RVKMessageString const&>(e.getMessageAt(1));
        EXPECT_STREQ(thrown.getString().c_str(), "not implemented");
        ASSERT_EQ(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, "Caller::method");
        EXPECT_STREQ(e.getBackTraceEntry(0).macro, "RVK_THROW");
    }
}

TEST(ZUMTextConversion, LetsOtherExceptionsAndResultsPass)
{
    ZUMMemoryInputStream memory("ab", 2);
    int got = 0;
    ZUM_CONVERT_TEXT("Caller::method", got = memory.read());
    EXPECT_EQ(got, 'a');
    try {
        ZUM_CONVERT_TEXT("Caller::method", memory.setTimeout(3));
        FAIL() << "no raise";
    } catch (RVKUnsupportedOperationError const& e) {
        EXPECT_EQ(e.getBackTraceSize(), 1u);
    }
}
