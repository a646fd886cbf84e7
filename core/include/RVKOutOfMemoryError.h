#ifndef RVK_OUT_OF_MEMORY_ERROR_H
#define RVK_OUT_OF_MEMORY_ERROR_H

#include "RVKThrowable.h"

// Memory could not be allocated.
RVK_DECLARE_ERROR(RVKOutOfMemoryError);

#endif
