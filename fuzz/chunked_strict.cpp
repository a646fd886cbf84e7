// Fuzz target: the strict chunked input stream on arbitrary bytes.
//
// Input: 8 setting bytes, then the bytes taken as a chunked body.
//   0: bit 0 the stream owns its buffered stream (else the caller lends it),
//      bit 1 empty reads from the source, bit 2 source failures, bit 3 the
//      source accepts unread bytes, bits 4-7 the refill size
//   1-4: source read sizes; 5-6: read sizes and forms, and bytes pushed back;
//   7: failing reads
//
// Checks: the reads end within a number bounded by the input size; the
// delivered bytes, and the fault (its catalog number, text and offset) or
// the end, are exactly those of a plain decoder written here from the rules of
// the coding; a fault is raised again by the next read; source failures and
// bytes pushed back lose nothing; everything behind the last chunk (trailer)
// is still there afterwards, in the lent buffered stream or, after unWrap(),
// in the source.

#include <algorithm>
#include <cctype>
#include <memory>

#include "FuzzSupport.h"

namespace {

int const k_refill_sizes[16] = {1, 2, 3, 4, 7, 16, 31, 64, 100, 256, 512, 1000, 1024, 4096, 16384, 65536};

// Where and why the reference decoder stops before the end of a body.
struct Fault {
    unsigned long number;
    std::size_t at;
    char const* what;
};

// A decoder of the whole body at once, by recursive descent: every chunk is
// a size line (1*HEXDIG below 2^63, extensions of ";" name [ "=" token or
// quoted-string ], blanks only around ";" and "=", CR LF, at most 4096 bytes
// in all), the data, CR LF; the last chunk has size 0. The first byte that
// breaks a rule is malformed; an input that ends before is truncated.
class Reference {
public:
    explicit Reference(std::string const& s) : m_s(s) {}

    // Decodes into `data`; returns where the bytes behind the last chunk begin.
    std::size_t decode(std::string& data)
    {
        for (;;) {
            unsigned long long size = sizeLine();
            if (size == 0) {
                return m_pos;
            }
            std::size_t available = m_s.size() - m_pos;
            if (available < size) {
                data.append(m_s, m_pos, available);
                throw Fault{ZUMMessage::CHUNKED_TRUNCATED, m_s.size(), "input ended inside chunk data"};
            }
            data.append(m_s, m_pos, static_cast<std::size_t>(size));
            m_pos += static_cast<std::size_t>(size);
            for (char expected : {'\r', '\n'}) {
                if (m_pos == m_s.size()) {
                    throw Fault{ZUMMessage::CHUNKED_TRUNCATED, m_pos, "input ended before the CR LF after chunk data"};
                }
                if (m_s[m_pos] != expected) {
                    throw Fault{ZUMMessage::CHUNKED_MALFORMED, m_pos, "chunk data not followed by CR LF"};
                }
                ++m_pos;
            }
        }
    }

private:
    static bool blank(int c) { return c == ' ' || c == '\t'; }
    static bool hex(int c) { return std::isxdigit(c) != 0; }
    static bool tchar(int c) { return std::isalnum(c) || (c && std::strchr("!#$%&'*+-.^_`|~", c)); }
    static bool quotable(int c) { return c == '\t' || (c >= 0x20 && c != 0x7F); }

    // The byte at m_pos, inside a size line.
    int peek()
    {
        if (m_pos == m_s.size()) {
            throw Fault{ZUMMessage::CHUNKED_TRUNCATED, m_pos,
                        m_pos == m_line ? "input ended before a chunk-size line"
                                        : "input ended inside a chunk-size line"};
        }
        if (m_pos == m_line + 4096) {
            throw Fault{ZUMMessage::CHUNKED_MALFORMED, m_pos, "chunk-size line longer than 4096 bytes"};
        }
        return static_cast<unsigned char>(m_s[m_pos]);
    }
    [[noreturn]] void malformed() { throw Fault{ZUMMessage::CHUNKED_MALFORMED, m_pos, "malformed chunk-size line"}; }
    bool skipBlanks()
    {
        std::size_t from = m_pos;
        while (blank(peek())) {
            ++m_pos;
        }
        return m_pos != from;
    }
    void token()
    {
        if (!tchar(peek())) {
            malformed();
        }
        while (tchar(peek())) {
            ++m_pos;
        }
    }
    void quotedString()
    {
        ++m_pos;  // the opening quote
        for (;;) {
            int c = peek();
            if (c == '"') {
                ++m_pos;
                return;
            }
            if (c == '\\') {
                ++m_pos;
                c = peek();
            }
            if (!quotable(c)) {
                malformed();
            }
            ++m_pos;
        }
    }

