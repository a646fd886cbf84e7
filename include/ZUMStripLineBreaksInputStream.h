#ifndef ZUM_STRIP_LINE_BREAKS_INPUT_STREAM_H
#define ZUM_STRIP_LINE_BREAKS_INPUT_STREAM_H

#include "ZUMExport.h"
#include "ZUMFilterInputStream.h"

// An input filter that delivers its upstream's bytes without CR and LF (and,
// when built with bAllWhiteSpace, without any ASCII white space: space, tab,
// CR, LF, vertical tab and form feed). Every other byte passes unchanged and
// in order.
//
// Its use is text that was cut into lines, such as Base64 written with line
// breaks (ZUMBase64OutputStream::lineBreak), MIME bodies or PEM blocks: a
// ZUMBase64InputStream wrapped around this filter decodes them, since the
// Base64 stream itself hands every four bytes to the decoder as they come.
//
// A read asks the upstream for at most `count` bytes, straight into the
// caller's memory, and removes the dropped bytes there: it keeps no buffer
// and allocates nothing. When every byte of an upstream read was dropped it
// reads again, as long as the upstream delivers bytes (each pass consumes
// input), so a block read returns 0 only where the upstream did: a run of
// line breaks, however long, never looks like the end of the text to a
// reader above (the Base64 stream takes 0 at the start of a group as the
// end of its present call).
//
// The upstream is referenced, never owned. close() and the timeout and
// cancel operations reach the upstream (the filter base). canUnread() is
// false. The filter holds no read-ahead, so unWrap() detaches from any
// upstream, whether that can unread or not.
class ZUM_API ZUMStripLineBreaksInputStream : public ZUMFilterInputStream {
public:
    // An unwrapped filter; wrap() attaches the upstream.
    explicit ZUMStripLineBreaksInputStream(int bAllWhiteSpace = 0);
    // A filter wrapped around `upstream`.
    explicit ZUMStripLineBreaksInputStream(ZUMInputStream& upstream, int bAllWhiteSpace = 0);
    // Does nothing to the upstream.
    ~ZUMStripLineBreaksInputStream() override;

    // Appends up to `count` kept bytes to `buffer`. Returns their number (0
    // when the upstream delivered 0, and for a count of 0 or less), or -1 at
    // the end of the upstream. Raises as the array read does.
    int read(RVKByteBuffer& buffer, int count) override;
    // Copies up to `count` kept bytes to buf[0..] and returns their number,
    // or -1 at the end of the upstream; 0 when the upstream delivered 0, and
    // for a count of 0 or less. Raises
    // RVKIllegalStateError ("ZUMStripLineBreaksInputStream::read") when
    // unwrapped and RVKAssertError "RVK_ASSERT(buf);" for a null `buf` with a
    // positive count; exceptions of the upstream pass unchanged.
    int read(char* buf, int count) override;
    // The next kept byte as 0..255, or -1 at the end of the upstream (or
    // after 1000 upstream reads of 0 bytes in a row).
    int read() override;
    // Detaches from the upstream. Raises RVKIllegalStateError
    // ("ZUMStripLineBreaksInputStream::unWrap") when unwrapped.
    void unWrap() override;

private:
    ZUMStripLineBreaksInputStream(ZUMStripLineBreaksInputStream const&) = delete;
    ZUMStripLineBreaksInputStream& operator=(ZUMStripLineBreaksInputStream const&) = delete;

    // Removes the dropped bytes from buf[0..n) and returns how many are kept.
    int strip(char* buf, int n) const;

    int m_all_white_space;  // 1: every ASCII white space byte is dropped, 0: CR and LF only
};

#endif
