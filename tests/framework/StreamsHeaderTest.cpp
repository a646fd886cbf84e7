#include <gtest/gtest.h>

#include <string>

// Only the library's umbrella header: it must be enough to catch everything
// the library raises, by class.
#include "ZUMStreams.h"

TEST(StreamsHeader, AloneLetsACallerCatchEveryClassTheLibraryRaises)
{
    std::string caught;
    auto expect = [&](auto call, char const* name) {
        caught.clear();
        call();
        EXPECT_EQ(caught, name);
    };
    expect([&] {
        try {
            ZUMBufferedInputStream bis(0);
        } catch (RVKIllegalArgumentError const& e) {
            caught = e.getThrowableName();
        }
    }, "RVKIllegalArgumentError");
    expect([&] {
        try {
            ZUMMemoryInputStream in(nullptr, 0);
            in.read(nullptr, 1);
        } catch (RVKAssertError const& e) {
            caught = e.getThrowableName();
        }
    }, "RVKAssertError");
    expect([&] {
        try {
            ZUMMemoryInputStream in("abc", 3);
            in.setTimeout(5);
        } catch (RVKUnsupportedOperationError const& e) {
            caught = e.getThrowableName();
        }
    }, "RVKUnsupportedOperationError");
    expect([&] {
        try {
            ZUMGZIPInputStream gz;
            gz.unWrap();
        } catch (RVKIllegalStateError const& e) {
            caught = e.getThrowableName();
        }
    }, "RVKIllegalStateError");
    expect([&] {
        try {
            ZUMMemoryInputStream in("not gzip at all", 15);
            ZUMGZIPInputStream gz(in);
            gz.read();
        } catch (ZUMIOException const& e) {
            caught = e.hasMessage(ZUMMessage::GZIP_NOT_GZIP) ? "not gzip" : "other";
        }
    }, "not gzip");
    expect([&] {
        try {
            throw ZUMIOCancelException(static_cast<RVKSeverity>(1), 0L);
        } catch (RVKThrowable const& e) {
            caught = e.getThrowableName();
        }
    }, "ZUMIOCancelException");
    // The remaining classes are complete types here too.
    EXPECT_STREQ(RVKOutOfMemoryError(0, nullptr).getThrowableName(), "RVKOutOfMemoryError");
    EXPECT_STREQ(RVKUnexpectedError(-2, nullptr).getThrowableName(), "RVKUnexpectedError");
    EXPECT_STREQ(ZUMIOTimeoutException(1L).getThrowableName(), "ZUMIOTimeoutException");
    EXPECT_STREQ(RVKStdExceptionError(std::exception()).getThrowableName(), "RVKStdExceptionError");
}
