#ifndef ZUM_GZIP_OUTPUT_STREAM_H
#define ZUM_GZIP_OUTPUT_STREAM_H

#include <cstdint>

#include "ZUMExport.h"
#include "ZUMFilterOutputStream.h"

struct z_stream_s;

// An output filter that compresses the bytes written to it into gzip members
// (RFC 1952) written to its downstream.
//
// A member is opened by the first write(): it writes the fixed 10-byte header
// 1F 8B 08 00 00000000 00 FF (deflate, no flags, no time stamp, OS unknown)
// in one downstream write. zlib's raw deflater (default level, 32 KB window,
// memory level 8, default strategy) compresses into one 16,384-byte buffer
// that goes to the downstream in one write each time it is full. finish()
// writes the rest of the deflate data, then the CRC-32 and the length (four
// bytes each, least significant first, one write each) and flushes the
// downstream. A stream that is never written to writes nothing at all.
//
// A library built with ZUM_FAST_DEFLATE (x86-64) compresses with ISA-L's
// streaming deflate (raw deflate, 32 KB window, ISA-L's level 2) and computes
// the CRC-32 with ISA-L instead: other deflate data (larger than zlib's at
// the default level, see the README), with the same header, trailer, writes
// to the downstream, states, failures and class layout. ISA-L has no statuses
// of zlib's: the stream gives the ones zlib would (0, 1 at the end of the
// data, -5 when no progress is possible); do_flush() takes zlib's flush
// values (1, 2 and 5 make a sync flush, 3 a full flush, 4 finishes) and
// returns -2 for other values, as zlib does, and for any failure of ISA-L's
// own. Its state (about 410 KB, the level's work buffer included) is
// allocated with the record at the first write, once.
//
// flush() and close() are the empty defaults: they push out no compressed
// data and do not end the member. unWrap() detaches without finishing; a
// later wrap() continues the same member on the new downstream.
//
// Ownership: the downstream is referenced, never closed or deleted. The zlib
// record and the output buffer are owned; they are allocated by the first
// write, reused for every member, and freed by the destructor. The destructor
// finishes an open member while wrapped (ignoring any failure) and never
// unwraps; unwrapped, the buffered compressed data is discarded.
//
// Failures: RVKIllegalStateError for a write while unwrapped; RVKAssertError
// for a negative count or null bytes with a positive count;
// RVKOutOfMemoryError or RVKUnexpectedError (code: the zlib status) when zlib
// fails; a text exception of the downstream becomes a ZUMIOException (severity
// 1, code errno) with the message ZUMMessage::TEXT_ERROR and the text. Other
// exceptions of the downstream pass unchanged.
//
// Choices of this class:
// - A write after finish() opens a new member, and the next finish() (or the
//   destructor) completes it, so one stream can write several members one
//   after the other; gzip readers take them as one concatenated content.
// - A write that fails part-way leaves the member damaged (the compressor
//   has taken part of the bytes, the CRC-32 none of them); the stream does
//   not repair it. A later write first writes again the whole buffer whose
//   downstream write failed.
class ZUM_API ZUMGZIPOutputStream : public ZUMFilterOutputStream {
public:
    // Unwrapped; nothing allocated.
    ZUMGZIPOutputStream();
    // Wrapped around `out`; nothing is written before the first write().
    explicit ZUMGZIPOutputStream(ZUMOutputStream& out);
    // Finishes an open member while wrapped (failures ignored), ends the
    // compressor and frees the buffers. Never throws.
    ~ZUMGZIPOutputStream() override;

    // Compresses `count` bytes. The first write of a member writes the header
    // first (also for a count of 0). The downstream receives only whole
    // 16,384-byte blocks here. Raises as listed above.
    void write(char const* bytes, int count) override;

    // Completes the open member (remaining deflate data, CRC-32, length) and
    // flushes the downstream. Does nothing while unwrapped or when no member
    // is open. Does not close the downstream. Raises RVKOutOfMemoryError or
    // RVKUnexpectedError when the compressor fails (the member stays open),
    // and the text conversion as write().
    virtual void finish();

    // Runs the compressor with the zlib flush value `flush` until it has
    // nothing more to give, writing all output to the downstream. Returns 0
    // or a zlib error status. Raises RVKAssertError "RVK_ASSERT(m_state);"
    // before the first write and "RVK_ASSERT(p_downstream);" while unwrapped.
    int do_flush(int flush);
    // Writes `value` modulo 2^32 to the downstream as four bytes, least
    // significant first, in one write. Raises RVKAssertError
    // "RVK_ASSERT(p_downstream);" while unwrapped.
    void writeInt32(unsigned long value);

private:
    ZUMGZIPOutputStream(ZUMGZIPOutputStream const&) = delete;
    ZUMGZIPOutputStream& operator=(ZUMGZIPOutputStream const&) = delete;

    // Allocates on first use, (re)initialises the deflater and writes the
    // header.
    void openMember();

    // The header of every member.
    static unsigned char const hdr[10];

    int m_header_written;  // 1 while a member is open (its header written)
    int m_finished;        // 1 once finish() has completed a member
    z_stream_s* m_state;   // owned; next_out/avail_out: free part of m_outbuf
    char* m_outbuf;        // owned, 16,384 bytes; [0, next_out) waits for the downstream
    std::uint32_t m_crc;   // CRC-32 of the uncompressed bytes of this member
    int m_err;             // status of the last zlib call
    int m_deflating;       // 1 from a successful deflateInit2_ to deflateEnd
};

#endif
