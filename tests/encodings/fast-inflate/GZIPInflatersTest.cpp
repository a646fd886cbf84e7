// ISA-L's inflater against zlib's, each driven through the gzip input
// stream's decoder seam as the stream drives it (fast inflate build only),
// on large members of every block type, intact and damaged.

#include <gtest/gtest.h>

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>

#include "TestFiles.h"
#include "TestStreams.h"

// Both seams in one program, each in a namespace of its own, its operations
// gathered in one type.
#define ZUM_SEAM                                                \
    struct Seam {                                               \
        using Record = inflater::Record;                        \
        static constexpr int headroom = inflater::k_headroom;   \
        static constexpr auto create = inflater::create;        \
        static constexpr auto destroy = inflater::destroy;      \
        static constexpr auto prepare = inflater::prepare;      \
        static constexpr auto begin = inflater::begin;          \
        static constexpr auto end = inflater::end;              \
        static constexpr auto step = inflater::step;            \
        static constexpr auto crc = inflater::crc;              \
    };
namespace zlib_seam {
#include "ZUMGZIPZlibInflater.h"
ZUM_SEAM
}  // namespace zlib_seam
namespace isal_seam {
#include "ZUMGZIPIsalInflater.h"
ZUM_SEAM
}  // namespace isal_seam

namespace {

// What a seam made of a member: the content, the CRC-32 of it by the seam,
// how it ended ("end", "corrupt", "truncated") and where its deflate data
// ended.
struct Inflated {
    std::string content, verdict;
    std::size_t trailer = 0;
    std::uint32_t crc = 0;
};

// Inflates the deflate data behind the 10-byte header of `member`, offered
// in contiguous pieces of `piece` bytes with `out` bytes of room per step.
template <class S>
Inflated inflateWith(std::string const& member, std::size_t piece, std::size_t out)
{
    std::vector<unsigned char> in(S::headroom + member.size() - 10), room(out);
    std::copy(member.begin() + 10, member.end(), in.begin() + S::headroom);
    unsigned char* const start = in.data() + S::headroom;
    std::size_t const size = member.size() - 10;
    typename S::Record* r = S::create();
    S::prepare(r, start);
    S::begin(r);
    Inflated got;
    std::size_t given = 0;
    int status = 0;
    for (int steps = 0; status == 0 && steps < 10000000; ++steps) {
        if (r->avail_in == 0 && given < size) {
            std::size_t n = std::min(piece, size - given);
            r->avail_in = static_cast<unsigned>(n);
            given += n;
        }
        int eof = given == size;
        r->next_out = room.data();
        r->avail_out = static_cast<unsigned>(out);
        status = S::step(r, eof);
        got.content.append(room.begin(), room.begin() + static_cast<std::ptrdiff_t>(out - r->avail_out));
        status = status == -5 && given < size ? 0 : status;
    }
    got.trailer = 10 + static_cast<std::size_t>(r->next_in - start);
    S::end(r);
    S::destroy(r);
    auto const* bytes = reinterpret_cast<unsigned char const*>(got.content.data());
    got.crc = S::crc(S::crc(0, nullptr, 0), bytes, got.content.size());
    got.verdict = status == 1 ? "end" : status == -3 ? "corrupt" : "truncated";
    return got;
}

}  // namespace

// Stored, fixed and dynamic blocks over 4 KiB, intact, cut short, with a bit
// flipped in the deflate data and of a reserved block type: in every piece
// and room size the two seams deliver the same bytes with the same CRC-32,
// end alike and, unless the data is corrupt, leave the input at the same
// trailer.
TEST(GZIPInflaters, AgreeOnLargeIntactAndDamagedMembers)
{
    std::string const content = testBytes(20000, 3) + mixedData(60000, 4);
    struct Kind { char const* name; int level, strategy; } const kinds[] = {
        {"stored", 0, Z_DEFAULT_STRATEGY}, {"fixed", 6, Z_FIXED}, {"dynamic", 9, Z_DEFAULT_STRATEGY}};
    for (Kind const& kind : kinds) {
        std::string const intact = zlibDeflate(content, 31, kind.level, kind.strategy);
        std::string flipped = intact, reserved = intact;
        flipped[intact.size() / 2] ^= 0x10;
        reserved[10] = 0x07;  // the last block, of the reserved type
        struct Case { std::string bytes, verdict; } const cases[] = {
            {intact + "next", "end"}, {intact.substr(0, intact.size() * 2 / 3), "truncated"},
            {flipped, "end"}, {reserved, "corrupt"},
        };
        for (auto const& c : cases) {
            for (auto [piece, out] : {std::pair{std::size_t(16384), std::size_t(65536)}, {7, 4096}, {1, 1}}) {
                Inflated const zlib = inflateWith<zlib_seam::Seam>(c.bytes, piece, out);
                Inflated const isal = inflateWith<isal_seam::Seam>(c.bytes, piece, out);
                std::string const where = std::string(kind.name) + ", " + c.verdict + ", pieces of " +
                                          std::to_string(piece) + ", room " + std::to_string(out);
                EXPECT_EQ(zlib.verdict, c.verdict) << where;
                EXPECT_EQ(isal.verdict, c.verdict) << where;
                EXPECT_TRUE(isal.content == zlib.content) << where;
                EXPECT_EQ(isal.crc, zlib.crc) << where;
                if (c.verdict != "corrupt") {  // ISA-L finds a data error with more input taken
                    EXPECT_EQ(isal.trailer, zlib.trailer) << where;
                }
            }
        }
    }
}
