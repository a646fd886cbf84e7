#ifndef ZUM_BUFFERED_INPUT_STREAM_H
#define ZUM_BUFFERED_INPUT_STREAM_H

#include "RVKByteBuffer.h"
#include "ZUMExport.h"
#include "ZUMFilterInputStream.h"

// An input filter that reads its upstream in refills of a fixed size, hands
// out bytes from that buffer, takes any number of bytes back (unread), reads
// CR LF terminated lines (readline) and, when unwrapped, hands every byte it
// read ahead but did not deliver back to the upstream with its unread().
//
// Ownership: the buffer is owned; the upstream is referenced, never closed
// (except by close()) or deleted. The destructor does not unwrap: bytes still
// buffered are lost unless unWrap() was called first.
//
// Without an upstream the stream is valid: it delivers what its buffer holds
// (bytes pushed in with unread, for one) and then reports end of stream.
//
// Where the stream beneath stands: after unWrap() it holds, in front of its
// own bytes, exactly the bytes this stream had read ahead and not delivered.
//
// Chosen behaviour where a refill delivers no bytes without end of stream:
// - the block reads return 0;
// - read() refills again, up to 1000 times in a row, and then takes the
//   stream as ended and returns -1 (it never returns a byte that was not
//   read);
// - readline() reads again, up to 1000 times in a row, and then returns 0
//   with nothing appended; the start of the line stays buffered for the next
//   call.
// The refill size must be 1 or more: a smaller one is refused at
// construction (a refill of 0 bytes would never make progress).
// A negative count to a read or to unread() is treated as 0.
class ZUM_API ZUMBufferedInputStream : public ZUMFilterInputStream {
public:
    // An unwrapped stream whose refills ask for `size` bytes. Raises
    // RVKIllegalArgumentError for a size below 1, RVKOutOfMemoryError.
    explicit ZUMBufferedInputStream(int size);
    // A stream wrapped around `upstream`, with refills of `size` bytes.
    // Raises as above.
    ZUMBufferedInputStream(ZUMInputStream& upstream, int size);
    // Releases the buffer; does not unwrap, nor touch the upstream.
    ~ZUMBufferedInputStream() override;

    // Appends up to `count` buffered bytes to `buffer`. Only when nothing is
    // buffered does it refill (one upstream read of the refill size) first.
    // Returns the number appended (0 when the refill delivered nothing) or
    // -1 at end of stream. Upstream exceptions pass unchanged.
    int read(RVKByteBuffer& buffer, int count) override;
    // As above, copying to buf[0..]. Raises RVKAssertError "RVK_ASSERT(buf);"
    // for a null `buf` when bytes are to be copied, and for a count of 0; at
    // end of stream -1 comes first.
    int read(char* buf, int count) override;
    // The next byte as 0..255, or -1 at end of stream.
    int read() override;
    // True.
    RVK_bool canUnread() override;
    // Puts `count` bytes in front of the bytes not yet delivered; the last
    // unread bytes are read first, in their order. Done in place when no more
    // bytes are pushed back than were consumed since the last refill. Raises
    // RVKAssertError "RVK_ASSERT(bytes);" for a null `bytes`.
    void unread(char const* bytes, int count) override;
    // Hands the buffered bytes back to the upstream (one unread call) and
    // detaches from it. Raises RVKIllegalStateError when unwrapped; throws the
    // text exception "can't unwrap" when bytes are buffered and the upstream's
    // canUnread() is false. Nothing changes when it fails.
    void unWrap() override;
    // Appends the next line, CR LF included, to `line` (never cleared) and
    // returns its length; an empty line returns 2. Only CR LF ends a line, and
    // a CR LF behind a NUL byte is not seen. At the upstream's end the rest is
    // delivered as a last line without terminator; -1 when nothing is left.
    // While unwrapped, returns -1 unless a whole line is buffered.
    virtual int readline(RVKByteBuffer& line);

    // The number of bytes buffered and not yet delivered.
    int buffered() const { return m_buffer.pcount() - m_read_pos; }

private:
    // Delivers the n bytes at m_read_pos (n <= buffered(), not checked).
    void takeFromBuffer(RVKByteBuffer& dst, int n);
    void takeFromBuffer(char* buf, int n);
    // Delivers min(n, buffered()) bytes; 0 without touching anything when
    // nothing is buffered and n is positive.
    int readFromBuffer(RVKByteBuffer& dst, int n);
    int readFromBuffer(char* buf, int n);
    template <class Destination>
    int readFromBufferInto(Destination& dst, int n);
    // Empties the buffer and reads one refill; -1 without upstream or at the
    // upstream's end of stream.
    int readMore();
    // The block read of either destination form.
    template <class Destination>
    int readInto(Destination& dst, int count);
    // Offset from m_read_pos of the first CR LF among the buffered bytes,
    // searching from offset `from` and stopping at a NUL byte; -1 if none. On
    // -1, `from` is moved to where the next search may resume.
    int findLineEnd(int& from) const;

    RVKByteBuffer m_buffer;  // bytes [0, m_read_pos) delivered, [m_read_pos, pcount()) buffered
    int m_buffer_size;       // the refill size
    int m_read_pos;          // 0 <= m_read_pos <= m_buffer.pcount()
};

#endif
