#include "ZUMGZIPOutputStream.h"

#include <zlib.h>

#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "RVKOutOfMemoryError.h"
#include "RVKUnexpectedError.h"
#include "ZUMRaise.h"

namespace {

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
            deflateEnd(m_state);
        }
        delete m_state;
    }
    delete[] m_outbuf;
}

void ZUMGZIPOutputStream::openMember()
{
    if (!m_state) {
        m_state = RVK_GUARDED_NEW(new z_stream());
    }
    if (!m_outbuf) {
        m_outbuf = RVK_GUARDED_NEW(new char[k_outbuf_size]);
    }
    if (m_deflating) {  // left over from an opening whose header write failed
        deflateEnd(m_state);
        m_deflating = 0;
    }
    m_state->zalloc = Z_NULL;
    m_state->zfree = Z_NULL;
    m_state->opaque = Z_NULL;
    m_state->next_in = Z_NULL;
    m_state->avail_in = 0;
    m_state->next_out = reinterpret_cast<Bytef*>(m_outbuf);
    m_state->avail_out = 0;
    m_err = Z_OK;
    m_crc = static_cast<std::uint32_t>(crc32(0L, Z_NULL, 0));

    m_err = deflateInit2_(m_state, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY,
                          "1.2.3", static_cast<int>(sizeof(z_stream)));
    if (m_err == Z_MEM_ERROR) {
        RVK_THROW(RVKOutOfMemoryError(0, nullptr), k_write_method);
    }
    if (m_err != Z_OK) {
        RVK_THROW(RVKUnexpectedError(m_err, nullptr), k_write_method);
    }
    m_deflating = 1;
    m_state->avail_out = k_outbuf_size;
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
    // zlib does not write through next_in; its type lacks the const.
    m_state->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes));
    m_state->avail_in = static_cast<uInt>(count);
    while (m_state->avail_in > 0) {
        if (m_state->avail_out == 0) {
            m_state->next_out = reinterpret_cast<Bytef*>(m_outbuf);
            ZUM_CONVERT_TEXT(k_write_method, p_downstream->write(m_outbuf, k_outbuf_size));
            m_state->avail_out = k_outbuf_size;
        }
        m_err = deflate(m_state, Z_NO_FLUSH);
        if (m_err != Z_OK) {
            RVK_THROW(RVKUnexpectedError(m_err, nullptr), k_write_method);
        }
    }
    if (count > 0) {
        m_crc = static_cast<std::uint32_t>(
            crc32(m_crc, reinterpret_cast<Bytef const*>(bytes), static_cast<uInt>(count)));
    }
}

void ZUMGZIPOutputStream::finish()
{
    if (!p_downstream || !m_header_written) {
        return;
    }
    m_err = do_flush(Z_FINISH);
    if (m_err == Z_MEM_ERROR) {
        RVK_THROW(RVKOutOfMemoryError(0, nullptr), k_finish_method);
    }
    if (m_err != Z_OK) {
        RVK_THROW(RVKUnexpectedError(m_err, nullptr), k_finish_method);
    }
    ZUM_CONVERT_TEXT(k_finish_method, {
        writeInt32(m_crc);
        writeInt32(m_state->total_in);
        p_downstream->flush();
    });
    deflateEnd(m_state);
    m_deflating = 0;
    m_finished = 1;
    m_header_written = 0;
}

int ZUMGZIPOutputStream::do_flush(int flush)
{
    RVK_ASSERT(m_state);
    RVK_ASSERT(p_downstream);
    m_state->avail_in = 0;
    bool done = false;
    int status = Z_OK;
    for (;;) {
        unsigned len = k_outbuf_size - m_state->avail_out;
        if (len != 0) {
            ZUM_CONVERT_TEXT(k_do_flush_method,
                             p_downstream->write(m_outbuf, static_cast<int>(len)));
            m_state->next_out = reinterpret_cast<Bytef*>(m_outbuf);
            m_state->avail_out = k_outbuf_size;
        }
        if (done) {
            break;
        }
        status = deflate(m_state, flush);
        if (len == 0 && status == Z_BUF_ERROR) {
            status = Z_OK;  // nothing was left to flush
        }
        done = m_state->avail_out != 0 || status == Z_STREAM_END;
        if (status != Z_OK && status != Z_STREAM_END) {
            break;
        }
    }
    return status == Z_STREAM_END ? Z_OK : status;
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
