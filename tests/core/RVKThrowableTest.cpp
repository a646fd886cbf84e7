#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "RVKCore.h"
#include "RVKMacros.h"

namespace {

std::runtime_error const k_std_error("standard failure");

struct ErrorCase {
    char const* name;
    std::function<RVKThrowable*()> make;
};

ErrorCase const k_errors[] = {
    {"RVKThrowable", [] { return new RVKThrowable(7, "t"); }},
    {"RVKAssertError", [] { return new RVKAssertError(7, "t"); }},
    {"RVKIllegalStateError", [] { return new RVKIllegalStateError(7, "t"); }},
    {"RVKIllegalArgumentError", [] { return new RVKIllegalArgumentError(7, "t"); }},
    {"RVKUnsupportedOperationError", [] { return new RVKUnsupportedOperationError(7, "t"); }},
    {"RVKUnexpectedError", [] { return new RVKUnexpectedError(7, "t"); }},
    {"RVKOutOfMemoryError", [] { return new RVKOutOfMemoryError(7, "t"); }},
    {"RVKStdExceptionError", [] { return new RVKStdExceptionError(k_std_error); }},
    {"RVKException", [] { return new RVKException(static_cast<RVKSeverity>(1), 7L); }},
};

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
struct ThrowsBadAlloc {
    ThrowsBadAlloc() { throw std::bad_alloc(); }
};
struct ThrowsStd {
    ThrowsStd() { throw std::length_error("too long"); }
};
struct ThrowsCore {
    ThrowsCore() { RVK_THROW(RVKIllegalStateError(0, nullptr), "ThrowsCore::ThrowsCore"); }
};
struct ThrowsText {
    ThrowsText() { throw "plain text"; }
};

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

TEST(RVKThrowable, CloneHurlAndWhatKeepTheClass)
{
    for (ErrorCase const& c : k_errors) {
        std::unique_ptr<RVKThrowable> original(c.make());
        original->addBackTrace(RVKFileLocation{"a.cpp", 1}, nullptr, "RVK_THROW");
        std::unique_ptr<RVKThrowable> copy(original->clone());
        EXPECT_EQ(typeid(*copy), typeid(*original)) << c.name;
        EXPECT_STREQ(copy->getThrowableName(), c.name);
        EXPECT_NE(std::string(copy->what()).find(c.name), std::string::npos) << copy->what();
        EXPECT_EQ(copy->getCode(), original->getCode()) << c.name;
        EXPECT_STREQ(copy->getText(), original->getText()) << c.name;
        EXPECT_EQ(copy->getBackTraceSize(), 1u) << c.name;
        try {
            original->hurl(RVKFileLocation{"x.cpp", 3}, "method text", "RVK_THROW");
            ADD_FAILURE() << c.name << " returned from hurl";
        } catch (RVKThrowable const& caught) {
            EXPECT_EQ(typeid(caught), typeid(*original)) << c.name;
            ASSERT_EQ(caught.getBackTraceSize(), 2u) << c.name;
            EXPECT_STREQ(caught.getBackTraceEntry(1).method, "method text");
            EXPECT_STREQ(caught.getBackTraceEntry(1).location.file, "x.cpp");
        }
    }
}

TEST(RVKThrowable, KeepsItsTextAndWhatShowsTextAndMessages)
{
    std::string text = "copied";
    RVKThrowable copied(0, text.c_str());
    text = "changed";
    EXPECT_STREQ(copied.getText(), "copied");
    EXPECT_EQ(RVKThrowable(0, nullptr).getText(), nullptr);
    RVKStdExceptionError fromStd(k_std_error);
    EXPECT_STREQ(fromStd.getText(), "standard failure");
    EXPECT_NE(std::string(fromStd.what()).find("standard failure"), std::string::npos);

    RVKException e(static_cast<RVKSeverity>(1), 5L);
    e << RVKMessageString(i18n("disk on fire")) << RVKMessage(i18n("rvkzummsgs"), 0x91fe8ba5UL);
    std::string what = e.what();
    EXPECT_NE(what.find("RVKException"), std::string::npos) << what;
    EXPECT_NE(what.find("disk on fire"), std::string::npos) << what;
    EXPECT_NE(what.find(messageText(e.getMessageAt(1))), std::string::npos) << what;
}

TEST(RVKException, KeepsOwnCopiesOfMessagesInOrder)
{
    RVKException e(static_cast<RVKSeverity>(1), 9L);
    {
        std::string a = "message A";
        RVKMessageString first(i18n(a.c_str()));
        RVKMessageString second(i18n("message B"));
        e << first << second;
        a = "overwritten";
    }
    // Copies and assignments own their messages too.
    std::unique_ptr<RVKException> original(new RVKException(e));
    RVKException assigned("text");
    assigned = *original;
    original.reset();
    for (RVKException const* x : {&e, &assigned}) {
        ASSERT_EQ(x->getMessageCount(), 2u);
        EXPECT_EQ(messageText(x->getMessageAt(0)), "message A");
        EXPECT_EQ(messageText(x->getMessageAt(1)), "message B");
        EXPECT_EQ(x->getCode(), 9);
        EXPECT_EQ(x->getSeverity(), 1);
    }
    // Deleting through the message-set part destroys the whole exception.
    RVKMessageSet* set = new RVKException(e);
    delete set;
}

TEST(RVKMessage, CatalogKnowsTheLibraryNumbersAndFallsBackToTheNumber)
{
    for (unsigned long number : {0x91fdd700UL, 0x91f2b0d2UL, 0x91fe8ba5UL, 0x91f36c62UL,
                                 0xc1c209cfUL, 0xc1c58e80UL, 0x91f342d7UL, 0xc1c34d1fUL,
                                 0xc1c66a72UL}) {
        std::string text = messageText(RVKMessage(i18n("rvkzummsgs"), number));
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(text.find("rvkzummsgs#"), std::string::npos) << std::hex << number;
    }
    EXPECT_EQ(messageText(RVKMessage(i18n("rvkzummsgs"), 0x1234UL)), "rvkzummsgs#0x1234");
    EXPECT_EQ(messageText(RVKMessage(i18n("othermsgs"), 0x91fdd700UL)), "othermsgs#0x91fdd700");
}

TEST(RVKAssert, RaisesTheAssertionTextWithOneEntry)
{
    char* buf = nullptr;
    char present = 'x';
    char* here = &present;
    EXPECT_NO_THROW(RVK_ASSERT(here));
    try {
        RVK_ASSERT(buf);
        FAIL() << "no raise";
    } catch (RVKAssertError const& e) {
        EXPECT_EQ(describe(e), "RVKAssertError(RVK_ASSERT(buf);): null/RVK_THROW");
        EXPECT_EQ(e.getCode(), 0);
    }
}

TEST(RVKMethodGuard, MapsFailuresAndAddsRethrowEntries)
{
    EXPECT_EQ(guarded<YieldsNull>(), "RVKOutOfMemoryError: null/RVK_THROW | =null/RVK_RETHROW");
    EXPECT_EQ(guarded<ThrowsBadAlloc>(), "RVKOutOfMemoryError: null/RVK_THROW");
    EXPECT_EQ(guarded<ThrowsStd>(), "RVKStdExceptionError(too long): null/RVK_THROW");
    EXPECT_EQ(guarded<ThrowsCore>(),
              "RVKIllegalStateError: ThrowsCore::ThrowsCore/RVK_THROW | null/RVK_RETHROW");
    EXPECT_EQ(guarded<ThrowsText>(), "text plain text");
    EXPECT_EQ(guarded<int>(), "no raise");
}
