// gunzip and gzip: our chains (in the default build, with zlib, and in the
// fast builds, with ISA-L), plain zlib loops (the limit of the default build;
// for gzip at the default level and at level 1), and the gzip filters of
// Boost.Iostreams and Poco, over 64 MiB of generated text and, for gzip, over
// real text. Every read and write asks for 16 KiB; the peers get 16 KiB
// buffers too.

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <vector>

#include "BenchSupport.h"
#include "ZUMStreams.h"

#ifdef ZUM_BENCH_FAST_INFLATE
#include "GZIPInflaterComparison.h"  // newZlibGZIPInputStream()
#endif
#ifdef ZUM_BENCH_FAST_DEFLATE
#include "ZlibGZIPOutputStream.h"
#endif

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

// A new, unwrapped gzip input stream of one build.
using GunzipMaker = std::unique_ptr<ZUMFilterInputStream> (*)();

std::unique_ptr<ZUMFilterInputStream> libraryGunzip()
{
    return std::make_unique<ZUMGZIPInputStream>();
}

// A new, unwrapped multi-member gzip input stream.
std::unique_ptr<ZUMFilterInputStream> libraryMultiGunzip()
{
    return std::make_unique<ZUMMultiMemberGZIPInputStream>();
}

#ifdef ZUM_BENCH_FAST_INFLATE
// The library is the fast inflate build; the default build's stream (zlib)
// is compiled into this program from the same source.
std::unique_ptr<ZUMFilterInputStream> zlibGunzip()
{
    return std::unique_ptr<ZUMFilterInputStream>(newZlibGZIPInputStream());
}
GunzipMaker const k_zlib_build = zlibGunzip;
GunzipMaker const k_fast_build = libraryGunzip;
#else
GunzipMaker const k_zlib_build = libraryGunzip;
GunzipMaker const k_fast_build = nullptr;
#endif

