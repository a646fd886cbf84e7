#ifndef ZUM_STREAMS_H
#define ZUM_STREAMS_H

// Every public header of the stream library, with the core layer's classes
// that it raises: a caller that includes this alone can catch everything the
// library raises. RVKCore.h adds the rest of the core layer (the byte
// buffer's growth, Base64 primitives, the raising macros).
#include "RVKAssertError.h"
#include "RVKException.h"
#include "RVKIllegalArgumentError.h"
#include "RVKIllegalStateError.h"
#include "RVKOutOfMemoryError.h"
#include "RVKStdExceptionError.h"
#include "RVKThrowable.h"
#include "RVKUnexpectedError.h"
#include "RVKUnsupportedOperationError.h"
#include "ZUMBase64InputStream.h"
#include "ZUMBase64OutputStream.h"
#include "ZUMBlockInputStream.h"
#include "ZUMBufferedInputStream.h"
#include "ZUMBufferedOutputStream.h"
#include "ZUMChunkedInputStream.h"
#include "ZUMChunkedOutputStream.h"
#include "ZUMFileInputStream.h"
#include "ZUMFileOutputStream.h"
#include "ZUMFilterInputStream.h"
#include "ZUMFilterOutputStream.h"
#include "ZUMGZIPInputStream.h"
#include "ZUMGZIPOutputStream.h"
#include "ZUMIOCancelException.h"
#include "ZUMIOException.h"
#include "ZUMIOTimeoutException.h"
#include "ZUMInputStream.h"
#include "ZUMInputStreamBuf.h"
#include "ZUMMemoryInputStream.h"
#include "ZUMMemoryOutputStream.h"
#include "ZUMMessage.h"
#include "ZUMMultiMemberGZIPInputStream.h"
#include "ZUMOutputStream.h"
#include "ZUMOutputStreamBuf.h"
#include "ZUMStdInputStream.h"
#include "ZUMStdOutputStream.h"
#include "ZUMStrictBase64InputStream.h"
#include "ZUMStrictChunkedInputStream.h"
#include "ZUMStripLineBreaksInputStream.h"
#include "ZUMXmlEncodeOutputStream.h"

#endif
