#ifndef ZUM_IO_TIMEOUT_EXCEPTION_H
#define ZUM_IO_TIMEOUT_EXCEPTION_H

#include "ZUMExport.h"
#include "ZUMIOException.h"

// The I/O exception for a read that ran out of time, for streams that
// implement the timeout and cancel operations. No stream of this library
// raises it; the filters pass it through unchanged.
class ZUM_API ZUMIOTimeoutException : public ZUMIOException {
public:
    // Copies an exception; from a code or a text (copied), with severity
    // RVK_SEVERITY_NONE when none is given.
    ZUMIOTimeoutException(ZUMIOTimeoutException const& other);
    explicit ZUMIOTimeoutException(long code);
    ZUMIOTimeoutException(RVKSeverity severity, long code);
    explicit ZUMIOTimeoutException(char const* text);
    ZUMIOTimeoutException(RVKSeverity severity, char const* text);
    ~ZUMIOTimeoutException() override;

    // Copies the state of `other` (nothing happens for itself).
    ZUMIOTimeoutException& operator=(ZUMIOTimeoutException const& other);
    // Appends a copy of `message`; returns this exception as its own class.
    ZUMIOTimeoutException& operator<<(RVKMessageBase const& message);

    // A copy on the heap; "ZUMIOTimeoutException"; throws a copy as its own
    // class.
    RVK_THROWABLE_OPERATIONS(ZUMIOTimeoutException);
};

#endif