// memory -> buffered (16 KiB) -> chunked (16 KiB chunks) -> gzip: the typical
// request's body.
Pass gunzipChainOf(GunzipMaker make)
{
    if (!make) {
        return nullptr;
    }
    auto body = std::make_shared<std::string>(chunkedBody(gzipMember(kGzipData), kBlock));
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [body, buf, make](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(body->data(), static_cast<int>(body->size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        ZUMChunkedInputStream chunked(bis);
        std::unique_ptr<ZUMFilterInputStream> gunzip = make();
        gunzip->wrap(chunked);
        return drainBlocks(*gunzip, buf->data(), allocs);
    };
}

// memory -> gzip: the member without framing.
Pass gunzipMemoryOf(GunzipMaker make)
{
    if (!make) {
        return nullptr;
    }
    std::string const* member = &gzipMember(kGzipData);
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [member, buf, make](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(member->data(), static_cast<int>(member->size()));
        std::unique_ptr<ZUMFilterInputStream> gunzip = make();
        gunzip->wrap(raw);
        return drainBlocks(*gunzip, buf->data(), allocs);
    };
}

}  // namespace

// The default build (zlib).
Pass gunzipChain()
{
    return gunzipChainOf(k_zlib_build);
}

Pass gunzipMemory()
{
    return gunzipMemoryOf(k_zlib_build);
}

// The multi-member stream in the same chain, over the same single member,
// and the library's single-member stream there (zlib or ISA-L, as the
// multi-member stream decodes with it).
Pass gunzipChainMulti()
{
    return gunzipChainOf(libraryMultiGunzip);
}

Pass gunzipChainLibrary()
{
    return gunzipChainOf(libraryGunzip);
}

// The fast inflate build (ISA-L); none where this program was built without it.
Pass gunzipChainFast()
{
    return gunzipChainOf(k_fast_build);
}

Pass gunzipMemoryFast()
{
    return gunzipMemoryOf(k_fast_build);
}

// zlib's own gzip decoding (header, CRC-32 and length checked by zlib), input
// in 16 KiB pieces, output 16 KiB at a time.
Pass gunzipZlib()
{
    std::string const* member = &gzipMember(kGzipData);
    auto out = std::make_shared<std::vector<unsigned char>>(kBlock);
    return [member, out](SteadyAllocations&) {
        z_stream z{};
        if (inflateInit2(&z, 15 + 16) != Z_OK) {
            throw std::runtime_error("inflateInit2");
        }
        auto const* in = reinterpret_cast<Bytef const*>(member->data());
        std::size_t left = member->size();
        std::int64_t total = 0;
        int status = Z_OK;
        while (status != Z_STREAM_END) {
            if (z.avail_in == 0) {
                std::size_t piece = left < static_cast<std::size_t>(kBlock) ? left : kBlock;
                z.next_in = const_cast<Bytef*>(in);
                z.avail_in = static_cast<uInt>(piece);
                in += piece;
                left -= piece;
            }
            z.next_out = out->data();
            z.avail_out = kBlock;
            status = inflate(&z, Z_NO_FLUSH);
            if (status != Z_OK && status != Z_STREAM_END) {
                inflateEnd(&z);
                throw std::runtime_error("inflate");
            }
            total += kBlock - z.avail_out;
        }
        inflateEnd(&z);
        return total;
    };
}

namespace {

// A gzip output stream of one build: a new, unwrapped one, and its finish().
struct GzipMaker {
    std::unique_ptr<ZUMFilterOutputStream> (*make)();
    void (*finish)(ZUMFilterOutputStream&);
};

std::unique_ptr<ZUMFilterOutputStream> libraryGzip()
{
    return std::make_unique<ZUMGZIPOutputStream>();
}

void libraryGzipFinish(ZUMFilterOutputStream& gzip)
{
    static_cast<ZUMGZIPOutputStream&>(gzip).finish();
}

#ifdef ZUM_BENCH_FAST_DEFLATE
// The library is the fast deflate build; the default build's stream (zlib)
// is compiled into this program from the same source.
std::unique_ptr<ZUMFilterOutputStream> zlibGzip()
{
    return std::unique_ptr<ZUMFilterOutputStream>(newZlibGZIPOutputStream());
}
GzipMaker const k_zlib_gzip = {zlibGzip, finishZlibGZIPOutputStream};
GzipMaker const k_fast_gzip = {libraryGzip, libraryGzipFinish};
#else
GzipMaker const k_zlib_gzip = {libraryGzip, libraryGzipFinish};
GzipMaker const k_fast_gzip = {nullptr, nullptr};
#endif

std::string const* generatedText()
{
    return &wordText(kGzipData);
}

// The bytes of the chunk data of a chunked body (the gzip member inside it),
// found by walking its size lines; `body` ends with a NUL byte.
std::int64_t chunkedPayloadSize(char const* body, std::size_t length)
{
    std::int64_t total = 0;
    std::size_t at = 0;
    while (at < length) {
        char* end = nullptr;
        unsigned long n = std::strtoul(body + at, &end, 16);
        if (n == 0) {
            break;
        }
        total += static_cast<std::int64_t>(n);
        at = static_cast<std::size_t>(end - body) + 2 + n + 2;
    }
    return total;
}

// gzip -> chunked (16 KiB chunks) -> buffered (16 KiB) -> memory: the typical
// request's body, written. The output size is that of the gzip member.
Pass gzipChainOf(GzipMaker gzip, std::string const* text)
{
    if (!gzip.make || !text) {
        return nullptr;
    }
    auto sink = std::make_shared<ZUMMemoryOutputStream>(static_cast<int>(text->size()), kBlock);
    return [text, sink, gzip](SteadyAllocations& allocs) {
        sink->reset();
        ZUMBufferedOutputStream bos(*sink, kBlock);
        ZUMChunkedOutputStream chunked(bos, kBlock);
        std::unique_ptr<ZUMFilterOutputStream> gz = gzip.make();
        gz->wrap(chunked);
        std::int64_t n = writePieces(*gz, *text, kBlock, allocs, [&] {
            gzip.finish(*gz);
            chunked.close();
            bos.flush();
        });
        reportOutputSize(chunkedPayloadSize(sink->bytes(), static_cast<std::size_t>(sink->length())));
        return n;
    };
}

// gzip -> memory.
Pass gzipMemoryOf(GzipMaker gzip, std::string const* text)
{
    if (!gzip.make || !text) {
        return nullptr;
    }
    auto sink = std::make_shared<ZUMMemoryOutputStream>(static_cast<int>(text->size()), kBlock);
    return [text, sink, gzip](SteadyAllocations& allocs) {
        sink->reset();
        std::unique_ptr<ZUMFilterOutputStream> gz = gzip.make();
        gz->wrap(*sink);
        std::int64_t n = writePieces(*gz, *text, kBlock, allocs, [&] { gzip.finish(*gz); });
        reportOutputSize(sink->length());
        return n;
    };
}

// zlib's own gzip encoding at `level`, input in 16 KiB pieces, output 16 KiB
// at a time appended to memory.
Pass gzipZlibOf(int level, std::string const* text)
{
    if (!text) {
        return nullptr;
    }
    auto sink = std::make_shared<std::vector<char>>();
    sink->reserve(text->size());
    auto out = std::make_shared<std::vector<unsigned char>>(kBlock);
    return [text, sink, out, level](SteadyAllocations&) {
        sink->clear();
        z_stream z{};
        if (deflateInit2(&z, level, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::runtime_error("deflateInit2");
        }
        for (std::size_t at = 0; at <= text->size(); at += kBlock) {
            bool last = at >= text->size();
            std::size_t piece = last ? 0 : std::min<std::size_t>(kBlock, text->size() - at);
            z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text->data() + at));
            z.avail_in = static_cast<uInt>(piece);
            bool finish = last || at + piece == text->size();
            int status;
            do {
                z.next_out = out->data();
                z.avail_out = kBlock;
                status = deflate(&z, finish ? Z_FINISH : Z_NO_FLUSH);
                sink->insert(sink->end(), out->data(), out->data() + (kBlock - z.avail_out));
            } while (z.avail_out == 0 || (finish && status != Z_STREAM_END));
            if (finish) {
                break;
            }
        }
        deflateEnd(&z);
        reportOutputSize(static_cast<std::int64_t>(sink->size()));
        return static_cast<std::int64_t>(text->size());
    };
}

#ifdef ZUM_BENCH_BOOST
Pass gzipBoostOf(std::string const* text)
{
    if (!text) {
        return nullptr;
    }
    namespace io = boost::iostreams;
    auto sink = std::make_shared<std::vector<char>>();
    sink->reserve(text->size());
    return [text, sink](SteadyAllocations& ignored) {
        sink->clear();
        io::filtering_ostream out;
        out.push(io::gzip_compressor(io::gzip_params(io::gzip::default_compression), kBlock),
                 kBlock);
        out.push(io::back_inserter(*sink), kBlock);
        std::int64_t n = writePieces(out, *text, kBlock, ignored, [&] { out.reset(); });  // reset completes the member
        reportOutputSize(static_cast<std::int64_t>(sink->size()));
        return n;
    };
}
#else
Pass gzipBoostOf(std::string const*)
{
    return nullptr;
}
#endif

#ifdef ZUM_BENCH_POCO
Pass gzipPocoOf(std::string const* text)
{
    if (!text) {
        return nullptr;
    }
    auto sink = std::make_shared<std::vector<char>>();
    sink->reserve(text->size());
    return [text, sink](SteadyAllocations& ignored) {
        sink->clear();
        VectorSinkBuf buf(*sink);
        std::ostream os(&buf);
        Poco::DeflatingOutputStream out(os, Poco::DeflatingStreamBuf::STREAM_GZIP,
                                        Z_DEFAULT_COMPRESSION);
        std::int64_t n = writePieces(out, *text, kBlock, ignored, [&] { out.close(); });
        reportOutputSize(static_cast<std::int64_t>(sink->size()));
        return n;
    };
}
#else
Pass gzipPocoOf(std::string const*)
{
    return nullptr;
}
#endif

}  // namespace

