#ifndef RVK_UNSUPPORTED_OPERATION_ERROR_H
#define RVK_UNSUPPORTED_OPERATION_ERROR_H

#include "RVKThrowable.h"

// An operation that the object does not support.
RVK_DECLARE_ERROR(RVKUnsupportedOperationError);

#endif
