#include "ZUMStrictBase64InputStream.h"

#include <cstdio>

#include "RVKBase64.h"
#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "ZUMRaise.h"

namespace {

// Bytes of text asked of the upstream at a time, and the size of the buffer.
int const k_text_size = 16384;

// Upstream reads of 0 bytes in a row after which read() gives up.
int const k_max_empty_reads = 1000;

enum : unsigned char { OTHER, ALPHABET, PAD, BLANK };

// The class of every byte value: alphabet, padding, a blank the flag skips
// (CR, LF, tab, space), anything else.
struct ByteClasses {
    unsigned char of[256];
    constexpr ByteClasses() : of()
    {
        for (unsigned c = 'A'; c <= 'Z'; ++c) {
            of[c] = of[c - 'A' + 'a'] = ALPHABET;
        }
        for (unsigned c = '0'; c <= '9'; ++c) {
            of[c] = ALPHABET;
        }
        of[static_cast<unsigned char>('+')] = of[static_cast<unsigned char>('/')] = ALPHABET;
        of[static_cast<unsigned char>('=')] = PAD;
        of[static_cast<unsigned char>('\r')] = of[static_cast<unsigned char>('\n')] = BLANK;
        of[static_cast<unsigned char>('\t')] = of[static_cast<unsigned char>(' ')] = BLANK;
    }
};
constexpr ByteClasses k_classes;

inline unsigned char classOf(char c)
{
    return k_classes.of[static_cast<unsigned char>(c)];
}

}  // namespace

ZUMStrictBase64InputStream::ZUMStrictBase64InputStream(int bSkipWhiteSpace)
    : m_text(nullptr), m_pos(0), m_end(0), m_text_offset(0), m_group(), m_group_at(),
      m_group_len(0), m_held(), m_held_pos(0), m_held_len(0),
      m_skip_white_space(bSkipWhiteSpace ? 1 : 0), m_ended(false), m_fault(NONE),
      m_fault_byte(0), m_fault_count(0), m_fault_at(0)
{
}

ZUMStrictBase64InputStream::ZUMStrictBase64InputStream(ZUMInputStream& in, int bSkipWhiteSpace)
    : ZUMStrictBase64InputStream(bSkipWhiteSpace)
{
    wrap(in);
}

ZUMStrictBase64InputStream::~ZUMStrictBase64InputStream()
{
    delete[] m_text;
}

void ZUMStrictBase64InputStream::reset()
{
    m_pos = m_end = 0;
    m_text_offset = 0;
    m_group_len = 0;
    m_held_pos = m_held_len = 0;
    m_ended = false;
    m_fault = NONE;
}

int ZUMStrictBase64InputStream::decodeRun(char* buf, int room)
{
    int groups = (m_end - m_pos) / 4;
    if (groups > room / 3) {
        groups = room / 3;
    }
    char const* text = m_text + m_pos;
    if (m_skip_white_space) {
        // Only the groups before the first blank.
        int const limit = groups * 4;
        int i = 0;
        while (i < limit && classOf(text[i]) != BLANK) {
            ++i;
        }
        groups = i / 4;
    }
    if (groups == 0) {
        return 0;
    }
    unsigned decoded = 0;
    if (RVKBase64DecodeN(text, static_cast<unsigned>(groups) * 4u, buf, &decoded) != 0) {
        // `decoded` counts the groups before the one the codec refused; that
        // one is left to takeGroup(), which says why (or takes a padded group
        // that others follow).
        groups = static_cast<int>(decoded / 3u);
    }
    m_pos += groups * 4;
    return static_cast<int>(decoded);
}

bool ZUMStrictBase64InputStream::takeGroup()
{
    while (m_pos < m_end) {
        char const c = m_text[m_pos];
        std::int64_t const at = m_text_offset + m_pos;
        ++m_pos;
        unsigned char const kind = classOf(c);
        if (kind == BLANK && m_skip_white_space) {
            continue;
        }
        if (kind == ALPHABET) {
            if (m_group_len == 3 && m_group[2] == '=') {
                m_fault = PADDING;  // "xx=" must end in a second '='
                m_fault_at = m_group_at[2];
                return false;
            }
        } else if (kind != PAD) {
            m_fault = INVALID;
            m_fault_byte = static_cast<unsigned char>(c);
            m_fault_at = at;
            return false;
        } else if (m_group_len < 2) {
            m_fault = PADDING;
            m_fault_at = at;
            return false;
        }
        m_group[m_group_len] = c;
        m_group_at[m_group_len] = at;
        if (++m_group_len == 4) {
            unsigned decoded = 0;
            int sta = RVKBase64DecodeN(m_group, 4, m_held, &decoded);
            RVK_ASSERT(sta == 0);
            m_group_len = 0;
            m_held_pos = 0;
            m_held_len = static_cast<int>(decoded);
            return true;
        }
    }
    return false;
}

