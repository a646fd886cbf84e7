#ifndef ZUM_OUTPUT_STREAM_BUF_H
#define ZUM_OUTPUT_STREAM_BUF_H

#include <streambuf>
#include <vector>

#include "ZUMExport.h"
#include "ZUMOutputStream.h"

// A std::streambuf that writes to any ZUMOutputStream, so that std::ostream
// and operator<< work on a chain:
//
//     ZUMOutputStreamBuf buf(gzip);
//     std::ostream out(&buf);
//     out << "text " << 42 << std::flush;
//
// The stream is referenced, never owned or closed. Small writes are collected
// in a buffer of the given size and passed on when it is full; writes at least
// that large go straight through. sync() (std::flush) passes the collected
// bytes on and then calls the stream's flush(). An exception of the stream
// passes out; a std::ostream turns it into badbit, or rethrows it when its
// exceptions() mask has badbit. The destructor passes on what is collected
// (without calling the stream's flush) and swallows any exception.
class ZUM_API ZUMOutputStreamBuf : public std::streambuf {
public:
    // Writes to `stream`, collecting up to `bufferSize` bytes. Raises
    // RVKIllegalArgumentError for a size below 1.
    explicit ZUMOutputStreamBuf(ZUMOutputStream& stream, int bufferSize = 16384);
    ~ZUMOutputStreamBuf() override;

protected:
    // The std::streambuf operations: pass the put area and a byte on to the
    // stream, write large pieces straight through, and flush.
    int_type overflow(int_type c) override;
    std::streamsize xsputn(char_type const* s, std::streamsize n) override;
    int sync() override;

private:
    ZUMOutputStreamBuf(ZUMOutputStreamBuf const&) = delete;
    ZUMOutputStreamBuf& operator=(ZUMOutputStreamBuf const&) = delete;

    // Writes the collected bytes to the stream and empties the buffer.
    void drain();

    ZUMOutputStream& m_stream;
    std::vector<char> m_buffer;
};

#endif
