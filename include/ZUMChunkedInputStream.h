#ifndef ZUM_CHUNKED_INPUT_STREAM_H
#define ZUM_CHUNKED_INPUT_STREAM_H

#include "RVKByteBuffer.h"
#include "ZUMBufferedInputStream.h"
#include "ZUMExport.h"
#include "ZUMFilterInputStream.h"

// An input filter that decodes one body in the HTTP/1.1 chunked transfer
// coding and delivers the chunk data as one byte sequence, then -1.
//
// It reads chunk-size lines (readline) and chunk data (read) through a
// buffered input stream, m_bis: one it creates itself and owns (the first two
// constructors) or one the caller lends it (the third). Its own upstream link
// is m_bis, so close() and the timeout and cancel operations reach m_bis and
// the stream beneath it.
//
// The decoding is lenient and reports no framing error: the chunk size is the
// value of the hexadecimal digits at the very start of a line, taken modulo
// 2^32 as a signed 32-bit number; whatever follows them (an extension after
// ";", blanks) is ignored; lines of CR LF alone are skipped. A size of 0 or
// less (the last chunk, a line without leading digits, 2^31 or more) or the
// end of the stream beneath where a size line is due ends the body for good.
// No block read returns bytes of two chunks.
//
// Where the stream beneath stands: the trailer and the final empty line that
// follow the last chunk are not read. They stay in m_bis: the caller reads
// them there (readline) or, with an owned m_bis, gets them back in the stream
// beneath through unWrap().
//
// Ownership: the stream given to a constructor or to wrap() is referenced,
// never owned. An owned m_bis is deleted by the destructor without being
// unwrapped, so its read-ahead is lost unless unWrap() was called.
class ZUM_API ZUMChunkedInputStream : public ZUMFilterInputStream {
public:
    // Owns a new buffered stream with refills of `size` bytes, wrapped
    // around `in`. Raises RVKIllegalArgumentError for a size below 1 and
    // RVKOutOfMemoryError when the allocation fails.
    ZUMChunkedInputStream(ZUMInputStream& in, int size);
    // As above, unwrapped: wrap it before the first read (a read without
    // input ends the body). Raises as above.
    explicit ZUMChunkedInputStream(int size);
    // Reads through the caller's buffered stream `bis`, as it is wrapped.
    explicit ZUMChunkedInputStream(ZUMBufferedInputStream& bis);
    // Deletes an owned buffered stream (without unwrapping it).
    ~ZUMChunkedInputStream() override;

    // Wraps m_bis (owned or not) around `in`. Raises RVKIllegalStateError
    // when m_bis is already wrapped.
    void wrap(ZUMInputStream& in) override;
    // Unwraps an owned m_bis, which hands its read-ahead (the trailer, for
    // one) back to the stream beneath; a lent m_bis is left as it is. Raises
    // RVKAssertError "RVK_ASSERT(m_current_chunk_bytes <= 0);" inside a
    // chunk; the failures of ZUMBufferedInputStream::unWrap pass unchanged.
    void unWrap() override;

    // Appends up to `count` bytes of the current chunk to `buffer`, reading
    // the next chunk-size line first when between chunks. Returns the number
    // appended, 0 when the stream beneath delivered nothing for now, or -1 at
    // the end of the body or when the stream beneath ends inside a chunk.
    int read(RVKByteBuffer& buffer, int count) override;
    // As above, copying to buf[0..].
    int read(char* buf, int count) override;
    // The next data byte as 0..255, or -1; the end of the stream beneath
    // inside a chunk ends the body.
    int read() override;
    // True.
    RVK_bool canUnread() override;
    // Pushes `count` bytes back into m_bis as data of the current chunk; after
    // the end of the body they stay in m_bis and reads still return -1.
    void unread(char const* bytes, int count) override;

private:
    // Reads the next chunk-size line, skipping lines of CR LF alone, and sets
    // m_current_chunk_bytes to its size, which it returns; -1 (the count left
    // at 0) when no line is left.
    int getNextChunk();
    // Reads at most min(count, m_current_chunk_bytes) bytes of the chunk.
    int readFromChunk(RVKByteBuffer& buffer, int count);
    int readFromChunk(char* buf, int count);
    // Between chunks, reads the next size line; true when a chunk is open.
    bool inChunk();

    ZUMBufferedInputStream* m_bis;  // never null after construction
    int m_owns_bis;                 // 1: m_bis was created here and is deleted here
    int m_current_chunk_bytes;      // > 0 left in the chunk, 0 between chunks, -1 ended
    RVKByteBuffer m_chunk_line;     // the last chunk-size line, reused for every line
};

#endif
