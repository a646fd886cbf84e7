#ifndef ZUM_CHUNKED_OUTPUT_STREAM_H
#define ZUM_CHUNKED_OUTPUT_STREAM_H

#include "RVKByteBuffer.h"
#include "ZUMExport.h"
#include "ZUMFilterOutputStream.h"

// An output filter that writes what it is given as a body in the HTTP/1.1
// chunked transfer coding. Bytes are collected in a buffer of the chunk size;
// every full chunk is written as soon as its last byte arrives, flush()
// writes the bytes collected so far as a shorter chunk, and close() writes
// them and then the last chunk ("0" CR LF) and the CR LF that ends the empty
// trailer. No chunk extensions and no trailer fields are written. A chunk
// costs three downstream writes (size line, data, CR LF); the last chunk one.
//
// Output always goes to the stream given to the constructor, which is
// referenced and never owned: it is neither flushed, closed nor deleted.
// wrap() and unWrap() change only the filter link (unWrap() writes the
// collected bytes as a chunk first); after an unWrap() and a wrap() around
// another stream, chunks still go to the constructor's stream.
//
// close() marks nothing: later writes start new chunks behind the end of the
// body, and a second close() writes a second last chunk. The destructor
// writes nothing: collected bytes are dropped and the body is left open.
//
// The chunk size must be 1 or more (a smaller one is refused at construction);
// a write with a count below 0 writes nothing.
class ZUM_API ZUMChunkedOutputStream : public ZUMFilterOutputStream {
public:
    // A stream writing chunks of `size` data bytes to `out`. Raises
    // RVKIllegalArgumentError for a size below 1, RVKOutOfMemoryError.
    ZUMChunkedOutputStream(ZUMOutputStream& out, int size);
    // Releases the buffers; writes nothing.
    ~ZUMChunkedOutputStream() override;

    // Adds the bytes to the current chunk and writes each chunk that becomes
    // full. Raises RVKAssertError "RVK_ASSERT(bytes);" for null bytes (count
    // 0 included); exceptions of the output stream pass unchanged.
    void write(char const* bytes, int count) override;
    // Writes the bytes collected so far as one chunk, if there are any.
    // Exceptions of the output stream pass unchanged.
    void flush() override;
    // Flushes, then writes the last chunk and the empty trailer. The output
    // stream is not closed. Exceptions of the output stream pass unchanged.
    void close() override;

    // Writes the size line of a chunk of `n` bytes (hexadecimal digits and
    // CR LF), and for 0 also the CR LF that ends the body, in one write.
    void writeChunkSize(int n);
    // Writes the collected bytes as one chunk (size line, data, CR LF) and
    // empties the collection; nothing when it is empty. If the data write
    // raises, the bytes stay collected.
    void writeChunk();

private:
    ZUMOutputStream& m_out;    // not owned
    RVKByteBuffer m_chunk;     // 0 <= length < m_chunk_size between calls
    RVKByteBuffer m_size_line;
    int m_chunk_size;
};

#endif
