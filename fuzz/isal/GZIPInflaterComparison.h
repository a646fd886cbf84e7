#ifndef ZUM_GZIP_INFLATER_COMPARISON_H
#define ZUM_GZIP_INFLATER_COMPARISON_H

// Runs one input through the gzip input stream of this build (ISA-L's
// inflater) and through the same stream built with zlib's inflater, and says
// how the two differ: in the bytes delivered, in what is raised and where
// the stream stands afterwards, in the bytes handed back by unWrap(), and in
// the upstream reads. Used by the fuzz target of the fast inflate build.

#include <memory>

#include <zlib.h>

#include "../../tests/support/TestStreams.h"

// The gzip input stream built with zlib's inflater (ZlibGZIPInputStream.cpp),
// unwrapped.
ZUMFilterInputStream* newZlibGZIPInputStream();

namespace inflater_comparison {

// How one stream decoded one input.
struct Decoded {
    std::string delivered;  // the bytes delivered up to the end or the failure
    std::string raised;     // what ended the reads: "end", or the exception
    std::string next;       // what the read after that gave ("end", a byte, the exception)
    std::string behind;     // what the upstream delivers after unWrap()
    std::size_t reads = 0;    // upstream reads up to unWrap()
    std::size_t unreads = 0;  // unread() calls of unWrap()
    bool odd_counts = false;  // an upstream read asked for other than 16384 bytes
};

// Decodes `input` with `gzip` over a scripted upstream that delivers it in
// pieces of the sizes of `pieces` and takes bytes back, with reads of the
// sizes of `sizes` in turn, until -1 or an exception; then reads once more
// (unless the header failed) and unwraps. At most `limit` reads.
inline Decoded decode(ZUMFilterInputStream& gzip, std::string const& input, std::vector<int> const& sizes,
                      std::vector<std::size_t> const& pieces, std::size_t limit)
{
    Decoded d;
    ScriptedInputStream source(ScriptedInputStream::pieces(input, pieces), true);
    gzip.wrap(source);
    std::vector<char> buf(65536 + 1);
    d.raised = "spins";
    for (std::size_t r = 0; r < limit && d.raised == "spins"; ++r) {
        int n = -1;
        std::string const failure = raised([&] { n = gzip.read(buf.data(), sizes[r % sizes.size()]); });
        if (failure != "none" || n < 0) {
            d.raised = failure != "none" ? failure : "end";
        } else {
            d.delivered.append(buf.data(), static_cast<std::size_t>(n));
        }
    }
    // After a header that failed its checks the next read would start a new
    // member from the input that follows; the stream is unwrapped instead.
    bool const header_failed = d.raised.find(",0) #GZIP_TRUNCATED") != std::string::npos ||
                               d.raised.find("#GZIP_NOT_GZIP") != std::string::npos ||
                               d.raised.find("#GZIP_UNSUPPORTED") != std::string::npos;
    int byte = -1;
    d.next = raised([&] { byte = header_failed ? -1 : gzip.read(); });
    d.next = d.next != "none" ? d.next : byte < 0 ? "end" : "byte";
    d.reads = source.counts.size();
    d.odd_counts = std::any_of(source.counts.begin(), source.counts.end(), [](int c) { return c != 16384; });
    gzip.unWrap();
    d.unreads = source.unreads.size();
    d.behind = drain(source);
    return d;
}

// Where zlib's own raw inflate, run over the deflate data of the member
// that `input` starts with, stops in the two places where ISA-L may judge
// the data otherwise: "code set" when it rejects a block's Huffman code set
// (ISA-L does not check that a dynamic block's codes are complete), "cut
// short" when it runs out of input (ISA-L reads a dynamic block header whole
// before it checks it); else "".
inline std::string zlibStop(std::string const& input)
{
    std::size_t at = 10;
    int const flags = input.size() > 3 ? static_cast<unsigned char>(input[3]) : 0;
    if ((flags & 0x04) && input.size() >= 12) {
        at = 12 + static_cast<unsigned char>(input[10]) + 256u * static_cast<unsigned char>(input[11]);
    }
    for (int bit : {0x08, 0x10}) {
        if (flags & bit) {
            at = std::min(input.find('\0', at), input.size() - 1) + 1;
        }
    }
    at += (flags & 0x02) ? 2 : 0;
    if (at >= input.size()) {
        return "cut short";
    }
    z_stream z{};
    inflateInit2(&z, -15);
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data() + at));
    z.avail_in = static_cast<uInt>(input.size() - at);
    std::vector<unsigned char> out(65536);
    int ret;
    do {
        z.next_out = out.data();
        z.avail_out = static_cast<uInt>(out.size());
        ret = inflate(&z, Z_NO_FLUSH);
    } while (ret == Z_OK);
    std::string msg = z.msg ? z.msg : "";
    inflateEnd(&z);
    if (ret == Z_BUF_ERROR) {
        return "cut short";
    }
    for (char const* code_set : {"invalid code lengths set", "invalid distances set", "invalid literal/lengths set",
                                 "invalid bit length repeat", "invalid code -- missing end-of-block"}) {
        if (msg == code_set) {
            return "code set";
        }
    }
    return "";
}

