#include "ZUMMultiMemberGZIPInputStream.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "RVKByteBuffer.h"
#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "RVKMessageString.h"
#include "ZUMGZIPInputStream.h"
#include "ZUMIOException.h"
#include "ZUMMessage.h"

namespace {

char const k_read_method[] = "ZUMMultiMemberGZIPInputStream::read";
char const k_unwrap_method[] = "void ZUMMultiMemberGZIPInputStream::unWrap()";

// Size of every request to the upstream, as the member decoder's.
int const k_request = 16384;

// The decoder's statuses that its failure codes carry.
long const k_data_error = -3;
long const k_buf_error = -5;
long const k_stream_end = 1;

}  // namespace

namespace zum_detail {

// The stream a member decoder reads: the upstream, read directly, behind a
// pushback area that takes back what the decoder read beyond its member.
// Counts the bytes that its readers have taken, for the offsets of failures.
class GzipSource : public ZUMInputStream {
public:
    // How the last upstream call of a read ended.
    enum Failure { NONE, TEXT, OTHER };

    // The pushback area gets its working size at once: it holds at most one
    // refill of the decoder (handed back at the end of a member) or one
    // request of peek() behind a byte, so it never grows while reading.
    GzipSource() : m_pushback(k_request + 2, k_request), m_pos(0), m_taken(0), m_upstream(nullptr),
                   m_failure(NONE)
    {
    }

    // Reads from `upstream` from now on; `fresh` restarts the offsets at
    // the next byte.
    void attach(ZUMInputStream* upstream, bool fresh)
    {
        m_upstream = upstream;
        m_failure = NONE;
        if (fresh) {
            m_taken = buffered();
        }
    }

    // Offset of the next byte a reader takes, counted from the first byte
    // of the upstream since the last fresh attach().
    long long offset() const { return m_taken - buffered(); }
    // Offset just behind the last byte the upstream delivered.
    long long received() const { return m_taken; }
    Failure failure() const { return m_failure; }

    // The byte `i` places ahead (0 or 1) as 0..255 without taking it, or -1
    // when the input ends before it.
    int peek(int i)
    {
        while (buffered() <= i) {
            if (m_pos > 0) {  // only unread bytes stay
                m_pushback.chop(static_cast<unsigned>(m_pos));
                m_pos = 0;
            }
            unsigned length = static_cast<unsigned>(m_pushback.pcount());
            m_pushback.reserve(length + k_request);
            int n = upstreamRead(m_pushback.str() + length, k_request);
            if (n < 1) {
                return -1;
            }
            m_pushback.setLength(length + static_cast<unsigned>(n));
        }
        return static_cast<unsigned char>(m_pushback.str()[m_pos + i]);
    }

    // Takes the next byte (one that peek() has shown).
    void skip() { ++m_pos; }

    // Hands the pushback area to `upstream` where it can take it, dropping it
    // otherwise; empties it in both cases unless the upstream raises.
    void handBack(ZUMInputStream& upstream)
    {
        if (buffered() > 0 && upstream.canUnread()) {
            upstream.unread(m_pushback.str() + m_pos, buffered());
        }
        m_pushback.reset();
        m_pos = 0;
    }

    int read(char* buf, int count) override
    {
        int rest = buffered();
        if (rest > 0) {
            int n = count < rest ? count : rest;
            std::memcpy(buf, m_pushback.str() + m_pos, static_cast<std::size_t>(n));
            m_pos += n;
            return n;
        }
        return upstreamRead(buf, count);
    }

    int read(RVKByteBuffer& buf, int count) override
    {
        unsigned length = static_cast<unsigned>(buf.pcount());
        buf.reserve(length + static_cast<unsigned>(count));
        int n = read(buf.str() + length, count);
        if (n > 0) {
            buf.setLength(length + static_cast<unsigned>(n));
        }
        return n;
    }

    int read() override
    {
        int c = peek(0);
        if (c >= 0) {
            skip();
        }
        return c;
    }

    RVK_bool canUnread() override { return 1; }

    // Puts `count` bytes in front of the unread ones: in place where the
    // bytes already taken leave room (as after a member, whose read-ahead
    // came from here), else by moving the unread bytes up.
    void unread(char const* bytes, int count) override
    {
        RVK_ASSERT(bytes);
        if (count <= m_pos) {
            m_pos -= count;
            std::memcpy(m_pushback.str() + m_pos, bytes, static_cast<std::size_t>(count));
            return;
        }
        int rest = buffered();
        m_pushback.reserve(static_cast<unsigned>(rest + count));
        char* data = m_pushback.str();
        std::memmove(data + count, data + m_pos, static_cast<std::size_t>(rest));
        std::memcpy(data, bytes, static_cast<std::size_t>(count));
        m_pushback.setLength(static_cast<unsigned>(rest + count));
        m_pos = 0;
    }

private:
    int buffered() const { return m_pushback.pcount() - m_pos; }

