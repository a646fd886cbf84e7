#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <typeinfo>

#include "RVKMacros.h"
#include "TestStreams.h"

namespace {

std::runtime_error const k_std_error("standard failure");

I18NString i18n(char const* text)
{
    return I18NString(text, nullptr, -1, nullptr, nullptr);
}

struct YieldsNull {
    static void* operator new(std::size_t) noexcept { return nullptr; }
    static void operator delete(void*) {}
};
struct ThrowsBadAlloc { ThrowsBadAlloc() { throw std::bad_alloc(); } };
struct ThrowsStd { ThrowsStd() { throw std::length_error("too long"); } };
struct ThrowsCore { ThrowsCore() { RVK_THROW(RVKIllegalStateError(0, nullptr), "ThrowsCore::ThrowsCore"); } };
struct ThrowsText { ThrowsText() { throw "plain text"; } };

// Appending a message yields the exception's own class, so a chain of
// appends still ends in an object of that class.
template <class E>
using AppendResult = decltype(std::declval<E&>() << std::declval<RVKMessageBase const&>());
static_assert(std::is_same_v<AppendResult<ZUMIOTimeoutException>, ZUMIOTimeoutException&>);
static_assert(std::is_same_v<AppendResult<ZUMIOCancelException>, ZUMIOCancelException&>);

}  // namespace

// Through a pointer to the base class, clone() copies and hurl() throws the
// object's own class with its text, code and messages; what() names the
// class and shows the messages.
TEST(Throwables, CloneAndHurlKeepTheClassTextCodeAndMessages)
{
    RVKSeverity const error = static_cast<RVKSeverity>(1);
    static RVKMessageString kept(i18n("kept"));
    static RVKMessage numbered(i18n("rvkzummsgs"), 0x91fe8ba5UL);
    struct ErrorCase { std::function<RVKThrowable*()> make; char const* rendered; } const errors[] = {
        {[] { return new RVKThrowable(7, "t"); }, "RVKThrowable(t) @- @m"},
        {[] { return new RVKAssertError(7, "t"); }, "RVKAssertError(t) @- @m"},
        {[] { return new RVKIllegalStateError(7, "t"); }, "RVKIllegalStateError(t) @- @m"},
        {[] { return new RVKIllegalArgumentError(7, "t"); }, "RVKIllegalArgumentError(t) @- @m"},
        {[] { return new RVKUnsupportedOperationError(7, "t"); }, "RVKUnsupportedOperationError(t) @- @m"},
        {[] { return new RVKUnexpectedError(7, "t"); }, "RVKUnexpectedError(t) @- @m"},
        {[] { return new RVKOutOfMemoryError(7, "t"); }, "RVKOutOfMemoryError(t) @- @m"},
        {[] { return new RVKStdExceptionError(k_std_error); }, "RVKStdExceptionError(standard failure) @- @m"},
        {[=] { return &(*new RVKException(error, 7L) << kept << numbered); },
         "RVKException(1,7) 'kept' #FILE_READ_FAILED @- @m"},
        {[=] { return &(*new ZUMIOException(error, 7L) << kept); }, "ZUMIOException(1,7) 'kept' @- @m"},
        {[=] { return &(*new ZUMIOTimeoutException(error, 7L) << kept); }, "ZUMIOTimeoutException(1,7) 'kept' @- @m"},
        {[=] { return &(*new ZUMIOCancelException(error, 7L) << kept); }, "ZUMIOCancelException(1,7) 'kept' @- @m"},
    };
    for (auto const& c : errors) {
        std::unique_ptr<RVKThrowable> original(c.make());
        original->addBackTrace(RVKFileLocation{"a.cpp", 1}, nullptr, "RVK_THROW");
        std::unique_ptr<RVKThrowable> copy(original->clone());
        long code = original->getCode();
        original.reset();  // the copy owns its text and messages
        EXPECT_EQ(copy->getCode(), code) << c.rendered;
        std::string what = copy->what();
        EXPECT_NE(what.find(copy->getThrowableName()), std::string::npos) << what;
        EXPECT_TRUE(what.find("kept") != std::string::npos || !dynamic_cast<RVKException*>(copy.get())) << what;
        EXPECT_EQ(raised([&] { copy->hurl(RVKFileLocation{"x.cpp", 3}, "m", "RVK_THROW"); }), c.rendered);
    }
    RVKException assigned("text");
    assigned = RVKException(error, 9L) << kept;
    EXPECT_EQ(raised([&] { throw assigned; }), "RVKException(1,9) 'kept'");
    delete static_cast<RVKMessageSet*>(new RVKException(assigned));  // deleting through the set part frees it all
    std::string text = "copied";
    RVKThrowable copied(0, text.c_str());
    text = "changed";
    EXPECT_STREQ(copied.getText(), "copied");
}

// RVK_ASSERT raises its text; the method guard maps a null result and
// standard exceptions and adds a rethrow entry to a core throwable.
TEST(RVKMacros, AssertRaisesItsTextAndTheGuardMapsFailures)
{
    char* buf = nullptr;
    EXPECT_EQ(raised([&] { RVK_ASSERT(buf); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_EQ(raised([] { delete RVK_GUARDED_NEW(new YieldsNull); }), "RVKOutOfMemoryError() @- @-");
    EXPECT_EQ(raised([] { delete RVK_GUARDED_NEW(new ThrowsBadAlloc); }), "RVKOutOfMemoryError() @-");
    EXPECT_EQ(raised([] { delete RVK_GUARDED_NEW(new ThrowsStd); }), "RVKStdExceptionError(too long) @-");
    EXPECT_EQ(raised([] { delete RVK_GUARDED_NEW(new ThrowsCore); }),
              "RVKIllegalStateError() @ThrowsCore::ThrowsCore @-");
    EXPECT_EQ(raised([] { delete RVK_GUARDED_NEW(new ThrowsText); }), "text: plain text");
    EXPECT_EQ(raised([] { delete RVK_GUARDED_NEW(new int); }), "none");
}
