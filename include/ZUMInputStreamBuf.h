#ifndef ZUM_INPUT_STREAM_BUF_H
#define ZUM_INPUT_STREAM_BUF_H

#include <streambuf>
#include <vector>

#include "ZUMExport.h"
#include "ZUMInputStream.h"

// A std::streambuf that reads from any ZUMInputStream, so that std::istream,
// std::getline and operator>> work on a chain:
//
//     ZUMInputStreamBuf buf(gunzip);
//     std::istream in(&buf);
//     std::getline(in, line);
//
// The stream is referenced, never owned or closed. The streambuf reads ahead
// in reads of its buffer size; bytes it holds are lost to the stream beneath
// when it is destroyed, unless giveBack() hands them to a stream that can
// unread. An exception of the stream beneath passes out of underflow(); a
// std::istream turns it into badbit, or rethrows it when its exceptions()
// mask has badbit. A stream that delivers 0 bytes 1000 times in a row counts
// as ended.
class ZUM_API ZUMInputStreamBuf : public std::streambuf {
public:
    // Reads `stream` in reads of `bufferSize` bytes. Raises
    // RVKIllegalArgumentError for a size below 1.
    explicit ZUMInputStreamBuf(ZUMInputStream& stream, int bufferSize = 16384);
    ~ZUMInputStreamBuf() override;

    // Hands the bytes read ahead and not yet delivered back to the stream
    // with unread(). Returns their number, or -1 when the stream cannot
    // unread (the bytes then stay here). Raises what unread() raises.
    int giveBack();

protected:
    // The std::streambuf operations: refill the get area from the stream,
    // read past it straight into the caller's memory, and count what is held.
    int_type underflow() override;
    std::streamsize xsgetn(char_type* s, std::streamsize n) override;
    std::streamsize showmanyc() override;

private:
    ZUMInputStreamBuf(ZUMInputStreamBuf const&) = delete;
    ZUMInputStreamBuf& operator=(ZUMInputStreamBuf const&) = delete;

    // One read of the stream into `dst`, retried while it delivers 0 bytes;
    // returns the byte count, or 0 at end of stream.
    int fill(char* dst, int count);

    ZUMInputStream& m_stream;
    std::vector<char> m_buffer;
    bool m_at_end;
};

#endif
