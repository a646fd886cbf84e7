// Fuzz target of the fast inflate build: the gzip input stream with ISA-L's
// inflater against the same stream with zlib's, on any input.
//
// Input: 4 setting bytes, then the bytes taken as a gzip member (and
// whatever follows it).
//   0, 1: the sizes of the reads, taken in turn (0: 16,384; 255: 65,536);
//         every 65th read asks for 16,384
//   2, 3: the sizes of the pieces the upstream delivers, in turn (byte 2 = 0:
//         whole requests)
//
// Checks: the two streams deliver the same bytes, raise the same, hand back
// the same bytes on unWrap() and make the same upstream reads, except where
// the comparison allows them to differ (a data error found at another point,
// damage that zlib finds in a Huffman code set or at the end of the input);
// every read loop ends.

#include "FuzzSupport.h"
#include "GZIPInflaterComparison.h"

namespace {

int size(std::uint8_t setting)
{
    return setting == 0 ? 16384 : setting == 255 ? 65536 : setting;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size_)
{
    FuzzBytes in(data, size_);
    std::uint8_t r0 = in.byte();
    std::uint8_t r1 = in.byte();
    std::uint8_t p0 = in.byte();
    std::uint8_t p1 = in.byte();
    // 64 reads of the two sizes in turn, then one of 16,384, over and over:
    // mixed sizes without millions of 1-byte reads on highly compressed data.
    std::vector<int> sizes;
    for (int i = 0; i < 32; ++i) {
        sizes.push_back(size(r0));
        sizes.push_back(size(r1));
    }
    sizes.push_back(16384);
    std::vector<std::size_t> pieces;
    if (p0 != 0) {
        pieces = {p0, p1 == 0 ? 16384u : p1};
    }
    std::string diff = inflater_comparison::compare(in.rest(), sizes, pieces);
    if (!diff.empty()) {
        std::fprintf(stderr, "the inflaters differ:%s\n", diff.c_str());
    }
    FUZZ_CHECK(diff.empty());
    return 0;
}
