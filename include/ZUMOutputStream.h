#ifndef ZUM_OUTPUT_STREAM_H
#define ZUM_OUTPUT_STREAM_H

#include "ZUMExport.h"

// The abstract base of every output stream.
//
// write takes all bytes, in order, or raises; there is no partial write. The
// caller's bytes stay the caller's: a stream copies what it needs.
class ZUM_API ZUMOutputStream {
public:
    virtual ~ZUMOutputStream();

    // Takes all `count` bytes of `bytes`, or raises.
    virtual void write(char const* bytes, int count) = 0;
    // Passes on whatever the stream holds back. The default does nothing.
    virtual void flush();
    // Ends the use of the destination. The default does nothing (it does not
    // flush).
    virtual void close();

protected:
    ZUMOutputStream() = default;
    // For the derived streams' copies; the base holds no state.
    ZUMOutputStream(ZUMOutputStream const&) = default;
    ZUMOutputStream& operator=(ZUMOutputStream const&) = default;
};

#endif
