#ifndef ZUM_STD_INPUT_STREAM_H
#define ZUM_STD_INPUT_STREAM_H

#include <istream>

#include "ZUMExport.h"
#include "ZUMInputStream.h"

// An endpoint input stream over a std::istream (referenced, never owned or
// closed), so that any filter of the library can stand on a standard stream. A
// read returns what one read of the istream delivered, -1 once it has reached
// its end. A stream whose badbit is set raises ZUMIOException (code errno,
// message ZUMMessage::FILE_READ_FAILED, the read failure). canUnread() is
// false.
class ZUM_API ZUMStdInputStream : public ZUMInputStream {
public:
    // Reads `stream`.
    explicit ZUMStdInputStream(std::istream& stream);
    ~ZUMStdInputStream() override;

    // Appends up to `count` bytes; -1 at the end. Raises ZUMIOException.
    int read(RVKByteBuffer& buffer, int count) override;
    // Copies up to `count` bytes; 0 for a null `buf` or a count below 1, -1
    // at the end. Raises ZUMIOException.
    int read(char* buf, int count) override;
    // The next byte as 0..255, or -1. Raises ZUMIOException.
    int read() override;

private:
    ZUMStdInputStream(ZUMStdInputStream const&) = delete;
    ZUMStdInputStream& operator=(ZUMStdInputStream const&) = delete;

    std::istream& m_stream;
};

#endif
