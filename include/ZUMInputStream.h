#ifndef ZUM_INPUT_STREAM_H
#define ZUM_INPUT_STREAM_H

#include "RVKByteBuffer.h"
#include "RVKTypes.h"
#include "ZUMExport.h"

// The abstract base of every input stream.
//
// A read returns the number of bytes delivered (0 is allowed) or -1 at end of
// stream; end of stream is never an exception. The single-byte read returns a
// value from 0 to 255 or -1. A stream never owns the memory a caller hands it.
//
// Left open by this class: readFully rejects a negative count or a null
// destination with a positive count (RVKIllegalArgumentError) instead of
// spinning, and gives up with -1 after 1000 passes in a row that deliver
// nothing (no stream of this library returns 0 without end; a source that
// does so forever is treated as ended).
class ZUM_API ZUMInputStream {
public:
    virtual ~ZUMInputStream();

    // Appends up to `count` bytes to `buffer` (never clears it). Returns the
    // number appended, 0 allowed, or -1 at end of stream.
    virtual int read(RVKByteBuffer& buffer, int count) = 0;
    // Copies up to `count` bytes to buf[0..]. Returns their number, or -1 at
    // end of stream. The default reads through a local byte buffer; a null
    // `buf` or a count below 1 returns 0 without reading.
    virtual int read(char* buf, int count);
    // Appends exactly `count` bytes to `buffer` and returns `count`, or -1 if
    // the stream ends first (the bytes read so far stay appended).
    virtual int readFully(RVKByteBuffer& buffer, int count);
    // Fills buf[0..count-1] and returns `count`, or -1 if the stream ends
    // first (the bytes read so far stay in `buf`).
    virtual int readFully(char* buf, int count);
    // The next byte as 0..255, or -1 at end of stream.
    virtual int read() = 0;
    // Ends the stream's use of its source. The default does nothing.
    virtual void close();
    // Whether unread() accepts bytes back. The default: false.
    virtual RVK_bool canUnread();
    // Pushes `count` bytes back to be read next, in order. The default throws
    // the text exception "not implemented" (a char const*).
    virtual void unread(char const* bytes, int count);
    // Whether reads can be time-limited. The default: false.
    virtual RVK_bool canTimeout() const;
    // Sets the read time limit in seconds; returns whether it was set. The
    // default raises RVKUnsupportedOperationError.
    virtual RVK_bool setTimeout(int time_limit_sec);
    // The time limit in force, 0 for none. The default: 0.
    virtual int getTimeout() const;
    // Whether the stream can be cancelled. The default: false.
    virtual RVK_bool canCancel() const;
    // Sets the cancel setting; returns whether it was set. The default raises
    // RVKUnsupportedOperationError.
    virtual RVK_bool setCancel(int setting);
    // The cancel setting. The default: 0.
    virtual int getCancel() const;
    // Cancels the running operation. The default raises
    // RVKUnsupportedOperationError.
    virtual void cancel();

protected:
    ZUMInputStream() = default;
    // For the derived streams' copies; the base holds no state.
    ZUMInputStream(ZUMInputStream const&) = default;
    ZUMInputStream& operator=(ZUMInputStream const&) = default;
};

#endif
