#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "AllocationCounter.h"
#include "GZIPTestSupport.h"
#include "TestStreams.h"

using namespace gziptest;

namespace {

unsigned long const kTruncated = 0x91f36c62UL;
unsigned long const kNotGzip = 0xc1c209cfUL;
unsigned long const kUnsupported = 0xc1c58e80UL;
unsigned long const kCorrupt = 0x91f342d7UL;
unsigned long const kCrc = 0xc1c34d1fUL;
unsigned long const kLength = 0xc1c66a72UL;
unsigned long const kText = 0x91fdd700UL;

std::string bytes(std::initializer_list<int> values)
{
    std::string out;
    for (int v : values) {
        out += static_cast<char>(v);
    }
    return out;
}

// A member whose deflate data has a reserved block type: inflate fails at
// once with a data error.
std::string const kBadDeflateMember = bytes({0x1F, 0x8B, 8, 0, 0, 0, 0, 0, 0, 0xFF, 0x07, 0, 0});

int readOnce(ZUMGZIPInputStream& gz, int count = 4096)
{
    std::string buf(static_cast<std::size_t>(count) + 1, '\0');
    return gz.read(&buf[0], count);
}

}  // namespace

// Members made by the gzip program and by Python's gzip and zlib modules
// (every combination of FEXTRA, FNAME, FCOMMENT and FHCRC, a wrong header
// CRC16 included) decode byte for byte, whole from memory and in 7-byte
// upstream pieces that split the header and trailer across refills.
TEST(GZIPInputStream, DecodesMembersOfOtherProducers)
{
    std::istringstream list(readFile(dataPath("fixtures.txt")));
    std::string member_name, content_name;
    int fixtures = 0;
    while (list >> member_name >> content_name) {
        SCOPED_TRACE(member_name);
        std::string member = readFile(dataPath(member_name));
        std::string content = readFile(dataPath(content_name));
        ++fixtures;

        ZUMMemoryInputStream memory(member.data(), static_cast<int>(member.size()));
        ZUMGZIPInputStream whole(memory);
        EXPECT_EQ(readToEnd(whole), content);

        ScriptedInputStream pieces(ScriptedInputStream::pieces(member, 7));
        ZUMGZIPInputStream split(pieces);
        EXPECT_EQ(readToEnd(split, 1000), content);
        for (int asked : pieces.counts) {
            EXPECT_EQ(asked, 16384);
        }
    }
    EXPECT_GE(fixtures, 26);
}

TEST(GZIPInputStream, EmptyMemberGivesZeroThenEnd)
{
    std::string member = zlibMember("");
    ZUMMemoryInputStream memory(member.data(), static_cast<int>(member.size()));
    ZUMGZIPInputStream gz(memory);
    EXPECT_EQ(readOnce(gz), 0);
    EXPECT_EQ(readOnce(gz), -1);
    EXPECT_EQ(readOnce(gz), -1);
    EXPECT_EQ(gz.read(), -1);
}

// A read of 0 bytes on a fresh stream reads and checks the header: a bad
// header raises, a good one gives 0 (and -1 in the buffer form).
TEST(GZIPInputStream, ZeroCountReadChecksHeader)
{
    std::string member = zlibMember("abc");
    ScriptedInputStream up({ScriptStep::data(member)});
    ZUMGZIPInputStream gz(up);
    char c = 0;
    EXPECT_EQ(gz.read(&c, 0), 0);
    EXPECT_EQ(up.array_reads, 1);
    RVKByteBuffer buf(16, 16);
    EXPECT_EQ(gz.read(buf, 0), -1);
    EXPECT_EQ(readToEnd(gz), "abc");
}

TEST(GZIPInputStream, ReadFormsAgree)
{
    std::string content = bytes({0xFF, 0x00, 0xFF, 0x7F, 0x80});
    std::string member = zlibMember(content);

    ZUMMemoryInputStream m1(member.data(), static_cast<int>(member.size()));
    ZUMGZIPInputStream single(m1);
    std::vector<int> got;
    for (int b = single.read(); b != -1; b = single.read()) {
        got.push_back(b);
    }
    EXPECT_EQ(got, (std::vector<int>{255, 0, 255, 127, 128}));

    // The buffer form appends behind what the buffer holds.
    ZUMMemoryInputStream m2(member.data(), static_cast<int>(member.size()));
    ZUMGZIPInputStream buffered(m2);
    RVKByteBuffer buf(2, 2);
    buf.appendChars("xy", 2);
    int total = 0;
    for (int n = buffered.read(buf, 2); n != -1; n = buffered.read(buf, 2)) {
        EXPECT_GT(n, 0);
        total += n;
    }
    EXPECT_EQ(total, 5);
    EXPECT_EQ(std::string(buf.str(), static_cast<std::size_t>(buf.pcount())), "xy" + content);
}

