#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

using namespace std::string_literals;

namespace {

std::string const k_read = " @ZUMGZIPInputStream::read";
std::string const k_own = " @ZUMMultiMemberGZIPInputStream::read";

// The rendering of a failure: class, code, catalog message and offset text.
std::string failure(long code, char const* number, std::string const& place)
{
    return "ZUMIOException(1," + std::to_string(code) + ") #" + number + " '" + place + "'";
}

std::string const k_one = mixedData(40000, 3), k_two = "second member", k_three = mixedData(5000, 7);
std::string const k_m1 = zlibDeflate(k_one), k_m2 = zlibDeflate(k_two), k_m3 = zlibDeflate(k_three);
std::string const k_empty = zlibDeflate("");

}  // namespace

// Every member is delivered in turn, whatever the read form, the upstream's
// pieces (member boundaries inside and across its reads) and
// whether it can take bytes back; an empty member and NUL padding add nothing.
TEST(MultiMemberGZIPInputStream, DeliversEveryMemberAsOneStream)
{
    struct Case { std::string input, content; };
    std::vector<Case> const cases = {
        {k_m1, k_one},
        {k_m1 + k_m2 + k_m3, k_one + k_two + k_three},
        {k_m2 + k_empty + k_m2, k_two + k_two},
        {k_empty, ""},
        {k_m2 + std::string(20000, '\0'), k_two},
        {k_m3 + k_m2 + "\0"s, k_three + k_two},
    };
    struct Reading { std::vector<std::size_t> pieces; bool can_unread; Form form; int count; };
    std::vector<Reading> const readings = {
        {{}, false, Form::Array, 65536}, {{7}, true, Form::Buffer, 1000},
        {{16383, 3}, true, Form::Byte, 1}, {{1, 30000}, false, Form::Array, 333},
    };
    for (std::size_t c = 0; c < cases.size(); ++c) {
        for (std::size_t r = 0; r < readings.size(); ++r) {
            Reading const& how = readings[r];
            ScriptedInputStream up(ScriptedInputStream::pieces(cases[c].input, how.pieces), how.can_unread);
            ZUMMultiMemberGZIPInputStream gz(up);
            EXPECT_TRUE(drain(gz, how.count, how.form) == cases[c].content) << "case " << c << ", reading " << r;
            EXPECT_EQ(gz.read(), -1) << "case " << c << ", reading " << r;
        }
    }
    // A read of 0 bytes reads the first header and returns 0.
    ScriptedInputStream up({ScriptStep::data(k_m2)});
    ZUMMultiMemberGZIPInputStream gz(up);
    char c = 0;
    EXPECT_EQ(gz.read(&c, 0), 0);
    EXPECT_EQ(up.counts, std::vector<int>{16384});
    EXPECT_EQ(drain(gz, 3, Form::Array), k_two);
}

// Each failure: what the first raise says (the member's own failure, or the
// stream's for trailing garbage, with the place of the fault after it), that
// every member byte before it was delivered, and that every later read
// raises again: GZIP_CORRUPT after a checksum failure, else the same.
TEST(MultiMemberGZIPInputStream, FailuresNameTheirPlace)
{
    std::size_t const s1 = k_m1.size(), s2 = k_m2.size();
    std::string bad_crc = k_m2, bad_length = k_m2, bad_block = k_m2;
    bad_crc[s2 - 8] ^= 1;
    bad_length[s2 - 4] ^= 1;
    bad_block[10] = '\x06';  // deflate block type 3
    std::string const header2 = "\x1f\x8b\x07\0\0\0\0\0\0\0"s;
    std::string const cut = "the input ends inside the ";
    struct Case { std::string input, delivered; long code; char const* number; std::string place; std::size_t at; };
    std::vector<Case> const cases = {
        {"", "", 0, "GZIP_TRUNCATED", cut + "header of member 1", 0},
        {"\x1f\x8c\x08\0\0\0\0\0\0\0 not gzip"s, "", -3, "GZIP_NOT_GZIP", "in the header of member 1", 0},
        {k_m1 + header2, k_one, -3, "GZIP_UNSUPPORTED", "in the header of member 2", s1},
        {k_m1 + header2.substr(0, 3), k_one, 0, "GZIP_TRUNCATED", cut + "header of member 2", s1 + 3},
        {k_m1 + k_m2.substr(0, 10), k_one, -5, "GZIP_TRUNCATED", cut + "deflate data of member 2", s1 + 10},
        {k_m1 + k_m2.substr(0, s2 - 3), k_one, 1, "GZIP_TRUNCATED", cut + "trailer of member 2", s1 + s2 - 3},
        {k_m1 + bad_crc, k_one, -3, "GZIP_CRC_MISMATCH", "in the CRC-32 of member 2", s1 + s2 - 8},
        {bad_length, "", -3, "GZIP_LENGTH_MISMATCH", "in the length of member 1", s2 - 4},
        {k_m1 + bad_block, k_one, -3, "GZIP_CORRUPT", "in the deflate data of member 2", s1 + 11},
        {k_m1 + "xyz", k_one, -3, "GZIP_TRAILING_GARBAGE", "after the last member", s1},
        {k_m1 + "\0\0\0\x1f\x8b"s, k_one, -3, "GZIP_TRAILING_GARBAGE", "after the last member", s1 + 3},
        {k_m1 + k_m2 + "\x1f"s, k_one + k_two, -3, "GZIP_TRAILING_GARBAGE", "after the last member", s1 + s2},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        Case const& c = cases[i];
        ScriptedInputStream up(ScriptedInputStream::pieces(c.input, {5000}));
        ZUMMultiMemberGZIPInputStream gz(up);
        std::string got;
        std::string first = raised([&] {
            char buf[777];
            for (int n = 0, reads = 0; n >= 0 && reads < 1000; ++reads) {
                n = gz.read(buf, static_cast<int>(sizeof buf));
                got.append(buf, n > 0 ? static_cast<std::size_t>(n) : 0u);
            }
        });
        std::string const place = c.place + ", at byte " + std::to_string(c.at);
        bool const own = std::string(c.number) == "GZIP_TRAILING_GARBAGE";
        bool const checksum = c.number == "GZIP_CRC_MISMATCH"s || c.number == "GZIP_LENGTH_MISMATCH"s;
        EXPECT_TRUE(got == c.delivered) << "case " << i;
        EXPECT_EQ(first, failure(c.code, c.number, place) + (own ? k_own : k_read)) << "case " << i;
        EXPECT_EQ(raised([&] { gz.read(); }),
                  failure(checksum ? -3 : c.code, checksum ? "GZIP_CORRUPT" : c.number, place) + k_own)
            << "case " << i;
    }
}

