#ifndef ZUM_BUFFERED_OUTPUT_STREAM_H
#define ZUM_BUFFERED_OUTPUT_STREAM_H

#include "RVKByteBuffer.h"
#include "ZUMExport.h"
#include "ZUMFilterOutputStream.h"

// An output filter that collects small writes in a buffer of a fixed size and
// hands them to its downstream in writes of exactly that size. Writes larger
// than the buffer go through in pieces of that size, straight from the
// caller's memory, without being copied.
//
// The downstream is referenced, never owned: this stream neither flushes,
// closes nor deletes it. flush() hands the buffered bytes on with one write
// but does not flush the downstream; close() does nothing. The destructor
// does not flush: buffered bytes are lost unless flush() or unWrap() passed
// them on first.
//
// The size must be 1 or more (a smaller one is refused at construction); a
// write with a count below 0 takes nothing.
class ZUM_API ZUMBufferedOutputStream : public ZUMFilterOutputStream {
public:
    // A stream wrapped around `downstream`, buffering `size` bytes.
    // Raises RVKIllegalArgumentError for a size below 1, RVKOutOfMemoryError.
    ZUMBufferedOutputStream(ZUMOutputStream& downstream, int size);
    // An unwrapped stream buffering `size` bytes; wrap() attaches it.
    // Raises RVKIllegalArgumentError for a size below 1, RVKOutOfMemoryError.
    explicit ZUMBufferedOutputStream(int size);
    // Releases the buffer; buffered bytes are lost.
    ~ZUMBufferedOutputStream() override;

    // Takes the bytes; the downstream sees writes of exactly the buffer size.
    // Raises RVKAssertError "RVK_ASSERT(bytes);" for null bytes (count 0
    // included) and "RVK_ASSERT(p_downstream);" when bytes must be passed on
    // while unwrapped: the bytes that filled the buffer stay buffered (a
    // later flush() after wrap() passes them on), the rest of the write is
    // not taken. Exceptions of the downstream pass unchanged.
    void write(char const* bytes, int count) override;
    // Hands the buffered bytes, if any, to the downstream in one write and
    // empties the buffer. An empty buffer calls nothing. Raises
    // RVKAssertError "RVK_ASSERT(p_downstream);" when unwrapped with bytes
    // buffered; if the downstream raises, the bytes stay buffered.
    void flush() override;

private:
    // 0 <= m_buffer.pcount() < m_buffer_size between calls, except after a
    // failed flush() (no downstream, or the downstream raised), when the full
    // buffer is kept.
    RVKByteBuffer m_buffer;
    int m_buffer_size;
};

#endif