// Whether a raise reports damaged deflate data or trailer: corrupt data,
// input that ends inside the deflate data or the trailer, a CRC-32 or length
// mismatch.
inline bool damageVerdict(std::string const& failure)
{
    for (char const* v : {",-3) #GZIP_CORRUPT", ",-5) #GZIP_TRUNCATED", ",1) #GZIP_TRUNCATED",
                          ",-3) #GZIP_CRC_MISMATCH", ",-3) #GZIP_LENGTH_MISMATCH"}) {
        if (failure.find(v) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// Decodes `input` with both inflaters and returns "" when they agree, else
// what differs. They agree when
// - both end (-1) having delivered the same bytes with the same number of
//   upstream reads, or both raise the same; ISA-L reads further ahead, so
//   the read in which the deflate data ends (and a trailer check fails, or a
//   data error is found) can come one read earlier or later: after a raise
//   the bytes delivered by one only start those of the other;
// - they hand back the same bytes, except after a data error inside the
//   deflate data, where each hands back what it had not consumed;
// - where zlib itself stops on a Huffman code set or at the end of the
//   input (zlibStop), they may differ in how they report the damage
//   (damageVerdict), and in what they deliver and hand back; on a code set
//   ISA-L may also decode the member whole, when its data does not use the
//   codes missing from the set and so passes the CRC-32 check.
inline std::string compare(std::string const& input, std::vector<int> const& sizes,
                           std::vector<std::size_t> const& pieces)
{
    std::size_t const limit = 2 * 1040 * (input.size() + 1) + 100;
    ZUMGZIPInputStream fast;
    std::unique_ptr<ZUMFilterInputStream> reference(newZlibGZIPInputStream());
    Decoded const a = decode(fast, input, sizes, pieces, limit);
    Decoded const b = decode(*reference, input, sizes, pieces, limit);
    std::string diff;
    if (a.odd_counts || b.odd_counts) {
        diff += " an upstream read asked for other than 16384 bytes;";
    }
    if (a.raised != b.raised || a.next != b.next) {
        std::string const stop = zlibStop(input);
        bool const isal_accepts = stop == "code set" && a.raised == "end" && a.next == "end";
        if (stop.empty() || !damageVerdict(b.raised) || !(damageVerdict(a.raised) || isal_accepts)) {
            diff += " raised: ISA-L '" + a.raised + "' then '" + a.next + "', zlib '" + b.raised + "' then '" +
                    b.next + "';";
        }
        return diff;
    }
    bool const ended = a.raised == "end";
    bool const one_starts_the_other = b.delivered.rfind(a.delivered, 0) == 0 || a.delivered.rfind(b.delivered, 0) == 0;
    if (ended ? a.delivered != b.delivered : !one_starts_the_other) {
        diff += " delivered " + std::to_string(a.delivered.size()) + " (ISA-L) and " +
                std::to_string(b.delivered.size()) + " (zlib) bytes that differ;";
    }
    bool const data_error = a.raised.find("#GZIP_CORRUPT") != std::string::npos;
    if (!data_error && (a.behind != b.behind || a.unreads != b.unreads)) {
        diff += " handed back " + std::to_string(a.behind.size()) + " (ISA-L) and " +
                std::to_string(b.behind.size()) + " (zlib) bytes that differ;";
    }
    if (ended && a.reads != b.reads) {
        diff += " upstream reads: ISA-L " + std::to_string(a.reads) + ", zlib " + std::to_string(b.reads) + ";";
    }
    return diff;
}

}  // namespace inflater_comparison

#endif
