#include "BenchSupport.h"

#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>

// The replacing allocation functions and allocationCount() come from the
// test program's counter (tests/support/AllocationCounter.cpp).

void SteadyAllocations::report(benchmark::State& state) const
{
    double calls = static_cast<double>(m_calls);
    state.counters["allocs/call"] = calls > 0 ? static_cast<double>(m_allocations) / calls : 0.0;
    state.counters["calls"] = calls;
}

// ---- data -------------------------------------------------------------------

namespace {

// xorshift64*: the same sequence on every machine.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t next()
    {
        m_state ^= m_state >> 12;
        m_state ^= m_state << 25;
        m_state ^= m_state >> 27;
        return m_state * 2685821657736338717ULL;
    }
    unsigned below(unsigned n) { return static_cast<unsigned>((next() >> 33) % n); }

private:
    std::uint64_t m_state;
};

char const* const k_words[] = {
    "the", "of", "and", "to", "in", "a", "is", "that", "for", "it", "as", "was", "with", "be",
    "by", "on", "not", "he", "this", "are", "or", "his", "from", "at", "which", "but", "have",
    "an", "had", "they", "you", "were", "their", "one", "all", "we", "can", "her", "has",
    "there", "been", "if", "more", "when", "will", "would", "who", "so", "no", "stream",
    "buffer", "chunk", "header", "request", "response", "length", "compressed", "member",
    "library", "transfer", "encoding", "content", "message", "catalog", "number", "between",
    "through", "another", "because", "different", "following", "something", "important",
    "information", "development", "government", "international", "experience", "although",
    "structure", "character", "production", "whatever", "particular", "committee", "quarter",
    "42", "2024", "17", "3.14159", "0x1F8B", "1000", "65536", "HTTP/1.1", "GET", "POST",
};
char const k_punct[] = ".,;:!?-";

std::string makeWordText(std::size_t size)
{
    Random rng(0x5EED1234ABCDULL);
    std::size_t const words = sizeof k_words / sizeof k_words[0];
    std::string text;
    text.reserve(size + 64);
    std::size_t column = 0;
    while (text.size() < size) {
        char const* w = k_words[rng.below(static_cast<unsigned>(words))];
        text += w;
        column += std::char_traits<char>::length(w);
        unsigned r = rng.below(16);
        if (r == 0) {
            text += k_punct[rng.below(sizeof k_punct - 1)];
            ++column;
        }
        if (column > 70 + rng.below(10)) {
            text += "\r\n";
            column = 0;
        } else {
            text += ' ';
            ++column;
        }
    }
    text.resize(size);
    return text;
}

std::string deflateGzip(std::string const& data)
{
    z_stream z{};
    if (deflateInit2(&z, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
        throw std::runtime_error("deflateInit2");
    }
    std::string out(deflateBound(&z, static_cast<uLong>(data.size())) + 64, '\0');
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    z.avail_in = static_cast<uInt>(data.size());
    z.next_out = reinterpret_cast<Bytef*>(&out[0]);
    z.avail_out = static_cast<uInt>(out.size());
    if (deflate(&z, Z_FINISH) != Z_STREAM_END) {
        throw std::runtime_error("deflate");
    }
    out.resize(z.total_out);
    deflateEnd(&z);
    return out;
}

template <class Make>
std::string const& cached(std::map<std::size_t, std::string>& cache, std::size_t size, Make make)
{
    auto it = cache.find(size);
    if (it == cache.end()) {
        it = cache.emplace(size, make(size)).first;
    }
    return it->second;
}

}  // namespace

std::string const& wordText(std::size_t size)
{
    static std::map<std::size_t, std::string> cache;
    return cached(cache, size, makeWordText);
}

std::string const& gzipMember(std::size_t size)
{
    static std::map<std::size_t, std::string> cache;
    return cached(cache, size, [](std::size_t n) { return deflateGzip(wordText(n)); });
}

