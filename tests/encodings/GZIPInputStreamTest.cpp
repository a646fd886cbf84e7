#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>

#include "TestFiles.h"
#include "TestStreams.h"

using namespace std::string_literals;

namespace {

// The rendering of a failure of the gzip input stream.
std::string failure(long code, char const* number)
{
    return "ZUMIOException(1," + std::to_string(code) + ") #" + number + " @ZUMGZIPInputStream::read";
}

std::string const k_header("\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\xFF", 10);

}  // namespace

// Members made by the gzip program and by Python's gzip and zlib modules
// (every combination of FEXTRA, FNAME, FCOMMENT and FHCRC, a wrong header
// CRC16 included) decode byte for byte, whole and in 7-byte upstream pieces
// that split the header and trailer across refills, which ask for 16384.
TEST(GZIPInputStream, DecodesMembersOfOtherProducers)
{
    std::istringstream list(dataFile("gzip/fixtures.txt"));
    int fixtures = 0;
    for (std::string member_name, content_name; list >> member_name >> content_name; ++fixtures) {
        std::string member = dataFile("gzip/" + member_name);
        std::string content = dataFile("gzip/" + content_name);
        ZUMMemoryInputStream memory(member.data(), static_cast<int>(member.size()));
        ZUMGZIPInputStream whole(memory);
        EXPECT_EQ(drain(whole, 4096, Form::Array), content) << member_name;
        ScriptedInputStream pieces(ScriptedInputStream::pieces(member, 7));
        ZUMGZIPInputStream split(pieces);
        EXPECT_EQ(drain(split, 1000), content) << member_name;
        EXPECT_EQ(pieces.counts, std::vector<int>(pieces.counts.size(), 16384));
    }
    EXPECT_GE(fixtures, 26);
}

// A read of 0 bytes on a fresh stream reads and checks the header (0, and
// -1 in the buffer form); an empty member gives 0, then -1 on every read.
TEST(GZIPInputStream, ZeroCountsAndTheEmptyMember)
{
    std::string member = zlibDeflate("\xff\x00\xff\x7f\x80"s), empty = zlibDeflate("");
    ScriptedInputStream up({ScriptStep::data(member)}), none({ScriptStep::data(empty)});
    ZUMGZIPInputStream gz(up), gz_none(none);
    char c = 0;
    RVKByteBuffer buf;
    EXPECT_EQ(gz.read(&c, 0) + gz.read(buf, 0), -1);
    EXPECT_EQ(up.counts.size(), 1u);
    EXPECT_EQ(drain(gz, 0, Form::Byte), "\xff\x00\xff\x7f\x80"s);
    EXPECT_EQ(gz_none.read(&c, 1), 0);
    EXPECT_EQ(gz_none.read(&c, 1) + gz_none.read(&c, 1) + gz_none.read(), -3);
}

// Behind the member, unWrap hands back the read-ahead starting with the next
// member's first byte; inside it, exactly the input inflate has not consumed.
// Before any read nothing goes back. Wrapped again, the stream starts a new
// member.
TEST(GZIPInputStream, UnwrapHandsBackUnconsumedInput)
{
    std::string first = zlibDeflate("first member"), second = zlibDeflate(mixedData(30000, 9));
    ScriptedInputStream up({ScriptStep::data(first + second)}, true);
    ZUMGZIPInputStream gz(up);
    EXPECT_EQ(drain(gz), "first member");
    gz.unWrap();
    ASSERT_EQ(up.unreads.size(), 1u);
    EXPECT_EQ(up.unreads[0], second.substr(0, 16384 - first.size()));
    EXPECT_EQ(raised([&] { gz.read(); }), "RVKIllegalStateError() @ZUMGZIPInputStream::read");
    gz.wrap(up);
    EXPECT_EQ(gz.read(), static_cast<unsigned char>(mixedData(1, 9)[0]));  // mid-member, then unwrapped
    gz.unWrap();
    std::string rest = drain(up);
    EXPECT_EQ(rest, second.substr(second.size() - rest.size()));
    EXPECT_FALSE(rest.empty());

    ScriptedInputStream fresh({ScriptStep::data(first)}, true);
    gz.wrap(fresh);
    gz.unWrap();
    EXPECT_TRUE(fresh.counts.empty() && fresh.unreads.empty());
    EXPECT_EQ(raised([&] { gz.unWrap(); }), "RVKIllegalStateError() @void ZUMGZIPInputStream::unWrap()");
}

