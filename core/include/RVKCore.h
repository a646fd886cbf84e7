#ifndef RVK_CORE_H
#define RVK_CORE_H

// The whole core layer.
#include "I18NString.h"
#include "RVKAssertError.h"
#include "RVKBase64.h"
#include "RVKByteBuffer.h"
#include "RVKException.h"
#include "RVKIllegalArgumentError.h"
#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "RVKMessage.h"
#include "RVKMessageBase.h"
#include "RVKMessageSet.h"
#include "RVKMessageString.h"
#include "RVKOutOfMemoryError.h"
#include "RVKStdExceptionError.h"
#include "RVKThrowable.h"
#include "RVKTypes.h"
#include "RVKUnexpectedError.h"
#include "RVKUnsupportedOperationError.h"

#endif
