#ifndef RVK_ILLEGAL_STATE_ERROR_H
#define RVK_ILLEGAL_STATE_ERROR_H

#include "RVKThrowable.h"

// An operation called in a state that does not allow it.
RVK_DECLARE_ERROR(RVKIllegalStateError);

#endif