// Only the first of two members is decoded; unWrap hands back the read-ahead
// beyond it starting with the second member's first byte, so the upstream
// then delivers the whole second member, which a rewrapped stream decodes.
TEST(GZIPInputStream, UnwrapHandsBackInputAfterMember)
{
    std::string first = zlibMember("first member");
    std::string second = zlibMember(mixedData(30000, 9));
    ScriptedInputStream up({ScriptStep::data(first + second)}, true);
    ZUMGZIPInputStream gz(up);
    EXPECT_EQ(readToEnd(gz), "first member");
    EXPECT_EQ(readOnce(gz), -1);

    gz.unWrap();
    ASSERT_EQ(up.unreads.size(), 1u);
    EXPECT_EQ(up.unreads[0], second.substr(0, up.unreads[0].size()));
    EXPECT_EQ(up.unreads[0].size(), std::min<std::size_t>(second.size(), 16384 - first.size()));
    EXPECT_THROW(readOnce(gz), RVKIllegalStateError);

    gz.wrap(up);
    EXPECT_EQ(readToEnd(gz), mixedData(30000, 9));
}

// Inside the member, what goes back is exactly the compressed input that
// inflate has not consumed: the upstream then continues where it stood.
TEST(GZIPInputStream, UnwrapInsideMemberHandsBackUnconsumedInput)
{
    std::string content = std::string(100000, 'a');
    std::string member = zlibMember(content) + "TAIL";
    ScriptedInputStream up({ScriptStep::data(member)}, true);
    ZUMGZIPInputStream gz(up);
    EXPECT_EQ(readOnce(gz, 10), 10);
    gz.unWrap();
    ASSERT_EQ(up.unreads.size(), 1u);
    std::string back = up.unreads[0];
    ASSERT_FALSE(back.empty());
    EXPECT_EQ(back, member.substr(member.size() - back.size()));
    EXPECT_EQ(readToEnd(up), back);
}

TEST(GZIPInputStream, UnwrapEdgeCases)
{
    // Before any read: no upstream call, nothing handed back.
    ScriptedInputStream fresh({ScriptStep::data(zlibMember("x"))}, true);
    ZUMGZIPInputStream gz(fresh);
    gz.unWrap();
    EXPECT_TRUE(fresh.counts.empty());
    EXPECT_TRUE(fresh.unreads.empty());
    EXPECT_EQ(gz.getUpstream(), nullptr);

    // Over an upstream that cannot unread: the read-ahead is dropped.
    std::string two = zlibMember("one") + zlibMember("two");
    ScriptedInputStream plain({ScriptStep::data(two)}, false);
    gz.wrap(plain);
    EXPECT_EQ(readToEnd(gz), "one");
    gz.unWrap();
    EXPECT_TRUE(plain.unreads.empty());
    EXPECT_EQ(readToEnd(plain), "");

}

// The whole header is parsed before it is checked, the end of the input
// first: plain text whose fourth byte is 'l' (0x6C, FEXTRA and FNAME) has an
// extra field and a name skipped first. After a failure the stream awaits a
// new header, which the next read takes from the input that follows (the
// rest of the failed upstream read is dropped).
TEST(GZIPInputStream, HeaderChecks)
{
    enum Then { Ends, ReadsZero, GoesOn };  // what the upstream does next
    struct Case {
        std::string input;
        Then then;
        long code;
        unsigned long message;
    };
    std::vector<Case> const cases = {
        {zlibMember("hello").substr(0, 6), Ends, 0, kTruncated},
        {zlibMember("hello").substr(0, 6), ReadsZero, 0, kTruncated},
        {"hello", Ends, 0, kTruncated},
        {"Hello world, this text has no zero byte in it", Ends, 0, kTruncated},
        {"Hello worl" + bytes({2, 0}) + "xyname" + bytes({0}) + "more", GoesOn, -3, kNotGzip},
        {bytes({0x1F, 0x8C, 8, 0, 0, 0, 0, 0, 0, 0}), GoesOn, -3, kNotGzip},
        {bytes({0x1E, 0x8B, 8, 0, 0, 0, 0, 0, 0, 0}), GoesOn, -3, kNotGzip},
        {bytes({0x1F, 0x8B, 8, 0x20, 0, 0, 0, 0, 0, 0}), GoesOn, -3, kUnsupported},
        {bytes({0x1F, 0x8B, 8, 0x80, 0, 0, 0, 0, 0, 0}), GoesOn, -3, kUnsupported},
        {bytes({0x1F, 0x8B, 7, 0, 0, 0, 0, 0, 0, 0}), GoesOn, -3, kUnsupported},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.input));
        std::vector<ScriptStep> script = {ScriptStep::data(c.input + (c.code ? "junk" : ""))};
        if (c.then == Ends) {
            script.push_back(ScriptStep::end());
        } else if (c.then == ReadsZero) {
            script.push_back(ScriptStep::zero());
        }
        script.push_back(ScriptStep::data(zlibMember("ok")));
        ScriptedInputStream up(script);
        ZUMGZIPInputStream gz(up);
        expectIO([&] { readOnce(gz); }, c.code, c.message);
        EXPECT_EQ(readToEnd(gz), "ok");
    }
}

