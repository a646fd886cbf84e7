#ifndef RVK_STD_EXCEPTION_ERROR_H
#define RVK_STD_EXCEPTION_ERROR_H

#include <exception>

#include "RVKExport.h"
#include "RVKThrowable.h"

// A standard exception caught where a core exception was expected; its text
// is the caught exception's what(), its code 0.
class RVK_API RVKStdExceptionError : public RVKThrowable {
public:
    // Takes the text of `caught`'s what().
    explicit RVKStdExceptionError(std::exception const& caught);
    RVK_THROWABLE_OPERATIONS(RVKStdExceptionError);
};

#endif
