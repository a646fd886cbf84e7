#ifndef ZUM_TEST_STREAMS_H
#define ZUM_TEST_STREAMS_H

// Test doubles shared by every suite: an input stream that delivers a scripted
// sequence of read results and records the calls made on it, and an output
// stream that records every call made on it.

#include <cstring>
#include <string>
#include <vector>

#include "RVKCore.h"
#include "ZUMStreams.h"

// One scripted read result: bytes to deliver (possibly none, giving 0), the
// end of stream (-1), or a text exception / core exception to throw.
struct ScriptStep {
    enum Kind { Bytes, End, ThrowText, ThrowIO };
    Kind kind;
    std::string bytes;
    char const* text;

    static ScriptStep data(std::string b) { return {Bytes, std::move(b), nullptr}; }
    static ScriptStep zero() { return {Bytes, std::string(), nullptr}; }
    static ScriptStep end() { return {End, std::string(), nullptr}; }
    static ScriptStep throwText(char const* t) { return {ThrowText, std::string(), t}; }
    static ScriptStep throwIO() { return {ThrowIO, std::string(), nullptr}; }
};

// An input stream that answers each block read with the next script step.
// A step's bytes that exceed the read's count stay for the next read. When
// the script is used up every read returns -1. Optionally it accepts unread
// bytes (canUnread true), which are delivered first. Every call is counted,
// and the count of each block read is recorded.
class ScriptedInputStream : public ZUMInputStream {
public:
    explicit ScriptedInputStream(std::vector<ScriptStep> script, bool can_unread = false)
        : m_script(std::move(script)), m_can_unread(can_unread)
    {
    }

    // A stream that delivers `bytes` in pieces of at most `piece` bytes per
    // read, with a read of 0 bytes after every piece when `zeros` is set.
    static std::vector<ScriptStep> pieces(std::string const& bytes, std::size_t piece, bool zeros = false)
    {
        std::vector<ScriptStep> steps;
        for (std::size_t at = 0; at < bytes.size(); at += piece) {
            steps.push_back(ScriptStep::data(bytes.substr(at, piece)));
            if (zeros) {
                steps.push_back(ScriptStep::zero());
            }
        }
        return steps;
    }

    int read(RVKByteBuffer& buffer, int count) override
    {
        std::string got;
        int n = next(count, got);
        if (n > 0) {
            buffer.appendChars(got.data(), static_cast<unsigned>(n));
        }
        return n;
    }

    int read(char* buf, int count) override
    {
        ++array_reads;
        std::string got;
        int n = next(count, got);
        if (n > 0) {
            std::memcpy(buf, got.data(), static_cast<std::size_t>(n));
        }
        return n;
    }

    int read() override
    {
        ++byte_reads;
        std::string got;
        int n = next(1, got);
        return n == 1 ? static_cast<unsigned char>(got[0]) : -1;
    }

    void close() override { ++closes; }
    RVK_bool canUnread() override { return m_can_unread ? 1 : 0; }
    void unread(char const* bytes, int count) override
    {
        if (!m_can_unread) {
            ZUMInputStream::unread(bytes, count);
        }
        unreads.emplace_back(bytes, static_cast<std::size_t>(count));
        m_pushed.insert(0, bytes, static_cast<std::size_t>(count));
    }
    int getTimeout() const override { return timeout; }

    // The counts asked by block reads, in order.
    std::vector<int> counts;
    // The bytes of each unread call.
    std::vector<std::string> unreads;
    int array_reads = 0;
    int byte_reads = 0;
    int closes = 0;
    int timeout = 0;

    // Steps not yet consumed.
    std::size_t stepsLeft() const { return m_script.size() - m_step; }

private:
    int next(int count, std::string& got)
    {
        counts.push_back(count);
        if (!m_pushed.empty()) {
            std::size_t n = std::min<std::size_t>(m_pushed.size(), count < 0 ? 0 : count);
            got = m_pushed.substr(0, n);
            m_pushed.erase(0, n);
            return static_cast<int>(n);
        }
        if (m_step >= m_script.size()) {
            return -1;
        }
        ScriptStep& step = m_script[m_step];
        switch (step.kind) {
        case ScriptStep::End:
            ++m_step;
            return -1;
        case ScriptStep::ThrowText:
            ++m_step;
            throw step.text;
        case ScriptStep::ThrowIO:
            ++m_step;
            RVK_THROW(ZUMIOException(static_cast<RVKSeverity>(1), 5L), "ScriptedInputStream::read");
        case ScriptStep::Bytes:
            break;
        }
        std::size_t n = std::min<std::size_t>(step.bytes.size(), count < 0 ? 0 : count);
        got = step.bytes.substr(0, n);
        step.bytes.erase(0, n);
        if (step.bytes.empty()) {
            ++m_step;
        }
        return static_cast<int>(n);
    }

    std::vector<ScriptStep> m_script;
    std::size_t m_step = 0;
    bool m_can_unread;
    std::string m_pushed;
};

// An output stream that records every write (as its own string), flush and
// close. It can be told to throw from its next write.
class RecordingOutputStream : public ZUMOutputStream {
public:
    void write(char const* bytes, int count) override
    {
        if (throw_text_on_write) {
            throw throw_text_on_write;
        }
        writes.emplace_back(bytes ? std::string(bytes, static_cast<std::size_t>(count)) : std::string());
    }
    void flush() override { ++flushes; }
    void close() override { ++closes; }

    // Everything written, concatenated.
    std::string all() const
    {
        std::string joined;
        for (auto const& w : writes) {
            joined += w;
        }
        return joined;
    }

    std::vector<std::string> writes;
    int flushes = 0;
    int closes = 0;
    char const* throw_text_on_write = nullptr;
};

// Runs `call` and returns the method text of the first back-trace entry of
// the Error it raises: "<null>" for a null method text, "<no raise>" when it
// returns normally. Exceptions of other classes pass to the caller.
template <class Error, class Call>
std::string raisedMethod(Call call)
{
    try {
        call();
    } catch (Error const& e) {
        char const* method = e.getBackTraceSize() ? e.getBackTraceEntry(0).method : "<no entry>";
        return method ? method : "<null>";
    }
    return "<no raise>";
}

// As raisedMethod, for the text of the Error ("<null>" for none).
template <class Error, class Call>
std::string raisedText(Call call)
{
    try {
        call();
    } catch (Error const& e) {
        return e.getText() ? e.getText() : "<null>";
    }
    return "<no raise>";
}

#endif
