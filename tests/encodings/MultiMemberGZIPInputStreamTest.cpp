// The fuzz target checks delivery against a member-by-member reference over
// random inputs, read forms, source pieces, empty and failing reads; the
// garbage offset; that an end or a failure stays; no unWrap() raises; and the
// garbage unWrap() hands back.
#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

using namespace std::string_literals;

std::string const k_read = " @ZUMGZIPInputStream::read", k_own = " @ZUMMultiMemberGZIPInputStream::read";
std::string const k_one = mixedData(40000, 3), k_two = "second member", k_three = mixedData(5000, 7);
std::string const k_m1 = zlibDeflate(k_one), k_m2 = zlibDeflate(k_two), k_m3 = zlibDeflate(k_three);

// Members follow one another, an empty one and NUL padding add nothing; a
// read of 0 bytes reads the first header and returns 0.
TEST(MultiMemberGZIPInputStream, DeliversEveryMemberAsOneStream)
{
    ScriptedInputStream up({ScriptStep::data(k_m2 + zlibDeflate("") + k_m1 + k_m3 + "\0\0"s)});
    ZUMMultiMemberGZIPInputStream gz(up);
    char c = 0;
    EXPECT_EQ(gz.read(&c, 0), 0);
    EXPECT_EQ(up.counts, std::vector<int>{16384});
    EXPECT_TRUE(drain(gz, 1000, Form::Array) == k_two + k_one + k_three);
}

// Each failure kind with its place; a later read raises again, as
// GZIP_CORRUPT after a checksum failure, else the same.
TEST(MultiMemberGZIPInputStream, FailuresNameTheirPlace)
{
    std::size_t const s1 = k_m1.size(), s2 = k_m2.size();
    auto m2With = [](std::size_t at, char byte) { std::string m = k_m2; m[at] = byte; return m; };
    struct Case { std::string input; long code; std::string number, place; std::size_t at; };
    std::vector<Case> const cases = {
        {"\x1f\x8c\x08\0\0\0\0\0\0\0 not gzip"s, -3, "GZIP_NOT_GZIP", "in the header of member 1", 0},
        {k_m1 + "\x1f\x8b\x07\0\0\0\0\0\0\0"s, -3, "GZIP_UNSUPPORTED", "in the header of member 2", s1},
        {k_m1 + "\x1f\x8b\x08"s, 0, "GZIP_TRUNCATED", "the input ends inside the header of member 2", s1 + 3},
        {k_m1 + k_m2.substr(0, 10), -5, "GZIP_TRUNCATED", "the input ends inside the deflate data of member 2", s1 + 10},
        {k_m1 + k_m2.substr(0, s2 - 3), 1, "GZIP_TRUNCATED", "the input ends inside the trailer of member 2", s1 + s2 - 3},
        {k_m1 + m2With(s2 - 8, k_m2[s2 - 8] ^ 1), -3, "GZIP_CRC_MISMATCH", "in the CRC-32 of member 2", s1 + s2 - 8},
        {m2With(s2 - 4, k_m2[s2 - 4] ^ 1), -3, "GZIP_LENGTH_MISMATCH", "in the length of member 1", s2 - 4},
        // Block type 3: zlib stops at the byte that holds it, ISA-L a word later.
        {k_m1 + m2With(10, '\x06'), -3, "GZIP_CORRUPT", "in the deflate data of member 2", s1 + (ZUM_FAST_INFLATE ? 18 : 11)},
        {k_m1 + k_m2 + "\x1f"s, -3, "GZIP_TRAILING_GARBAGE", "after the last member", s1 + s2},
        {k_m2 + "\0\0\n"s, -3, "GZIP_TRAILING_GARBAGE", "after the last member", s2 + 2},  // padding, then not
    };
    for (Case const& c : cases) {
        ScriptedInputStream up(ScriptedInputStream::pieces(c.input, {5000}));
        ZUMMultiMemberGZIPInputStream gz(up);
        std::string const place = " '" + c.place + ", at byte " + std::to_string(c.at) + "'";
        std::string const head = "ZUMIOException(1," + std::to_string(c.code) + ") #";
        bool const own = c.number == "GZIP_TRAILING_GARBAGE", sum = c.number.find("MISMATCH") != std::string::npos;
        EXPECT_EQ(raised([&] { drain(gz, 777, Form::Array); }), head + c.number + place + (own ? k_own : k_read));
        EXPECT_EQ(raised([&] { gz.read(); }), head + (sum ? "GZIP_CORRUPT" : c.number) + place + k_own) << c.number;
    }
}

// Exceptions of the upstream: a text ends the read in which it happens as a
// TEXT_ERROR with the place, another exception passes unchanged; either
// way the stream then goes on where it stopped.
TEST(MultiMemberGZIPInputStream, UpstreamExceptionsLeaveItReadable)
{
    auto data = ScriptStep::data;
    ScriptedInputStream up({data(k_m2.substr(0, 10)), ScriptStep::throwText("reset"), data(k_m2.substr(10)),
                            ScriptStep::throwIO(), data(k_m3), ScriptStep::throwText("late")});
    ZUMMultiMemberGZIPInputStream gz(up);
    RVKByteBuffer got(0, 256);
    errno = 42;
    EXPECT_EQ(raised([&] { gz.read(got, 100000); }),
              "ZUMIOException(1,42) #TEXT_ERROR 'reset' 'while reading member 1, at byte 10'" + k_read);
    EXPECT_EQ(raised([&] { while (gz.read(got, 100000) >= 0) {} }), "ZUMIOException(1,5) @ScriptedInputStream::read");
    EXPECT_EQ(raised([&] { while (gz.read(got, 100000) >= 0) {} }),
              "ZUMIOException(1,42) #TEXT_ERROR 'late' 'while reading after member 2, at byte " +
                  std::to_string(k_m2.size() + k_m3.size()) + "'" + k_own);
    EXPECT_EQ(gz.read(got, 100), -1);
    EXPECT_TRUE(str(got) == k_two + k_three);
}

// unWrap hands back the rest of a refill where the upstream can take it and
// drops it otherwise; a stream wrapped again counts offsets from 0; misuse
// raises.
TEST(MultiMemberGZIPInputStream, UnwrapHandsBackReadAheadAndRestarts)
{
    ScriptedInputStream mid({ScriptStep::data(k_m1 + k_m2)}, true), plain({ScriptStep::data("xx" + k_m2)});
    ZUMMultiMemberGZIPInputStream gz;
    EXPECT_EQ(raised([&] { gz.read(); }), "RVKIllegalStateError()" + k_own);
    EXPECT_EQ(raised([&] { gz.unWrap(); }), "RVKIllegalStateError() @void ZUMMultiMemberGZIPInputStream::unWrap()");
    gz.wrap(mid);
    EXPECT_EQ(gz.read(), static_cast<unsigned char>(k_one[0]));
    gz.unWrap();
    ASSERT_EQ(mid.unreads.size(), 1u);
    std::string const refill = (k_m1 + k_m2).substr(0, 16384), &back = mid.unreads[0];
    EXPECT_TRUE(back == refill.substr(refill.size() - back.size()));
    gz.wrap(plain);
    EXPECT_NE(raised([&] { gz.read(); }).find("in the header of member 1, at byte 0'"), std::string::npos);
    char c = 0;
    EXPECT_EQ(raised([&] { gz.read(nullptr, 1); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_THROW(gz.read(&c, -1), RVKAssertError);
    gz.unWrap();
    EXPECT_TRUE(plain.unreads.empty());
}
