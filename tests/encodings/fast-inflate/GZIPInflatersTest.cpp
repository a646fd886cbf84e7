// ISA-L's inflater against zlib's, each driven through the gzip input
// stream's decoder seam as the stream drives it (fast inflate build only),
// on large members of every block type, intact and damaged.
// Small random members, random read sizes, cut and failing reads against the
// zlib build's stream: fuzz target gzip_input_isal.

#include <gtest/gtest.h>

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

// What a seam made of a member: the content, the CRC-32 of it by the seam,
// how it ended ("end", "corrupt", "truncated") and where its deflate data
// ended.
struct Inflated { std::string content, verdict; std::size_t trailer = 0; std::uint32_t crc = 0; };

}  // namespace

// Both seams in one program, each in a namespace of its own with its own
// inflateWith(member, piece, out): inflates the deflate data behind the
// 10-byte header of `member`, offered in contiguous pieces of `piece` bytes
// with `out` bytes of room per step, as the stream drives the seam. A buffer
// error with input still to offer asks for more of it.
#define ZUM_INFLATE_WITH                                                                                     \
    static Inflated inflateWith(std::string const& member, std::size_t piece, std::size_t out)              \
    {                                                                                                        \
        std::size_t const size = member.size() - 10;                                                         \
        std::vector<unsigned char> in(inflater::k_headroom + size), room(out);                               \
        unsigned char* const start = in.data() + inflater::k_headroom;                                       \
        std::copy(member.begin() + 10, member.end(), start);                                                 \
        inflater::Record* r = new inflater::Record();                                                        \
        inflater::prepare(r, start);                                                                         \
        inflater::begin(r);                                                                                  \
        Inflated got;                                                                                        \
        std::size_t given = 0;                                                                               \
        int status = 0;                                                                                      \
        for (int steps = 0; (status == 0 || (status == -5 && given < size)) && steps < 10000000; ++steps) { \
            if (r->avail_in == 0) {                                                                          \
                given += r->avail_in = static_cast<unsigned>(std::min(piece, size - given));                 \
            }                                                                                                \
            int eof = given == size;                                                                         \
            r->next_out = room.data();                                                                       \
            r->avail_out = static_cast<unsigned>(out);                                                       \
            status = inflater::step(r, eof);                                                                 \
            got.content.append(room.begin(), room.end() - r->avail_out);                                     \
        }                                                                                                    \
        got.trailer = 10 + static_cast<std::size_t>(r->next_in - start);                                     \
        inflater::end(r);                                                                                    \
        delete r;                                                                                            \
        auto const* bytes = reinterpret_cast<unsigned char const*>(got.content.data());                      \
        got.crc = inflater::crc(inflater::crc(0, nullptr, 0), bytes, got.content.size());                    \
        got.verdict = status == 1 ? "end" : status == -3 ? "corrupt" : "truncated";                          \
        return got;                                                                                          \
    }
namespace zlib_seam {
#include "ZUMGZIPZlibInflater.h"
ZUM_INFLATE_WITH
}  // namespace zlib_seam
namespace isal_seam {
#include "ZUMGZIPIsalInflater.h"
ZUM_INFLATE_WITH
}  // namespace isal_seam

// Stored, fixed and dynamic blocks over 4 KiB, intact, cut short, with a bit
// flipped in the deflate data and of a reserved block type: in every piece
// and room size the two seams deliver the same bytes with the same CRC-32,
// end alike and, unless the data is corrupt, leave the input at the same
// trailer (ISA-L finds a data error with more input taken).
TEST(GZIPInflaters, AgreeOnLargeIntactAndDamagedMembers)
{
    std::string const content = testBytes(20000, 3) + mixedData(60000, 4);
    for (auto [kind, level, strategy] :
         {std::tuple{"stored", 0, Z_DEFAULT_STRATEGY}, {"fixed", 6, Z_FIXED}, {"dynamic", 9, Z_DEFAULT_STRATEGY}}) {
        std::string const intact = zlibDeflate(content, 31, level, strategy);
        std::string flipped = intact, reserved = intact;
        flipped[intact.size() / 2] ^= 0x10;
        reserved[10] = 0x07;  // the last block, of the reserved type
        for (auto const& [bytes, verdict] : {std::pair{intact + "next", std::string("end")},
                                             {intact.substr(0, intact.size() * 2 / 3), "truncated"},
                                             {flipped, "end"}, {reserved, "corrupt"}}) {
            for (auto [piece, out] : {std::pair{std::size_t(16384), std::size_t(65536)}, {7, 4096}, {1, 1}}) {
                Inflated const zlib = zlib_seam::inflateWith(bytes, piece, out);
                Inflated const isal = isal_seam::inflateWith(bytes, piece, out);
                SCOPED_TRACE(testing::Message() << kind << ", " << verdict << ", piece " << piece << ", room " << out);
                EXPECT_EQ(zlib.verdict, verdict);
                EXPECT_EQ(isal.verdict, verdict);
                EXPECT_TRUE(isal.content == zlib.content);
                EXPECT_EQ(isal.crc, zlib.crc);
                EXPECT_EQ(verdict == "corrupt" ? zlib.trailer : isal.trailer, zlib.trailer);
            }
        }
    }
}
