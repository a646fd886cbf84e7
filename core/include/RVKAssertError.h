#ifndef RVK_ASSERT_ERROR_H
#define RVK_ASSERT_ERROR_H

#include "RVKThrowable.h"

// A failed assertion; its text is the assertion as written, for instance "RVK_ASSERT(buf);".
RVK_DECLARE_ERROR(RVKAssertError);

#endif