// Every row of the failure table that the input can cause, met by readFully
// (which ends, also when the input ends inside the deflate data), and what
// the next read does: a new header is taken from the input that follows a
// header failure (the rest of the failed upstream read is dropped); a failed
// member raises again. The header is parsed whole before it is checked, the
// end of the input first (text whose fourth byte is 'l' has FEXTRA and FNAME).
TEST(GZIPInputStream, FailureTable)
{
    std::string const content = mixedData(20000, 5), member = zlibDeflate(content);
    std::size_t const trailer = member.size() - 8;
    std::string bad_crc = member, bad_length = member;
    bad_crc[trailer] ^= 1;
    bad_length[trailer + 4] ^= 1;
    std::string const not_gzip = failure(-3, "c1c209cf"), unsupported = failure(-3, "c1c58e80");
    std::string const corrupt = failure(-3, "91f342d7"), truncated = failure(0, "91f36c62");
    auto data = ScriptStep::data;
    struct Case {
        std::vector<ScriptStep> input;
        std::string first, then;  // then "": a new member follows and decodes
    };
    std::vector<Case> cases = {
        {{data(member.substr(0, 6)), ScriptStep::end()}, truncated, ""},
        {{data(member.substr(0, 6)), ScriptStep::zero()}, truncated, ""},
        {{data("hello"), ScriptStep::end()}, truncated, ""},
        {{data("Hello world, this text has no zero byte"), ScriptStep::end()}, truncated, ""},
        {{data("Hello worl\x02\0xyname\0more"s)}, not_gzip, ""},
        {{data("\x1f\x8c\x08\0\0\0\0\0\0\0junk"s)}, not_gzip, ""},
        {{data("\x1e\x8b\x08\0\0\0\0\0\0\0junk"s)}, not_gzip, ""},
        {{data("\x1f\x8b\x08\x20\0\0\0\0\0\0junk"s)}, unsupported, ""},
        {{data("\x1f\x8b\x08\x80\0\0\0\0\0\0junk"s)}, unsupported, ""},
        {{data("\x1f\x8b\x07\0\0\0\0\0\0\0junk"s)}, unsupported, ""},
        {{data(bad_crc)}, failure(-3, "c1c34d1f"), corrupt},
        {{data(bad_length)}, failure(-3, "c1c66a72"), corrupt},
        {{data(member.substr(0, member.size() - 3))}, failure(1, "91f36c62"), "none"},
        {{data(member.substr(0, trailer + 3)), ScriptStep::throwText("reset"), data(member.substr(trailer + 3))},
         "ZUMIOException(1,0) #91fdd700 'reset' @ZUMGZIPInputStream::read", corrupt},
        {{data(k_header + "\x07\0\0"s)}, corrupt, corrupt},  // a reserved block type
    };
    for (std::size_t keep : {std::size_t(11), member.size() / 3, member.size() - 9}) {
        for (ScriptStep end : {ScriptStep::end(), ScriptStep::zero()}) {
            cases.push_back({ScriptedInputStream::pieces(member.substr(0, keep), 5000), failure(-5, "91f36c62"),
                             failure(-5, "91f36c62")});
            cases.back().input.push_back(end);
        }
    }
    for (auto const& c : cases) {
        std::vector<ScriptStep> script = c.input;
        if (c.then.empty()) {
            script.push_back(data(zlibDeflate("ok")));
        }
        ScriptedInputStream up(script);
        ZUMGZIPInputStream gz(up);
        std::string out(content.size() + 1, '\0');
        errno = 0;
        EXPECT_EQ(raised([&] { gz.readFully(&out[0], static_cast<int>(out.size())); }), c.first)
            << testing::PrintToString(c.input[0].bytes.substr(0, 12)) << " of " << c.input[0].bytes.size();
        EXPECT_EQ(c.then.empty() ? drain(gz) : raised([&] { gz.read(); }), c.then.empty() ? "ok" : c.then);
    }

    // The read that meets a bad trailer raises after writing the data into an
    // array; a byte buffer is left as it was.
    ZUMMemoryInputStream a(bad_crc.data(), static_cast<int>(bad_crc.size()));
    ZUMMemoryInputStream b(bad_crc.data(), static_cast<int>(bad_crc.size()));
    ZUMGZIPInputStream into_array(a), into_buffer(b);
    std::string out(30000, '\0');
    EXPECT_EQ(raised([&] { into_array.read(&out[0], 30000); }), failure(-3, "c1c34d1f"));
    EXPECT_TRUE(out.substr(0, content.size()) == content);
    RVKByteBuffer buf(0, 16);
    buf.appendChars("ab", 2);
    EXPECT_EQ(raised([&] { into_buffer.read(buf, 30000); }), failure(-3, "c1c34d1f"));
    EXPECT_EQ(str(buf), "ab");
}

// A text exception of the upstream becomes a ZUMIOException carrying errno,
// the text message and the text; an I/O exception passes unchanged. Either
// way the stream reads on afterwards.
TEST(GZIPInputStream, MisuseAndUpstreamFailures)
{
    std::string member = zlibDeflate("data");
    ScriptedInputStream up({ScriptStep::throwText("line broken"), ScriptStep::throwIO(),
                            ScriptStep::data(member.substr(0, 10)), ScriptStep::throwText("again"),
                            ScriptStep::data(member.substr(10))});
    ZUMGZIPInputStream gz(up);
    char c;
    EXPECT_EQ(raised([&] { errno = 42, gz.read(&c, 1); }),
              "ZUMIOException(1,42) #91fdd700 'line broken' @ZUMGZIPInputStream::read");
    EXPECT_EQ(raised([&] { gz.read(&c, 1); }), "ZUMIOException(1,5) @ScriptedInputStream::read");
    EXPECT_EQ(raised([&] { errno = 7, gz.read(&c, 1); }),
              "ZUMIOException(1,7) #91fdd700 'again' @ZUMGZIPInputStream::read");
    EXPECT_EQ(raised([&] { gz.read(nullptr, 1); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_THROW(gz.read(&c, -1), RVKAssertError);
    EXPECT_EQ(drain(gz), "data");
}