    // One upstream read; notes how an exception of it ended the read.
    int upstreamRead(char* buf, int count)
    {
        RVK_ASSERT(m_upstream);
        int n = 0;
        try {
            n = m_upstream->read(buf, count);
        } catch (char const*) {
            m_failure = TEXT;
            throw;
        } catch (...) {
            m_failure = OTHER;
            throw;
        }
        if (n > 0) {
            m_taken += n;
        }
        return n;
    }

    RVKByteBuffer m_pushback;  // bytes from m_pos to pcount() are unread
    int m_pos;
    long long m_taken;         // bytes taken from the upstream (offset base)
    ZUMInputStream* m_upstream;
    Failure m_failure;
};

// The decoding state of a multi-member stream.
class GzipMembers {
public:
    GzipMembers() : m_state(FRESH), m_member(0), m_member_start(0), m_fail_number(0),
                    m_fail_code(0)
    {
        m_fail_text[0] = '\0';
    }

    int read(ZUMInputStream& upstream, char* buf, int count);
    void detach(ZUMInputStream& upstream);

private:
    // FRESH: no member started since wrap(); DECODING: m_gzip, wrapped on
    // m_source, decodes member m_member; BETWEEN: that member has ended and
    // what follows it is still to be looked at.
    enum State { FRESH, DECODING, BETWEEN, ENDED, FAILED };

    int decode(char* buf, int count);
    bool nextMember();
    void startMember();
    void noteFailure(ZUMIOException& e);
    [[noreturn]] void raiseFailure(RVKFileLocation const& where);
    void fail(unsigned long number, long code, char const* place, long long offset);

    GzipSource m_source;
    ZUMGZIPInputStream m_gzip;
    State m_state;
    int m_member;              // number of the current member, from 1
    long long m_member_start;  // offset of its first byte
    unsigned long m_fail_number;
    long m_fail_code;
    char m_fail_text[96];      // the offset text of the failure
};

}  // namespace zum_detail

using zum_detail::GzipMembers;
using zum_detail::GzipSource;

namespace {

// Writes "<prefix> member K, at byte N" to `out`, or "<prefix> member, at
// byte N" for a member number of 0.
void formatPlace(char* out, std::size_t size, char const* prefix, int member, long long offset)
{
    if (member > 0) {
        std::snprintf(out, size, "%s member %d, at byte %lld", prefix, member, offset);
    } else {
        std::snprintf(out, size, "%s member, at byte %lld", prefix, offset);
    }
}

// Raises ZUMIOException(severity 1, code) with the catalog message `number`,
// the texts `text` (when not null) and `place`, as messages in that order.
[[noreturn]] void raiseWithPlace(RVKFileLocation const& where, long code, unsigned long number,
                                 char const* text, char const* place)
{
    ZUMIOException raised(static_cast<RVKSeverity>(1), code);
    raised << ZUMMessage(number);
    if (text) {
        raised << RVKMessageString(I18NString(text, nullptr, -1, nullptr, nullptr));
    }
    raised << RVKMessageString(I18NString(place, nullptr, -1, nullptr, nullptr));
    raised.hurl(where, k_read_method, "RVK_THROW");
}

}  // namespace

void GzipMembers::startMember()
{
    m_gzip.wrap(m_source);
    ++m_member;
    m_member_start = m_source.offset();
    m_state = DECODING;
}

// After a member: unwraps its decoder, which hands its read-ahead back, and
// looks at what follows. Returns true when another member starts, false at
// the end of the input (NUL padding included); raises for anything else.
bool GzipMembers::nextMember()
{
    if (m_state == DECODING) {
        m_gzip.unWrap();
        m_state = BETWEEN;
    }
    // An exception of the upstream while looking leaves the stream BETWEEN,
    // to look again at the next read.
    int c = m_source.peek(0);
    if (c == 0x1F && m_source.peek(1) == 0x8B) {
        startMember();
        return true;
    }
    while (c == 0) {
        m_source.skip();
        c = m_source.peek(0);
    }
    if (c == -1) {
        m_state = ENDED;
        return false;
    }
    fail(ZUMMessage::GZIP_TRAILING_GARBAGE, k_data_error, "after the last", m_source.offset());
    raiseFailure(RVK_HERE);
}

void GzipMembers::fail(unsigned long number, long code, char const* place, long long offset)
{
    m_state = FAILED;
    m_fail_number = number;
    m_fail_code = code;
    formatPlace(m_fail_text, sizeof m_fail_text, place,
                number == ZUMMessage::GZIP_TRAILING_GARBAGE ? 0 : m_member, offset);
}

void GzipMembers::raiseFailure(RVKFileLocation const& where)
{
    raiseWithPlace(where, m_fail_code, m_fail_number, nullptr, m_fail_text);
}