std::string const* realText()
{
    static std::string const* const text = [] () -> std::string const* {
        char const* path = std::getenv("ZUM_BENCH_REAL_TEXT");
        std::FILE* f = path && *path ? std::fopen(path, "rb") : nullptr;
        if (!f) {
            return nullptr;
        }
        auto* t = new std::string();
        char buf[65536];
        std::size_t n;
        while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) {
            t->append(buf, n);
        }
        std::fclose(f);
        return t;
    }();
    return text;
}

namespace {
std::int64_t g_output_size = -1;
}  // namespace

void reportOutputSize(std::int64_t bytes)
{
    g_output_size = bytes;
}

std::int64_t takeOutputSize()
{
    std::int64_t bytes = g_output_size;
    g_output_size = -1;
    return bytes;
}

std::string chunkedBody(std::string const& payload, std::size_t chunk)
{
    std::string body;
    body.reserve(payload.size() + payload.size() / chunk * 16 + 16);
    char line[32];
    for (std::size_t at = 0; at < payload.size(); at += chunk) {
        std::size_t n = payload.size() - at < chunk ? payload.size() - at : chunk;
        std::snprintf(line, sizeof line, "%zx\r\n", n);
        body += line;
        body.append(payload, at, n);
        body += "\r\n";
    }
    body += "0\r\n\r\n";
    return body;
}

std::string const& randomBytes(std::size_t size)
{
    static std::map<std::size_t, std::string> cache;
    return cached(cache, size, [](std::size_t n) {
        Random rng(0xB64B64B64ULL);
        std::string bytes(n, '\0');
        for (char& c : bytes) {
            c = static_cast<char>(rng.next() >> 56);
        }
        return bytes;
    });
}

std::string const& markupText(std::size_t size)
{
    static std::map<std::size_t, std::string> cache;
    return cached(cache, size, [](std::size_t n) {
        char const* const pieces[] = {
            "<a href=\"/doc?id=42&amp;lang=en\">", "</a>", "<p class='note'>", "</p>",
            "Tom & Jerry's \"show\"", " x < y && y > z ", "<br/>", "R&D", "it's",
            " plain words between the tags ", "\r\n", "<td>", "</td>", "&#169;",
        };
        Random rng(0x3C3E2622ULL);
        std::string text;
        text.reserve(n + 64);
        while (text.size() < n) {
            text += pieces[rng.below(sizeof pieces / sizeof pieces[0])];
        }
        text.resize(n);
        return text;
    });
}

std::string const& crlfLines(std::size_t size)
{
    static std::map<std::size_t, std::string> cache;
    return cached(cache, size, [](std::size_t n) {
        std::string const& words = wordText(n);
        std::string text;
        text.reserve(n);
        std::size_t from = 0;
        while (text.size() + 80 <= n) {
            for (int i = 0; i < 78; ++i) {
                char c = words[from++ % words.size()];
                text += (c == '\r' || c == '\n') ? ' ' : c;
            }
            text += "\r\n";
        }
        return text;
    });
}

// ---- sinks ------------------------------------------------------------------

VectorSinkBuf::int_type VectorSinkBuf::overflow(int_type c)
{
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        m_out.push_back(traits_type::to_char_type(c));
    }
    return traits_type::not_eof(c);
}

std::streamsize VectorSinkBuf::xsputn(char const* s, std::streamsize n)
{
    m_out.insert(m_out.end(), s, s + n);
    return n;
}

std::int64_t drainIstream(std::istream& in, char* buf, SteadyAllocations* allocs)
{
    std::int64_t total = 0;
    in.read(buf, kBlock);
    if (allocs) {
        allocs->open();
    }
    std::uint64_t calls = 0;
    while (in.gcount() > 0) {
        total += in.gcount();
        in.read(buf, kBlock);
        ++calls;
    }
    if (allocs) {
        allocs->close(calls);
    }
    return total;
}
