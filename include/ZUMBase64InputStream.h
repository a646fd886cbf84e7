#ifndef ZUM_BASE64_INPUT_STREAM_H
#define ZUM_BASE64_INPUT_STREAM_H

#include <cstdint>

#include "ZUMExport.h"
#include "ZUMFilterInputStream.h"

// An input filter that reads Base64 text from its upstream and delivers the
// decoded bytes. The text is taken strictly in groups of four characters,
// each decoded on its own; the characters are not inspected or filtered, so
// text with line breaks or other characters outside the alphabet is rejected
// by the decoder (RVKAssertError "RVK_ASSERT(sta == 0);"). Bytes decoded
// beyond a request are held for the next read.
//
// Groups and short reads: a group is collected with one upstream read of four
// characters; when the upstream delivers fewer (1 to 3), the rest of the
// group is asked for with further reads of the missing characters, so a
// source that delivers short reads loses no text. Reads of 0 characters in
// the middle of a group are retried, at most 1000 in a row; a source that
// gives nothing longer than that, like one that ends, leaves the group
// incomplete, and those characters are dropped. A read of 0 characters at the
// start of a group ends the present call: it returns the bytes delivered so
// far, or -1 when there are none.
//
// End of the text is -1, never an error; a truncated final group (1 to 3
// characters before the end) is dropped. There is no end state: after -1 a
// further read asks the upstream again.
//
// The upstream is referenced, never owned. canUnread() is false. unWrap()
// detaches without handing anything back: text already read is consumed and
// decoded bytes not yet delivered are dropped. The destructor of a wrapped
// stream unwraps it, discarding any failure.
class ZUM_API ZUMBase64InputStream : public ZUMFilterInputStream {
public:
    // An unwrapped stream; wrap() attaches the Base64 text.
    ZUMBase64InputStream();
    // Unwraps a wrapped stream, discarding any failure.
    ~ZUMBase64InputStream() override;

    // Appends up to `count` decoded bytes to `buf` and returns their number,
    // or -1 when none could be delivered (also for a count of 0 or less).
    // Raises as the array read does.
    int read(RVKByteBuffer& buf, int count) override;
    // Copies up to `count` decoded bytes to `buf` and returns their number; 0
    // for a count of 0 or less; -1 when the text ends before any byte. Raises
    // RVKIllegalStateError ("ZUMBase64InputStream::read") when unwrapped,
    // RVKAssertError "RVK_ASSERT(buf);" for a null `buf` with a positive count
    // and "RVK_ASSERT(sta == 0);" for a group that is not Base64, and
    // ZUMIOException (message ZUMMessage::TEXT_ERROR, then the text) for a
    // text exception thrown by the upstream; other exceptions pass.
    int read(char* buf, int count) override;
    // The next decoded byte as 0..255, or -1. Raises as the array read does.
    int read() override;
    // False: decoded bytes cannot be taken back.
    RVK_bool canUnread() override;
    // Detaches from the upstream and drops the decoded bytes held. Raises
    // RVKIllegalStateError ("ZUMBase64InputStream::unWrap") when unwrapped.
    void unWrap() override;

private:
    // Reads and decodes one group into m_decoded. Returns false when the
    // upstream delivered no complete group.
    bool fetchGroup();
    int readDecoded(char* buf, int count);

    std::uint32_t m_decoded_len;  // bytes held at the front of m_decoded, 0..3
    char m_decoded[3];
};

#endif
