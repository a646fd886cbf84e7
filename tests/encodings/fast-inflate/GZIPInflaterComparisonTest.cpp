// The gzip input stream with ISA-L's inflater against the same stream with
// zlib's (fast inflate build only): same bytes, same failures, same bytes
// handed back, over fixtures, fuzz seeds and generated members.

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "GZIPInflaterComparison.h"
#include "TestFiles.h"
#include "TestStreams.h"

namespace {

using inflater_comparison::compare;
using Sizes = std::vector<int>;
using Pieces = std::vector<std::size_t>;

// Read sizes and upstream piece sizes that every fixed input is decoded with.
std::vector<Sizes> const k_read_sizes = {{1}, {16384}, {3, 500, 7, 65536}};
std::vector<Pieces> const k_pieces = {{}, {1}, {7, 100, 2}};

// A gzip member made by zlib with `header` of `content` in pieces of random
// size, switching level and strategy (stored, fixed and dynamic blocks) and
// flushing (empty stored blocks) between pieces as `rng` picks.
std::string deflateMixed(std::string const& content, std::mt19937& rng, gz_header* header)
{
    static int const strategies[] = {Z_DEFAULT_STRATEGY, Z_FIXED, Z_HUFFMAN_ONLY, Z_RLE, Z_FILTERED};
    static int const levels[] = {0, 1, 6, 9};
    z_stream z{};
    deflateInit2(&z, levels[rng() % 4], Z_DEFLATED, 31, 8, strategies[rng() % 5]);
    deflateSetHeader(&z, header);
    std::string out;
    std::size_t at = 0;
    char buf[16384];
    bool switches = rng() % 2;
    do {
        std::size_t n = std::min<std::size_t>(content.size() - at, 1 + rng() % 40000);
        z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data() + at));
        z.avail_in = static_cast<uInt>(n);
        at += n;
        int flush = at == content.size() ? Z_FINISH : !switches ? Z_NO_FLUSH : rng() % 3 ? Z_NO_FLUSH : Z_SYNC_FLUSH;
        int ret;
        do {
            z.next_out = reinterpret_cast<Bytef*>(buf);
            z.avail_out = sizeof buf;
            ret = deflate(&z, flush);
            out.append(buf, sizeof buf - z.avail_out);
        } while (z.avail_out == 0 || (flush == Z_FINISH && ret != Z_STREAM_END));
        if (switches && flush != Z_FINISH) {
            // deflateParams() writes what is pending with the old settings.
            int level = levels[rng() % 4], strategy = strategies[rng() % 5];
            do {
                z.next_out = reinterpret_cast<Bytef*>(buf);
                z.avail_out = sizeof buf;
                ret = deflateParams(&z, level, strategy);
                out.append(buf, sizeof buf - z.avail_out);
            } while (ret == Z_BUF_ERROR);
        }
    } while (at < content.size());
    deflateEnd(&z);
    return out;
}

// Content of a random kind and size: incompressible bytes, text, runs of a
// byte, or a mix.
std::string randomContent(std::mt19937& rng)
{
    static std::size_t const scales[] = {0, 100, 4096, 65536, 300000};
    std::size_t scale = scales[rng() % 5];
    std::size_t n = scale == 0 ? 0 : rng() % scale;
    switch (rng() % 4) {
    case 0:
        return testBytes(n, rng());
    case 1:
        return mixedData(n, rng());
    case 2:
        return std::string(n, static_cast<char>(rng()));
    default: {
        std::string text;
        while (text.size() < n) {
            text += "GET /index.html?id=" + std::to_string(rng() % 1000) + " HTTP/1.1 200\n";
        }
        return text.substr(0, n);
    }
    }
}

// A gzip member of random content with random header fields, followed by
// a few other bytes (sometimes another member).
std::string randomMember(std::mt19937& rng)
{
    std::string content = randomContent(rng);
    int const flags = static_cast<int>(rng() % 32) & 0x1E;
    static Bytef extra[] = "ab\0cd", name[] = "name.txt", comment[] = "a comment";
    gz_header header{};
    header.extra = flags & 0x04 ? extra : Z_NULL;
    header.extra_len = 5;
    header.name = flags & 0x08 ? name : Z_NULL;
    header.comment = flags & 0x10 ? comment : Z_NULL;
    header.hcrc = flags & 0x02;
    header.os = 3;
    std::string m = deflateMixed(content, rng, &header);
    std::size_t tail = rng() % 4 == 0 ? rng() % 40 : 0;
    std::string const empty_member("\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\x03\x03\x00\0\0\0\0\0\0\0\0", 20);
    m += rng() % 8 == 0 ? empty_member : testBytes(tail, rng());
    return m;
}

