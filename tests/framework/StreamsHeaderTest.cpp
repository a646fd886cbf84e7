#include <gtest/gtest.h>

#include <string>

// Only the library's umbrella header: it must be enough to catch everything
// the library raises, by class.
#include "ZUMStreams.h"

namespace {

// The name of what `call` raises when it is caught as an `E`.
template <class E, class Call>
std::string caughtAs(Call call)
{
    try {
        call();
    } catch (E const& e) {
        return e.getThrowableName();
    }
    return "nothing";
}

}  // namespace

TEST(StreamsHeader, AloneLetsACallerCatchEveryClassTheLibraryRaises)
{
    EXPECT_EQ(caughtAs<RVKIllegalArgumentError>([] { ZUMBufferedInputStream bis(0); }), "RVKIllegalArgumentError");
    EXPECT_EQ(caughtAs<RVKAssertError>([] { ZUMMemoryInputStream(nullptr, 0).read(nullptr, 1); }), "RVKAssertError");
    EXPECT_EQ(caughtAs<RVKUnsupportedOperationError>([] { ZUMMemoryInputStream("abc", 3).setTimeout(5); }),
              "RVKUnsupportedOperationError");
    EXPECT_EQ(caughtAs<RVKIllegalStateError>([] { ZUMGZIPInputStream().unWrap(); }), "RVKIllegalStateError");
    EXPECT_EQ(caughtAs<RVKThrowable>([] { throw ZUMIOCancelException(static_cast<RVKSeverity>(1), 0L); }),
              "ZUMIOCancelException");
    ZUMMemoryInputStream in("not gzip at all", 15);
    ZUMGZIPInputStream gz(in);
    try {
        gz.read();
        ADD_FAILURE() << "text that is not gzip was read";
    } catch (ZUMIOException const& e) {
        EXPECT_TRUE(e.hasMessage(ZUMMessage::GZIP_NOT_GZIP));
    }
    // The remaining classes are complete types here too.
    EXPECT_STREQ(RVKOutOfMemoryError(0, nullptr).getThrowableName(), "RVKOutOfMemoryError");
    EXPECT_STREQ(RVKUnexpectedError(-2, nullptr).getThrowableName(), "RVKUnexpectedError");
    EXPECT_STREQ(ZUMIOTimeoutException(1L).getThrowableName(), "ZUMIOTimeoutException");
    EXPECT_STREQ(RVKStdExceptionError(std::exception()).getThrowableName(), "RVKStdExceptionError");
}
