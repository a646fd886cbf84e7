// gunzip and gzip of 64 MiB: our chains against a plain zlib loop and the
// gzip filters of Boost.Iostreams and Poco.

#include <zlib.h>

#include <stdexcept>
#include <vector>

#include "BenchSupport.h"
#include "ZUMStreams.h"

#ifdef ZUM_BENCH_BOOST
#include <boost/iostreams/device/array.hpp>
#include <boost/iostreams/device/back_inserter.hpp>
#include <boost/iostreams/filter/gzip.hpp>
#include <boost/iostreams/filtering_stream.hpp>
#endif
#ifdef ZUM_BENCH_POCO
#include <Poco/DeflatingStream.h>
#include <Poco/InflatingStream.h>
#include <Poco/MemoryStream.h>
#endif

namespace {

std::size_t const kGzipData = 64u << 20;

// ---- gunzip -----------------------------------------------------------------

// memory -> buffered (16 KiB) -> chunked (16 KiB chunks) -> gzip: the typical
// request's body.
void gunzipChain(benchmark::State& state)
{
    std::string const body = chunkedBody(gzipMember(kGzipData), kBlock);
    std::vector<char> buf(kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMMemoryInputStream raw(body.data(), static_cast<int>(body.size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        ZUMChunkedInputStream chunked(bis);
        ZUMGZIPInputStream gunzip(chunked);
        std::uint64_t calls = 0;
        int n = gunzip.read(buf.data(), kBlock);
        allocs.open();
        while (n != -1) {
            total += n;
            n = gunzip.read(buf.data(), kBlock);
            ++calls;
        }
        allocs.close(calls);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// memory -> gzip: the member without framing.
void gunzipMemory(benchmark::State& state)
{
    std::string const& member = gzipMember(kGzipData);
    std::vector<char> buf(kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        ZUMMemoryInputStream raw(member.data(), static_cast<int>(member.size()));
        ZUMGZIPInputStream gunzip(raw);
        std::uint64_t calls = 0;
        int n = gunzip.read(buf.data(), kBlock);
        allocs.open();
        while (n != -1) {
            total += n;
            n = gunzip.read(buf.data(), kBlock);
            ++calls;
        }
        allocs.close(calls);
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// The limit: zlib's own gzip decoding (header, CRC-32 and length checked by
// zlib), input in 16 KiB pieces, output 16 KiB at a time.
void gunzipZlib(benchmark::State& state)
{
    std::string const& member = gzipMember(kGzipData);
    std::vector<unsigned char> out(kBlock);
    std::int64_t total = 0;
    for (auto _ : state) {
        z_stream z{};
        if (inflateInit2(&z, 15 + 16) != Z_OK) {
            state.SkipWithError("inflateInit2");
            return;
        }
        auto const* in = reinterpret_cast<Bytef const*>(member.data());
        std::size_t left = member.size();
        int status = Z_OK;
        while (status != Z_STREAM_END) {
            if (z.avail_in == 0) {
                std::size_t piece = left < static_cast<std::size_t>(kBlock) ? left : kBlock;
                z.next_in = const_cast<Bytef*>(in);
                z.avail_in = static_cast<uInt>(piece);
                in += piece;
                left -= piece;
            }
            z.next_out = out.data();
            z.avail_out = kBlock;
            status = inflate(&z, Z_NO_FLUSH);
            if (status != Z_OK && status != Z_STREAM_END) {
                state.SkipWithError("inflate");
                inflateEnd(&z);
                return;
            }
            total += kBlock - z.avail_out;
        }
        inflateEnd(&z);
    }
    state.SetBytesProcessed(total);
}

#ifdef ZUM_BENCH_BOOST
void gunzipBoost(benchmark::State& state)
{
    namespace io = boost::iostreams;
    std::string const& member = gzipMember(kGzipData);
    std::vector<char> buf(kBlock);
    std::int64_t total = 0;
    for (auto _ : state) {
        io::filtering_istream in;
        in.push(io::gzip_decompressor(io::zlib::default_window_bits, kBlock), kBlock);
        in.push(io::array_source(member.data(), member.size()), kBlock);
        while (in.read(buf.data(), kBlock) || in.gcount() > 0) {
            total += in.gcount();
        }
    }
    state.SetBytesProcessed(total);
}

void gzipBoost(benchmark::State& state)
{
    namespace io = boost::iostreams;
    std::string const& text = wordText(kGzipData);
    std::vector<char> sink;
    sink.reserve(text.size());
    std::int64_t total = 0;
    for (auto _ : state) {
        sink.clear();
        {
            io::filtering_ostream out;
            out.push(io::gzip_compressor(io::gzip_params(io::gzip::default_compression), kBlock),
                     kBlock);
            out.push(io::back_inserter(sink), kBlock);
            for (std::size_t at = 0; at < text.size(); at += kBlock) {
                out.write(text.data() + at, kBlock);
            }
            out.reset();  // completes the member
        }
        total += static_cast<std::int64_t>(text.size());
    }
    state.SetBytesProcessed(total);
}
#endif

#ifdef ZUM_BENCH_POCO
void gunzipPoco(benchmark::State& state)
{
    std::string const& member = gzipMember(kGzipData);
    std::vector<char> buf(kBlock);
    std::int64_t total = 0;
    for (auto _ : state) {
        Poco::MemoryInputStream src(member.data(), static_cast<std::streamsize>(member.size()));
        Poco::InflatingInputStream in(src, Poco::InflatingStreamBuf::STREAM_GZIP);
        while (in.read(buf.data(), kBlock) || in.gcount() > 0) {
            total += in.gcount();
        }
    }
    state.SetBytesProcessed(total);
}

void gzipPoco(benchmark::State& state)
{
    std::string const& text = wordText(kGzipData);
    std::vector<char> sink;
    sink.reserve(text.size());
    std::int64_t total = 0;
    for (auto _ : state) {
        sink.clear();
        VectorSinkBuf buf(sink);
        std::ostream os(&buf);
        Poco::DeflatingOutputStream out(os, Poco::DeflatingStreamBuf::STREAM_GZIP,
                                        Z_DEFAULT_COMPRESSION);
        for (std::size_t at = 0; at < text.size(); at += kBlock) {
            out.write(text.data() + at, kBlock);
        }
        out.close();
        total += static_cast<std::int64_t>(text.size());
    }
    state.SetBytesProcessed(total);
}
#endif

// ---- gzip -------------------------------------------------------------------

// gzip -> chunked (16 KiB chunks) -> buffered (16 KiB) -> memory: the typical
// request's body, written.
void gzipChain(benchmark::State& state)
{
    std::string const& text = wordText(kGzipData);
    ZUMMemoryOutputStream sink(static_cast<int>(text.size()), kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        sink.reset();
        ZUMBufferedOutputStream bos(sink, kBlock);
        ZUMChunkedOutputStream chunked(bos, kBlock);
        ZUMGZIPOutputStream gzip(chunked);
        gzip.write(text.data(), kBlock);
        allocs.open();
        std::uint64_t calls = 0;
        for (std::size_t at = kBlock; at < text.size(); at += kBlock) {
            gzip.write(text.data() + at, kBlock);
            ++calls;
        }
        gzip.finish();
        chunked.close();
        bos.flush();
        allocs.close(calls);
        total += static_cast<std::int64_t>(text.size());
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// gzip -> memory.
void gzipMemory(benchmark::State& state)
{
    std::string const& text = wordText(kGzipData);
    ZUMMemoryOutputStream sink(static_cast<int>(text.size()), kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        sink.reset();
        ZUMGZIPOutputStream gzip(sink);
        gzip.write(text.data(), kBlock);
        allocs.open();
        std::uint64_t calls = 0;
        for (std::size_t at = kBlock; at < text.size(); at += kBlock) {
            gzip.write(text.data() + at, kBlock);
            ++calls;
        }
        gzip.finish();
        allocs.close(calls);
        total += static_cast<std::int64_t>(text.size());
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

// The limit: zlib's own gzip encoding at the default level, input in 16 KiB
// pieces, output 16 KiB at a time appended to memory.
void gzipZlib(benchmark::State& state)
{
    std::string const& text = wordText(kGzipData);
    std::vector<char> sink;
    sink.reserve(text.size());
    std::vector<unsigned char> out(kBlock);
    std::int64_t total = 0;
    for (auto _ : state) {
        sink.clear();
        z_stream z{};
        if (deflateInit2(&z, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) !=
            Z_OK) {
            state.SkipWithError("deflateInit2");
            return;
        }
        for (std::size_t at = 0; at <= text.size(); at += kBlock) {
            bool last = at == text.size();
            z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data() + at));
            z.avail_in = last ? 0 : kBlock;
            int status;
            do {
                z.next_out = out.data();
                z.avail_out = kBlock;
                status = deflate(&z, last ? Z_FINISH : Z_NO_FLUSH);
                sink.insert(sink.end(), out.data(), out.data() + (kBlock - z.avail_out));
            } while (z.avail_out == 0 || (last && status != Z_STREAM_END));
        }
        deflateEnd(&z);
        total += static_cast<std::int64_t>(text.size());
    }
    state.SetBytesProcessed(total);
}

}  // namespace

void registerGzipBenchmarks()
{
    benchmark::RegisterBenchmark("gunzip/ours:chain", gunzipChain)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("gunzip/ours:memory", gunzipMemory)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("gunzip/zlib", gunzipZlib)->Unit(benchmark::kMillisecond);
#ifdef ZUM_BENCH_BOOST
    benchmark::RegisterBenchmark("gunzip/boost", gunzipBoost)->Unit(benchmark::kMillisecond);
#endif
#ifdef ZUM_BENCH_POCO
    benchmark::RegisterBenchmark("gunzip/poco", gunzipPoco)->Unit(benchmark::kMillisecond);
#endif
    benchmark::RegisterBenchmark("gzip/ours:chain", gzipChain)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("gzip/ours:memory", gzipMemory)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("gzip/zlib", gzipZlib)->Unit(benchmark::kMillisecond);
#ifdef ZUM_BENCH_BOOST
    benchmark::RegisterBenchmark("gzip/boost", gzipBoost)->Unit(benchmark::kMillisecond);
#endif
#ifdef ZUM_BENCH_POCO
    benchmark::RegisterBenchmark("gzip/poco", gzipPoco)->Unit(benchmark::kMillisecond);
#endif
}
