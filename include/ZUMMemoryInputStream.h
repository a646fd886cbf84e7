#ifndef ZUM_MEMORY_INPUT_STREAM_H
#define ZUM_MEMORY_INPUT_STREAM_H

#include "ZUMExport.h"
#include "ZUMInputStream.h"

#include <cstdint>

// An endpoint input stream over bytes already in memory: a byte array
// (pointer and length), or a caller's RVKByteBuffer whose current content it
// reads as it grows. It never copies the source and never frees it; the
// caller keeps the source alive and unmoved while the stream may read it. It
// can be closed and reopened; reopening rewinds to the first byte.
// canUnread() is false, so filters standing on it cannot be unwrapped by the
// generic unWrap.
class ZUM_API ZUMMemoryInputStream : public ZUMInputStream {
public:
    // Closed, no source.
    ZUMMemoryInputStream();
    // Array mode; closed when `bytes` is null or `length` negative.
    ZUMMemoryInputStream(char const* bytes, int length);
    // Buffer mode over `buffer`, open.
    explicit ZUMMemoryInputStream(RVKByteBuffer& buffer);
    // Forgets the source; frees nothing.
    ~ZUMMemoryInputStream() override;

    // Appends up to `count` bytes; -1 at the end, when closed or for a
    // negative count.
    int read(RVKByteBuffer& buffer, int count) override;
    // Copies up to `count` bytes; -1 at the end, when closed or for a negative
    // count. Raises RVKAssertError "RVK_ASSERT(buf);" for a null `buf` first.
    int read(char* buf, int count) override;
    // The next byte as 0..255, or -1.
    int read() override;
    // Closes the stream: reads return -1 until open().
    void close() override;
    // False.
    RVK_bool canUnread() override;

    // Switches to array mode; returns whether `bytes` is not null and
    // `length` is 0 or more (the stream is open exactly then).
    virtual RVK_bool open(char const* bytes, int length);
    // Switches to buffer mode over `buffer`; returns true.
    virtual RVK_bool open(RVKByteBuffer& buffer);
    // Reopens the present source from its first byte; returns whether open.
    virtual RVK_bool open();
    // Whether reads deliver bytes.
    virtual RVK_bool isOpen();

private:
    ZUMMemoryInputStream(ZUMMemoryInputStream const&) = delete;
    ZUMMemoryInputStream& operator=(ZUMMemoryInputStream const&) = delete;

    // Bytes left to deliver, after the refresh from the buffer; 0 when none.
    bool refreshAndCheck();

    int m_open;
    RVKByteBuffer* m_byte_buffer;  // not owned; null in array mode
    char const* m_bytes;           // not owned
    std::uint32_t m_length;
    std::uint32_t m_position;      // m_position <= m_length unless the buffer shrank
};

#endif
