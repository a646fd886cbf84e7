#ifndef ZUM_BLOCK_INPUT_STREAM_H
#define ZUM_BLOCK_INPUT_STREAM_H

#include "ZUMBufferedInputStream.h"
#include "ZUMExport.h"
#include "ZUMFilterInputStream.h"

// An input filter that delivers a block of a set number of bytes from the
// stream beneath it and then reports end of stream, leaving every byte behind
// the block unread. resetBlockSize() opens the next block, which starts at the
// first byte after the bytes already delivered.
//
// It reads through a buffered input stream, m_bis: one it creates itself and
// owns (the first two constructors) or one the caller lends it (the third).
// Its own upstream link is m_bis, so close() and the timeout and cancel
// operations reach m_bis and the stream beneath it.
//
// Where the stream beneath stands: bytes that m_bis read ahead beyond the
// block stay in m_bis, for the next block, for the caller's own reads of a
// lent m_bis, or, through unWrap() of an owned m_bis, back in the stream
// beneath.
//
// Ownership: the stream given to a constructor or to wrap() is referenced,
// never owned. An owned m_bis is deleted by the destructor without being
// unwrapped, so its read-ahead is lost unless unWrap() was called.
class ZUM_API ZUMBlockInputStream : public ZUMFilterInputStream {
public:
    // Owns a new, unwrapped buffered stream with refills of `size` bytes. No
    // block is open. Raises RVKIllegalArgumentError for a size below 1; an
    // allocation failure passes as the allocator reports it.
    explicit ZUMBlockInputStream(int size);
    // Owns a new buffered stream with refills of `size` bytes, wrapped around
    // `in`. No block is open. Raises as above.
    ZUMBlockInputStream(ZUMInputStream& in, int size);
    // Reads through the caller's buffered stream `bis`, as it is wrapped.
    explicit ZUMBlockInputStream(ZUMBufferedInputStream& bis);
    // Deletes an owned buffered stream (without unwrapping it).
    ~ZUMBlockInputStream() override;

    // Appends up to `count` bytes of the block to `buffer`. Returns the number
    // appended (0 when the stream beneath delivered nothing for now), or -1
    // when the block is used up or the stream beneath has ended; the block has
    // then ended and reads return -1 until resetBlockSize().
    int read(RVKByteBuffer& buffer, int count) override;
    // As above, copying to buf[0..].
    int read(char* buf, int count) override;
    // The next byte of the block as 0..255, or -1 (the block has then ended).
    int read() override;
    // True.
    RVK_bool canUnread() override;
    // Pushes `count` bytes back into m_bis as bytes of the current block;
    // after the block has ended they stay for the next block.
    void unread(char const* bytes, int count) override;
    // Wraps m_bis (owned or not) around `in`. Raises RVKIllegalStateError
    // when m_bis is already wrapped.
    void wrap(ZUMInputStream& in) override;
    // Unwraps an owned m_bis, which hands its read-ahead back to the stream
    // beneath (its failures pass unchanged); a lent m_bis is left as it is.
    void unWrap() override;

    // Opens a block of `n` bytes from the present position (0: none; -1 or
    // less: ended). Reads and skips nothing.
    virtual void resetBlockSize(int n);

protected:
    // Reads at most min(count, bytes left in the block) bytes from m_bis and
    // counts them off; -1 (the block has then ended) at the end beneath.
    virtual int readFromBlock(RVKByteBuffer& buffer, int count);
    virtual int readFromBlock(char* buf, int count);

private:
    ZUMBufferedInputStream* m_bis;  // never null after construction
    int m_owns_bis;                 // 1: m_bis was created here and is deleted here
    int m_current_block_bytes;      // > 0 left in the block, 0 used up or none, -1 ended
};

#endif
