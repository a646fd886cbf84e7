#include "ZUMGZIPInputStream.h"

#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "RVKOutOfMemoryError.h"
#include "RVKUnexpectedError.h"
#include "ZUMGZIPCodecRecord.h"
#include "ZUMRaise.h"
#include "ZUMReadSupport.h"

// The raw deflate decoder and CRC-32: zlib's, or ISA-L's in the fast inflate
// build (ZUM_FAST_INFLATE). Both keep zlib's statuses in m_err.
#if ZUM_FAST_INFLATE
#include "ZUMGZIPIsalInflater.h"
#else
#include "ZUMGZIPZlibInflater.h"
#endif

namespace {

using inflater::Record;
using zum_detail::codecHandle;
using zum_detail::codecRecord;

// Decoder statuses kept in m_err (zlib's values).
int const k_ok = 0;
int const k_stream_end = 1;
int const k_data_error = -3;
int const k_mem_error = -4;
int const k_buf_error = -5;

// Compression method of the header (CM): deflate.
int const k_deflated = 8;

char const k_read_method[] = "ZUMGZIPInputStream::read";
char const k_unwrap_method[] = "void ZUMGZIPInputStream::unWrap()";

// Size of the input buffer, and of every request to the upstream.
int const k_inbuf_size = 16384;

// Header flag bits (FLG).
int const k_fhcrc = 0x02;
int const k_fextra = 0x04;
int const k_fname = 0x08;
int const k_fcomment = 0x10;
int const k_freserved = 0xE0;

// The start of the input area of the input buffer.
unsigned char* inputArea(char* inbuf)
{
    return reinterpret_cast<unsigned char*>(inbuf) + inflater::k_headroom;
}

}  // namespace

ZUMGZIPInputStream::ZUMGZIPInputStream()
    : m_header_read(0), m_state(nullptr), m_inbuf(nullptr), m_crc(0), m_eof(0), m_err(0),
      m_inflating(0)
{
}

ZUMGZIPInputStream::ZUMGZIPInputStream(ZUMInputStream& in) : ZUMGZIPInputStream()
{
    ZUMFilterInputStream::wrap(in);
}

ZUMGZIPInputStream::~ZUMGZIPInputStream()
{
    if (m_state) {
        if (m_inflating) {
            inflater::end(codecRecord<Record>(m_state));
        }
        delete codecRecord<Record>(m_state);
    }
    delete[] m_inbuf;
}

int ZUMGZIPInputStream::getByte()
{
    RVK_ASSERT(m_state);
    if (m_eof) {
        return -1;
    }
    Record* r = codecRecord<Record>(m_state);
    if (r->avail_in == 0) {
        refill();
        if (m_eof) {
            return -1;
        }
    }
    --r->avail_in;
    return *r->next_in++;
}

std::uint32_t ZUMGZIPInputStream::getUint32()
{
    std::uint32_t value = static_cast<std::uint32_t>(getByte());
    value += static_cast<std::uint32_t>(getByte()) << 8;
    value += static_cast<std::uint32_t>(getByte()) << 16;
    value += static_cast<std::uint32_t>(getByte()) << 24;
    return value;
}

void ZUMGZIPInputStream::refill()
{
    // avail_in stays 0 until the upstream has delivered, so a refill that
    // throws leaves the stream readable again.
    Record* r = codecRecord<Record>(m_state);
    int n = inflater::takeEnded(r)
                ? 0
                : p_upstream->read(reinterpret_cast<char*>(inputArea(m_inbuf)), k_inbuf_size);
    r->next_in = inputArea(m_inbuf);
    if (n < 1) {
        m_eof = 1;
        r->avail_in = 0;
    } else {
        r->avail_in = static_cast<unsigned>(n);
    }
}

void ZUMGZIPInputStream::readHeader()
{
    if (!m_state) {
        m_state = codecHandle(RVK_GUARDED_NEW(new Record()));
    }
    if (!m_inbuf) {
        m_inbuf = RVK_GUARDED_NEW(new char[inflater::k_headroom + k_inbuf_size]);
    }
    Record* r = codecRecord<Record>(m_state);
    if (m_inflating) {
        inflater::end(r);
        m_inflating = 0;
    }
    inflater::prepare(r, inputArea(m_inbuf));
    m_err = k_ok;
    m_eof = 0;
    m_crc = inflater::crc(0, nullptr, 0);

    m_err = inflater::begin(r);
    if (m_err == k_mem_error) {
        RVK_THROW(RVKOutOfMemoryError(0, nullptr), k_read_method);
    }
    if (m_err != k_ok) {
        RVK_THROW(RVKUnexpectedError(m_err, nullptr), k_read_method);
    }
    m_inflating = 1;

    // The whole header is consumed before any check runs.
    int id1 = getByte();
    int id2 = getByte();
    int cm = getByte();
    int flg = getByte();
    for (int i = 0; i < 6; ++i) {  // MTIME, XFL, OS
        getByte();
    }
    if (flg & k_fextra) {
        int xlen = getByte();
        xlen += getByte() * 256;
        while (xlen > 0) {
            --xlen;
            if (getByte() == -1) {
                break;
            }
        }
    }
    if (flg & k_fname) {
        for (int c = getByte(); c != 0 && c != -1; c = getByte()) {
        }
    }
    if (flg & k_fcomment) {
        for (int c = getByte(); c != 0 && c != -1; c = getByte()) {
        }
    }
    if (flg & k_fhcrc) {  // CRC16 of the header, not checked
        getByte();
        getByte();
    }

    if (m_eof) {
        ZUM_RAISE_IO(k_read_method, m_err, ZUMMessage::GZIP_TRUNCATED);
    }
    if (id1 != 0x1F || id2 != 0x8B) {
        m_err = k_data_error;
        ZUM_RAISE_IO(k_read_method, m_err, ZUMMessage::GZIP_NOT_GZIP);
    }
    if (cm != k_deflated || (flg & k_freserved)) {
        m_err = k_data_error;
        ZUM_RAISE_IO(k_read_method, m_err, ZUMMessage::GZIP_UNSUPPORTED);
    }
    m_header_read = 1;
}

