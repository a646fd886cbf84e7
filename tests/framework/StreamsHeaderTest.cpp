// Only the library's umbrella header: it must be enough to catch everything
// the library raises, by class, and to name the catalog's numbers.
#include <type_traits>

#include "ZUMStreams.h"

namespace {

// Every class is complete here and is a throwable.
template <class... E>
constexpr bool k_throwables = (std::is_base_of_v<RVKThrowable, E> && ...);

static_assert(k_throwables<RVKThrowable, RVKAssertError, RVKIllegalStateError, RVKIllegalArgumentError,
                           RVKUnsupportedOperationError, RVKUnexpectedError, RVKOutOfMemoryError,
                           RVKStdExceptionError, RVKException, ZUMIOException, ZUMIOTimeoutException,
                           ZUMIOCancelException>);
static_assert(std::is_base_of_v<ZUMIOException, ZUMIOTimeoutException> &&
              std::is_base_of_v<ZUMIOException, ZUMIOCancelException>);
static_assert(ZUMMessage::GZIP_NOT_GZIP != 0);

}  // namespace
