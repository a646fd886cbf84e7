#ifndef ZUM_STRICT_CHUNKED_INPUT_STREAM_H
#define ZUM_STRICT_CHUNKED_INPUT_STREAM_H

#include <cstdint>

#include "ZUMBufferedInputStream.h"
#include "ZUMExport.h"
#include "ZUMFilterInputStream.h"

// An input filter that decodes one body in the HTTP/1.1 chunked transfer
// coding, checking its framing, and delivers the chunk data as one byte
// sequence, then -1. Where ZUMChunkedInputStream guesses, this stream raises.
//
// Accepted framing, byte for byte (RFC 9112, section 7.1):
//
//     chunk      = chunk-size [ chunk-ext ] CRLF chunk-data CRLF
//     last-chunk = 1*"0" [ chunk-ext ] CRLF
//     chunk-size = 1*HEXDIG                      (a value below 2^63)
//     chunk-ext  = *( BWS ";" BWS name [ BWS "=" BWS ( token / quoted-string ) ] )
//
// BWS is any run of spaces and tabs. A chunk-size line (CR LF included) is at
// most 4,096 bytes long. Chunks larger than an int are delivered in several
// reads. No block read returns bytes of two chunks.
//
// Failures: framing that breaks these rules (an empty line where a size is
// due, a bare LF, blanks before the CR LF, a size of 2^63 or more, an
// over-long size line, data not followed by CR LF) raises ZUMIOException
// (severity 1, code 0) with ZUMMessage::CHUNKED_MALFORMED; the end of the
// stream beneath before the last chunk (inside a size line, inside chunk
// data, before the CR LF after data) raises it with
// ZUMMessage::CHUNKED_TRUNCATED. A text message follows the catalog message
// and says what and where, as a byte offset counted from the first byte of
// the body, for instance "malformed chunk-size line at byte 57"; what() shows
// both. The fault is found at the first byte that cannot belong to a
// well-formed body; every data byte before it has been delivered. Once
// raised, every later read raises the same fault again. Failures of the
// stream beneath pass unchanged and leave the stream where it was: a read
// after them goes on where it stopped.
//
// Where the stream beneath stands: the stream ends after the CR LF of the
// last chunk. The trailer section and the final empty line are not read;
// they stay in m_bis, where the caller reads them (readline) or, with an owned
// m_bis, gets them back in the stream beneath through unWrap().
//
// It reads through a buffered input stream, m_bis: one it creates itself and
// owns (the first two constructors) or one the caller lends it (the third).
// Its own upstream link is m_bis, so close() and the timeout and cancel
// operations reach m_bis and the stream beneath it.
//
// Ownership: the stream given to a constructor or to wrap() is referenced,
// never owned. An owned m_bis is deleted by the destructor without being
// unwrapped, so its read-ahead is lost unless unWrap() was called.
class ZUM_API ZUMStrictChunkedInputStream : public ZUMFilterInputStream {
public:
    // Owns a new, unwrapped buffered stream with refills of `size` bytes.
    // Wrap it before the first read: a read without input raises
    // CHUNKED_TRUNCATED. Raises RVKIllegalArgumentError for a size below 1
    // and RVKOutOfMemoryError when the allocation fails.
    explicit ZUMStrictChunkedInputStream(int size);
    // Owns a new buffered stream with refills of `size` bytes, wrapped around
    // `in`. Raises as above.
    ZUMStrictChunkedInputStream(ZUMInputStream& in, int size);
    // Reads through the caller's buffered stream `bis`, as it is wrapped.
    explicit ZUMStrictChunkedInputStream(ZUMBufferedInputStream& bis);
    // Deletes an owned buffered stream (without unwrapping it).
    ~ZUMStrictChunkedInputStream() override;

    ZUMStrictChunkedInputStream(ZUMStrictChunkedInputStream const&) = delete;
    ZUMStrictChunkedInputStream& operator=(ZUMStrictChunkedInputStream const&) = delete;

    // Appends up to `count` bytes of the current chunk to `buffer`, reading
    // and checking the framing before it first when a chunk is done. Returns
    // the number appended, 0 when the stream beneath delivered nothing for
    // now (the framing read so far is kept), or -1 after the last chunk.
    // Raises CHUNKED_MALFORMED or CHUNKED_TRUNCATED as the class comment says.
    int read(RVKByteBuffer& buffer, int count) override;
    // As above, copying to buf[0..].
    int read(char* buf, int count) override;
    // The next data byte as 0..255, or -1 after the last chunk. Raises as the
    // block reads; a stream beneath that keeps delivering nothing counts as
    // ended (ZUMBufferedInputStream::read()).
    int read() override;
    // True.
    RVK_bool canUnread() override;
    // Pushes `count` bytes back into m_bis; they are delivered as data before
    // anything else, and the framing goes on behind them where it stood. After
    // the last chunk (or a fault) they stay in m_bis, and reads still return
    // -1 (or raise).
    void unread(char const* bytes, int count) override;
    // Wraps m_bis (owned or not) around `in`. Raises RVKIllegalStateError
    // when m_bis is already wrapped.
    void wrap(ZUMInputStream& in) override;
    // Unwraps an owned m_bis, which hands its read-ahead (the trailer, for
    // one) back to the stream beneath; a lent m_bis is left as it is. Raises
    // RVKAssertError "RVK_ASSERT(!m_chunk_left && !m_pushed_back);" while
    // chunk data or pushed-back bytes are due; the failures of
    // ZUMBufferedInputStream::unWrap pass unchanged.
    void unWrap() override;

private:
    // Reads framing bytes until chunk data is due (1), the last chunk has
    // been read (-1) or, with `blockRead`, m_bis delivered nothing (0).
    int readFraming(bool blockRead);
    // Takes one framing byte at m_offset: moves m_state on, or raises
    // CHUNKED_MALFORMED.
    void takeFramingByte(unsigned char c);
    // Reads at most `count` bytes of pushed-back bytes or chunk data.
    template <class Destination>
    int readData(Destination& dst, int count);
    template <class Destination>
    int readInto(Destination& dst, int count);
    // Records the fault and raises it; raiseFault() raises the recorded one.
    [[noreturn]] void fail(unsigned long number, char const* what, std::int64_t offset);
    [[noreturn]] void raiseFault() const;

    ZUMBufferedInputStream* m_bis;  // never null after construction
    int m_owns_bis;                 // 1: m_bis was created here and is deleted here
    int m_state;                    // where in the framing the next byte falls (see the source)
    int m_line_bytes;               // bytes of the current size line so far
    int m_pushed_back;              // bytes of unread() due before anything else
    std::int64_t m_size;            // the chunk size read so far
    std::int64_t m_chunk_left;      // > 0: data bytes of the current chunk not yet delivered
    std::int64_t m_offset;          // body bytes taken from m_bis (pushed-back bytes once)
    unsigned long m_fault_number;   // after a fault: its catalog number
    char const* m_fault_what;       // after a fault: what went wrong
    std::int64_t m_fault_offset;    // after a fault: where
};

#endif
