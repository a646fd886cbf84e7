#ifndef ZUM_STREAMS_H
#define ZUM_STREAMS_H

// Every public header of the stream library. Include this and RVKCore.h.
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
#include "ZUMOutputStream.h"
#include "ZUMOutputStreamBuf.h"
#include "ZUMStdInputStream.h"
#include "ZUMStdOutputStream.h"
#include "ZUMXmlEncodeOutputStream.h"

#endif