TEST(GZIPInputStream, TrailerChecks)
{
    std::string content = mixedData(20000, 5);
    std::string member = zlibMember(content);
    std::size_t crc_at = member.size() - 8;

    std::string bad_crc = member;
    bad_crc[crc_at] = static_cast<char>(bad_crc[crc_at] ^ 1);
    std::string bad_length = member;
    bad_length[crc_at + 4] = static_cast<char>(bad_length[crc_at + 4] ^ 1);

    for (auto const& [input, message] :
         std::vector<std::pair<std::string, unsigned long>>{{bad_crc, kCrc}, {bad_length, kLength}}) {
        SCOPED_TRACE(testing::Message() << std::hex << message);
        ZUMMemoryInputStream memory(input.data(), static_cast<int>(input.size()));
        ZUMGZIPInputStream gz(memory);
        // The read that reaches the end raises after writing the data into
        // the caller's buffer.
        std::string out(30000, '\0');
        expectIO([&] { gz.read(&out[0], 30000); }, -3, message);
        EXPECT_EQ(out.substr(0, content.size()), content);
        expectIO([&] { readOnce(gz); }, -3, kCorrupt);
        expectIO([&] { gz.read(); }, -3, kCorrupt);
    }

    // The buffer form delivers nothing from the failing read and keeps the
    // buffer as it was.
    ZUMMemoryInputStream again(bad_crc.data(), static_cast<int>(bad_crc.size()));
    ZUMGZIPInputStream gz_buffer(again);
    RVKByteBuffer buf(0, 16);
    buf.appendChars("ab", 2);
    expectIO([&] { gz_buffer.read(buf, 30000); }, -3, kCrc);
    EXPECT_EQ(buf.pcount(), 2);
    EXPECT_STREQ(buf.str(), "ab");

    // A trailer cut short: raised once with code 1, then the member has ended.
    std::string cut = member.substr(0, member.size() - 3);
    ZUMMemoryInputStream memory(cut.data(), static_cast<int>(cut.size()));
    ZUMGZIPInputStream gz(memory);
    std::string out(30000, '\0');
    expectIO([&] { gz.read(&out[0], 30000); }, 1, kTruncated);
    EXPECT_EQ(readOnce(gz), -1);

    // An upstream failure inside the trailer leaves the member failed, not
    // ended.
    ScriptedInputStream up({ScriptStep::data(member.substr(0, member.size() - 5)),
                            ScriptStep::throwText("reset"), ScriptStep::data(member.substr(member.size() - 5))});
    ZUMGZIPInputStream broken(up);
    EXPECT_THROW(readToEnd(broken), ZUMIOException);
    expectIO([&] { readOnce(broken); }, -3, kCorrupt);
}

TEST(GZIPInputStream, CorruptDeflateDataFailsOnNextRead)
{
    ZUMMemoryInputStream memory(kBadDeflateMember.data(), static_cast<int>(kBadDeflateMember.size()));
    ZUMGZIPInputStream gz(memory);
    EXPECT_EQ(readOnce(gz), 0);
    expectIO([&] { readOnce(gz); }, -3, kCorrupt);
    expectIO([&] { readOnce(gz); }, -3, kCorrupt);
}

// A member whose input ends inside the deflate data ends in a finite number
// of reads: readFully stops with the truncation failure (code -5), and so
// does every later read. The bytes decoded before the end are delivered.
TEST(GZIPInputStream, TruncatedDeflateDataEnds)
{
    std::string content = mixedData(60000, 7);
    std::string member = zlibMember(content);
    for (std::size_t keep : {std::size_t(11), member.size() / 3, member.size() - 9}) {
        for (bool zero_end : {false, true}) {
            SCOPED_TRACE(testing::Message() << keep << " " << zero_end);
            std::vector<ScriptStep> script = ScriptedInputStream::pieces(member.substr(0, keep), 5000);
            script.push_back(zero_end ? ScriptStep::zero() : ScriptStep::end());
            ScriptedInputStream up(script);
            ZUMGZIPInputStream gz(up);
            // Asked for one byte more than the whole content.
            std::string out(content.size() + 1, '\0');
            expectIO([&] { gz.readFully(&out[0], static_cast<int>(out.size())); }, -5, kTruncated);
            expectIO([&] { readOnce(gz); }, -5, kTruncated);
        }
    }

}

