#ifndef ZUM_TEST_STREAMS_H
#define ZUM_TEST_STREAMS_H

// Test doubles and helpers shared by every suite: an input stream that
// delivers a scripted sequence of read results and records the calls made on
// it, an output stream that records every call made on it, a reader that
// drains a stream, a one-line rendering of what a call raises, and
// deterministic test contents. It includes the whole library (ZUMStreams.h).

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "RVKCore.h"
#include "ZUMStreams.h"

// The allocations served so far by the test program's operator new
// (AllocationCounter.cpp): a test reads it before and after what it measures.
std::size_t allocationCount();

// The method text that the input stream base class's setTimeout() puts in a
// back-trace: its own wording, documented nowhere, kept in this one place.
inline std::string const k_set_timeout = "@RVK_bool ZUMInputStream::setTimeout( int time_limit_sec )";

// The results of several calls, made in order, compared as one row.
using Row = std::vector<long>;

// One scripted read result: bytes to deliver (none gives 0), the end of the
// stream (-1), or a text exception / ZUMIOException (code 5) to throw.
struct ScriptStep {
    enum Kind { Bytes, End, ThrowText, ThrowIO } kind;
    std::string bytes;
    char const* text;

    static ScriptStep data(std::string b) { return {Bytes, std::move(b), nullptr}; }
    static ScriptStep zero() { return {Bytes, "", nullptr}; }
    static ScriptStep end() { return {End, "", nullptr}; }
    static ScriptStep throwText(char const* t) { return {ThrowText, "", t}; }
    static ScriptStep throwIO() { return {ThrowIO, "", nullptr}; }
};

// An input stream that answers each read with the next script step. A step's
// bytes beyond the read's count stay for the next read; once the script is
// used up every read returns -1. With `can_unread` it accepts unread bytes,
// delivered first. The count of every read and the bytes of every unread are
// recorded.
class ScriptedInputStream : public ZUMInputStream {
public:
    explicit ScriptedInputStream(std::vector<ScriptStep> script, bool can_unread = false)
        : m_script(std::move(script)), m_can_unread(can_unread)
    {
    }

    // Steps that deliver `bytes` in pieces of the sizes of `sizes`, taken in
    // turn (none, or 0: the rest at once), with a read of 0 bytes after every
    // piece when `zeros` is set.
    static std::vector<ScriptStep> pieces(std::string const& bytes, std::vector<std::size_t> const& sizes,
                                          bool zeros = false)
    {
        std::vector<ScriptStep> steps;
        for (std::size_t at = 0, i = 0; at < bytes.size(); ++i) {
            std::size_t n = sizes.empty() ? 0 : sizes[i % sizes.size()];
            steps.push_back(ScriptStep::data(bytes.substr(at, n ? n : bytes.size())));
            at += steps.back().bytes.size();
            if (zeros) {
                steps.push_back(ScriptStep::zero());
            }
        }
        return steps;
    }

    int read(RVKByteBuffer& buffer, int count) override
    {
        int n = next(count);
        buffer.appendChars(m_got.data(), static_cast<unsigned>(m_got.size()));
        return n;
    }
    int read(char* buf, int count) override
    {
        int n = next(count);
        std::copy(m_got.begin(), m_got.end(), buf);
        return n;
    }
    int read() override { return next(1) == 1 ? static_cast<unsigned char>(m_got[0]) : -1; }
    void close() override { ++closes; }
    RVK_bool canUnread() override { return m_can_unread ? 1 : 0; }
    void unread(char const* bytes, int count) override
    {
        if (!m_can_unread) {
            ZUMInputStream::unread(bytes, count);
        }
        unreads.emplace_back(bytes, static_cast<std::size_t>(count));
        if (count > 0) {
            m_script.insert(m_script.begin() + static_cast<std::ptrdiff_t>(m_step), ScriptStep::data(unreads.back()));
        }
    }

    std::vector<int> counts;           // the count of every read, in order
    std::vector<std::string> unreads;  // the bytes of every unread
    int closes = 0;

private:
    int next(int count)
    {
        counts.push_back(count);
        m_got.clear();
        if (m_step >= m_script.size()) {
            return -1;
        }
        ScriptStep& step = m_script[m_step];
        if (step.kind == ScriptStep::ThrowText) {
            throw m_script[m_step++].text;
        } else if (step.kind == ScriptStep::ThrowIO) {
            ++m_step;
            RVK_THROW(ZUMIOException(static_cast<RVKSeverity>(1), 5L), "ScriptedInputStream::read");
        } else if (step.kind == ScriptStep::End) {
            return ++m_step, -1;
        }
        m_got = step.bytes.substr(0, count < 0 ? 0 : static_cast<std::size_t>(count));
        step.bytes.erase(0, m_got.size());
        m_step += step.bytes.empty() ? 1 : 0;
        return static_cast<int>(m_got.size());
    }

