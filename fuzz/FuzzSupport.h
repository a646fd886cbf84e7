#ifndef ZUM_FUZZ_SUPPORT_H
#define ZUM_FUZZ_SUPPORT_H

// Pieces shared by the fuzz targets: a reader of the fuzz input, an input
// stream whose reads are cut, emptied and failed where the input says, and
// the check that stops the run on a wrong result.
//
// A target reads a few settings from the front of the input and takes the
// rest as the bytes under test, so a seed is a handful of setting bytes
// followed by a real document.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <zlib.h>

#include "RVKCore.h"
#include "ZUMStreams.h"

// Stops the run (libFuzzer records the input) when `condition` is false.
#define FUZZ_CHECK(condition)                                                  \
    do {                                                                       \
        if (!(condition)) {                                                    \
            std::fprintf(stderr, "fuzz check failed: %s (%s:%d)\n", #condition, \
                         __FILE__, __LINE__);                                  \
            std::abort();                                                      \
        }                                                                      \
    } while (0)

// Reads the fuzz input from the front; past its end every byte is 0.
class FuzzBytes {
public:
    FuzzBytes(std::uint8_t const* data, std::size_t size) : m_data(data), m_left(size) {}

    std::uint8_t byte()
    {
        if (m_left == 0) {
            return 0;
        }
        --m_left;
        return *m_data++;
    }
    unsigned u16()
    {
        unsigned low = byte();
        return low | (static_cast<unsigned>(byte()) << 8);
    }
    // The next `n` bytes (fewer at the end).
    std::string take(std::size_t n)
    {
        n = n < m_left ? n : m_left;
        std::string s(reinterpret_cast<char const*>(m_data), n);
        m_data += n;
        m_left -= n;
        return s;
    }
    std::string rest() { return take(m_left); }
    std::size_t left() const { return m_left; }

private:
    std::uint8_t const* m_data;
    std::size_t m_left;
};

// A cycle of small numbers taken from the input, used for read sizes,
// write sizes and the like.
class Schedule {
public:
    Schedule() = default;
    explicit Schedule(std::string steps) : m_steps(std::move(steps)) {}
    std::uint8_t next()
    {
        if (m_steps.empty()) {
            return 0;
        }
        std::uint8_t s = static_cast<std::uint8_t>(m_steps[m_at % m_steps.size()]);
        ++m_at;
        return s;
    }

private:
    std::string m_steps;
    std::size_t m_at = 0;
};

// A failure the source throws when told to.
class SourceFailure {};

// An input stream over a byte string. Each read delivers at most the size
// the schedule gives (step 0: a read of nothing while the budget of empty
// reads lasts, else everything asked; 255: everything asked). The reads
// whose numbers (counted from 1) are in `failAt` throw instead, before they
// deliver anything: a text exception or a ZUMIOException, alternately.
// Accepts unread bytes when told to.
class FuzzSource : public ZUMInputStream {
public:
    FuzzSource(std::string data, Schedule schedule, int emptyReads, bool canUnread)
        : m_data(std::move(data)), m_schedule(schedule), m_empty_reads(emptyReads),
          m_can_unread(canUnread)
    {
    }

    // Reads (1-based numbers) that throw: up to four of them.
    void failAt(unsigned a, unsigned b = 0, unsigned c = 0, unsigned d = 0)
    {
        m_fail[0] = a;
        m_fail[1] = b;
        m_fail[2] = c;
        m_fail[3] = d;
    }

    int read(RVKByteBuffer& buffer, int count) override
    {
        int n = grant(count);
        if (n > 0) {
            buffer.appendChars(m_data.data() + m_pos, static_cast<unsigned>(n));
            m_pos += static_cast<std::size_t>(n);
        }
        return n;
    }
    int read(char* buf, int count) override
    {
        int n = grant(count);
        if (n > 0) {
            std::memcpy(buf, m_data.data() + m_pos, static_cast<std::size_t>(n));
            m_pos += static_cast<std::size_t>(n);
        }
        return n;
    }
    int read() override
    {
        char c;
        int n = read(&c, 1);
        return n == 1 ? static_cast<unsigned char>(c) : (n < 0 ? -1 : read());
    }
    RVK_bool canUnread() override { return m_can_unread ? 1 : 0; }
    void unread(char const* bytes, int count) override
    {
        if (!m_can_unread) {
            ZUMInputStream::unread(bytes, count);
            return;
        }
        if (count <= 0) {
            return;
        }
        m_data = std::string(bytes, static_cast<std::size_t>(count)) + m_data.substr(m_pos);
        m_pos = 0;
    }