TEST(GZIPInputStream, MisuseAndUpstreamFailures)
{
    ZUMGZIPInputStream unwrapped;
    char c;
    try {
        unwrapped.read(&c, 1);
        FAIL();
    } catch (RVKIllegalStateError const& e) {
        ASSERT_EQ(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, "ZUMGZIPInputStream::read");
    }
    try {
        unwrapped.unWrap();
        FAIL();
    } catch (RVKIllegalStateError const& e) {
        EXPECT_STREQ(e.getBackTraceEntry(0).method, "void ZUMGZIPInputStream::unWrap()");
    }

    std::string member = zlibMember("data");
    ZUMMemoryInputStream memory(member.data(), static_cast<int>(member.size()));
    ZUMGZIPInputStream gz(memory);
    try {
        gz.read(nullptr, 1);
        FAIL();
    } catch (RVKAssertError const& e) {
        EXPECT_STREQ(e.getText(), "RVK_ASSERT(buf);");
    }
    EXPECT_THROW(gz.read(&c, -1), RVKAssertError);
    EXPECT_EQ(readToEnd(gz), "data");

    // A text exception of the upstream becomes a ZUMIOException carrying
    // errno, the text message and the text; an I/O exception passes
    // unchanged. Either way the stream can be read again afterwards.
    ScriptedInputStream up({ScriptStep::throwText("line broken"), ScriptStep::throwIO(),
                            ScriptStep::data(member.substr(0, 10)), ScriptStep::throwText("again"),
                            ScriptStep::data(member.substr(10))});
    ZUMGZIPInputStream flaky(up);
    errno = 42;
    ZUMIOException converted = expectIO([&] { readOnce(flaky); }, 42, kText);
    ASSERT_EQ(converted.getMessageCount(), 2u);
    EXPECT_EQ(messageText(converted, 1), "line broken");
    EXPECT_STREQ(converted.getBackTraceEntry(0).method, "ZUMGZIPInputStream::read");
    try {
        readOnce(flaky);
        FAIL();
    } catch (ZUMIOException const& e) {
        EXPECT_EQ(e.getCode(), 5);
        EXPECT_EQ(e.getBackTraceSize(), 1u);
    }
    errno = 7;
    expectIO([&] { readOnce(flaky); }, 7, kText);
    EXPECT_EQ(readToEnd(flaky), "data");
}

// Unwrapped in the middle of a member and wrapped onto a new upstream, the
// stream starts afresh with the new member.
TEST(GZIPInputStream, RewrapDecodesNewMember)
{
    ZUMGZIPInputStream gz;
    std::string member = zlibMember(mixedData(50000, 1));
    ZUMMemoryInputStream first(member.data(), static_cast<int>(member.size()));
    gz.wrap(first);
    EXPECT_EQ(readOnce(gz, 100), 100);
    gz.unWrap();
    std::string other = zlibMember("fresh");
    ZUMMemoryInputStream second(other.data(), static_cast<int>(other.size()));
    gz.wrap(second);
    EXPECT_EQ(readToEnd(gz), "fresh");
}

// After the first read has allocated the zlib record and the input buffer,
// reads allocate nothing, also for the next member after unWrap and wrap.
TEST(GZIPInputStream, SteadyStateReadsAllocateNothing)
{
    std::string content = mixedData(200000, 13);
    std::string member = zlibMember(content);
    ZUMMemoryInputStream first(member.data(), static_cast<int>(member.size()));
    ZUMMemoryInputStream second(member.data(), static_cast<int>(member.size()));
    ZUMGZIPInputStream gz(first);
    std::vector<char> out(content.size()), again(content.size());
    ASSERT_EQ(gz.read(out.data(), 1), 1);
    std::size_t before = allocationCount();
    std::size_t done = 1;
    for (int n; (n = gz.read(out.data() + done, 3000)) >= 0;) {
        done += static_cast<std::size_t>(n);
    }
    gz.unWrap();
    gz.wrap(second);
    std::size_t done_again = 0;
    for (int n; (n = gz.read(again.data() + done_again, 5000)) >= 0;) {
        done_again += static_cast<std::size_t>(n);
    }
    EXPECT_EQ(allocationCount() - before, 0u);
    EXPECT_TRUE(std::string(out.data(), done) == content);
    EXPECT_TRUE(std::string(again.data(), done_again) == content);
}