    std::vector<ScriptStep> m_script;
    std::size_t m_step = 0;
    bool m_can_unread;
    std::string m_got;
};

// An output stream that records every write (its bytes), flush and close.
// failAt() makes a later call throw a text.
class RecordingOutputStream : public ZUMOutputStream {
public:
    void write(char const* bytes, int count) override
    {
        if (++m_calls == m_fail_call && m_fail_text) {
            throw m_fail_text;
        }
        writes.emplace_back(bytes ? std::string(bytes, static_cast<std::size_t>(count)) : std::string());
    }
    void flush() override
    {
        if (m_fail_call == 0 && m_fail_text) {
            throw m_fail_text;
        }
        ++flushes;
    }
    void close() override { ++closes; }

    // The n-th write from now (n >= 1) throws `text`; with n == 0 every flush does.
    void failAt(int n, char const* text) { m_fail_call = n ? m_calls + n : 0, m_fail_text = text; }
    std::string all() const { return std::accumulate(writes.begin(), writes.end(), std::string()); }
    std::vector<std::size_t> sizes() const
    {
        std::vector<std::size_t> s(writes.size());
        std::transform(writes.begin(), writes.end(), s.begin(), [](std::string const& w) { return w.size(); });
        return s;
    }

    std::vector<std::string> writes;
    int flushes = 0, closes = 0;

private:
    int m_calls = 0, m_fail_call = -1;
    char const* m_fail_text = nullptr;
};

// The content of a byte buffer or of a memory output stream.
inline std::string str(RVKByteBuffer const& b)
{
    return std::string(b.str(), static_cast<std::size_t>(b.pcount()));
}
inline std::string str(ZUMMemoryOutputStream const& m)
{
    return std::string(m.bytes(), static_cast<std::size_t>(m.length()));
}

// Writes `bytes` to `out` in writes of the sizes in `pieces`, taken in turn
// (at least one write, of 0 bytes for no bytes).
inline void writeInPieces(ZUMOutputStream& out, std::string const& bytes, std::vector<std::size_t> const& pieces)
{
    for (std::size_t at = 0, i = 0; at == 0 || at < bytes.size(); at += pieces[i++ % pieces.size()]) {
        out.write(bytes.data() + at, static_cast<int>(std::min(pieces[i % pieces.size()], bytes.size() - at)));
    }
}

// The read form a test drains a stream with; Line is readline() of a
// buffered stream.
enum class Form { Buffer, Array, Byte, Line };

// Reads `in` until -1 with reads of `count` in the given form and returns
// everything; the size of each read above 0 goes to `sizes` if given. Gives
// up after 10000 reads in a row that deliver nothing.
inline std::string drain(ZUMInputStream& in, int count = 4096, Form form = Form::Buffer,
                         std::vector<int>* sizes = nullptr)
{
    RVKByteBuffer got(0, 256);
    std::vector<char> buf(static_cast<std::size_t>(count > 0 ? count : 1));
    for (int n = 0, empty = 0; n >= 0 && empty < 10000; empty = n ? 0 : empty + 1) {
        if (form == Form::Buffer || form == Form::Line) {
            n = form == Form::Line ? dynamic_cast<ZUMBufferedInputStream&>(in).readline(got) : in.read(got, count);
        } else {
            n = form == Form::Array ? in.read(buf.data(), count) : in.read();
            n = form == Form::Byte && n >= 0 ? (buf[0] = static_cast<char>(n), 1) : n;
            got.appendChars(buf.data(), n > 0 ? static_cast<unsigned>(n) : 0u);
        }
        if (n > 0 && sizes) {
            sizes->push_back(n);
        }
    }
    return str(got);
}

