#ifndef ZUM_STRICT_BASE64_INPUT_STREAM_H
#define ZUM_STRICT_BASE64_INPUT_STREAM_H

#include <cstdint>

#include "ZUMExport.h"
#include "ZUMFilterInputStream.h"

// An input filter that reads Base64 text (RFC 4648: the standard alphabet
// A-Z a-z 0-9 + /, '=' padding) from its upstream, delivers the decoded
// bytes, and raises where the text is not Base64 instead of guessing.
//
// The text is a sequence of groups of four characters. A group is four
// alphabet characters (3 bytes), or two and "==" (1 byte), or three and "="
// (2 bytes); unused bits of a padded group are ignored. A padded group may be
// followed by further groups, each decoded in turn ("YQ==YQ==" gives "aa"),
// as coreutils' `base64 -d` does.
//
// With bSkipWhiteSpace set, CR, LF, tab and space are skipped wherever they
// stand, also inside a group, so MIME and PEM bodies decode directly.
// Without it every byte of the text must belong to a group.
//
// Faults raise ZUMIOException (severity 1, code 0) with the catalog message
// and then a text that names the byte offset in the text read from the
// upstream (counted from 0 at wrap, skipped white space included):
// - ZUMMessage::BASE64_MALFORMED for a byte outside the alphabet ("invalid
//   character '!' at byte 4"; bytes outside printable ASCII as 0x0a), and for
//   misplaced padding ("misplaced padding '=' at byte 6"): '=' in the first
//   or second place of a group, or a '=' in the third place not followed by
//   a second '=' (the offset is that of the first misplaced '=');
// - ZUMMessage::BASE64_TRUNCATED for text that ends inside a group ("2
//   characters left over from the group at byte 8", the offset of the
//   group's first character).
// Every byte of the complete groups before the fault is delivered first: the
// read that meets the fault returns the bytes it decoded before it, and the
// next read raises (at once when there are none). The stream then stays
// failed: every read raises the same again, until unWrap.
//
// How it compares with coreutils' `base64 -d`: without the flag, a text that
// `base64 -d` rejects raises here, and one it accepts gives the same bytes,
// except that `base64 -d` skips LF where this stream raises (use the flag).
// With the flag, the same holds against `base64 -di`, except that `-i` drops
// every byte outside the alphabet where this stream skips only CR, LF, tab
// and space and raises for any other.
//
// Reads: the text is read from the upstream in pieces of up to 16,384 bytes
// into a buffer of the stream's own (allocated at the first read, kept across
// unWrap and wrap, freed by the destructor) and decoded by the core layer's
// codec, straight into the caller's memory where whole groups fit; decoded
// bytes beyond a request (at most 2) are held for the next read. The upstream
// is read only while the present call has delivered nothing, so a failure of
// the upstream loses no byte, and a read returns 0 when the upstream
// delivered 0. Once the upstream has returned -1 at the end of a complete
// group, the text has ended: this read and every later one return -1 without
// reading the upstream again, until unWrap.
//
// The upstream is referenced, never owned. canUnread() is false. unWrap()
// hands the text read ahead and not yet taken into a group back to an
// upstream that can unread; the characters of a group under way and the
// decoded bytes held are dropped (all of it where the upstream cannot
// unread). The destructor frees the buffer and does nothing to the upstream.
class ZUM_API ZUMStrictBase64InputStream : public ZUMFilterInputStream {
public:
    // An unwrapped stream; wrap() attaches the Base64 text. With
    // bSkipWhiteSpace, CR, LF, tab and space in the text are skipped.
    explicit ZUMStrictBase64InputStream(int bSkipWhiteSpace = 0);
    // A stream wrapped around the Base64 text `in`.
    explicit ZUMStrictBase64InputStream(ZUMInputStream& in, int bSkipWhiteSpace = 0);
    // Frees the buffer; the upstream is not touched.
    ~ZUMStrictBase64InputStream() override;

    // Appends up to `count` decoded bytes to `buf` and returns their number
    // (0 where the array read returns 0), or -1 at the end of the text, then
    // appending nothing. Raises as the array read does.
    int read(RVKByteBuffer& buf, int count) override;
    // Copies up to `count` decoded bytes to `buf` and returns their number;
    // 0 for a count of 0 or less and when the upstream delivered 0; -1 at the
    // end of the text. Raises RVKIllegalStateError
    // ("ZUMStrictBase64InputStream::read") when unwrapped, RVKAssertError
    // "RVK_ASSERT(buf);" for a null `buf` with a positive count,
    // ZUMIOException BASE64_MALFORMED or BASE64_TRUNCATED (then the text with
    // the offset) for text that is not Base64, and ZUMIOException
    // (ZUMMessage::TEXT_ERROR, then the text) for a text exception of the
    // upstream; other exceptions of the upstream pass unchanged.
    int read(char* buf, int count) override;
    // The next decoded byte as 0..255, or -1 at the end of the text (or
    // after 1000 upstream reads of 0 bytes in a row). Raises as the array
    // read does.
    int read() override;
    // False: decoded bytes cannot be taken back.
    RVK_bool canUnread() override;
    // Detaches from the upstream, handing back the text read ahead as the
    // class comment says, and starts afresh (offset 0, not ended, not
    // failed). Raises RVKIllegalStateError
    // ("ZUMStrictBase64InputStream::unWrap") when unwrapped; a failure of
    // the upstream's unread passes, the stream then stays wrapped.
    void unWrap() override;

private:
    ZUMStrictBase64InputStream(ZUMStrictBase64InputStream const&) = delete;
    ZUMStrictBase64InputStream& operator=(ZUMStrictBase64InputStream const&) = delete;

    int readDecoded(char* buf, int count);
    // Decodes whole groups from the text buffer straight into buf[0..room);
    // returns the bytes written. Stops at a group it cannot take whole.
    int decodeRun(char* buf, int room);
    // Takes characters one at a time into the group under way, checking
    // each, and decodes the group into m_held once it is complete. Returns
    // false when the text buffer ran out first or a fault was found.
    bool takeGroup();
    // Raises the fault recorded in m_fault.
    [[noreturn]] void raiseFault() const;
    void reset();

    enum Fault : unsigned char { NONE, INVALID, PADDING, TRUNCATED };

    char* m_text;                 // text read from the upstream, allocated at the first read
    int m_pos;                    // 0 <= m_pos <= m_end: m_text[m_pos, m_end) not yet taken
    int m_end;
    std::int64_t m_text_offset;   // offset in the text of m_text[0]
    char m_group[4];              // the group under way: m_group_len characters
    std::int64_t m_group_at[4];   // and the offset of each
    int m_group_len;
    char m_held[3];               // decoded bytes not yet delivered: m_held[m_held_pos, m_held_len)
    int m_held_pos;
    int m_held_len;
    int m_skip_white_space;       // 1: CR, LF, tab and space are skipped
    bool m_ended;                 // the upstream ended after a complete group
    Fault m_fault;                // the fault met, raised by every read from then on
    unsigned char m_fault_byte;   // the byte of an INVALID fault
    int m_fault_count;            // the characters left over of a TRUNCATED fault
    std::int64_t m_fault_at;      // the offset the fault names
};

#endif
