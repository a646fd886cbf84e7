#ifndef RVK_UNEXPECTED_ERROR_H
#define RVK_UNEXPECTED_ERROR_H

#include "RVKThrowable.h"

// An unexpected status of a lower layer; the code is that status.
RVK_DECLARE_ERROR(RVKUnexpectedError);

#endif