// A ZUMIOException out of the member decoder: adds the place of the fault.
// The decoder's own failures end this stream; a text exception of the
// upstream leaves it readable.
void GzipMembers::noteFailure(ZUMIOException& e)
{
    char place[96];
    if (m_source.failure() == GzipSource::TEXT) {
        formatPlace(place, sizeof place, "while reading", m_member, m_source.received());
        e << RVKMessageString(I18NString(place, nullptr, -1, nullptr, nullptr));
        return;
    }
    // Unwrapped, the decoder hands back what it has not consumed: the source
    // then stands just behind the last byte the decoder took.
    m_gzip.unWrap();
    long long at = m_source.offset();
    long code = e.getCode();
    if (e.hasMessage(ZUMMessage::GZIP_TRUNCATED)) {
        fail(ZUMMessage::GZIP_TRUNCATED, code,
             code == k_stream_end ? "the input ends inside the trailer of"
             : code == k_buf_error ? "the input ends inside the deflate data of"
                                   : "the input ends inside the header of",
             at);
    } else if (e.hasMessage(ZUMMessage::GZIP_CRC_MISMATCH)) {
        fail(ZUMMessage::GZIP_CORRUPT, k_data_error, "in the CRC-32 of", at - 8);
    } else if (e.hasMessage(ZUMMessage::GZIP_LENGTH_MISMATCH)) {
        fail(ZUMMessage::GZIP_CORRUPT, k_data_error, "in the length of", at - 4);
    } else if (e.hasMessage(ZUMMessage::GZIP_CORRUPT)) {
        fail(ZUMMessage::GZIP_CORRUPT, k_data_error, "in the deflate data of", at);
    } else {  // not gzip, or an unsupported method or flags
        unsigned long number = e.hasMessage(ZUMMessage::GZIP_NOT_GZIP)
                                   ? ZUMMessage::GZIP_NOT_GZIP
                                   : ZUMMessage::GZIP_UNSUPPORTED;
        fail(number, code, "in the header of", m_member_start);
    }
    e << RVKMessageString(I18NString(m_fail_text, nullptr, -1, nullptr, nullptr));
}

int GzipMembers::decode(char* buf, int count)
{
    switch (m_state) {
    case FRESH:
        startMember();
        break;
    case DECODING:
        break;
    case BETWEEN:
        if (!nextMember()) {
            return -1;
        }
        break;
    case ENDED:
        return -1;
    case FAILED:
        raiseFailure(RVK_HERE);
    }
    // The decoder returns 0 for a count above 0 only once per member, right
    // before it ends or raises; a second 0 in a row is passed on rather than
    // waited out.
    for (int zeros = 0;;) {
        int n = 0;
        try {
            n = m_gzip.read(buf, count);
        } catch (ZUMIOException& e) {
            if (m_source.failure() != GzipSource::OTHER) {
                noteFailure(e);
            }
            throw;
        }
        if (n > 0 || (n == 0 && (count == 0 || ++zeros > 1))) {
            return n;
        }
        if (n < 0) {
            if (!nextMember()) {
                return -1;
            }
            zeros = 0;
        }
    }
}

int GzipMembers::read(ZUMInputStream& upstream, char* buf, int count)
{
    m_source.attach(&upstream, m_state == FRESH);
    try {
        return decode(buf, count);
    } catch (char const* text) {  // from the upstream, between members
        int code = errno;
        char place[96];
        formatPlace(place, sizeof place, "while reading after", m_member, m_source.received());
        raiseWithPlace(RVK_HERE, code, ZUMMessage::TEXT_ERROR, text, place);
    }
}

void GzipMembers::detach(ZUMInputStream& upstream)
{
    if (m_state == DECODING) {
        m_gzip.unWrap();
    }
    m_state = FRESH;
    m_member = 0;
    m_source.handBack(upstream);
}

ZUMMultiMemberGZIPInputStream::ZUMMultiMemberGZIPInputStream() : m_members(nullptr)
{
}

ZUMMultiMemberGZIPInputStream::ZUMMultiMemberGZIPInputStream(ZUMInputStream& in)
    : ZUMMultiMemberGZIPInputStream()
{
    ZUMFilterInputStream::wrap(in);
}

ZUMMultiMemberGZIPInputStream::~ZUMMultiMemberGZIPInputStream()
{
    delete m_members;
}

int ZUMMultiMemberGZIPInputStream::read(char* buf, int count)
{
    RVK_ASSERT(buf);
    RVK_ASSERT(count >= 0);
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), k_read_method);
    }
    if (!m_members) {
        m_members = RVK_GUARDED_NEW(new GzipMembers());
    }
    return m_members->read(*p_upstream, buf, count);
}

int ZUMMultiMemberGZIPInputStream::read(RVKByteBuffer& buf, int count)
{
    RVK_ASSERT(count >= 0);
    unsigned length = static_cast<unsigned>(buf.pcount());
    buf.reserve(length + static_cast<unsigned>(count));
    int n = read(buf.str() + length, count);
    if (n > 0) {
        buf.setLength(length + static_cast<unsigned>(n));
        return n;
    }
    return -1;
}

int ZUMMultiMemberGZIPInputStream::read()
{
    unsigned char byte = 0;
    if (read(reinterpret_cast<char*>(&byte), 1) == 1) {
        return byte;
    }
    return -1;
}

RVK_bool ZUMMultiMemberGZIPInputStream::canUnread()
{
    return 0;
}

void ZUMMultiMemberGZIPInputStream::unWrap()
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), k_unwrap_method);
    }
    if (m_members) {
        m_members->detach(*p_upstream);
    }
    p_upstream = nullptr;
}
