#ifndef ZUM_BASE64_OUTPUT_STREAM_H
#define ZUM_BASE64_OUTPUT_STREAM_H

#include "ZUMExport.h"
#include "ZUMFilterOutputStream.h"

// An output filter that encodes what is written to it as Base64 text and
// writes the text to its downstream, optionally cut into lines with CR LF.
//
// Whole groups of three bytes are encoded as soon as they are complete, in
// blocks of at most 3072 bytes (4096 characters), straight from the caller's
// memory; only the one or two bytes of an incomplete group are kept, until
// more bytes complete it or flush() writes it padded. A flush in the middle
// of the data therefore ends the Base64 text there; later bytes start new
// groups. Without line breaks a block is one downstream write; with them,
// one write per line piece and one per CR LF. Lines run on across blocks and
// calls; a CR LF follows every full line, none follows a last partial line.
//
// The encoding buffer is allocated at the first write and kept until
// destruction. The downstream is referenced, never owned: it is neither
// flushed nor closed. close() does nothing (a pending group stays pending).
// The destructor of a wrapped stream unwraps it, which writes the pending
// group, and discards any failure of that.
class ZUM_API ZUMBase64OutputStream : public ZUMFilterOutputStream {
public:
    // An unwrapped stream; wrap() attaches the downstream.
    ZUMBase64OutputStream();
    // A stream wrapped around `out`.
    explicit ZUMBase64OutputStream(ZUMOutputStream& out);
    // Unwraps a wrapped stream (writing the pending group), discarding any
    // failure, and releases the encoding buffer.
    ~ZUMBase64OutputStream() override;

    // The same as write(bytes, count, 0).
    void write(char const* bytes, int count) override;
    // Encodes the bytes and writes every complete group; with `bFlush` set, a
    // group left incomplete by earlier calls is written padded once these
    // bytes have been offered to it. `bytes` may be null only with `bFlush`
    // set and a count of 0. Raises RVKAssertError "RVK_ASSERT(bytes ||
    // bFlush);", "RVK_ASSERT(count >= 0);" and "RVK_ASSERT(bytes || count ==
    // 0);" (null bytes with a positive count), RVKIllegalStateError
    // ("ZUMBase64OutputStream::write") when unwrapped, RVKOutOfMemoryError,
    // and ZUMIOException (message ZUMMessage::TEXT_ERROR, then the text) for a
    // text exception thrown by the downstream; other exceptions pass.
    void write(char const* bytes, int count, int bFlush);
    // Writes the pending incomplete group, padded, if there is one; otherwise
    // does nothing. The downstream is not flushed. Raises as write does.
    void flush() override;
    // Sets the line length for the blocks written from now on; 0 turns line
    // breaks off. The current column is kept.
    void lineBreak(unsigned short length);

protected:
    // Writes the encoded block to the downstream, cut into lines, and empties
    // it. Raises ZUMIOException for a text exception of the downstream.
    void writeBlock();

private:
    // Encodes 1 to 3072 bytes into m_encoded and writes the block.
    void encode(char const* bytes, int count);
    // The downstream writes of writeBlock().
    void writeLines();

    char* m_encoded;    // owned; null until the first write
    int m_line_length;  // 0: no line breaks
    int m_column;       // characters on the current line
    char m_carry[3];
    int m_carry_len;    // 0..2 between calls
};

#endif
