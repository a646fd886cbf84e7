// The gzip input stream built with zlib's inflater, as the default build has
// it, under the class name ZUMGZIPZlibInputStream: the fast inflate build's
// fuzz target and benchmark run it beside the library's ISA-L stream.

#undef ZUM_FAST_INFLATE
#define ZUMGZIPInputStream ZUMGZIPZlibInputStream
#include "ZUMGZIPInputStream.cpp"
#undef ZUMGZIPInputStream

ZUMFilterInputStream* newZlibGZIPInputStream();

ZUMFilterInputStream* newZlibGZIPInputStream()
{
    return new ZUMGZIPZlibInputStream();
}
