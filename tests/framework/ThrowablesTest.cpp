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

std::string messageText(RVKMessageBase const& m)
{
    I18NString out;
    m.format("", "", out);
    return out.c_str();
}

// "Class(text): method/macro | method/macro ...", checking that every entry
// lies in this file; "=" marks an entry on the line of the one before it.
std::string describe(RVKThrowable const& t)
{
    std::string out = t.getThrowableName();
    out += t.getText() ? std::string("(") + t.getText() + "):" : ":";
    for (std::size_t i = 0; i < t.getBackTraceSize(); ++i) {
        RVKBackTraceEntry const& e = t.getBackTraceEntry(i);
        EXPECT_STREQ(e.location.file, __FILE__);
        bool same = i > 0 && e.location.line == t.getBackTraceEntry(i - 1).location.line;
        out += std::string(i ? " |" : "") + (same ? " =" : " ") + (e.method ? e.method : "null") + "/" + e.macro;
    }
    return out;
}

struct YieldsNull {
    static void* operator new(std::size_t) noexcept { return nullptr; }
    static void operator delete(void*) {}
};
struct ThrowsBadAlloc { ThrowsBadAlloc() { throw std::bad_alloc(); } };
struct ThrowsStd { ThrowsStd() { throw std::length_error("too long"); } };
struct ThrowsCore { ThrowsCore() { RVK_THROW(RVKIllegalStateError(0, nullptr), "ThrowsCore::ThrowsCore"); } };
struct ThrowsText { ThrowsText() { throw "plain text"; } };

template <class T>
std::string guarded()
{
    try {
        delete RVK_GUARDED_NEW(new T);
    } catch (RVKThrowable const& e) {
        return describe(e);
    } catch (char const* text) {
        return std::string("text ") + text;
    }
    return "no raise";
}

}  // namespace

// Through a pointer to the base class, clone() copies and hurl() throws the
// object's own class with its text, code and messages.
TEST(Throwables, CloneAndHurlKeepTheClassTextCodeAndMessages)
{
    RVKSeverity const error = static_cast<RVKSeverity>(1);
    static RVKMessageString kept(i18n("kept"));
    struct ErrorCase {
        std::function<RVKThrowable*()> make;
        char const* rendered;
    } const errors[] = {
        {[] { return new RVKThrowable(7, "t"); }, "RVKThrowable(t) @- @m"},
        {[] { return new RVKAssertError(7, "t"); }, "RVKAssertError(t) @- @m"},
        {[] { return new RVKIllegalStateError(7, "t"); }, "RVKIllegalStateError(t) @- @m"},
        {[] { return new RVKIllegalArgumentError(7, "t"); }, "RVKIllegalArgumentError(t) @- @m"},
        {[] { return new RVKUnsupportedOperationError(7, "t"); }, "RVKUnsupportedOperationError(t) @- @m"},
        {[] { return new RVKUnexpectedError(7, "t"); }, "RVKUnexpectedError(t) @- @m"},
        {[] { return new RVKOutOfMemoryError(7, "t"); }, "RVKOutOfMemoryError(t) @- @m"},
        {[] { return new RVKStdExceptionError(k_std_error); }, "RVKStdExceptionError(standard failure) @- @m"},
        {[=] { return &(*new RVKException(error, 7L) << kept); }, "RVKException(1,7) 'kept' @- @m"},
        {[=] { return &(*new ZUMIOException(error, 7L) << kept); }, "ZUMIOException(1,7) 'kept' @- @m"},
        {[=] { return &(*new ZUMIOTimeoutException(error, 7L) << kept); }, "ZUMIOTimeoutException(1,7) 'kept' @- @m"},
        {[=] { return &(*new ZUMIOCancelException(error, 7L) << kept); }, "ZUMIOCancelException(1,7) 'kept' @- @m"},
    };
    for (auto const& c : errors) {
        std::unique_ptr<RVKThrowable> original(c.make());
        original->addBackTrace(RVKFileLocation{"a.cpp", 1}, nullptr, "RVK_THROW");
        std::unique_ptr<RVKThrowable> copy(original->clone());
        EXPECT_EQ(typeid(*copy), typeid(*original)) << c.rendered;
        EXPECT_EQ(copy->getCode(), original->getCode()) << c.rendered;
        EXPECT_NE(std::string(copy->what()).find(copy->getThrowableName()), std::string::npos) << copy->what();
        EXPECT_EQ(raised([&] { copy->hurl(RVKFileLocation{"x.cpp", 3}, "m", "RVK_THROW"); }), c.rendered);
        try {
            original->hurl(RVKFileLocation{"x.cpp", 3}, "m", "RVK_THROW");
        } catch (RVKThrowable const& caught) {
            EXPECT_EQ(typeid(caught), typeid(*original)) << c.rendered;
        }
    }
    std::string text = "copied";
    RVKThrowable copied(0, text.c_str());
    text = "changed";
    EXPECT_STREQ(copied.getText(), "copied");
    EXPECT_EQ(RVKThrowable(0, nullptr).getText(), nullptr);
}

