#ifndef ZUM_IO_CANCEL_EXCEPTION_H
#define ZUM_IO_CANCEL_EXCEPTION_H

#include "ZUMExport.h"
#include "ZUMIOException.h"

// The I/O exception for a cancelled operation, for streams that implement the
// timeout and cancel operations. No stream of this library raises it; the
// filters pass it through unchanged.
class ZUM_API ZUMIOCancelException : public ZUMIOException {
public:
    // Copies an exception; from a code or a text (copied), with severity
    // RVK_SEVERITY_NONE when none is given.
    ZUMIOCancelException(ZUMIOCancelException const& other);
    explicit ZUMIOCancelException(long code);
    ZUMIOCancelException(RVKSeverity severity, long code);
    explicit ZUMIOCancelException(char const* text);
    ZUMIOCancelException(RVKSeverity severity, char const* text);
    ~ZUMIOCancelException() override;

    // Copies the state of `other` (nothing happens for itself).
    ZUMIOCancelException& operator=(ZUMIOCancelException const& other);
    // Appends a copy of `message`; returns this exception as its own class.
    ZUMIOCancelException& operator<<(RVKMessageBase const& message);

    // A copy on the heap; "ZUMIOCancelException"; throws a copy as its own
    // class.
    RVK_THROWABLE_OPERATIONS(ZUMIOCancelException);
};

#endif