// `member` damaged at a random place: cut short, a bit flipped in the
// deflate data, a trailer byte changed, or a run of bytes overwritten.
std::string damaged(std::string member, std::mt19937& rng)
{
    std::size_t n = member.size();
    switch (rng() % 4) {
    case 0:
        return member.substr(0, rng() % n);
    case 1:
        member[10 + rng() % (n - 10)] ^= static_cast<char>(1 << rng() % 8);
        return member;
    case 2:
        member[n - 1 - rng() % 8] ^= static_cast<char>(1 + rng() % 255);
        return member;
    default: {
        std::size_t at = 10 + rng() % (n - 10);
        std::string noise = testBytes(1 + rng() % 64, rng());
        return member.replace(at, std::min(noise.size(), n - at), noise.substr(0, n - at));
    }
    }
}

Sizes randomSizes(std::mt19937& rng, bool small_member)
{
    switch (rng() % 5) {
    case 0:
        return {small_member ? 1 : 4096};
    case 1:
        return {static_cast<int>(1 + rng() % 65536)};
    case 2:
        return {16384};
    default:
        return {static_cast<int>(1 + rng() % 20), static_cast<int>(1 + rng() % 5000), 65536};
    }
}

Pieces randomPieces(std::mt19937& rng)
{
    switch (rng() % 3) {
    case 0:
        return {};
    case 1:
        return {1 + rng() % 16};
    default:
        return {1 + rng() % 16384, 1 + rng() % 9};
    }
}

// Generated members, intact or damaged, in read and piece sizes picked per
// member; returns the number of members that decoded differently.
int compareGenerated(int members, bool damage, unsigned seed)
{
    std::mt19937 rng(seed);
    int differ = 0;
    for (int i = 0; i < members; ++i) {
        std::string member = randomMember(rng);
        if (damage) {
            member = damaged(member, rng);
        }
        Sizes sizes = randomSizes(rng, member.size() < 20000);
        Pieces pieces = randomPieces(rng);
        std::string diff = compare(member, sizes, pieces);
        if (!diff.empty() && ++differ <= 5) {
            ADD_FAILURE() << "member " << i << " (seed " << seed << ", " << member.size() << " bytes):" << diff;
        }
    }
    return differ;
}

}  // namespace

// Every member of the fixtures and of the fuzz seeds (wherever a 1F 8B starts
// in a file), in whole reads, 1-byte reads and mixed sizes, from an upstream
// that delivers whole requests, single bytes or odd pieces.
TEST(GZIPInflaters, AgreeOnFixturesAndFuzzSeeds)
{
    int inputs = 0;
    for (auto const& dir : {std::string(ZUM_TEST_DATA_DIR) + "/gzip", std::string(ZUM_SOURCE_DIR) + "/fuzz/corpus"}) {
        for (auto const& entry : std::filesystem::recursive_directory_iterator(dir)) {
            std::string bytes = entry.is_regular_file() ? readFile(entry.path().string()) : "";
            for (std::size_t at = 0; at < bytes.size(); at = bytes.find("\x1F\x8B", at + 1)) {
                ++inputs;
                for (auto const& sizes : k_read_sizes) {
                    for (auto const& pieces : k_pieces) {
                        EXPECT_EQ(compare(bytes.substr(at), sizes, pieces), "")
                            << entry.path() << " from byte " << at << ", reads of " << sizes[0] << ", pieces of "
                            << (pieces.empty() ? 16384 : pieces[0]);
                    }
                }
            }
        }
    }
    EXPECT_GT(inputs, 60);
}

// Intact members of every block type, size and header shape, with bytes or a
// second member behind them: same content, same end, same hand-back.
TEST(GZIPInflaters, AgreeOnGeneratedMembers)
{
    EXPECT_EQ(compareGenerated(2000, false, 20240601), 0);
}

// Damaged members (cut short, bits flipped, trailer changed, bytes
// overwritten): the same failure, bytes that agree up to the point of
// failure, and the same hand-back wherever the failure leaves the input at
// the same point.
TEST(GZIPInflaters, FailAlikeOnDamagedMembers)
{
    EXPECT_EQ(compareGenerated(2000, true, 7), 0);
}