    // The bytes not yet delivered.
    std::string remaining() const { return m_data.substr(m_pos); }
    bool atEnd() const { return m_pos >= m_data.size(); }
    // Whether a read has thrown, and how many have.
    bool failed() const { return m_failures > 0; }
    int failures() const { return m_failures; }
    int emptyReadsLeft() const { return m_empty_reads; }
    void setCanUnread(bool can) { m_can_unread = can; }

private:
    int grant(int count)
    {
        ++m_reads;
        for (unsigned f : m_fail) {
            if (f != 0 && f == m_reads) {
                ++m_failures;
                if (m_reads % 2) {
                    throw "source failed";
                }
                ZUMIOException failure(static_cast<RVKSeverity>(1), 5L);
                RVK_THROW(failure, "FuzzSource::read");
            }
        }
        if (m_pos >= m_data.size()) {
            return -1;
        }
        if (count <= 0) {
            return 0;
        }
        std::size_t left = m_data.size() - m_pos;
        std::uint8_t step = m_schedule.next();
        std::size_t n = static_cast<std::size_t>(count);
        if (step == 0 && m_empty_reads > 0) {
            --m_empty_reads;
            return 0;
        }
        if (step != 0 && step != 255 && step < n) {
            n = step;
        }
        return static_cast<int>(n < left ? n : left);
    }

    std::string m_data;
    std::size_t m_pos = 0;
    Schedule m_schedule;
    int m_empty_reads;
    bool m_can_unread;
    unsigned m_fail[4] = {0, 0, 0, 0};
    unsigned m_reads = 0;
    int m_failures = 0;
};

// Runs `call`, again as long as it fails because the source threw (a source
// throws at most four times).
template <class Call>
auto retrying(FuzzSource& source, Call call) -> decltype(call())
{
    for (int attempt = 0;; ++attempt) {
        int failures = source.failures();
        try {
            return call();
        } catch (char const*) {
            FUZZ_CHECK(source.failures() > failures && attempt < 4);
        } catch (ZUMIOException const&) {
            FUZZ_CHECK(source.failures() > failures && attempt < 4);
        }
    }
}

// The bytes collected by a memory output stream.
inline std::string collected(ZUMMemoryOutputStream const& out)
{
    return std::string(out.bytes(), static_cast<std::size_t>(out.length()));
}

// One read of `in` in the form the step picks (array, byte buffer or, one
// step in eight, single byte), appending what it delivers to `got`. Returns the read's result.
inline int readOnce(ZUMInputStream& in, std::uint8_t step, int count, std::string& got)
{
    static char buf[65536];
    switch (step % 8 < 4 ? 0 : step % 8 < 7 ? 1 : 2) {
    case 0: {
        int n = in.read(buf, count);
        if (n > 0) {
            got.append(buf, static_cast<std::size_t>(n));
        }
        return n;
    }
    case 1: {
        RVKByteBuffer b(0, 64);
        b << "pre";  // a byte-buffer read appends, never clears
        int n = in.read(b, count);
        FUZZ_CHECK(b.pcount() >= 3 && std::memcmp(b.str(), "pre", 3) == 0);
        FUZZ_CHECK(n < 0 ? b.pcount() == 3 : b.pcount() == 3 + n);
        if (n > 0) {
            got.append(b.str() + 3, static_cast<std::size_t>(n));
        }
        return n;
    }
    default: {
        int c = in.read();
        FUZZ_CHECK(c >= -1 && c <= 255);
        if (c >= 0) {
            got.push_back(static_cast<char>(c));
            return 1;
        }
        return -1;
    }
    }
}

// A read count from a schedule step: 1 to 255, or 16,384 for step 0.
inline int readCount(std::uint8_t step)
{
    return step == 0 ? 16384 : step;
}


// Refill sizes of the buffered stream under a chain, picked by 4 bits.
int const k_chain_refill_sizes[16] = {1, 2, 3, 5, 8, 13, 64, 100, 255, 512, 1000, 4096, 8192, 16384, 16385, 65536};

// What zlib's own gzip decoder makes of one member (and what follows it).
struct ZlibGunzip {
    bool ok = false;               // the member and its trailer decoded
    bool header_crc_only = false;  // refused only for the header CRC16
    std::string out;               // the bytes it delivered
    std::size_t consumed = 0;      // bytes of the member, header to trailer
};

inline ZlibGunzip zlibGunzip(std::string const& member)
{
    ZlibGunzip ref;
    z_stream z;
    std::memset(&z, 0, sizeof z);
    if (inflateInit2(&z, 16 + 15) != Z_OK) {
        std::abort();
    }
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(member.data()));
    z.avail_in = static_cast<uInt>(member.size());
    char out[16384];
    int ret;
    do {
        z.next_out = reinterpret_cast<Bytef*>(out);
        z.avail_out = sizeof out;
        ret = inflate(&z, Z_NO_FLUSH);
        ref.out.append(out, sizeof out - z.avail_out);
    } while (ret == Z_OK);
    ref.ok = ret == Z_STREAM_END;
    ref.header_crc_only = ret == Z_DATA_ERROR && z.msg && std::strcmp(z.msg, "header crc mismatch") == 0;
    ref.consumed = static_cast<std::size_t>(z.total_in);
    inflateEnd(&z);
    return ref;
}

#endif