// Reads the chunked body that `bis` stands at through a chunked stream on it
// (with `owned`, on a buffered stream of its own, of 8 bytes, over `bis`) and,
// when `gzip` is set, a gzip stream on that, in reads of `count` in `form`:
// what the top stream delivers up to -1, then with gzip "|" and what the
// chunked stream still delivers once the gzip stream is unwrapped. The
// chunked stream is unwrapped at the end, so the trailer is left in `bis`.
inline std::string readChunkedBody(ZUMBufferedInputStream& bis, bool gzip, int count = 4096, Form form = Form::Buffer,
                                   bool owned = false)
{
    std::unique_ptr<ZUMChunkedInputStream> chunked(
        owned ? new ZUMChunkedInputStream(static_cast<ZUMInputStream&>(bis), 8) : new ZUMChunkedInputStream(bis));
    ZUMGZIPInputStream gz;
    if (gzip) {
        gz.wrap(*chunked);
    }
    std::string got = drain(gzip ? static_cast<ZUMInputStream&>(gz) : *chunked, count, form);
    if (gzip) {
        gz.unWrap();
        got += "|" + drain(*chunked, count);
    }
    chunked->unWrap();
    return got;
}

// The name of a catalog number of the library (ZUMMessage::TEXT_ERROR gives
// "TEXT_ERROR"), or the number in hexadecimal.
inline std::string messageName(unsigned long number)
{
#define ZUM_NAMED(name) {ZUMMessage::name, #name}
    static std::pair<unsigned long, char const*> const names[] = {
        ZUM_NAMED(TEXT_ERROR),    ZUM_NAMED(FILE_OPEN_FAILED), ZUM_NAMED(FILE_READ_FAILED),
        ZUM_NAMED(GZIP_TRUNCATED), ZUM_NAMED(GZIP_NOT_GZIP),   ZUM_NAMED(GZIP_UNSUPPORTED),
        ZUM_NAMED(GZIP_CORRUPT),  ZUM_NAMED(GZIP_CRC_MISMATCH), ZUM_NAMED(GZIP_LENGTH_MISMATCH),
        ZUM_NAMED(GZIP_TRAILING_GARBAGE), ZUM_NAMED(CHUNKED_MALFORMED), ZUM_NAMED(CHUNKED_TRUNCATED),
        ZUM_NAMED(BASE64_MALFORMED), ZUM_NAMED(BASE64_TRUNCATED),
    };
#undef ZUM_NAMED
    for (auto const& [n, name] : names) {
        if (n == number) {
            return name;
        }
    }
    char hex[20];
    std::snprintf(hex, sizeof hex, "%lx", number);
    return hex;
}

// What `call` raises, on one line: the class of a core throwable, for an
// RVKException its severity, code and messages (a catalog number as #NAME, a
// text in quotes), otherwise its text in parentheses; then the method text of
// every back-trace entry ("-" for none). A text exception gives "text: ...",
// no raise "none".
template <class Call>
std::string raised(Call call)
{
    try {
        call();
    } catch (RVKThrowable const& e) {
        std::string out = e.getThrowableName();
        auto const* x = dynamic_cast<RVKException const*>(&e);
        out += x ? "(" + std::to_string(static_cast<int>(x->getSeverity())) + "," + std::to_string(x->getCode()) + ")"
                 : std::string("(") + (e.getText() ? e.getText() : "") + ")";
        for (std::size_t i = 0; x && i < x->getMessageCount(); ++i) {
            auto const* numbered = dynamic_cast<RVKMessage const*>(&x->getMessageAt(i));
            auto const* text = dynamic_cast<RVKMessageString const*>(&x->getMessageAt(i));
            out += numbered ? " #" + messageName(numbered->getMsgNumber())
                   : text   ? std::string(" '") + text->getString().c_str() + "'"
                            : " ?";
        }
        for (std::size_t i = 0; i < e.getBackTraceSize(); ++i) {
            out += std::string(" @") + (e.getBackTraceEntry(i).method ? e.getBackTraceEntry(i).method : "-");
        }
        return out;
    } catch (char const* text) {
        return std::string("text: ") + text;
    }
    return "none";
}

// `n` bytes of every value in a fixed pseudo-random order (deflate cannot
// compress them).
inline std::string testBytes(std::size_t n, unsigned seed = 1)
{
    std::string bytes(n, '\0');
    std::uint32_t state = seed * 2654435761u + 12345u;
    for (auto& b : bytes) {
        state = state * 1103515245u + 12345u;
        b = static_cast<char>(state >> 23);
    }
    return bytes;
}

// `n` bytes: a third random bytes, then text lines and runs of one byte.
inline std::string mixedData(std::size_t n, unsigned seed = 1)
{
    std::string out = testBytes(n / 3, seed);
    for (unsigned i = 0; out.size() < n; ++i) {
        out += "row " + std::to_string(i * seed % 1000) + ": lorem ipsum dolor\r\n" + std::string(i % 300, 'x');
    }
    return out.substr(0, n);
}

#endif