// Exceptions of the upstream: a text ends the read in which it happens as a
// TEXT_ERROR with the place, another exception passes unchanged; either
// way the stream then goes on where it stopped.
TEST(MultiMemberGZIPInputStream, UpstreamExceptionsLeaveItReadable)
{
    auto data = ScriptStep::data;
    std::string const both = k_m2 + k_m3;
    ScriptedInputStream up({data(both.substr(0, 10)), ScriptStep::throwText("reset"),
                            data(both.substr(10, k_m2.size() - 10)), ScriptStep::throwIO(),
                            data(both.substr(k_m2.size())), ScriptStep::throwText("late")});
    ZUMMultiMemberGZIPInputStream gz(up);
    RVKByteBuffer got(0, 256);
    errno = 42;
    EXPECT_EQ(raised([&] { gz.read(got, 100000); }),
              "ZUMIOException(1,42) #TEXT_ERROR 'reset' 'while reading member 1, at byte 10'" + k_read);
    EXPECT_EQ(raised([&] { while (gz.read(got, 100000) >= 0) {} }), "ZUMIOException(1,5) @ScriptedInputStream::read");
    errno = 42;
    EXPECT_EQ(raised([&] { while (gz.read(got, 100000) >= 0) {} }),
              "ZUMIOException(1,42) #TEXT_ERROR 'late' 'while reading after member 2, at byte " +
                  std::to_string(both.size()) + "'" + k_own);
    EXPECT_EQ(gz.read(got, 100), -1);
    EXPECT_TRUE(str(got) == k_two + k_three);
}

// unWrap hands back what was read ahead where the upstream can take it: the
// garbage from its first byte that is not NUL, or the rest of a refill; it
// drops it otherwise. A stream wrapped again starts anew, its offsets from 0;
// misuse raises.
TEST(MultiMemberGZIPInputStream, UnwrapHandsBackReadAheadAndRestarts)
{
    std::string const tail = "\0\0garbage"s;
    ScriptedInputStream up({ScriptStep::data(k_m2 + tail)}, true);
    ZUMMultiMemberGZIPInputStream gz;
    EXPECT_EQ(raised([&] { gz.read(); }), "RVKIllegalStateError()" + k_own);
    EXPECT_EQ(raised([&] { gz.unWrap(); }), "RVKIllegalStateError() @void ZUMMultiMemberGZIPInputStream::unWrap()");
    gz.wrap(up);
    EXPECT_THROW(drain(gz), ZUMIOException);
    gz.unWrap();
    EXPECT_EQ(up.unreads, std::vector<std::string>{"garbage"});

    ScriptedInputStream mid({ScriptStep::data(k_m1 + k_m2)}, true), plain({ScriptStep::data("xx" + k_m2)});
    gz.wrap(mid);
    EXPECT_EQ(gz.read(), static_cast<unsigned char>(k_one[0]));
    gz.unWrap();
    ASSERT_EQ(mid.unreads.size(), 1u);
    std::string const refill = (k_m1 + k_m2).substr(0, 16384), back = mid.unreads[0];
    EXPECT_FALSE(back.empty());
    EXPECT_TRUE(back == refill.substr(refill.size() - back.size()));
    gz.wrap(plain);
    std::string what;
    try {
        gz.read();
    } catch (ZUMIOException const& e) {
        what = e.what();
    }
    EXPECT_NE(what.find("in the header of member 1, at byte 0"), std::string::npos) << what;
    char c = 0;
    EXPECT_EQ(raised([&] { gz.read(nullptr, 1); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_THROW(gz.read(&c, -1), RVKAssertError);
    EXPECT_EQ(gz.canUnread(), 0);
    EXPECT_EQ(raised([&] { gz.unWrap(); }), "none");  // the read-ahead is dropped
    EXPECT_TRUE(plain.unreads.empty());
}
