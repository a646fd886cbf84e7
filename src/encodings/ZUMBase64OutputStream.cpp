#include "ZUMBase64OutputStream.h"

#include <cstring>

#include "RVKBase64.h"
#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "ZUMRaise.h"

namespace {

// Input bytes per block: a multiple of 3, encoded as 4096 characters.
int const k_block_bytes = 3072;

char const k_crlf[] = "\r\n";

}  // namespace

ZUMBase64OutputStream::ZUMBase64OutputStream()
    : m_encoded(nullptr), m_line_length(0), m_column(0), m_carry(), m_carry_len(0)
{
}

ZUMBase64OutputStream::ZUMBase64OutputStream(ZUMOutputStream& out)
    : ZUMFilterOutputStream(out), m_encoded(nullptr), m_line_length(0), m_column(0), m_carry(),
      m_carry_len(0)
{
}

ZUMBase64OutputStream::~ZUMBase64OutputStream()
{
    if (p_downstream) {
        try {
            ZUMFilterOutputStream::unWrap();
        } catch (...) {
        }
    }
    delete[] m_encoded;
}

void ZUMBase64OutputStream::write(char const* bytes, int count)
{
    write(bytes, count, 0);
}

void ZUMBase64OutputStream::encode(char const* bytes, int count)
{
    RVKBase64Encode(bytes, static_cast<unsigned>(count), m_encoded, 0);
    writeBlock();
}

void ZUMBase64OutputStream::write(char const* bytes, int count, int bFlush)
{
    RVK_ASSERT(bytes || bFlush);
    RVK_ASSERT(count >= 0);
    RVK_ASSERT(bytes || count == 0);
    if (!p_downstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "ZUMBase64OutputStream::write");
    }
    if (!m_encoded) {
        m_encoded = RVK_GUARDED_NEW(new char[RVKBase64EncodedSize(k_block_bytes, 0)]);
        m_encoded[0] = '\0';
    }
    if (m_carry_len > 0) {
        while (m_carry_len < 3 && count > 0) {
            m_carry[m_carry_len++] = *bytes++;
            --count;
        }
        if (m_carry_len == 3 || bFlush) {
            encode(m_carry, m_carry_len);
            m_carry_len = 0;
        }
    }
    while (count > 0) {
        if (count > k_block_bytes) {
            encode(bytes, k_block_bytes);
            bytes += k_block_bytes;
            count -= k_block_bytes;
            continue;
        }
        // The last block: whole groups only; the one or two bytes behind
        // them wait in m_carry.
        int r = count % 3;
        int taken = count - r;
        std::memcpy(m_carry, bytes + taken, static_cast<std::size_t>(r));
        m_carry_len = r;
        if (taken > 0) {
            encode(bytes, taken);
        }
        count = 0;
    }
}

void ZUMBase64OutputStream::flush()
{
    if (m_carry_len > 0) {
        write(nullptr, 0, 1);
    }
}

void ZUMBase64OutputStream::lineBreak(unsigned short length)
{
    m_line_length = length;
}

void ZUMBase64OutputStream::writeBlock()
{
    if (!m_encoded) {
        return;
    }
    ZUM_CONVERT_TEXT("ZUMBase64OutputStream::flush", writeLines());
    m_encoded[0] = '\0';
}

void ZUMBase64OutputStream::writeLines()
{
    char const* text = m_encoded;
    unsigned left = static_cast<unsigned>(std::strlen(text));
    if (m_line_length <= 0) {
        if (left > 0) {
            p_downstream->write(text, static_cast<int>(left));
        }
        return;
    }
    while (left > 0) {
        // A line shortened below the current column takes the rest of the
        // block, then ends.
        unsigned piece = static_cast<unsigned>(m_line_length - m_column);
        if (piece > left) {
            piece = left;
        }
        p_downstream->write(text, static_cast<int>(piece));
        text += piece;
        left -= piece;
        m_column += static_cast<int>(piece);
        if (m_column >= m_line_length) {
            p_downstream->write(k_crlf, 2);
            m_column = 0;
        }
    }
}
