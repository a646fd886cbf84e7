#include "ZUMBase64InputStream.h"

#include <cstring>

#include "RVKBase64.h"
#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "ZUMRaise.h"
#include "ZUMReadSupport.h"

namespace {

char const k_read_method[] = "ZUMBase64InputStream::read";

}  // namespace

ZUMBase64InputStream::ZUMBase64InputStream() : m_decoded_len(0), m_decoded()
{
}

ZUMBase64InputStream::~ZUMBase64InputStream()
{
    if (p_upstream) {
        try {
            unWrap();
        } catch (...) {
        }
    }
}

inline bool ZUMBase64InputStream::fetchGroup()
{
    char text[4];
    int have = p_upstream->read(text, 4);
    if (have < 1) {
        return false;
    }
    int empty_reads = 0;
    while (have < 4) {
        int n = p_upstream->read(text + have, 4 - have);
        if (n < 0) {
            return false;
        }
        if (n == 0) {
            if (++empty_reads >= zum_detail::k_max_empty_reads) {
                return false;
            }
            continue;
        }
        empty_reads = 0;
        have += n;
    }
    // The group is decoded as the NUL-terminated text it forms: a NUL among
    // the four characters ends the text there (a leading NUL makes an empty
    // group, which yields no byte and so ends the read).
    unsigned length = 0;
    while (length < 4 && text[length] != '\0') {
        ++length;
    }
    unsigned decoded = 0;
    int sta = RVKBase64DecodeN(text, length, m_decoded, &decoded);
    RVK_ASSERT(sta == 0);
    m_decoded_len = decoded;
    return m_decoded_len > 0;
}

int ZUMBase64InputStream::readDecoded(char* buf, int count)
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), k_read_method);
    }
    if (count <= 0) {
        return 0;
    }
    RVK_ASSERT(buf);
    int total = 0;
    while (total < count) {
        if (m_decoded_len == 0 && !fetchGroup()) {
            break;
        }
        // At most three bytes: copied in place rather than through memcpy.
        std::uint32_t room = static_cast<std::uint32_t>(count - total);
        std::uint32_t n = room < m_decoded_len ? room : m_decoded_len;
        for (std::uint32_t i = 0; i < n; ++i) {
            buf[total + static_cast<int>(i)] = m_decoded[i];
        }
        total += static_cast<int>(n);
        for (std::uint32_t i = n; i < m_decoded_len; ++i) {
            m_decoded[i - n] = m_decoded[i];
        }
        m_decoded_len -= n;
    }
    return total > 0 ? total : -1;
}

int ZUMBase64InputStream::read(char* buf, int count)
{
    int result = 0;
    ZUM_CONVERT_TEXT(k_read_method, result = readDecoded(buf, count));
    return result;
}

int ZUMBase64InputStream::read(RVKByteBuffer& buf, int count)
{
    return zum_detail::readInto(*this, buf, count, zum_detail::k_read_into_nothing_is_end);
}

int ZUMBase64InputStream::read()
{
    char byte;
    if (read(&byte, 1) == 1) {
        return static_cast<unsigned char>(byte);
    }
    return -1;
}

RVK_bool ZUMBase64InputStream::canUnread()
{
    return 0;
}

void ZUMBase64InputStream::unWrap()
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "ZUMBase64InputStream::unWrap");
    }
    m_decoded_len = 0;
    p_upstream = nullptr;
}
