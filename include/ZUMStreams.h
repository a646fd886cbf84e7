#ifndef ZUM_STREAMS_H
#define ZUM_STREAMS_H

// Every public header of the stream library. Include this and RVKCore.h.
#include "ZUMFileInputStream.h"
#include "ZUMFileOutputStream.h"
#include "ZUMFilterInputStream.h"
#include "ZUMFilterOutputStream.h"
#include "ZUMIOCancelException.h"
#include "ZUMIOException.h"
#include "ZUMIOTimeoutException.h"
#include "ZUMInputStream.h"
#include "ZUMInputStreamBuf.h"
#include "ZUMMemoryInputStream.h"
#include "ZUMMemoryOutputStream.h"
#include "ZUMMessage.h"
#include "ZUMOutputStream.h"
#include "ZUMOutputStreamBuf.h"
#include "ZUMStdInputStream.h"
#include "ZUMStdOutputStream.h"

#endif
