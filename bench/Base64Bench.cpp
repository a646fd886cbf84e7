// Base64: the core layer's codec over long inputs, and the two streams against
// Poco's Base64Encoder and Base64Decoder.

#include <map>
#include <vector>

#include "BenchSupport.h"
#include "RVKBase64.h"
#include "ZUMStreams.h"

#ifdef ZUM_BENCH_POCO
#include <Poco/Base64Decoder.h>
#include <Poco/Base64Encoder.h>
#include <Poco/MemoryStream.h>
#endif

namespace {

// Long inputs for the codec: a multiple of 3 near 1 MiB.
std::size_t const kCodecBytes = 3u * 349525u;
// Stream payloads.
std::size_t const kStreamBytes = 8u << 20;

// The Base64 text of randomBytes(size).
std::string const& encodedRandom(std::size_t size)
{
    static std::map<std::size_t, std::string> cache;
    auto it = cache.find(size);
    if (it == cache.end()) {
        std::string const& bytes = randomBytes(size);
        std::string text(RVKBase64EncodedSize(static_cast<unsigned>(size), 0), '\0');
        text.resize(RVKBase64Encode(bytes.data(), static_cast<unsigned>(size), &text[0], 0));
        it = cache.emplace(size, text).first;
    }
    return it->second;
}

// Measured over the bytes read: raw bytes in.
void coreEncode(benchmark::State& state)
{
    std::string const& bytes = randomBytes(kCodecBytes);
    std::vector<char> out(RVKBase64EncodedSize(static_cast<unsigned>(bytes.size()), 0));
    for (auto _ : state) {
        unsigned n = RVKBase64Encode(bytes.data(), static_cast<unsigned>(bytes.size()), out.data(), 0);
        benchmark::DoNotOptimize(n);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}

// Measured over the bytes read: Base64 text in.
void coreDecodeN(benchmark::State& state)
{
    std::string const& text = encodedRandom(kCodecBytes);
    std::vector<char> out(text.size() / 4 * 3 + 3);
    for (auto _ : state) {
        unsigned n = 0;
        int status = RVKBase64DecodeN(text.data(), static_cast<unsigned>(text.size()), out.data(), &n);
        benchmark::DoNotOptimize(status);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// The NUL-terminated form: a strlen pass in front of the decoding.
void coreDecode(benchmark::State& state)
{
    std::string const& text = encodedRandom(kCodecBytes);
    std::vector<char> out(text.size() / 4 * 3 + 3);
    for (auto _ : state) {
        unsigned n = 0;
        int status = RVKBase64Decode(text.c_str(), out.data(), &n);
        benchmark::DoNotOptimize(status);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// Base64 output stream -> memory, 16 KiB writes; measured over the raw bytes
// written.
void outputStream(benchmark::State& state)
{
    std::string const& bytes = randomBytes(kStreamBytes);
    ZUMMemoryOutputStream sink(static_cast<int>(bytes.size() / 3 * 4 + 64), kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        sink.reset();
        ZUMBase64OutputStream b64(sink);
        b64.write(bytes.data(), kBlock);
        allocs.open();
        std::uint64_t calls = 0;
        for (std::size_t at = kBlock; at < bytes.size(); at += kBlock) {
            b64.write(bytes.data() + at, kBlock);
            ++calls;
        }
        b64.flush();
        allocs.close(calls);
        total += static_cast<std::int64_t>(bytes.size());
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// memory -> buffered (16 KiB) -> Base64 input stream, 16 KiB reads; measured
// over the decoded bytes delivered.
void inputStream(benchmark::State& state)
{
    std::string const& text = encodedRandom(kStreamBytes);
    std::vector<char> buf(kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMMemoryInputStream raw(text.data(), static_cast<int>(text.size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        ZUMBase64InputStream b64;
        b64.wrap(bis);
        int n = b64.read(buf.data(), kBlock);
        allocs.open();
        std::uint64_t calls = 0;
        while (n != -1) {
            total += n;
            n = b64.read(buf.data(), kBlock);
            ++calls;
        }
        allocs.close(calls);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

#ifdef ZUM_BENCH_POCO
void pocoEncoder(benchmark::State& state)
{
    std::string const& bytes = randomBytes(kStreamBytes);
    std::vector<char> sink;
    sink.reserve(bytes.size() / 3 * 4 + 64);
    std::int64_t total = 0;
    for (auto _ : state) {
        sink.clear();
        VectorSinkBuf buf(sink);
        std::ostream os(&buf);
        Poco::Base64Encoder enc(os);
        enc.rdbuf()->setLineLength(0);  // no line breaks, as ours
        for (std::size_t at = 0; at < bytes.size(); at += kBlock) {
            enc.write(bytes.data() + at, kBlock);
        }
        enc.close();
        total += static_cast<std::int64_t>(bytes.size());
    }
    state.SetBytesProcessed(total);
}

void pocoDecoder(benchmark::State& state)
{
    std::string const& text = encodedRandom(kStreamBytes);
    std::vector<char> buf(kBlock);
    std::int64_t total = 0;
    for (auto _ : state) {
        Poco::MemoryInputStream src(text.data(), static_cast<std::streamsize>(text.size()));
        Poco::Base64Decoder dec(src);
        while (dec.read(buf.data(), kBlock) || dec.gcount() > 0) {
            total += dec.gcount();
        }
    }
    state.SetBytesProcessed(total);
}
#endif

}  // namespace

void registerBase64Benchmarks()
{
    benchmark::RegisterBenchmark("base64/core:encode", coreEncode);
    benchmark::RegisterBenchmark("base64/core:decodeN", coreDecodeN);
    benchmark::RegisterBenchmark("base64/core:decode", coreDecode);
    benchmark::RegisterBenchmark("base64/ours:output", outputStream)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("base64/ours:input", inputStream)->Unit(benchmark::kMillisecond);
#ifdef ZUM_BENCH_POCO
    benchmark::RegisterBenchmark("base64/poco:encoder", pocoEncoder)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("base64/poco:decoder", pocoDecoder)->Unit(benchmark::kMillisecond);
#endif
}