void ZUMGZIPInputStream::checkTrailer()
{
    // m_err is already Z_STREAM_END: an exception of the upstream while the
    // trailer is read leaves the member ended, unverified, as does input that
    // ends inside the trailer.
    std::uint32_t stored_crc = getUint32();
    std::uint32_t stored_length = getUint32();
    if (m_eof) {
        ZUM_RAISE_IO(k_read_method, m_err, ZUMMessage::GZIP_TRUNCATED);
    }
    if (stored_crc != m_crc) {
        m_err = k_data_error;
        ZUM_RAISE_IO(k_read_method, m_err, ZUMMessage::GZIP_CRC_MISMATCH);
    }
    if (stored_length != static_cast<std::uint32_t>(codecRecord<Record>(m_state)->total_out)) {
        m_err = k_data_error;
        ZUM_RAISE_IO(k_read_method, m_err, ZUMMessage::GZIP_LENGTH_MISMATCH);
    }
}

int ZUMGZIPInputStream::decode(char* buf, int count)
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), k_read_method);
    }
    if (!m_header_read) {
        readHeader();
    }
    switch (m_err) {
    case k_ok:
        break;
    case k_stream_end:
        return -1;
    case k_data_error:
        ZUM_RAISE_IO(k_read_method, m_err, ZUMMessage::GZIP_CORRUPT);
    case k_buf_error:  // the input ended inside the deflate data
        ZUM_RAISE_IO(k_read_method, m_err, ZUMMessage::GZIP_TRUNCATED);
    case k_mem_error:
        RVK_THROW(RVKOutOfMemoryError(0, nullptr), k_read_method);
    default:
        RVK_THROW(RVKUnexpectedError(m_err, nullptr), k_read_method);
    }

    Record* r = codecRecord<Record>(m_state);
    unsigned char* out = reinterpret_cast<unsigned char*>(buf);
    r->next_out = out;
    r->avail_out = static_cast<unsigned>(count);
    unsigned char* crc_start = out;
    // Ends: the caller's buffer is full, the member has ended, or inflate
    // reported a failure. Once the input has ended inflate runs with no input
    // until it stops making progress (Z_BUF_ERROR), so the loop is finite.
    while (r->avail_out > 0 && m_err == k_ok) {
        if (r->avail_in == 0 && !m_eof) {
            refill();
        }
        m_err = inflater::step(r, m_eof);
        if (m_err == k_stream_end) {
            m_crc = inflater::crc(m_crc, crc_start,
                                  static_cast<std::size_t>(r->next_out - crc_start));
            crc_start = r->next_out;
            checkTrailer();
        }
    }
    m_crc = inflater::crc(m_crc, crc_start, static_cast<std::size_t>(r->next_out - crc_start));
    return count - static_cast<int>(r->avail_out);
}

int ZUMGZIPInputStream::read(char* buf, int count)
{
    RVK_ASSERT(buf);
    RVK_ASSERT(count >= 0);
    int delivered = 0;
    ZUM_CONVERT_TEXT(k_read_method, delivered = decode(buf, count));
    return delivered;
}

int ZUMGZIPInputStream::read(RVKByteBuffer& buf, int count)
{
    RVK_ASSERT(count >= 0);
    // Bytes decoded before a failure (a CRC-32 mismatch, say) are not delivered.
    return zum_detail::readInto(*this, buf, count,
                                zum_detail::k_read_into_nothing_is_end
                                    | zum_detail::k_read_into_rollback);
}

int ZUMGZIPInputStream::read()
{
    unsigned char byte = 0;
    if (read(reinterpret_cast<char*>(&byte), 1) == 1) {
        return byte;
    }
    return -1;
}

RVK_bool ZUMGZIPInputStream::canUnread()
{
    return 0;
}

void ZUMGZIPInputStream::unWrap()
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), k_unwrap_method);
    }
    if (m_state) {
        Record* r = codecRecord<Record>(m_state);
        if (m_inbuf) {
            if (r->avail_in > 0 && p_upstream->canUnread()) {
                p_upstream->unread(reinterpret_cast<char const*>(r->next_in),
                                   static_cast<int>(r->avail_in));
            }
            r->next_in = inputArea(m_inbuf);
            r->avail_in = 0;
        }
        if (m_inflating) {
            inflater::end(r);
            m_inflating = 0;
        }
    }
    m_header_read = 0;
    m_eof = 0;
    m_err = 0;
    p_upstream = nullptr;
}
