#ifndef ZUM_MULTI_MEMBER_GZIP_INPUT_STREAM_H
#define ZUM_MULTI_MEMBER_GZIP_INPUT_STREAM_H

#include "ZUMExport.h"
#include "ZUMFilterInputStream.h"

namespace zum_detail {
class GzipMembers;
}

// An input filter that decodes every gzip member (RFC 1952) of its upstream,
// one after the other, and delivers their uncompressed bytes as one stream,
// then -1. This is what `gzip -d` does with concatenated members.
//
// Each member is decoded and checked by a ZUMGZIPInputStream, so it fails
// exactly as that class fails (same exception classes, codes and message
// numbers). After a member, the next one starts where the bytes 1F 8B
// follow. The end of the input, or NUL bytes up to the end (padding), ends
// the stream; any other byte after a member raises GZIP_TRAILING_GARBAGE,
// once all the members' bytes have been delivered. The first member is
// always decoded, so input that is empty or not gzip at all fails as with
// ZUMGZIPInputStream.
//
// It works over any input stream. The upstream is read directly, in requests
// of 16,384 bytes; what the decoder read beyond a member is kept in a
// pushback area of this stream (which therefore needs no buffered stream
// beneath it) and decoded or checked next.
//
// Where the upstream stands: unWrap() hands everything read ahead back with
// the upstream's unread() when its canUnread() is true, and drops it
// otherwise. After a trailing-garbage failure that is the garbage, from its
// first byte that is not NUL.
//
// Offsets: every ZUMIOException this stream raises for damaged input, the
// failures of a member included, carries after its catalog message (and
// after the text of a TEXT_ERROR) one more text message that names the
// place of the fault and ends in "at byte N", N being the 0-based offset in
// the bytes read from the upstream since wrap(); for instance "after the
// last member, at byte 17701". what() shows it.
//
// Ownership: the upstream is referenced, never closed (except by close()) or
// deleted. The decoder and the pushback area are owned; they are allocated
// by the first read, kept across unWrap() and wrap(), and freed by the
// destructor, which drops any read-ahead input.
//
// Failures: RVKAssertError for a null destination or a negative count;
// RVKIllegalStateError for a read or unWrap() while unwrapped; ZUMIOException
// (severity 1) with the messages of ZUMGZIPInputStream for a damaged member,
// and with GZIP_TRAILING_GARBAGE (code -3) for bytes after the last member.
// Once this stream has raised for damaged input, every later read raises
// again, with the same offset text: GZIP_CORRUPT (code -3) after a CRC-32,
// length or deflate data failure, the same failure otherwise. This also
// holds for input that ends inside a trailer, so no unverified member is
// ever taken for a whole one. Exceptions of the upstream pass unchanged (a
// text exception becomes a ZUMIOException with TEXT_ERROR, the text and the
// offset) and leave the stream readable, as with ZUMGZIPInputStream.
class ZUM_API ZUMMultiMemberGZIPInputStream : public ZUMFilterInputStream {
public:
    // Unwrapped.
    ZUMMultiMemberGZIPInputStream();
    // Wrapped around `in`; the first member's header is read by the first
    // read.
    explicit ZUMMultiMemberGZIPInputStream(ZUMInputStream& in);
    // Frees the decoder and the pushback area; never touches the upstream.
    // Read-ahead input is lost.
    ~ZUMMultiMemberGZIPInputStream() override;

    // Appends up to `count` uncompressed bytes to `buf`. Returns their number,
    // or -1 when none were delivered (also at the end of the stream). Raises
    // as read(char*, int); on a raise `buf` keeps its length.
    int read(RVKByteBuffer& buf, int count) override;
    // Decompresses up to `count` bytes into `buf`, crossing from one member
    // to the next. Returns their number (0 for a count of 0, and possibly
    // in the read that finds damaged deflate data), or -1 at the end of the
    // stream. Raises as listed above.
    int read(char* buf, int count) override;
    // The next uncompressed byte as 0..255, or -1 when none was delivered.
    int read() override;
    // False: bytes of this stream cannot be pushed back.
    RVK_bool canUnread() override;
    // Hands everything read ahead back to the upstream where it can take it
    // (dropping it otherwise) and detaches; the next wrap() starts a new
    // stream. Raises RVKIllegalStateError when unwrapped; an exception of
    // the upstream's canUnread() or unread() passes and leaves the stream
    // wrapped, its read-ahead kept.
    void unWrap() override;

private:
    ZUMMultiMemberGZIPInputStream(ZUMMultiMemberGZIPInputStream const&) = delete;
    ZUMMultiMemberGZIPInputStream& operator=(ZUMMultiMemberGZIPInputStream const&) = delete;

    zum_detail::GzipMembers* m_members;  // owned; null until the first read
};

#endif
