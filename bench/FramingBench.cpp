// Lines, single bytes and framed block reads; plus the endpoints and filters
// not timed elsewhere, for their steady-state allocations.

#include <cstdio>
#include <sstream>
#include <unistd.h>
#include <vector>

#include "BenchSupport.h"
#include "ZUMStreams.h"

namespace {

std::size_t const kLineText = 8u << 20;
std::size_t const kBytes = 4u << 20;
std::size_t const kPayload = 16u << 20;

// memory -> buffered (16 KiB), readline into one reused line buffer.
void readlineOurs(benchmark::State& state)
{
    std::string const& text = crlfLines(kLineText);
    RVKByteBuffer line(256, 256);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMMemoryInputStream raw(text.data(), static_cast<int>(text.size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        int n = bis.readline(line);
        allocs.open();
        std::uint64_t calls = 0;
        while (n != -1) {
            total += n;
            line.reset();
            n = bis.readline(line);
            ++calls;
        }
        allocs.close(calls);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// std::getline over a std::istringstream of the same text (split at LF, so
// each line keeps its CR), into one reused std::string.
void readlineGetline(benchmark::State& state)
{
    std::string const& text = crlfLines(kLineText);
    std::istringstream in(text);
    std::string line;
    line.reserve(256);
    std::int64_t total = 0;
    for (auto _ : state) {
        in.clear();
        in.seekg(0);
        while (std::getline(in, line)) {
            total += static_cast<std::int64_t>(line.size()) + 1;
        }
    }
    state.SetBytesProcessed(total);
}

// memory -> buffered (16 KiB), read() byte by byte.
void readByteOurs(benchmark::State& state)
{
    std::string const& bytes = wordText(kBytes);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    unsigned sum = 0;
    for (auto _ : state) {
        ZUMMemoryInputStream raw(bytes.data(), static_cast<int>(bytes.size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        int c = bis.read();
        allocs.open();
        std::uint64_t calls = 0;
        while (c != -1) {
            sum += static_cast<unsigned>(c);
            c = bis.read();
            ++calls;
        }
        allocs.close(calls);
        total += static_cast<std::int64_t>(calls);
    }
    benchmark::DoNotOptimize(sum);
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// std::istream::get() over a std::istringstream of the same bytes.
void readByteIstream(benchmark::State& state)
{
    std::string const& bytes = wordText(kBytes);
    std::istringstream in(bytes);
    std::int64_t total = 0;
    unsigned sum = 0;
    for (auto _ : state) {
        in.clear();
        in.seekg(0);
        for (int c = in.get(); c != std::char_traits<char>::eof(); c = in.get()) {
            sum += static_cast<unsigned>(c);
            ++total;
        }
    }
    benchmark::DoNotOptimize(sum);
    state.SetBytesProcessed(total);
}

template <class Stream>
void drain(Stream& stream, std::vector<char>& buf, SteadyAllocations& allocs, std::int64_t& total)
{
    int n = stream.read(buf.data(), kBlock);
    allocs.open();
    std::uint64_t calls = 0;
    while (n != -1) {
        total += n;
        n = stream.read(buf.data(), kBlock);
        ++calls;
    }
    allocs.close(calls);
}

// memory -> chunked (16 KiB chunks, its own 16 KiB buffered stream), 16 KiB
// block reads.
void chunkedOurs(benchmark::State& state)
{
    std::string const body = chunkedBody(wordText(kPayload), kBlock);
    std::vector<char> buf(kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMMemoryInputStream raw(body.data(), static_cast<int>(body.size()));
        ZUMChunkedInputStream chunked(raw, kBlock);
        drain(chunked, buf, allocs, total);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// memory -> buffered (16 KiB), 16 KiB block reads of the same payload.
void bufferedOurs(benchmark::State& state)
{
    std::string const& payload = wordText(kPayload);
    std::vector<char> buf(kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMMemoryInputStream raw(payload.data(), static_cast<int>(payload.size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        drain(bis, buf, allocs, total);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// memory -> block (its own 16 KiB buffered stream), one block of the whole
// payload.
void blockOurs(benchmark::State& state)
{
    std::string const& payload = wordText(kPayload);
    std::vector<char> buf(kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMMemoryInputStream raw(payload.data(), static_cast<int>(payload.size()));
        ZUMBlockInputStream block(raw, kBlock);
        block.resetBlockSize(static_cast<int>(payload.size()));
        drain(block, buf, allocs, total);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// A temporary file of the payload, removed at exit.
char const* payloadFile()
{
    static std::string path;
    if (path.empty()) {
        char name[] = "/tmp/zum_bench_XXXXXX";
        int fd = mkstemp(name);
        if (fd < 0) {
            return nullptr;
        }
        std::string const& payload = wordText(kPayload);
        bool ok = write(fd, payload.data(), payload.size()) == static_cast<ssize_t>(payload.size());
        close(fd);
        path = name;
        std::atexit([] { std::remove(path.c_str()); });
        if (!ok) {
            return nullptr;
        }
    }
    return path.c_str();
}

// file (page cache) -> buffered (16 KiB), 16 KiB block reads.
void fileInput(benchmark::State& state)
{
    char const* path = payloadFile();
    if (!path) {
        state.SkipWithError("no temporary file");
        return;
    }
    std::vector<char> buf(kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMFileInputStream file(path);
        ZUMBufferedInputStream bis(file, kBlock);
        drain(bis, buf, allocs, total);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// 16 KiB writes to a file output stream on /dev/null.
void fileOutput(benchmark::State& state)
{
    std::string const& payload = wordText(kPayload);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMFileOutputStream file("/dev/null", 0);
        file.write(payload.data(), kBlock);
        allocs.open();
        std::uint64_t calls = 0;
        for (std::size_t at = kBlock; at < payload.size(); at += kBlock) {
            file.write(payload.data() + at, kBlock);
            ++calls;
        }
        file.flush();
        allocs.close(calls);
        total += static_cast<std::int64_t>(payload.size());
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// std::istringstream -> std input adapter -> buffered (16 KiB), block reads.
void stdInput(benchmark::State& state)
{
    std::string const& payload = wordText(kPayload);
    std::istringstream in(payload);
    std::vector<char> buf(kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        in.clear();
        in.seekg(0);
        ZUMStdInputStream std_in(in);
        ZUMBufferedInputStream bis(std_in, kBlock);
        drain(bis, buf, allocs, total);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// buffered output (16 KiB) -> std output adapter -> std::ostream on memory,
// 1 KiB writes.
void stdOutput(benchmark::State& state)
{
    std::string const& payload = wordText(kPayload);
    std::vector<char> sink;
    sink.reserve(payload.size());
    SteadyAllocations allocs;
    std::int64_t total = 0;
    int const piece = 1024;
    for (auto _ : state) {
        sink.clear();
        VectorSinkBuf sbuf(sink);
        std::ostream os(&sbuf);
        ZUMStdOutputStream std_out(os);
        ZUMBufferedOutputStream bos(std_out, kBlock);
        bos.write(payload.data(), piece);
        allocs.open();
        std::uint64_t calls = 0;
        for (std::size_t at = piece; at < payload.size(); at += piece) {
            bos.write(payload.data() + at, piece);
            ++calls;
        }
        bos.flush();
        allocs.close(calls);
        total += static_cast<std::int64_t>(payload.size());
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// std::istream over our memory stream (ZUMInputStreamBuf), 16 KiB reads.
void streamBufInput(benchmark::State& state)
{
    std::string const& payload = wordText(kPayload);
    std::vector<char> buf(kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMMemoryInputStream raw(payload.data(), static_cast<int>(payload.size()));
        ZUMInputStreamBuf sbuf(raw);
        std::istream in(&sbuf);
        in.read(buf.data(), kBlock);
        allocs.open();
        std::uint64_t calls = 0;
        while (in.gcount() > 0) {
            total += in.gcount();
            in.read(buf.data(), kBlock);
            ++calls;
        }
        allocs.close(calls);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// std::ostream over our memory output stream (ZUMOutputStreamBuf), 1 KiB
// writes.
void streamBufOutput(benchmark::State& state)
{
    std::string const& payload = wordText(kPayload);
    ZUMMemoryOutputStream sink(static_cast<int>(payload.size()), kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    int const piece = 1024;
    for (auto _ : state) {
        sink.reset();
        ZUMOutputStreamBuf sbuf(sink);
        std::ostream os(&sbuf);
        os.write(payload.data(), piece);
        allocs.open();
        std::uint64_t calls = 0;
        for (std::size_t at = piece; at < payload.size(); at += piece) {
            os.write(payload.data() + at, piece);
            ++calls;
        }
        os.flush();
        allocs.close(calls);
        total += static_cast<std::int64_t>(payload.size());
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

}  // namespace

void registerFramingBenchmarks()
{
    benchmark::RegisterBenchmark("readline/ours", readlineOurs)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("readline/std::getline", readlineGetline)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("read()/ours", readByteOurs)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("read()/std::istream::get", readByteIstream)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("chunked/ours", chunkedOurs)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("chunked/buffered", bufferedOurs)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("block/ours", blockOurs)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("file/input", fileInput)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("file/output", fileOutput)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("std/input", stdInput)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("std/output", stdOutput)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("streambuf/input", streamBufInput)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("streambuf/output", streamBufOutput)->Unit(benchmark::kMillisecond);
}
