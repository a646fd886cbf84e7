#include "ZUMStrictChunkedInputStream.h"

#include <climits>
#include <cstdio>
#include <cstring>

#include "RVKMacros.h"
#include "RVKMessageString.h"
#include "ZUMIOException.h"
#include "ZUMMessage.h"
#include "ZUMRaise.h"

namespace {

// Where the next byte of the body falls. The states up to SIZE_CR are those
// of a chunk-size line; their names follow the grammar in the header.
enum State {
    SIZE_FIRST,   // the first hexadecimal digit of a size is due
    SIZE,         // in the size: digits, blanks, ";" or CR
    BWS_SEMI,     // blanks after the size or a value: blanks or ";"
    NAME_FIRST,   // after ";": blanks, then the first byte of a name
    NAME,         // in an extension name: tchar, blanks, ";", "=" or CR
    BWS_NAME,     // blanks after a name: blanks, ";" or "="
    VALUE_FIRST,  // after "=": blanks, then a token or a quoted string
    TOKEN,        // in a token value: tchar, blanks, ";" or CR
    QUOTED,       // inside a quoted string
    QUOTED_PAIR,  // after a backslash inside a quoted string
    QUOTED_END,   // after the closing quote: blanks, ";" or CR
    SIZE_CR,      // the CR that ends a size line came; LF is due
    LINE_DONE,    // (not kept) the size line is complete
    FAULT,        // (not kept) the byte cannot stand here
    DATA_CR,      // the chunk's data is delivered; its CR is due
    DATA_LF,      // then its LF
    IN_DATA,      // chunk data is due (m_chunk_left > 0)
    ENDED,        // the last chunk has been read: final
    FAILED,       // a fault was raised: final, raised again on every read
};

int const k_max_line = 4096;                        // bytes of a size line, CR LF included
std::int64_t const k_max_before_digit = INT64_MAX >> 4;  // a larger size times 16 reaches 2^63

bool isBlank(unsigned char c)
{
    return c == ' ' || c == '\t';
}

int hexValue(unsigned char c)
{
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

// A byte of a token: a letter, a digit or one of !#$%&'*+-.^_`|~.
bool isTchar(unsigned char c)
{
    static char const others[] = "!#$%&'*+-.^_`|~";
    return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') ||
           (c != '\0' && std::strchr(others, c));
}

// A byte that may stand in a quoted string after a backslash: blank, visible
// or above 0x7F. Unescaped, the same except the quote and the backslash.
bool isQuotable(unsigned char c)
{
    return isBlank(c) || (c >= 0x21 && c != 0x7F);
}

// The state after byte `c` of a size line in state `state`: a size-line
// state, LINE_DONE or FAULT.
int nextInSizeLine(int state, unsigned char c)
{
    switch (state) {
    case SIZE_FIRST:
        return hexValue(c) >= 0 ? SIZE : FAULT;
    case SIZE:
        return hexValue(c) >= 0 ? SIZE : isBlank(c) ? BWS_SEMI : c == ';' ? NAME_FIRST : c == '\r' ? SIZE_CR : FAULT;
    case BWS_SEMI:
        return isBlank(c) ? BWS_SEMI : c == ';' ? NAME_FIRST : FAULT;
    case NAME_FIRST:
        return isBlank(c) ? NAME_FIRST : isTchar(c) ? NAME : FAULT;
    case NAME:
        return isTchar(c) ? NAME : isBlank(c) ? BWS_NAME : c == ';' ? NAME_FIRST : c == '=' ? VALUE_FIRST
             : c == '\r' ? SIZE_CR : FAULT;
    case BWS_NAME:
        return isBlank(c) ? BWS_NAME : c == ';' ? NAME_FIRST : c == '=' ? VALUE_FIRST : FAULT;
    case VALUE_FIRST:
        return isBlank(c) ? VALUE_FIRST : isTchar(c) ? TOKEN : c == '"' ? QUOTED : FAULT;
    case TOKEN:
        return isTchar(c) ? TOKEN : isBlank(c) ? BWS_SEMI : c == ';' ? NAME_FIRST : c == '\r' ? SIZE_CR : FAULT;
    case QUOTED:
        return c == '"' ? QUOTED_END : c == '\\' ? QUOTED_PAIR : isQuotable(c) ? QUOTED : FAULT;
    case QUOTED_PAIR:
        return isQuotable(c) ? QUOTED : FAULT;
    case QUOTED_END:
        return isBlank(c) ? BWS_SEMI : c == ';' ? NAME_FIRST : c == '\r' ? SIZE_CR : FAULT;
    default:  // SIZE_CR
        return c == '\n' ? LINE_DONE : FAULT;
    }
}

char const k_method[] = "ZUMStrictChunkedInputStream::read";

}  // namespace

ZUMStrictChunkedInputStream::ZUMStrictChunkedInputStream(int size)
    : m_bis(nullptr), m_owns_bis(1), m_state(SIZE_FIRST), m_line_bytes(0), m_pushed_back(0), m_size(0),
      m_chunk_left(0), m_offset(0), m_fault_number(0), m_fault_what(nullptr), m_fault_offset(0)
{
    ZUM_POSITIVE_SIZE(size, "ZUMStrictChunkedInputStream::ZUMStrictChunkedInputStream - size must be 1 or more");
    m_bis = RVK_GUARDED_NEW(new ZUMBufferedInputStream(size));
    ZUMFilterInputStream::wrap(*m_bis);
}

ZUMStrictChunkedInputStream::ZUMStrictChunkedInputStream(ZUMInputStream& in, int size)
    : ZUMStrictChunkedInputStream(size)
{
    ZUMStrictChunkedInputStream::wrap(in);
}

ZUMStrictChunkedInputStream::ZUMStrictChunkedInputStream(ZUMBufferedInputStream& bis)
    : m_bis(&bis), m_owns_bis(0), m_state(SIZE_FIRST), m_line_bytes(0), m_pushed_back(0), m_size(0),
      m_chunk_left(0), m_offset(0), m_fault_number(0), m_fault_what(nullptr), m_fault_offset(0)
{
    ZUMFilterInputStream::wrap(bis);
}

ZUMStrictChunkedInputStream::~ZUMStrictChunkedInputStream()
{
    if (m_owns_bis && m_bis) {
        try {
            delete m_bis;
            m_bis = nullptr;
        } catch (...) {
        }
    }
}

// ---- faults -----------------------------------------------------------------

void ZUMStrictChunkedInputStream::fail(unsigned long number, char const* what, std::int64_t offset)
{
    m_state = FAILED;
    m_fault_number = number;
    m_fault_what = what;
    m_fault_offset = offset;
    raiseFault();
}

void ZUMStrictChunkedInputStream::raiseFault() const
{
    char text[128];
    std::snprintf(text, sizeof text, "%s at byte %lld", m_fault_what, static_cast<long long>(m_fault_offset));
    ZUMIOException raised(static_cast<RVKSeverity>(1), 0L);
    raised << ZUMMessage(m_fault_number);
    raised << RVKMessageString(I18NString(text, nullptr, -1, nullptr, nullptr));
    raised.hurl(RVK_HERE, k_method, "RVK_THROW");
}

// ---- framing ----------------------------------------------------------------

void ZUMStrictChunkedInputStream::takeFramingByte(unsigned char c)
{
    if (m_state == DATA_CR || m_state == DATA_LF) {
        if (c != (m_state == DATA_CR ? '\r' : '\n')) {
            fail(ZUMMessage::CHUNKED_MALFORMED, "chunk data not followed by CR LF", m_offset);
        }
        m_state = m_state == DATA_CR ? DATA_LF : SIZE_FIRST;
        m_line_bytes = 0;
        m_size = 0;
        return;
    }
    if (m_line_bytes == k_max_line) {
        fail(ZUMMessage::CHUNKED_MALFORMED, "chunk-size line longer than 4096 bytes", m_offset);
    }
    ++m_line_bytes;
    int const next = nextInSizeLine(m_state, c);
    if (next == FAULT) {
        fail(ZUMMessage::CHUNKED_MALFORMED, "malformed chunk-size line", m_offset);
    }
    if (next == SIZE) {
        if (m_size > k_max_before_digit) {
            fail(ZUMMessage::CHUNKED_MALFORMED, "chunk size of 2^63 or more", m_offset);
        }
        m_size = m_size * 16 + hexValue(c);
    }
    if (next == LINE_DONE) {
        m_chunk_left = m_size;
        m_state = m_size ? IN_DATA : ENDED;
    } else {
        m_state = next;
    }
}

int ZUMStrictChunkedInputStream::readFraming(bool blockRead)
{
    while (m_state != IN_DATA && m_state != ENDED) {
        int c;
        if (blockRead) {
            char byte;
            int const r = m_bis->read(&byte, 1);
            if (r == 0) {
                return 0;
            }
            c = r < 0 ? -1 : static_cast<unsigned char>(byte);
        } else {
            c = m_bis->read();
        }
        if (c < 0) {
            fail(ZUMMessage::CHUNKED_TRUNCATED,
                 m_state == DATA_CR || m_state == DATA_LF ? "input ended before the CR LF after chunk data"
                 : m_line_bytes == 0                      ? "input ended before a chunk-size line"
                                                          : "input ended inside a chunk-size line",
                 m_offset);
        }
        takeFramingByte(static_cast<unsigned char>(c));
        ++m_offset;
    }
    return m_state == IN_DATA ? 1 : -1;
}

// ---- reads ------------------------------------------------------------------

template <class Destination>
int ZUMStrictChunkedInputStream::readData(Destination& dst, int count)
{
    bool const pushed = m_pushed_back > 0;
    std::int64_t const due = pushed ? m_pushed_back : m_chunk_left;
    int const r = m_bis->read(dst, count < due ? count : static_cast<int>(due));
    if (r < 0) {
        fail(ZUMMessage::CHUNKED_TRUNCATED, "input ended inside chunk data", m_offset);
    }
    if (pushed) {
        m_pushed_back -= r;
    } else {
        m_offset += r;
        m_chunk_left -= r;
        m_state = m_chunk_left ? IN_DATA : DATA_CR;
    }
    return r;
}

template <class Destination>
int ZUMStrictChunkedInputStream::readInto(Destination& dst, int count)
{
    if (m_state == FAILED) {
        raiseFault();
    }
    if (m_state == ENDED) {
        return -1;
    }
    if (!m_pushed_back && m_state != IN_DATA) {
        int const framing = readFraming(true);
        if (framing <= 0) {
            return framing;
        }
    }
    return readData(dst, count < 0 ? 0 : count);
}

int ZUMStrictChunkedInputStream::read(RVKByteBuffer& buffer, int count)
{
    return readInto(buffer, count);
}

int ZUMStrictChunkedInputStream::read(char* buf, int count)
{
    return readInto(buf, count);
}

int ZUMStrictChunkedInputStream::read()
{
    if (m_state == FAILED) {
        raiseFault();
    }
    if (m_state == ENDED || (!m_pushed_back && m_state != IN_DATA && readFraming(false) < 0)) {
        return -1;
    }
    int const c = m_bis->read();
    if (c < 0) {
        fail(ZUMMessage::CHUNKED_TRUNCATED, "input ended inside chunk data", m_offset);
    }
    if (m_pushed_back) {
        --m_pushed_back;
    } else {
        ++m_offset;
        m_state = --m_chunk_left ? IN_DATA : DATA_CR;
    }
    return c;
}

// ---- push-back and wrapping -------------------------------------------------

RVK_bool ZUMStrictChunkedInputStream::canUnread()
{
    return 1;
}

void ZUMStrictChunkedInputStream::unread(char const* bytes, int count)
{
    RVK_ASSERT(m_bis);
    m_bis->unread(bytes, count);
    if (m_state != ENDED && m_state != FAILED && count > 0) {
        m_pushed_back = m_pushed_back > INT_MAX - count ? INT_MAX : m_pushed_back + count;
    }
}

void ZUMStrictChunkedInputStream::wrap(ZUMInputStream& in)
{
    RVK_ASSERT(m_bis);
    m_bis->wrap(in);
}

void ZUMStrictChunkedInputStream::unWrap()
{
    RVK_ASSERT(!m_chunk_left && !m_pushed_back);
    if (m_owns_bis) {
        RVK_ASSERT(m_bis);
        m_bis->unWrap();
    }
}
