// Base64: the core layer's codec over long inputs, and the two streams against
// Poco's Base64Encoder and Base64Decoder.

#include <map>
#include <memory>
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

// Long inputs for the codec: a multiple of 3 near 1 MiB, coded 16 times a
// pass.
std::size_t const kCodecBytes = 3u * 349525u;
int const kCodecRounds = 16;
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

// The same text in lines of 76 characters ended by CR LF, as MIME writes it.
std::string const& mimeRandom(std::size_t size)
{
    static std::map<std::size_t, std::string> cache;
    auto it = cache.find(size);
    if (it == cache.end()) {
        std::string const& text = encodedRandom(size);
        std::string lines;
        lines.reserve(text.size() / 76 * 78 + 80);
        for (std::size_t at = 0; at < text.size(); at += 76) {
            lines.append(text, at, 76).append("\r\n");
        }
        it = cache.emplace(size, lines).first;
    }
    return it->second;
}

// memory -> buffered (16 KiB) -> strict Base64 input stream, 16 KiB reads;
// counted in the decoded bytes delivered.
Pass strictInput(std::string const* text, int skipWhiteSpace)
{
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [text, buf, skipWhiteSpace](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(text->data(), static_cast<int>(text->size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        ZUMStrictBase64InputStream b64(bis, skipWhiteSpace);
        return drainBlocks(b64, buf->data(), allocs);
    };
}

}  // namespace

// Counted in the bytes read: raw bytes in.
Pass base64CoreEncode()
{
    std::string const* bytes = &randomBytes(kCodecBytes);
    auto out = std::make_shared<std::vector<char>>(
        RVKBase64EncodedSize(static_cast<unsigned>(bytes->size()), 0));
    return [bytes, out](SteadyAllocations&) {
        for (int i = 0; i < kCodecRounds; ++i) {
            unsigned n = RVKBase64Encode(bytes->data(), static_cast<unsigned>(bytes->size()),
                                         out->data(), 0);
            benchmark::DoNotOptimize(n);
            benchmark::ClobberMemory();
        }
        return static_cast<std::int64_t>(bytes->size()) * kCodecRounds;
    };
}

// Counted in the bytes read: Base64 text in.
Pass base64CoreDecodeN()
{
    std::string const* text = &encodedRandom(kCodecBytes);
    auto out = std::make_shared<std::vector<char>>(text->size() / 4 * 3);
    return [text, out](SteadyAllocations&) {
        for (int i = 0; i < kCodecRounds; ++i) {
            unsigned n = 0;
            int status = RVKBase64DecodeN(text->data(), static_cast<unsigned>(text->size()),
                                          out->data(), &n);
            benchmark::DoNotOptimize(status);
            benchmark::ClobberMemory();
        }
        return static_cast<std::int64_t>(text->size()) * kCodecRounds;
    };
}

// The NUL-terminated form: a strlen pass in front of the decoding.
Pass base64CoreDecode()
{
    std::string const* text = &encodedRandom(kCodecBytes);
    auto out = std::make_shared<std::vector<char>>(text->size() / 4 * 3);
    return [text, out](SteadyAllocations&) {
        for (int i = 0; i < kCodecRounds; ++i) {
            unsigned n = 0;
            int status = RVKBase64Decode(text->c_str(), out->data(), &n);
            benchmark::DoNotOptimize(status);
            benchmark::ClobberMemory();
        }
        return static_cast<std::int64_t>(text->size()) * kCodecRounds;
    };
}

// Base64 output stream -> memory, 16 KiB writes; counted in the raw bytes
// written.
Pass base64Output()
{
    std::string const* bytes = &randomBytes(kStreamBytes);
    auto sink = std::make_shared<ZUMMemoryOutputStream>(
        static_cast<int>(bytes->size() / 3 * 4 + 64), kBlock);
    return [bytes, sink](SteadyAllocations& allocs) {
        sink->reset();
        ZUMBase64OutputStream b64(*sink);
        return writePieces(b64, *bytes, kBlock, allocs, [&] { b64.flush(); });
    };
}

// memory -> buffered (16 KiB) -> Base64 input stream, 16 KiB reads; counted in
// the decoded bytes delivered.
Pass base64Input()
{
    std::string const* text = &encodedRandom(kStreamBytes);
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [text, buf](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(text->data(), static_cast<int>(text->size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        ZUMBase64InputStream b64;
        b64.wrap(bis);
        return drainBlocks(b64, buf->data(), allocs);
    };
}

Pass base64StrictInput()
{
    return strictInput(&encodedRandom(kStreamBytes), 0);
}

// The text in MIME lines, the line breaks skipped by the stream.
Pass base64StrictMimeInput()
{
    return strictInput(&mimeRandom(kStreamBytes), 1);
}

#ifdef ZUM_BENCH_POCO
Pass base64PocoEncoder()
{
    std::string const* bytes = &randomBytes(kStreamBytes);
    auto sink = std::make_shared<std::vector<char>>();
    sink->reserve(bytes->size() / 3 * 4 + 64);
    return [bytes, sink](SteadyAllocations& ignored) {
        sink->clear();
        VectorSinkBuf buf(*sink);
        std::ostream os(&buf);
        Poco::Base64Encoder enc(os);
        enc.rdbuf()->setLineLength(0);  // no line breaks, as ours
        return writePieces(enc, *bytes, kBlock, ignored, [&] { enc.close(); });
    };
}

Pass base64PocoDecoder()
{
    std::string const* text = &encodedRandom(kStreamBytes);
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [text, buf](SteadyAllocations&) {
        Poco::MemoryInputStream src(text->data(), static_cast<std::streamsize>(text->size()));
        Poco::Base64Decoder dec(src);
        return drainIstream(dec, buf->data());
    };
}
// Poco's decoder skips the line breaks by itself.
Pass base64PocoMimeDecoder()
{
    std::string const* text = &mimeRandom(kStreamBytes);
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [text, buf](SteadyAllocations&) {
        Poco::MemoryInputStream src(text->data(), static_cast<std::streamsize>(text->size()));
        Poco::Base64Decoder dec(src);
        return drainIstream(dec, buf->data());
    };
}
#else
Pass base64PocoMimeDecoder()
{
    return nullptr;
}
Pass base64PocoEncoder()
{
    return nullptr;
}
Pass base64PocoDecoder()
{
    return nullptr;
}
#endif
