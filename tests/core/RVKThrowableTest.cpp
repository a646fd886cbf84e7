#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "RVKCore.h"

namespace {

RVKFileLocation const k_here{"here.cpp", 12};

struct ErrorCase {
    char const* name;
    std::function<RVKThrowable*()> make;
};

std::runtime_error const k_std_error("standard failure");

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

std::string messageText(RVKMessageBase const& m)
{
    I18NString out;
    m.format("", "", out);
    return out.c_str();
}

}  // namespace

TEST(RVKThrowable, KeepsCodeTextAndBackTraceInOrder)
{
    std::string text = "copied";
    RVKThrowable t(-3, text.c_str());
    text = "changed";
    t.addBackTrace(k_here, "first", "RVK_THROW");
    t.addBackTrace(RVKFileLocation{"b.cpp", 9}, nullptr, "RVK_RETHROW");
    EXPECT_EQ(t.getCode(), -3);
    EXPECT_STREQ(t.getText(), "copied");
    ASSERT_EQ(t.getBackTraceSize(), 2u);
    EXPECT_STREQ(t.getBackTraceEntry(0).method, "first");
    EXPECT_STREQ(t.getBackTraceEntry(0).location.file, "here.cpp");
    EXPECT_EQ(t.getBackTraceEntry(0).location.line, 12);
    EXPECT_EQ(t.getBackTraceEntry(1).method, nullptr);
    EXPECT_STREQ(t.getBackTraceEntry(1).macro, "RVK_RETHROW");
    EXPECT_EQ(RVKThrowable(0, nullptr).getText(), nullptr);
    EXPECT_THROW(t.getBackTraceEntry(2), RVKIllegalArgumentError);
}

TEST(RVKThrowable, CloneKeepsClassAndState)
{
    for (ErrorCase const& c : k_errors) {
        std::unique_ptr<RVKThrowable> original(c.make());
        original->addBackTrace(k_here, "m", "RVK_THROW");
        std::unique_ptr<RVKThrowable> copy(original->clone());
        EXPECT_EQ(typeid(*copy), typeid(*original)) << c.name;
        EXPECT_STREQ(copy->getThrowableName(), c.name);
        EXPECT_EQ(copy->getCode(), original->getCode()) << c.name;
        EXPECT_EQ(copy->getBackTraceSize(), 1u) << c.name;
    }
}

TEST(RVKThrowable, HurlThrowsItsOwnClassWithOneMoreEntry)
{
    for (ErrorCase const& c : k_errors) {
        std::unique_ptr<RVKThrowable> original(c.make());
        original->addBackTrace(k_here, nullptr, "RVK_THROW");
        RVKThrowable& base = *original;
        try {
            base.hurl(RVKFileLocation{"x.cpp", 3}, "method text", "RVK_THROW");
            ADD_FAILURE() << c.name << " did not throw";
        } catch (RVKThrowable const& caught) {
            EXPECT_EQ(typeid(caught), typeid(*original)) << c.name;
            ASSERT_EQ(caught.getBackTraceSize(), 2u) << c.name;
            EXPECT_STREQ(caught.getBackTraceEntry(1).method, "method text");
            EXPECT_STREQ(caught.getBackTraceEntry(1).location.file, "x.cpp");
        }
    }
}

TEST(RVKThrowable, WhatNamesTheClassTextAndMessages)
{
    for (ErrorCase const& c : k_errors) {
        std::unique_ptr<RVKThrowable> t(c.make());
        std::string what = static_cast<std::exception const&>(*t).what();
        EXPECT_NE(what.find(c.name), std::string::npos) << what;
    }
    EXPECT_NE(std::string(RVKStdExceptionError(k_std_error).what()).find("standard failure"),
              std::string::npos);
    EXPECT_STREQ(RVKStdExceptionError(k_std_error).getText(), "standard failure");

    RVKException e(static_cast<RVKSeverity>(1), 5L);
    e << RVKMessageString(I18NString("disk on fire", nullptr, -1, nullptr, nullptr));
    e << RVKMessage(I18NString("rvkzummsgs", nullptr, -1, nullptr, nullptr), 0x91fe8ba5UL);
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
        RVKMessageString first(I18NString(a.c_str(), nullptr, -1, nullptr, nullptr));
        RVKMessageString second(I18NString("message B", nullptr, -1, nullptr, nullptr));
        e << first << second;
        a = "overwritten";
    }
    ASSERT_EQ(e.getMessageCount(), 2u);
    EXPECT_EQ(messageText(e.getMessageAt(0)), "message A");
    EXPECT_EQ(messageText(e.getMessageAt(1)), "message B");
    EXPECT_EQ(e.getSeverity(), 1);

    // Copies and assignments own their messages too.
    std::unique_ptr<RVKException> original(new RVKException(e));
    RVKException assigned("text");
    assigned = *original;
    original.reset();
    ASSERT_EQ(assigned.getMessageCount(), 2u);
    EXPECT_EQ(messageText(assigned.getMessageAt(1)), "message B");
    EXPECT_EQ(assigned.getCode(), 9);
    EXPECT_THROW(assigned.getMessageAt(2), RVKIllegalArgumentError);

    // Deleting through the message-set part destroys the whole exception.
    RVKMessageSet* set = new RVKException(e);
    delete set;
}

TEST(RVKMessage, CatalogKnowsTheLibraryNumbersAndFallsBackToTheNumber)
{
    I18NString const catalog("rvkzummsgs", nullptr, -1, nullptr, nullptr);
    for (unsigned long number : {0x91fdd700UL, 0x91f2b0d2UL, 0x91fe8ba5UL, 0x91f36c62UL,
                                 0xc1c209cfUL, 0xc1c58e80UL, 0x91f342d7UL, 0xc1c34d1fUL,
                                 0xc1c66a72UL}) {
        RVKMessage m(catalog, number);
        std::string text = messageText(m);
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(text.find("rvkzummsgs#"), std::string::npos) << std::hex << number;
    }
    EXPECT_EQ(messageText(RVKMessage(catalog, 0x1234UL)), "rvkzummsgs#0x1234");
    I18NString const other("othermsgs", nullptr, -1, nullptr, nullptr);
    EXPECT_EQ(messageText(RVKMessage(other, 0x91fdd700UL)), "othermsgs#0x91fdd700");

    RVKMessage m(catalog, 0xc1c34d1fUL);
    std::unique_ptr<RVKMessageBase> copy(m.clone());
    EXPECT_STREQ(copy->getClassName(), "RVKMessage");
    EXPECT_EQ(static_cast<RVKMessage&>(*copy).getMsgNumber(), 0xc1c34d1fUL);
    EXPECT_STREQ(static_cast<RVKMessage&>(*copy).getMsgFile().c_str(), "rvkzummsgs");
}

TEST(I18NString, CopiesTextByLengthOrUpToNul)
{
    EXPECT_STREQ(I18NString("abcdef", nullptr, 3, nullptr, nullptr).c_str(), "abc");
    EXPECT_STREQ(I18NString("abc", nullptr, -1, nullptr, nullptr).c_str(), "abc");
    EXPECT_TRUE(I18NString(nullptr, nullptr, -1, nullptr, nullptr).empty());
    I18NString s;
    s = "xyz";
    s.append("!");
    EXPECT_STREQ(s.c_str(), "xyz!");
    EXPECT_STREQ(RVKMessageString(s).getString().c_str(), "xyz!");
}
