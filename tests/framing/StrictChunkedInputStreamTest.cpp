// fuzz/chunked_strict checks read forms, pieces, empty/failing reads, unread, repeat faults, offsets.
#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

std::string hex(std::string const& bytes)
{
    std::string out;
    for (unsigned char c : bytes) {
        out += {"0123456789abcdef"[c >> 4], "0123456789abcdef"[c & 15]};
    }
    return out;
}

// What the strict stream delivers from `body`, then "!", its fault's catalog
// name and text, or, after -1, "|" and what is left in the buffered stream.
std::string decode(std::string const& body)
{
    ZUMMemoryInputStream mem(body.data(), static_cast<int>(body.size()));
    ZUMBufferedInputStream bis(mem, 64);
    ZUMStrictChunkedInputStream strict(bis);
    RVKByteBuffer got(0, 256);
    try {
        while (strict.read(got, 4096) >= 0) {
        }
        return str(got) + "|" + drain(bis);
    } catch (ZUMIOException const& e) {
        return str(got) + "!" + messageName(dynamic_cast<RVKMessage const&>(e.getMessageAt(0)).getMsgNumber()) + " " +
               dynamic_cast<RVKMessageString const&>(e.getMessageAt(1)).getString().c_str();
    }
}

}  // namespace

// Every framing gives its data and its fault, with its place; size lines of
// 4096 bytes pass and of 4097 do not. h11 (Debian's python3-h11), a parser of
// its own, reads each as the body of a response: where it refuses one, the
// stream raises; where it decodes one to the end of the message, the stream
// delivers the same data and leaves a whole trailer section behind.
TEST(StrictChunkedInputStream, FramingsDecodeOrFailAtTheirPlaceAsAnIndependentParserSays)
{
    struct Framing { std::string body, outcome; bool oracle; };
    std::vector<Framing> all = {
        {"2\r\nab\r\n5;" + std::string(4092, 'n') + "\r\nhello\r\n0\r\n\r\n", "abhello|\r\n", true},
        {"5;" + std::string(4093, 'n') + "\r\n",
         "!CHUNKED_MALFORMED chunk-size line longer than 4096 bytes at byte 4096", false}};
    for (auto const& row : dataTable("chunked/strict-framings.tsv")) {
        all.push_back({row.at(0), row.at(1), row.at(2) == "1"});
    }
    ASSERT_GE(all.size(), 20u);
    std::string bodies, expected;
    for (auto const& f : all) {
        EXPECT_EQ(decode(f.body), f.outcome) << testing::PrintToString(f.body.substr(0, 40));
        std::size_t const end = f.outcome.find('|');
        std::string const rest = end == std::string::npos ? "" : f.outcome.substr(end + 1);
        bool const whole = rest == "\r\n" || (rest.size() > 4 && rest.compare(rest.size() - 4, 4, "\r\n\r\n") == 0);
        bodies += f.oracle ? hex(f.body) + "\n" : "";
        expected += f.oracle ? (whole ? "ok " + hex(f.outcome.substr(0, end)) : "refused") + "\n" : "";
    }
    if (!runCommand("/usr/bin/python3 -c 'import h11' 2>/dev/null")) {
        GTEST_SKIP() << "/usr/bin/python3 with h11 not found (python3-h11; scripts/install-deps installs it)";
    }
    TempDir dir;
    ASSERT_TRUE(runCommand("/usr/bin/python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/chunked/h11_dechunk.py") + " " +
                           shellQuoted(dir.write("bodies", bodies)) + " > " + shellQuoted(dir.file("verdicts"))));
    std::istringstream verdicts(readFile(dir.file("verdicts"))), expectations(expected);
    for (std::string verdict, expectation; std::getline(expectations, expectation);) {
        std::getline(verdicts, verdict);
        EXPECT_EQ(verdict.rfind("ok ", 0) == 0 ? verdict : "refused", expectation) << verdict;
    }
}

// unWrap is refused while data or pushed-back bytes are due; after the last
// chunk an owned buffered stream hands the trailer back. One not yet wrapped
// reads no input; a second wrap and a buffer of 0 bytes are refused.
TEST(StrictChunkedInputStream, UnWrapHandsTheTrailerBackAndMisuseIsRefused)
{
    ScriptedInputStream up({ScriptStep::data("5\r\nhello\r\n0\r\nT: 1\r\n\r\n")}, true);
    ZUMStrictChunkedInputStream strict(up, 64);
    char buf[100];
    std::string const refused = "RVKAssertError(RVK_ASSERT(!m_chunk_left && !m_pushed_back);) @-";
    ASSERT_EQ(strict.read(buf, 2), 2);
    EXPECT_EQ(raised([&] { strict.unWrap(); }), refused);
    ASSERT_EQ(strict.read(buf, 100), 3);
    strict.unread("XY", 2);
    EXPECT_EQ(raised([&] { strict.unWrap(); }), refused);
    EXPECT_EQ(drain(strict, 100), "XY");
    strict.unWrap();
    EXPECT_EQ(up.unreads.back(), "T: 1\r\n\r\n");

    ZUMStrictChunkedInputStream unwrapped(16);
    EXPECT_EQ(raised([&] { unwrapped.read(); }),
              "ZUMIOException(1,0) #CHUNKED_TRUNCATED 'input ended before a chunk-size line at byte 0'"
              " @ZUMStrictChunkedInputStream::read");
    unwrapped.wrap(up);
    EXPECT_EQ(raised([&] { unwrapped.wrap(up); }),
              "RVKIllegalStateError() @ZUMFilterInputStream::wrap - stream is already wrapped");
    EXPECT_EQ(raised([] { ZUMStrictChunkedInputStream bad(0); }),
              "RVKIllegalArgumentError() @ZUMStrictChunkedInputStream::ZUMStrictChunkedInputStream - size must be 1 "
              "or more");
}
