// zumcat: the program's own streams around the library's chains.
//
//   InputCounter      counts the bytes read from the input (for positions
//                     and progress);
//   InputBuffer       the buffered stream of the gunzip, unchunk and http
//                     chains; knows the input position of its next byte and
//                     the last line it read;
//   StandardOutput    the endpoint on standard output; counts the bytes and
//                     reports a failed write at once;
//   Base64TextCheck   checks Base64 text as it is read from the input and
//                     names the byte where it goes wrong.
#ifndef ZUMCAT_STREAMS_H
#define ZUMCAT_STREAMS_H

#include <string>

#include "ZUMBufferedInputStream.h"
#include "ZUMFileOutputStream.h"
#include "ZUMFilterInputStream.h"

namespace zumcat {

class Progress;

// A pass-through input filter that counts the bytes its upstream delivered.
class InputCounter : public ZUMFilterInputStream {
public:
    explicit InputCounter(ZUMInputStream& upstream) { wrap(upstream); }

    int read(RVKByteBuffer& buffer, int count) override { return counted(p_upstream->read(buffer, count)); }
    int read(char* buf, int count) override { return counted(p_upstream->read(buf, count)); }
    int read() override
    {
        int c = p_upstream->read();
        counted(c < 0 ? -1 : 1);
        return c;
    }

    // The bytes delivered so far.
    long long count() const { return m_count; }
    // Whether the upstream has reported its end.
    bool ended() const { return m_ended; }
    // Tells `progress` after every read (null: nobody).
    void watch(Progress* progress) { m_progress = progress; }

private:
    int counted(int n);

    long long m_count = 0;
    bool m_ended = false;
    Progress* m_progress = nullptr;
};

// The buffered stream over the counted input. Its position is the input
// offset of the next byte it delivers; it keeps the last line readline() read
// (for the chunked body's end, which the chunked stream reads as lines).
class InputBuffer : public ZUMBufferedInputStream {
public:
    InputBuffer(InputCounter& input, int size) : ZUMBufferedInputStream(input, size), m_input(input) {}

    int readline(RVKByteBuffer& line) override;

    long long position() const { return m_input.count() - buffered(); }
    // The last line read: its length as readline() returned it (-1: the input
    // had ended), its text (CR LF included) and the offset of its first byte.
    int lastLineLength() const { return m_last_length; }
    std::string const& lastLine() const { return m_last_line; }
    long long lastLineOffset() const { return m_last_offset; }

private:
    InputCounter& m_input;
    int m_last_length = -1;
    std::string m_last_line;
    long long m_last_offset = 0;
};

// The endpoint on standard output: a file output stream over stdout that
// counts the bytes written, remembers the last one, and raises Failure for a
// write that fails (BrokenPipe when the reader has gone).
class StandardOutput : public ZUMFileOutputStream {
public:
    StandardOutput() : ZUMFileOutputStream(stdout, 0) {}

    void write(char const* bytes, int count) override;
    void flush() override;

    long long count() const { return m_count; }
    // The last byte written; only meaningful when count() > 0.
    char lastByte() const { return m_last; }
    void watch(Progress* progress) { m_progress = progress; }

private:
    void check();

    long long m_count = 0;
    char m_last = 0;
    Progress* m_progress = nullptr;
};

// An input filter that checks Base64 text as it is read from the input, in
// the large reads of the buffered stream above it. CR and LF may stand
// anywhere (the line-break filter further up drops them); the other bytes
// must form groups of four alphabet characters, the last one
// or two of a group possibly '='. At the first byte that does not, it
// delivers the bytes before it and then reports the end of the text, so the
// decoder writes every group before the fault; fault() then says what is
// wrong and at which input offset. Text that ends inside a group is a fault
// too.
class Base64TextCheck : public ZUMFilterInputStream {
public:
    // Starts at input offset 0.
    explicit Base64TextCheck(ZUMInputStream& upstream) { wrap(upstream); }

    int read(RVKByteBuffer& buffer, int count) override;
    int read(char* buf, int count) override;
    int read() override;

    // What is wrong with the text, or empty while nothing is.
    std::string const& fault() const { return m_fault; }

private:
    // Checks buf[0..n) and moves the bytes to deliver to its front. Returns
    // their number; sets m_fault and stops at a fault.
    int check(char* buf, int n);

    long long m_offset = 0;       // input offset of the next byte from upstream
    int m_group = 0;              // characters of the current group, 0..3
    long long m_group_start = 0;  // offset of the group's first character
    long long m_pad_offset = -1;  // a '=' in third place, awaiting a second one
    std::string m_fault;
};

}  // namespace zumcat

#endif
