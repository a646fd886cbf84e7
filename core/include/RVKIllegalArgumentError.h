#ifndef RVK_ILLEGAL_ARGUMENT_ERROR_H
#define RVK_ILLEGAL_ARGUMENT_ERROR_H

#include "RVKThrowable.h"

// An argument outside the operation's contract.
RVK_DECLARE_ERROR(RVKIllegalArgumentError);

#endif
