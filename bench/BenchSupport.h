#ifndef ZUM_BENCH_SUPPORT_H
#define ZUM_BENCH_SUPPORT_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <streambuf>
#include <string>
#include <vector>

// Shared pieces of the benchmark program: the allocation counter, the test
// data (made once, the same for every benchmark of a run) and small sinks.

// Size of every read and write request, of buffered streams' refills and of
// chunks, unless a benchmark says otherwise.
int const kBlock = 16384;

// Allocations served by the program's replacing operator new so far.
std::size_t allocationCount();

// Counts the allocations of a steady-state window: from the moment it is
// opened to close(), over `calls` reads or writes. A benchmark opens it after
// the first call of each iteration (which may allocate codec state) and the
// totals become the counter "allocs/call".
class SteadyAllocations {
public:
    void open() { m_mark = allocationCount(); }
    void close(std::uint64_t calls)
    {
        m_allocations += allocationCount() - m_mark;
        m_calls += calls;
    }
    // Sets the counters "allocs/call" and "calls" on the benchmark.
    void report(benchmark::State& state) const;

private:
    std::size_t m_mark = 0;
    std::uint64_t m_allocations = 0;
    std::uint64_t m_calls = 0;
};

// Reads `stream` (anything with read(char*, int) returning -1 at its end) to
// its end in reads of kBlock bytes into `buf`; returns the bytes delivered.
// The window opens after the first read, which may allocate codec state.
template <class Stream>
std::int64_t drainBlocks(Stream& stream, char* buf, SteadyAllocations& allocs)
{
    std::int64_t total = 0;
    int n = stream.read(buf, kBlock);
    allocs.open();
    std::uint64_t calls = 0;
    while (n != -1) {
        total += n;
        n = stream.read(buf, kBlock);
        ++calls;
    }
    allocs.close(calls);
    return total;
}

// Reads a std::istream to its end in reads of kBlock bytes; returns the bytes
// delivered. With `allocs`, the window opens after the first read.
std::int64_t drainIstream(std::istream& in, char* buf, SteadyAllocations* allocs = nullptr);

// Writes `data` to `out` (anything with write(char const*, n)) in pieces of
// `piece` bytes, then calls `complete` (a flush, a finish); returns the size of
// `data`. The window opens after the first piece and closes after `complete`.
template <class Out, class Complete>
std::int64_t writePieces(Out& out, std::string const& data, int piece, SteadyAllocations& allocs,
                         Complete complete)
{
    out.write(data.data(), piece);
    allocs.open();
    std::uint64_t calls = 0;
    for (std::size_t at = static_cast<std::size_t>(piece); at < data.size(); at += static_cast<std::size_t>(piece)) {
        out.write(data.data() + at, piece);
        ++calls;
    }
    complete();
    allocs.close(calls);
    return static_cast<std::int64_t>(data.size());
}

// The size of the output of the pass that ran last, for the passes that
// compress: set by the pass, taken (and cleared to -1) by the benchmark.
void reportOutputSize(std::int64_t bytes);
std::int64_t takeOutputSize();

// One pass of a scenario over its whole data: returns the number of bytes it
// counts (its MB/s are those bytes over its CPU time). Our passes record their
// steady-state allocations in the window they are given; the peers' ignore it.
using Pass = std::function<std::int64_t(SteadyAllocations&)>;
// Builds a pass: makes or fetches its data and buffers, outside any timing.
using PassMaker = Pass (*)();

// Text made of words, spaces, punctuation and CR LF line breaks, with no byte
// that XML escaping replaces; about 3.5:1 under deflate. Same bytes for the
// same size.
std::string const& wordText(std::size_t size);
// Real text for the gzip benchmarks: the file named by the environment
// variable ZUM_BENCH_REAL_TEXT (bench/compare makes it), read once; null when
// there is none.
std::string const* realText();
// A gzip member (zlib, default level) of wordText(size).
std::string const& gzipMember(std::size_t size);
// `payload` in the chunked transfer coding: chunks of `chunk` bytes, the last
// chunk and an empty trailer.
std::string chunkedBody(std::string const& payload, std::size_t chunk);
// Pseudo-random bytes (all 256 values).
std::string const& randomBytes(std::size_t size);
// Markup-heavy text: tags, attributes, entities; about one byte in six is one
// that XML escaping replaces.
std::string const& markupText(std::size_t size);
// `size` bytes of lines of 80 bytes, CR LF included.
std::string const& crlfLines(std::size_t size);

// A std::streambuf that appends everything written to a vector (kept
// across uses, so its storage is reused).
class VectorSinkBuf : public std::streambuf {
public:
    explicit VectorSinkBuf(std::vector<char>& out) : m_out(out) {}

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(char const* s, std::streamsize n) override;

private:
    std::vector<char>& m_out;
};

#endif
