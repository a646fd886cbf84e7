#ifndef ZUM_FILE_OUTPUT_STREAM_H
#define ZUM_FILE_OUTPUT_STREAM_H

#include <cstdio>

#include "ZUMExport.h"
#include "ZUMOutputStream.h"

// An endpoint output stream over a stdio file, opened by path in binary mode
// or handed in by the caller.
//
// Ownership: a file opened by path is the stream's and is closed by close()
// or the destructor. A FILE* handed in is closed by the destructor only when
// the stream was told it owns it; close() closes it in any case.
//
// Errors: a file that does not open by path raises from the constructor;
// nothing is reported after that. The results of fwrite, fflush and fclose
// are not looked at, so a caller learns nothing through this class about
// whether its bytes reached the file. Writes without a file, with null bytes
// or with a count below 1 do nothing.
//
// The stream is never reopened: a new file needs a new object.
class ZUM_API ZUMFileOutputStream : public ZUMOutputStream {
public:
    // Opens `path` for writing, created or truncated: mode "wb" when `flag`
    // is 0, else "wb+a" (which glibc reads as "wb+": the file is truncated
    // too, and open for reading as well). A null path gives a stream without
    // a file. Raises RVKAssertError with the text "The file <path, at most
    // 128 bytes> does not open successfully for writing. [<system error
    // text>]" when the file does not open.
    ZUMFileOutputStream(const char* path, int flag);
    // Writes to `file` (null allowed: no file); the destructor closes it when
    // `owns` is non-zero. Checks and opens nothing.
    ZUMFileOutputStream(FILE* file, int owns);
    // Closes the file when the stream owns it and it is still open.
    ~ZUMFileOutputStream() override;

    // Hands the bytes to the stdio file; failures are not reported.
    void write(const char* bytes, int count) override;
    // Flushes the stdio file; failures are not reported.
    void flush() override;
    // Closes the file, owned or not; later writes and flushes do nothing.
    // Failures are not reported.
    void close() override;

private:
    ZUMFileOutputStream(ZUMFileOutputStream const&) = delete;
    ZUMFileOutputStream& operator=(ZUMFileOutputStream const&) = delete;

    FILE* m_file;     // the file written to, or null
    int m_owns_file;  // non-zero: the destructor closes m_file
};

#endif
