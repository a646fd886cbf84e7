// zumcat: the program's own streams around the library's chains.
//
//   InputCounter      counts the bytes read from the input (for positions
//                     and progress);
//   InputBuffer       the buffered stream of the unchunk and http chains;
//                     knows the input position of its next byte;
//   StandardOutput    the endpoint on standard output; counts the bytes and
//                     reports a failed write at once.
#ifndef ZUMCAT_STREAMS_H
#define ZUMCAT_STREAMS_H

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
// offset of the next byte it delivers.
class InputBuffer : public ZUMBufferedInputStream {
public:
    InputBuffer(InputCounter& input, int size) : ZUMBufferedInputStream(input, size), m_input(input) {}

    long long position() const { return m_input.count() - buffered(); }

private:
    InputCounter& m_input;
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

}  // namespace zumcat

#endif