// gzip of the generated text: the default build (zlib) and its peers.
Pass gzipChain()
{
    return gzipChainOf(k_zlib_gzip, generatedText());
}

Pass gzipMemory()
{
    return gzipMemoryOf(k_zlib_gzip, generatedText());
}

Pass gzipZlib()
{
    return gzipZlibOf(Z_DEFAULT_COMPRESSION, generatedText());
}

Pass gzipZlibLevel1()
{
    return gzipZlibOf(1, generatedText());
}

Pass gzipBoost()
{
    return gzipBoostOf(generatedText());
}

Pass gzipPoco()
{
    return gzipPocoOf(generatedText());
}

// The fast deflate build (ISA-L); none where this program was built without it.
Pass gzipChainFast()
{
    return gzipChainOf(k_fast_gzip, generatedText());
}

// The same on the real text; none without it.
Pass gzipChainReal()
{
    return gzipChainOf(k_zlib_gzip, realText());
}

Pass gzipChainFastReal()
{
    return gzipChainOf(k_fast_gzip, realText());
}

Pass gzipZlibReal()
{
    return gzipZlibOf(Z_DEFAULT_COMPRESSION, realText());
}

Pass gzipZlibLevel1Real()
{
    return gzipZlibOf(1, realText());
}

Pass gzipBoostReal()
{
    return gzipBoostOf(realText());
}

Pass gzipPocoReal()
{
    return gzipPocoOf(realText());
}

#ifdef ZUM_BENCH_BOOST
Pass gunzipBoost()
{
    namespace io = boost::iostreams;
    std::string const* member = &gzipMember(kGzipData);
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [member, buf](SteadyAllocations&) {
        io::filtering_istream in;
        in.push(io::gzip_decompressor(io::zlib::default_window_bits, kBlock), kBlock);
        in.push(io::array_source(member->data(), member->size()), kBlock);
        return drainIstream(in, buf->data());
    };
}

#else
Pass gunzipBoost()
{
    return nullptr;
}
#endif

#ifdef ZUM_BENCH_POCO
Pass gunzipPoco()
{
    std::string const* member = &gzipMember(kGzipData);
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [member, buf](SteadyAllocations&) {
        Poco::MemoryInputStream src(member->data(), static_cast<std::streamsize>(member->size()));
        Poco::InflatingInputStream in(src, Poco::InflatingStreamBuf::STREAM_GZIP);
        return drainIstream(in, buf->data());
    };
}

#else
Pass gunzipPoco()
{
    return nullptr;
}
#endif
