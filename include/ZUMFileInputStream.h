#ifndef ZUM_FILE_INPUT_STREAM_H
#define ZUM_FILE_INPUT_STREAM_H

#include <cstdio>

#include "ZUMExport.h"
#include "ZUMInputStream.h"

// An endpoint input stream over a stdio file, always read in binary mode. It
// reads a FILE* handed to it, a descriptor it wraps with fdopen, or a file it
// opens by path.
//
// Ownership: the stream owns every stdio file it holds, however it got it.
// close(), every open/tryOpen and the destructor fclose it; a FILE* handed in
// becomes the stream's and the caller must not close it too, and closing the
// stdio file made from a descriptor closes the descriptor. A descriptor that
// fdopen refuses stays the caller's.
//
// Errors: open() never raises for a file that cannot be opened; it returns
// false and keeps the error number, and every later read raises it as a
// ZUMIOException (catalog message ZUMMessage::FILE_OPEN_FAILED) until the
// stream is reopened or closed. tryOpen() raises that exception at once. A
// failing read raises a ZUMIOException with message
// ZUMMessage::FILE_READ_FAILED and leaves the stdio error indicator set, so
// the next read raises again. Both exceptions carry the error number as their
// code and, after the catalog message, the file name ("" unless opened by
// path) and the system's text for the error number as two text messages.
//
// The error text is strerror's, without the placeholder that the system
// library makes up for numbers it does not know ("Unknown error N"): for
// those, and for negative numbers, the text is empty. Whether a number is
// known is asked of strerrordesc_np where the C library has it, else read
// from that placeholder's prefix.
//
// End of file is -1, again on every read after it. canUnread() is false, so
// a filter standing on this stream cannot be unwrapped by the generic unWrap.
class ZUM_API ZUMFileInputStream : public ZUMInputStream {
public:
    // Closed, no error.
    ZUMFileInputStream();
    // Open(file): a null file leaves the stream in the failed-open state.
    explicit ZUMFileInputStream(FILE* file);
    // Open(fd): a failed fdopen leaves the stream in the failed-open state.
    explicit ZUMFileInputStream(int fd);
    // Open(path): a file that does not open leaves the stream in the
    // failed-open state. Raises RVKOutOfMemoryError only, when the path copy
    // cannot be allocated.
    explicit ZUMFileInputStream(const char* path);
    // Closes the file; never raises.
    ~ZUMFileInputStream() override;

    // Appends up to `count` bytes to `buffer`; returns their number, or -1 at
    // end of file. Raises as read(char*, int) does, and RVKOutOfMemoryError
    // when the buffer cannot grow.
    int read(RVKByteBuffer& buffer, int count) override;
    // Reads up to `count` bytes into buf[0..]; returns their number, or -1 at
    // end of file. Raises the remembered open error (ZUMIOException),
    // RVKIllegalStateError when closed, RVKIllegalArgumentError for a null
    // `buf` or a count below 1, ZUMIOException for a read error.
    int read(char* buf, int count) override;
    // The next byte as 0..255, or -1 at end of file. Raises as
    // read(char*, int) does, except for the argument check.
    int read() override;
    // Closes the file, forgets the open error and the file name. Never raises;
    // does nothing on a closed stream.
    void close() override;
    // False.
    RVK_bool canUnread() override;

    // Closes, then takes over `file`. Returns whether open; a null file
    // records the error 22 (EINVAL).
    virtual RVK_bool open(FILE* file);
    // Closes, then wraps `fd` with fdopen(fd, "rb"). Returns whether open; on
    // failure records fdopen's errno.
    virtual RVK_bool open(int fd);
    // Closes, then opens `path` with fopen(path, "rb"), keeping a copy of the
    // path for error messages. Returns whether open; on failure records
    // fopen's errno, and 22 (EINVAL) for a null path. Raises
    // RVKOutOfMemoryError only.
    virtual RVK_bool open(const char* path);
    // As open(file), but raises: RVKIllegalArgumentError for a null file,
    // before closing anything.
    virtual void tryOpen(FILE* file);
    // As open(fd), but raises the open error (ZUMIOException, message
    // ZUMMessage::FILE_OPEN_FAILED) when fdopen fails.
    virtual void tryOpen(int fd);
    // As open(path), but raises: RVKIllegalArgumentError for a null path,
    // before closing anything; the open error (ZUMIOException, message
    // ZUMMessage::FILE_OPEN_FAILED) when the file does not open.
    virtual void tryOpen(const char* path);
    // Whether a file is open.
    virtual RVK_bool isOpen();

private:
    ZUMFileInputStream(ZUMFileInputStream const&) = delete;
    ZUMFileInputStream& operator=(ZUMFileInputStream const&) = delete;

    // Raises the remembered open error, or RVKIllegalStateError when closed.
    void checkReadable(const char* method);

    char* m_filename;   // owned copy of the path given to open; null otherwise
    FILE* m_file;       // owned; null when closed or after a failed open
    int m_open_errno;   // error of the last failed open, 0 otherwise;
                        // non-zero implies m_file is null
};

#endif
