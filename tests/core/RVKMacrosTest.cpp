#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "RVKCore.h"
#include "RVKMacros.h"

namespace {

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

int* yieldsNull()
{
    return nullptr;
}

void expectEntry(RVKThrowable const& t, std::size_t i, char const* method, char const* macro)
{
    ASSERT_LT(i, t.getBackTraceSize());
    RVKBackTraceEntry const& e = t.getBackTraceEntry(i);
    if (method) {
        EXPECT_STREQ(e.method, method);
    } else {
        EXPECT_EQ(e.method, nullptr);
    }
    EXPECT_STREQ(e.macro, macro);
    EXPECT_STREQ(e.location.file, __FILE__);
}

}  // namespace

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
        EXPECT_STREQ(e.getText(), "RVK_ASSERT(buf);");
        EXPECT_EQ(e.getCode(), 0);
        EXPECT_EQ(e.getBackTraceSize(), 1u);
        expectEntry(e, 0, nullptr, "RVK_THROW");
    }
}

TEST(RVKThrow, HurlsTheErrorWithTheMethodText)
{
    try {
        RVK_THROW(RVKUnexpectedError(-4, nullptr), "Owner::method - what went wrong");
        FAIL() << "no raise";
    } catch (RVKUnexpectedError const& e) {
        EXPECT_EQ(e.getCode(), -4);
        EXPECT_EQ(e.getBackTraceSize(), 1u);
        expectEntry(e, 0, "Owner::method - what went wrong", "RVK_THROW");
    }
}

TEST(RVKMethodGuard, NullResultRaisesOutOfMemoryWithThrowThenRethrow)
{
    try {
        RVK_GUARDED_NEW(yieldsNull());
        FAIL() << "no raise";
    } catch (RVKOutOfMemoryError const& e) {
        ASSERT_EQ(e.getBackTraceSize(), 2u);
        expectEntry(e, 0, nullptr, "RVK_THROW");
        expectEntry(e, 1, nullptr, "RVK_RETHROW");
        EXPECT_EQ(e.getBackTraceEntry(0).location.line, e.getBackTraceEntry(1).location.line);
        EXPECT_EQ(e.getCode(), 0);
        EXPECT_EQ(e.getText(), nullptr);
    }
}

TEST(RVKMethodGuard, MapsStandardExceptionsToCoreErrors)
{
    try {
        delete RVK_GUARDED_NEW(new ThrowsBadAlloc);
        FAIL() << "no raise";
    } catch (RVKOutOfMemoryError const& e) {
        EXPECT_EQ(e.getBackTraceSize(), 1u);
        expectEntry(e, 0, nullptr, "RVK_THROW");
    }
    try {
        delete RVK_GUARDED_NEW(new ThrowsStd);
        FAIL() << "no raise";
    } catch (RVKStdExceptionError const& e) {
        EXPECT_STREQ(e.getText(), "too long");
        EXPECT_EQ(e.getBackTraceSize(), 1u);
        expectEntry(e, 0, nullptr, "RVK_THROW");
    }
}

TEST(RVKMethodGuard, AddsRethrowToCoreThrowablesAndPassesTextUnchanged)
{
    try {
        delete RVK_GUARDED_NEW(new ThrowsCore);
        FAIL() << "no raise";
    } catch (RVKIllegalStateError const& e) {
        ASSERT_EQ(e.getBackTraceSize(), 2u);
        expectEntry(e, 0, "ThrowsCore::ThrowsCore", "RVK_THROW");
        expectEntry(e, 1, nullptr, "RVK_RETHROW");
    }
    try {
        delete RVK_GUARDED_NEW(new ThrowsText);
        FAIL() << "no raise";
    } catch (char const* text) {
        EXPECT_STREQ(text, "plain text");
    }
    int* ok = RVK_GUARDED_NEW(new int[4]());
    EXPECT_EQ(ok[3], 0);
    delete[] ok;
}
