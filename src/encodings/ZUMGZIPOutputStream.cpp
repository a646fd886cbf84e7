#include "ZUMGZIPOutputStream.h"

#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "RVKOutOfMemoryError.h"
#include "RVKUnexpectedError.h"
#include "ZUMGZIPCodecRecord.h"
#include "ZUMRaise.h"

// The raw deflate compressor and CRC-32: zlib's, or ISA-L's in the fast
// deflate build (ZUM_FAST_DEFLATE). Both keep zlib's statuses in m_err.
#if ZUM_FAST_DEFLATE
#include "ZUMGZIPIsalDeflater.h"
#else
#include "ZUMGZIPZlibDeflater.h"
#endif

namespace {

using deflater::Record;
using zum_detail::codecHandle;
using zum_detail::codecRecord;

// Compressor statuses and flush values (zlib's).
int const k_ok = 0;
int const k_stream_end = 1;
int const k_mem_error = -4;
int const k_buf_error = -5;
int const k_no_flush = 0;
int const k_finish = 4;

char const k_write_method[] = "void ZUMGZIPOutputStream::write( const char *bytes, int count )";
char const k_finish_method[] = "ZUMGZIPOutputStream::finish";
char const k_do_flush_method[] = "int ZUMGZIPOutputStream::do_flush ( int )";

// Size of the output buffer, and of every full block written during write().
int const k_outbuf_size = 16384;

}  // namespace

// ID1 ID2 CM FLG, MTIME (0: none), XFL, OS (0xFF: unknown).
unsigned char const ZUMGZIPOutputStream::hdr[10] = {0x1F, 0x8B, 0x08, 0x00, 0x00,
                                                    0x00, 0x00, 0x00, 0x00, 0xFF};

ZUMGZIPOutputStream::ZUMGZIPOutputStream()
    : m_header_written(0), m_finished(0), m_state(nullptr), m_outbuf(nullptr), m_crc(0), m_err(0),
      m_deflating(0)
{
}

ZUMGZIPOutputStream::ZUMGZIPOutputStream(ZUMOutputStream& out) : ZUMGZIPOutputStream()
{
    ZUMFilterOutputStream::wrap(out);
}

ZUMGZIPOutputStream::~ZUMGZIPOutputStream()
{
    if (m_state) {
        try {
            finish();
        } catch (...) {
            // A destructor cannot report; the member stays incomplete.
        }
        if (m_deflating) {
            deflater::end(codecRecord<Record>(m_state));
        }
        delete codecRecord<Record>(m_state);
    }
    delete[] m_outbuf;
}

void ZUMGZIPOutputStream::openMember()
{
    if (!m_state) {
        m_state = codecHandle(RVK_GUARDED_NEW(new Record()));
    }
    if (!m_outbuf) {
        m_outbuf = RVK_GUARDED_NEW(new char[k_outbuf_size]);
    }
    Record* r = codecRecord<Record>(m_state);
    if (m_deflating) {  // left over from an opening whose header write failed
        deflater::end(r);
        m_deflating = 0;
    }
    deflater::prepare(r, reinterpret_cast<unsigned char*>(m_outbuf));
    m_err = k_ok;
    m_crc = deflater::crc(0, nullptr, 0);

    m_err = deflater::begin(r);
    if (m_err == k_mem_error) {
        RVK_THROW(RVKOutOfMemoryError(0, nullptr), k_write_method);
    }
    if (m_err != k_ok) {
        RVK_THROW(RVKUnexpectedError(m_err, nullptr), k_write_method);
    }
    m_deflating = 1;
    r->avail_out = k_outbuf_size;
    ZUM_CONVERT_TEXT(k_write_method,
                     p_downstream->write(reinterpret_cast<char const*>(hdr), static_cast<int>(sizeof hdr)));
    m_header_written = 1;
}

void ZUMGZIPOutputStream::write(char const* bytes, int count)
{
    if (!p_downstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), k_write_method);
    }
    RVK_ASSERT(count >= 0);
    RVK_ASSERT(bytes || count == 0);
    if (!m_header_written) {
        openMember();
    }
    Record* r = codecRecord<Record>(m_state);
    deflater::input(r, bytes, count);
    while (r->avail_in > 0) {
        if (r->avail_out == 0) {
            r->next_out = reinterpret_cast<unsigned char*>(m_outbuf);
            ZUM_CONVERT_TEXT(k_write_method, p_downstream->write(m_outbuf, k_outbuf_size));
            r->avail_out = k_outbuf_size;
        }
        m_err = deflater::step(r, k_no_flush);
        if (m_err != k_ok) {
            RVK_THROW(RVKUnexpectedError(m_err, nullptr), k_write_method);
        }
    }
    if (count > 0) {
        m_crc = deflater::crc(m_crc, reinterpret_cast<unsigned char const*>(bytes),
                              static_cast<std::size_t>(count));
    }
}

void ZUMGZIPOutputStream::finish()
{
    if (!p_downstream || !m_header_written) {
        return;
    }
    m_err = do_flush(k_finish);
    if (m_err == k_mem_error) {
        RVK_THROW(RVKOutOfMemoryError(0, nullptr), k_finish_method);
    }
    if (m_err != k_ok) {
        RVK_THROW(RVKUnexpectedError(m_err, nullptr), k_finish_method);
    }
    Record* r = codecRecord<Record>(m_state);
    ZUM_CONVERT_TEXT(k_finish_method, {
        writeInt32(m_crc);
        writeInt32(r->total_in);
        p_downstream->flush();
    });
    deflater::end(r);
    m_deflating = 0;
    m_finished = 1;
    m_header_written = 0;
}

int ZUMGZIPOutputStream::do_flush(int flush)
{
    RVK_ASSERT(m_state);
    RVK_ASSERT(p_downstream);
    Record* r = codecRecord<Record>(m_state);
    r->avail_in = 0;
    bool done = false;
    int status = k_ok;
    for (;;) {
        unsigned len = k_outbuf_size - r->avail_out;
        if (len != 0) {
            ZUM_CONVERT_TEXT(k_do_flush_method,
                             p_downstream->write(m_outbuf, static_cast<int>(len)));
            r->next_out = reinterpret_cast<unsigned char*>(m_outbuf);
            r->avail_out = k_outbuf_size;
        }
        if (done) {
            break;
        }
        status = deflater::step(r, flush);
        if (len == 0 && status == k_buf_error) {
            status = k_ok;  // nothing was left to flush
        }
        done = r->avail_out != 0 || status == k_stream_end;
        if (status != k_ok && status != k_stream_end) {
            break;
        }
    }
    return status == k_stream_end ? k_ok : status;
}

void ZUMGZIPOutputStream::writeInt32(unsigned long value)
{
    RVK_ASSERT(p_downstream);
    char bytes[4];
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
    }
    p_downstream->write(bytes, 4);
}