    // Reads a size line; returns the size.
    unsigned long long sizeLine()
    {
        m_line = m_pos;
        if (!hex(peek())) {
            malformed();
        }
        // 2^63 needs 16 significant digits from 8 on, or 17.
        std::size_t first = std::string::npos;
        unsigned long long size = 0;
        for (; hex(peek()); ++m_pos) {
            char c = m_s[m_pos];
            first = first == std::string::npos && c != '0' ? m_pos : first;
            std::size_t digits = first == std::string::npos ? 0 : m_pos - first + 1;
            if (digits == 17 || (digits == 16 && std::strchr("89abcdefABCDEF", m_s[first]))) {
                throw Fault{ZUMMessage::CHUNKED_MALFORMED, m_pos, "chunk size of 2^63 or more"};
            }
            size = size * 16 + std::string("0123456789abcdef").find(static_cast<char>(std::tolower(c)));
        }
        for (;;) {
            bool blanks = skipBlanks();
            int c = peek();
            if (c == '\r' && !blanks) {
                break;
            }
            if (c != ';') {
                malformed();
            }
            ++m_pos;
            skipBlanks();
            token();
            blanks = skipBlanks();
            c = peek();
            if (c == '=') {
                ++m_pos;
                skipBlanks();
                if (peek() == '"') {
                    quotedString();
                } else {
                    token();
                }
            } else if (c == '\r' && !blanks) {
                break;
            } else if (c != ';') {
                malformed();
            }
        }
        ++m_pos;  // CR
        if (peek() != '\n') {
            malformed();
        }
        ++m_pos;
        return size;
    }

    std::string const& m_s;
    std::size_t m_pos = 0;
    std::size_t m_line = 0;  // where the current size line begins
};

// The fault of a raise, as the stream words it.
std::string faultText(Fault const& f)
{
    return std::string(f.what) + " at byte " + std::to_string(f.at);
}

// The catalog number and text of one of the stream's own raises; number 0
// for a failure of the source.
std::pair<unsigned long, std::string> ownFault(ZUMIOException const& e)
{
    if (e.getMessageCount() != 2) {
        return {0, ""};
    }
    auto const* number = dynamic_cast<RVKMessage const*>(&e.getMessageAt(0));
    auto const* text = dynamic_cast<RVKMessageString const*>(&e.getMessageAt(1));
    FUZZ_CHECK(number && text && e.getCode() == 0);
    return {number->getMsgNumber(), text->getString().c_str()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    std::uint8_t mode = in.byte();
    Schedule sourceSteps(in.take(4));
    Schedule readSteps(in.take(2));
    std::uint8_t failures = in.byte();
    std::string body = in.rest();

    bool owned = mode & 1;
    bool canUnread = mode & 8;
    int refill = k_refill_sizes[mode >> 4];
    std::string expected;
    std::size_t end = 0;
    bool faulty = false;
    Fault fault{0, 0, ""};
    try {
        end = Reference(body).decode(expected);
    } catch (Fault const& f) {
        faulty = true;
        fault = f;
    }

    FuzzSource source(body, sourceSteps, (mode & 2) ? 64 : 0, canUnread);
    if (mode & 4) {
        source.failAt(1 + failures % 16, 2 + failures / 16, 40 + failures);
    }
    ZUMBufferedInputStream lent(source, refill);
    if (owned) {
        lent.unWrap();  // nothing read yet: nothing to hand back
    }
    std::unique_ptr<ZUMStrictChunkedInputStream> strict(
        owned ? new ZUMStrictChunkedInputStream(source, refill) : new ZUMStrictChunkedInputStream(lent));

    // Each read that does not end delivers a byte, takes a framing byte, or
    // meets an empty or failing source read; pushed-back bytes come again.
    std::size_t const limit = 6 * size + 400;
    std::string got;
    std::pair<unsigned long, std::string> raised{0, ""};
    for (std::size_t reads = 0;; ++reads) {
        FUZZ_CHECK(reads < limit);
        std::uint8_t step = readSteps.next();
        try {
            std::size_t before = got.size();
            if (readOnce(*strict, step, readCount(step), got) < 0) {
                break;
            }
            // Fewer bytes back than the read delivered, so every read moves on.
            std::size_t const delivered = got.size() - before;
            std::size_t const back = delivered > 0 ? std::min<std::size_t>((step >> 5) % 4, delivered - 1) : 0;
            if (step & 0x10 && back > 0) {
                strict->unread(got.data() + got.size() - back, static_cast<int>(back));
                got.resize(got.size() - back);
            }
        } catch (char const* text) {
            FUZZ_CHECK(std::strcmp(text, "source failed") == 0);
        } catch (ZUMIOException const& e) {
            raised = ownFault(e);
            if (raised.first != 0) {
                break;
            }
            FUZZ_CHECK(source.failed());
        }
    }
    FUZZ_CHECK(got == expected);
    FUZZ_CHECK(faulty == (raised.first != 0));
    if (faulty) {
        FUZZ_CHECK(raised.first == fault.number && raised.second == faultText(fault));
        try {
            strict->read();
            FUZZ_CHECK(false);
        } catch (ZUMIOException const& e) {
            FUZZ_CHECK(ownFault(e) == raised);
        }
        return 0;
    }
    FUZZ_CHECK(retrying(source, [&] { return strict->read(); }) == -1);

    // The bytes behind the last chunk are where the stream's comment says.
    std::string behind;
    if (owned) {
        try {
            strict->unWrap();
        } catch (char const* text) {
            // A source that cannot take bytes back keeps the filter wrapped.
            FUZZ_CHECK(!canUnread && std::strcmp(text, "can't unwrap") == 0);
            return 0;
        }
        behind = source.remaining();
    } else {
        for (std::size_t r = 0;; ++r) {
            FUZZ_CHECK(r < limit);
            char buf[256];
            int n;
            try {
                n = lent.read(buf, sizeof buf);
            } catch (char const*) {
                continue;
            } catch (ZUMIOException const&) {
                continue;
            }
            if (n < 0) {
                break;
            }
            behind.append(buf, static_cast<std::size_t>(n));
        }
    }
    FUZZ_CHECK(behind == body.substr(end));
    return 0;
}