void ZUMStrictBase64InputStream::raiseFault() const
{
    char text[96];
    long long const at = static_cast<long long>(m_fault_at);
    unsigned long number = ZUMMessage::BASE64_MALFORMED;
    if (m_fault == INVALID) {
        if (m_fault_byte >= 0x20 && m_fault_byte < 0x7f) {
            std::snprintf(text, sizeof text, "invalid character '%c' at byte %lld", m_fault_byte, at);
        } else {
            std::snprintf(text, sizeof text, "invalid character 0x%02x at byte %lld", m_fault_byte, at);
        }
    } else if (m_fault == PADDING) {
        std::snprintf(text, sizeof text, "misplaced padding '=' at byte %lld", at);
    } else {
        number = ZUMMessage::BASE64_TRUNCATED;
        std::snprintf(text, sizeof text, "%d character%s left over from the group at byte %lld",
                      m_fault_count, m_fault_count == 1 ? "" : "s", at);
    }
    ZUMIOException raised(static_cast<RVKSeverity>(1), 0L);
    raised << ZUMMessage(number);
    raised << RVKMessageString(I18NString(text, nullptr, -1, nullptr, nullptr));
    raised.hurl(RVK_HERE, "ZUMStrictBase64InputStream::read", "RVK_THROW");
}

int ZUMStrictBase64InputStream::readDecoded(char* buf, int count)
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "ZUMStrictBase64InputStream::read");
    }
    if (count <= 0) {
        return 0;
    }
    RVK_ASSERT(buf);
    int total = 0;
    // Each pass delivers bytes, takes text, or reads the upstream (only while
    // nothing has been delivered), so the loop ends with the request or the
    // input.
    for (;;) {
        while (m_held_pos < m_held_len && total < count) {
            buf[total++] = m_held[m_held_pos++];
        }
        if (total == count) {
            return total;
        }
        if (m_fault != NONE) {
            if (total > 0) {
                return total;  // the bytes before the fault first
            }
            raiseFault();
        }
        if (m_ended) {
            return total > 0 ? total : -1;
        }
        if (m_pos == m_end) {
            if (total > 0) {
                return total;
            }
            if (!m_text) {
                m_text = RVK_GUARDED_NEW(new char[k_text_size]);
            }
            int n = p_upstream->read(m_text, k_text_size);
            if (n <= 0) {
                if (n < 0 && m_group_len > 0) {
                    m_fault = TRUNCATED;
                    m_fault_count = m_group_len;
                    m_fault_at = m_group_at[0];
                    raiseFault();
                }
                m_ended = n < 0;
                return n < 0 ? -1 : 0;
            }
            m_text_offset += m_end;
            m_pos = 0;
            m_end = n;
        }
        if (m_group_len == 0 && count - total >= 3) {
            total += decodeRun(buf + total, count - total);
            if (m_skip_white_space) {
                // Blanks between groups (line breaks) are skipped here, so
                // the next group is decoded whole again.
                int const from = m_pos;
                while (m_pos < m_end && classOf(m_text[m_pos]) == BLANK) {
                    ++m_pos;
                }
                if (m_pos != from) {
                    continue;
                }
            }
        }
        if (total < count) {
            takeGroup();
        }
    }
}

int ZUMStrictBase64InputStream::read(char* buf, int count)
{
    int result = 0;
    ZUM_CONVERT_TEXT("ZUMStrictBase64InputStream::read", result = readDecoded(buf, count));
    return result;
}

int ZUMStrictBase64InputStream::read(RVKByteBuffer& buf, int count)
{
    if (count <= 0) {
        return read(static_cast<char*>(nullptr), 0);  // the unwrapped check, then 0
    }
    unsigned const length = static_cast<unsigned>(buf.pcount());
    buf.reserve(length + static_cast<unsigned>(count));
    int n = read(buf.str() + length, count);
    if (n > 0) {
        buf.setLength(length + static_cast<unsigned>(n));
    }
    return n;
}

int ZUMStrictBase64InputStream::read()
{
    char byte = 0;
    for (int empty = 0; empty < k_max_empty_reads; ++empty) {
        int n = read(&byte, 1);
        if (n != 0) {
            return n == 1 ? static_cast<unsigned char>(byte) : -1;
        }
    }
    return -1;
}

RVK_bool ZUMStrictBase64InputStream::canUnread()
{
    return 0;
}

void ZUMStrictBase64InputStream::unWrap()
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "ZUMStrictBase64InputStream::unWrap");
    }
    if (m_pos < m_end && p_upstream->canUnread()) {
        p_upstream->unread(m_text + m_pos, m_end - m_pos);
    }
    reset();
    p_upstream = nullptr;
}
