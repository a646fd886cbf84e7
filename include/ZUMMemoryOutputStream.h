#ifndef ZUM_MEMORY_OUTPUT_STREAM_H
#define ZUM_MEMORY_OUTPUT_STREAM_H

#include "RVKByteBuffer.h"
#include "ZUMExport.h"
#include "ZUMOutputStream.h"

// An endpoint output stream that collects every byte written to it in a
// byte buffer of its own. flush() and close() do nothing; the stream accepts
// writes until it is destroyed.
//
// Left open by this class: a negative count raises RVKAssertError
// "RVK_ASSERT(count >= 0);", and so does a null `bytes` with a positive count.
class ZUM_API ZUMMemoryOutputStream : public ZUMOutputStream {
public:
    // The two values are the byte buffer's sizing arguments (initial room,
    // growth step), converted to unsigned as they are: a negative one is a
    // huge size. Raises RVKOutOfMemoryError when the initial room cannot be
    // reserved (always for -1).
    ZUMMemoryOutputStream(int initial = 1024, int increment = 1024);
    ~ZUMMemoryOutputStream() override;

    // Appends the bytes. Raises RVKOutOfMemoryError when the buffer cannot
    // grow.
    void write(char const* bytes, int count) override;
    // Does nothing.
    void flush() override;
    // Does nothing; later writes are still appended.
    void close() override;

    // The number of bytes collected.
    int length() const { return m_buffer.pcount(); }
    // The first collected byte; valid until the next write or reset.
    char const* bytes() const { return m_buffer.str(); }
    // Empties the stream.
    void reset() { m_buffer.reset(); }

private:
    ZUMMemoryOutputStream(ZUMMemoryOutputStream const&) = delete;
    ZUMMemoryOutputStream& operator=(ZUMMemoryOutputStream const&) = delete;

    RVKByteBuffer m_buffer;
};

#endif
