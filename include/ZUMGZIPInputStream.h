#ifndef ZUM_GZIP_INPUT_STREAM_H
#define ZUM_GZIP_INPUT_STREAM_H

#include <cstdint>

#include "ZUMExport.h"
#include "ZUMFilterInputStream.h"

struct z_stream_s;

// An input filter that decodes one gzip member (RFC 1952) read from its
// upstream and delivers the uncompressed bytes.
//
// The header is parsed and checked by this class (ID1 ID2 = 1F 8B, CM = 8, no
// reserved flag bits; FEXTRA, FNAME, FCOMMENT and FHCRC are skipped, the
// header CRC16 is not checked), the deflate data goes to zlib's raw inflater,
// and the CRC-32 and ISIZE trailer is checked against the delivered bytes.
// Exactly one member is decoded: after its trailer every read returns -1.
//
// A library built with ZUM_FAST_INFLATE (x86-64) inflates and computes the
// CRC-32 with ISA-L instead: the same bytes, the same requests to the
// upstream, the same hand-back and failures, and the same class layout. On
// damaged deflate data the read at which the failure shows, and for some
// damaged Huffman codes the failure reported, can differ (see the README).
//
// The header is read by the first read after construction, after wrap(), or
// after a header that failed its checks. Compressed input is read from the
// upstream in requests of 16,384 bytes into one buffer; the upstream is asked
// again only when that buffer is empty. An upstream read that returns 0 or -1
// is taken as the end of the input.
//
// Where the upstream stands: bytes that follow the member and already sit in
// the input buffer stay there until unWrap(), which hands them back with the
// upstream's unread() when its canUnread() is true (and drops them
// otherwise). After unWrap() at the end of a member the upstream therefore
// delivers the byte right after ISIZE next.
//
// Ownership: the upstream is referenced, never closed (except by close()) or
// deleted. The zlib record and the input buffer are owned; they are allocated
// by the first read, kept across unWrap() and wrap(), and freed by the
// destructor, which also drops any read-ahead input.
//
// Failures: RVKAssertError for a null destination or a negative count;
// RVKIllegalStateError for a read or unWrap() while unwrapped; ZUMIOException
// (severity 1) for damaged input, with these messages (ZUMMessage::...):
//   GZIP_TRUNCATED       input ended inside the header (code 0), inside the
//                        deflate data (code -5), or inside the trailer (code 1);
//   GZIP_NOT_GZIP        not gzip (code -3);
//   GZIP_UNSUPPORTED     unsupported method or reserved flags (code -3);
//   GZIP_CRC_MISMATCH, GZIP_LENGTH_MISMATCH  the trailer's checks (code -3);
//   GZIP_CORRUPT         every read after a CRC, length or deflate data error;
//   TEXT_ERROR           followed by the text, for a text exception from the
//                        upstream (code errno).
// A header that fails its checks leaves the stream awaiting a new header from
// the input that follows. Exceptions of the upstream pass unchanged; such an
// exception ends the read in which it happens, the stream can be read again,
// and bytes that the read had already decoded are not delivered (the CRC-32
// check then reports the member as damaged). One that comes while the
// trailer is being read (a text exception included) leaves the member ended:
// later reads return -1, as after input that ends inside the trailer. Such a
// member is NOT verified: its CRC-32 and length were never compared, so a
// caller that needs verified data treats that exception as a failure of the
// member.
//
// Choices of this class:
// - A member whose input ends inside the deflate data: the read that finds
//   the end returns the bytes decoded up to there (possibly 0), and every
//   later read raises the truncation failure GZIP_TRUNCATED with code -5, so
//   readFully() ends with that exception instead of spinning.
// - Once the input has ended, inflate is still run as long as it makes
//   progress, so output it holds back is delivered before the end is judged.
// - Any other unexpected inflate status ends decoding the same way: the read
//   returns what it decoded, and every later read raises RVKOutOfMemoryError
//   for a status of -4 and RVKUnexpectedError with the status as its code
//   otherwise.
// - A negative count raises RVKAssertError "RVK_ASSERT(count >= 0);".
class ZUM_API ZUMGZIPInputStream : public ZUMFilterInputStream {
public:
    // Unwrapped.
    ZUMGZIPInputStream();
    // Wrapped around `in`; the header is read by the first read.
    explicit ZUMGZIPInputStream(ZUMInputStream& in);
    // Ends the decompressor and frees the buffers; never touches the
    // upstream. Read-ahead input is lost.
    ~ZUMGZIPInputStream() override;

    // Appends up to `count` uncompressed bytes to `buf`. Returns their number,
    // or -1 when none were delivered (also at the end of the member). Raises
    // as read(char*, int).
    int read(RVKByteBuffer& buf, int count) override;
    // Decompresses up to `count` bytes into `buf`. Returns their number (0 is
    // possible, for instance for a count of 0, which still reads the header),
    // or -1 once the member has ended. Raises as listed above.
    int read(char* buf, int count) override;
    // The next uncompressed byte as 0..255, or -1 when none was delivered.
    int read() override;
    // False: the stream keeps no pushback of its own.
    RVK_bool canUnread() override;
    // Hands the unconsumed input back to the upstream where it can take it,
    // ends the decompressor and detaches. Raises RVKIllegalStateError when
    // unwrapped; an exception of the upstream's canUnread() or unread()
    // passes and leaves the stream wrapped.
    void unWrap() override;

    // The next byte of compressed input as 0..255, or -1 at the end of the
    // input. Raises RVKAssertError "RVK_ASSERT(m_state);" before the first
    // read.
    int getByte();
    // The next four bytes of compressed input, little-endian. The value is
    // meaningless when the input ends meanwhile; callers test for the end
    // afterwards.
    std::uint32_t getUint32();

private:
    ZUMGZIPInputStream(ZUMGZIPInputStream const&) = delete;
    ZUMGZIPInputStream& operator=(ZUMGZIPInputStream const&) = delete;

    // Refills the input buffer from the upstream; sets m_eof when it
    // delivers nothing.
    void refill();
    // Allocates on first use, (re)initialises the inflater and reads and
    // checks the member header.
    void readHeader();
    // Reads and checks the trailer after the deflate data has ended.
    void checkTrailer();
    // The body of read(char*, int) from the upstream check on.
    int decode(char* buf, int count);

    int m_header_read;       // 1 once the header has been accepted
    z_stream_s* m_state;     // owned; next_in/avail_in: unconsumed part of m_inbuf
    char* m_inbuf;           // owned, 16,384 bytes
    std::uint32_t m_crc;     // CRC-32 of the bytes delivered from this member
    int m_eof;               // 1 once the upstream has ended during this member
    int m_err;               // 0 decoding, 1 ended, -3 failed, else a zlib status
    int m_inflating;         // 1 from a successful inflateInit2_ to inflateEnd
};

#endif
