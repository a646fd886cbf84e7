#ifndef ZUM_IO_EXCEPTION_H
#define ZUM_IO_EXCEPTION_H

#include "RVKException.h"
#include "ZUMExport.h"

// The I/O failure of the stream library: an RVKException with severity 1, a
// code (as a rule errno, or the status the raising stream names) and a
// numbered message of the catalog "rvkzummsgs", possibly followed by texts.
class ZUM_API ZUMIOException : public RVKException {
public:
    // Copies an exception; from a code or a text (copied), with severity
    // RVK_SEVERITY_NONE when none is given.
    ZUMIOException(ZUMIOException const& other);
    explicit ZUMIOException(long code);
    ZUMIOException(RVKSeverity severity, long code);
    explicit ZUMIOException(char const* text);
    ZUMIOException(RVKSeverity severity, char const* text);
    // As (severity, code), then adds `message`. A failure of adding destroys
    // the partly built exception and passes to the caller.
    ZUMIOException(RVKSeverity severity, int code, RVKMessageBase& message);
    ~ZUMIOException() override;

    // Copies the state of `other` (nothing happens for itself).
    ZUMIOException& operator=(ZUMIOException const& other);
    // Appends a copy of `message`; returns this exception as its own class.
    ZUMIOException& operator<<(RVKMessageBase const& message);

    // True when one of the messages is `number` of the catalog "rvkzummsgs"
    // (one of the ZUMMessage constants).
    bool hasMessage(unsigned long number) const;

    // A copy on the heap (method guard); "ZUMIOException"; adds the back-trace
    // entry and throws a copy as ZUMIOException.
    RVK_THROWABLE_OPERATIONS(ZUMIOException);
};

#endif
