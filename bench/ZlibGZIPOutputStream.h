#ifndef ZUM_BENCH_ZLIB_GZIP_OUTPUT_STREAM_H
#define ZUM_BENCH_ZLIB_GZIP_OUTPUT_STREAM_H

#include "ZUMFilterOutputStream.h"

// The default build's gzip output stream (zlib), compiled into the fast
// deflate build's benchmark: a new one, unwrapped, and its finish().
ZUMFilterOutputStream* newZlibGZIPOutputStream();
void finishZlibGZIPOutputStream(ZUMFilterOutputStream& gzip);

#endif
