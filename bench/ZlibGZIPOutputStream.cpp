// The gzip output stream built with zlib's deflater, as the default build has
// it, under the class name ZUMGZIPZlibOutputStream: the fast deflate build's
// benchmark runs it beside the library's ISA-L stream.

#undef ZUM_FAST_DEFLATE
#define ZUMGZIPOutputStream ZUMGZIPZlibOutputStream
#include "ZUMGZIPOutputStream.cpp"
#undef ZUMGZIPOutputStream

#include "ZlibGZIPOutputStream.h"

ZUMFilterOutputStream* newZlibGZIPOutputStream()
{
    return new ZUMGZIPZlibOutputStream();
}

void finishZlibGZIPOutputStream(ZUMFilterOutputStream& gzip)
{
    static_cast<ZUMGZIPZlibOutputStream&>(gzip).finish();
}