// Appending a message yields the exception's own class, so a chain of
// appends still ends in an object of that class.
template <class E>
using AppendResult = decltype(std::declval<E&>() << std::declval<RVKMessageBase const&>());
static_assert(std::is_same_v<AppendResult<ZUMIOTimeoutException>, ZUMIOTimeoutException&>);
static_assert(std::is_same_v<AppendResult<ZUMIOCancelException>, ZUMIOCancelException&>);

TEST(RVKException, CopiesOwnTheirMessagesAndWhatShowsThem)
{
    RVKException e(static_cast<RVKSeverity>(1), 9L);
    std::string a = "message A";
    e << RVKMessageString(i18n(a.c_str())) << RVKMessage(i18n("rvkzummsgs"), 0x91fe8ba5UL);
    a = "overwritten";
    auto* original = new RVKException(e);
    RVKException assigned("text");
    assigned = *original;
    delete static_cast<RVKMessageSet*>(original);  // deleting through the set part frees it all
    EXPECT_EQ(raised([&] { throw assigned; }), "RVKException(1,9) 'message A' #91fe8ba5");
    std::string what = assigned.what();
    EXPECT_NE(what.find("message A"), std::string::npos) << what;
    EXPECT_NE(what.find(messageText(assigned.getMessageAt(1))), std::string::npos) << what;
}

TEST(RVKMessage, CatalogKnowsTheLibraryNumbersAndFallsBackToTheNumber)
{
    for (unsigned long number : {0x91fdd700UL, 0x91f2b0d2UL, 0x91fe8ba5UL, 0x91f36c62UL, 0xc1c209cfUL,
                                 0xc1c58e80UL, 0x91f342d7UL, 0xc1c34d1fUL, 0xc1c66a72UL}) {
        std::string text = messageText(RVKMessage(i18n("rvkzummsgs"), number));
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(text.find("rvkzummsgs#"), std::string::npos) << std::hex << number;
    }
    EXPECT_EQ(messageText(RVKMessage(i18n("rvkzummsgs"), 0x1234UL)), "rvkzummsgs#0x1234");
    EXPECT_EQ(messageText(RVKMessage(i18n("othermsgs"), 0x91fdd700UL)), "othermsgs#0x91fdd700");
}

TEST(RVKMacros, AssertRaisesItsTextAndTheGuardMapsFailures)
{
    char* buf = nullptr;
    try {
        RVK_ASSERT(buf);
        FAIL() << "no raise";
    } catch (RVKAssertError const& e) {
        EXPECT_EQ(describe(e), "RVKAssertError(RVK_ASSERT(buf);): null/RVK_THROW");
        EXPECT_EQ(e.getCode(), 0);
    }
    EXPECT_EQ(guarded<YieldsNull>(), "RVKOutOfMemoryError: null/RVK_THROW | =null/RVK_RETHROW");
    EXPECT_EQ(guarded<ThrowsBadAlloc>(), "RVKOutOfMemoryError: null/RVK_THROW");
    EXPECT_EQ(guarded<ThrowsStd>(), "RVKStdExceptionError(too long): null/RVK_THROW");
    EXPECT_EQ(guarded<ThrowsCore>(), "RVKIllegalStateError: ThrowsCore::ThrowsCore/RVK_THROW | null/RVK_RETHROW");
    EXPECT_EQ(guarded<ThrowsText>(), "text plain text");
    EXPECT_EQ(guarded<int>(), "no raise");
}
