#include <gtest/gtest.h>

#include <climits>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

std::string hex(std::string const& bytes)
{
    std::string out;
    for (unsigned char c : bytes) {
        out += "0123456789abcdef"[c >> 4];
        out += "0123456789abcdef"[c & 15];
    }
    return out;
}

// What the strict stream delivers in reads of `count` in the given form,
// then its fault ("!M " or "!T " for the two catalog numbers, and the text)
// or, after -1, "|" and what is left in `bis`.
std::string decode(ZUMStrictChunkedInputStream& in, ZUMBufferedInputStream& bis, Form form, int count)
{
    std::string got;
    std::vector<char> buf(static_cast<std::size_t>(count));
    try {
        for (int n = 0, zeros = 0; zeros < 10000; zeros = n ? 0 : zeros + 1) {
            n = form == Form::Byte ? in.read() : in.read(buf.data(), count);
            if (n < 0) {
                return got + "|" + drain(bis);
            }
            got += form == Form::Byte ? std::string(1, static_cast<char>(n))
                                      : std::string(buf.data(), static_cast<std::size_t>(n));
            n = form == Form::Byte ? 1 : n;
        }
    } catch (ZUMIOException const& e) {
        auto const& number = dynamic_cast<RVKMessage const&>(e.getMessageAt(0));
        auto const& text = dynamic_cast<RVKMessageString const&>(e.getMessageAt(1));
        return got + (number.getMsgNumber() == ZUMMessage::CHUNKED_MALFORMED   ? "!M "
                      : number.getMsgNumber() == ZUMMessage::CHUNKED_TRUNCATED ? "!T "
                                                                               : "!? ") +
               text.getString().c_str();
    }
    return got + "!spins";
}

struct Framing {
    std::string body, outcome;
    bool oracle;
};

// The rows of tests/data/chunked/strict-framings.tsv, and size lines of 4096
// and 4097 bytes.
std::vector<Framing> framings()
{
    std::vector<Framing> rows = {
        {"2\r\nab\r\n5;" + std::string(4092, 'n') + "\r\nhello\r\n0\r\n\r\n", "abhello|\r\n", true},
        {"5;" + std::string(4093, 'n') + "\r\n", "!M chunk-size line longer than 4096 bytes at byte 4096", false},
    };
    for (auto const& row : dataTable("chunked/strict-framings.tsv")) {
        rows.push_back({row.at(0), row.at(1), row.at(2) == "1"});
    }
    return rows;
}

}  // namespace

// Every framing gives the same data and the same fault, with its place,
// whatever the read form and however the input arrives (at once, or a byte a
// read with an empty read after each). h11 (Debian's python3-h11), a parser
// of its own, reads each as the body of a response: where it refuses one,
// the stream raises; where it decodes one to the end of the message, the
// stream delivers the same data and leaves a whole trailer section behind.
TEST(StrictChunkedInputStream, FramingsDecodeOrFailAtTheirPlaceAsAnIndependentParserSays)
{
    struct Way { std::size_t piece; Form form; int count; } const ways[] = {
        {0, Form::Buffer, 4096}, {1, Form::Array, 3}, {0, Form::Byte, 1}};
    std::vector<Framing> const all = framings();
    ASSERT_GE(all.size(), 39u);
    std::string bodies, expected;
    for (auto const& f : all) {
        for (auto const& way : ways) {
            ScriptedInputStream up(ScriptedInputStream::pieces(f.body, {way.piece}, way.piece != 0));
            ZUMBufferedInputStream bis(up, 64);
            ZUMStrictChunkedInputStream strict(bis);
            EXPECT_EQ(decode(strict, bis, way.form, way.count), f.outcome)
                << testing::PrintToString(f.body.substr(0, 40)) << " form " << static_cast<int>(way.form);
        }
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
    std::string const out = dir.file("verdicts");
    ASSERT_TRUE(runCommand("/usr/bin/python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/chunked/h11_dechunk.py") + " " +
                           shellQuoted(dir.write("bodies", bodies)) + " > " + shellQuoted(out)));
    std::istringstream verdicts(readFile(out)), expectations(expected), sent(bodies);
    for (std::string verdict, expectation, body; std::getline(expectations, expectation);) {
        std::getline(verdicts, verdict);
        std::getline(sent, body);
        EXPECT_EQ(verdict.rfind("ok ", 0) == 0 ? verdict : "refused", expectation) << body << ": " << verdict;
    }
}

// A fault is raised again by every later read, and what() names it with its
// place.
TEST(StrictChunkedInputStream, FaultsStayAndWhatNamesThem)
{
    ZUMMemoryInputStream mem("3\r\nabcX", 7);
    ZUMStrictChunkedInputStream strict(mem, 16);
    char buf[8];
    ASSERT_EQ(strict.read(buf, 8), 3);
    std::string const first = raised([&] { strict.read(buf, 8); });
    EXPECT_EQ(first, "ZUMIOException(1,0) #CHUNKED_MALFORMED 'chunk data not followed by CR LF at byte 6'"
                     " @ZUMStrictChunkedInputStream::read");
    EXPECT_EQ(raised([&] { strict.read(); }), first);
    try {
        strict.read(buf, 8);
        ADD_FAILURE() << "no raise";
    } catch (ZUMIOException const& e) {
        EXPECT_STREQ(e.what(), "ZUMIOException (code 0) [ZUMStrictChunkedInputStream::read]: the chunked framing is "
                               "malformed; chunk data not followed by CR LF at byte 6");
    }
}

// Bytes pushed back come first and stay in the buffered stream after the end;
// unWrap is refused while data or pushed-back bytes are due, and an owned
// buffered stream then hands the trailer back. One not yet wrapped reads no
// input. Bytes pushed back inside a size line come before the line goes on.
TEST(StrictChunkedInputStream, UnreadUnWrapAndOwnedBufferedStreams)
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
    strict.unread("Z", 1);
    EXPECT_EQ(strict.read(), -1);
    strict.unWrap();
    EXPECT_EQ(up.unreads.back(), "ZT: 1\r\n\r\n");

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

    ScriptedInputStream slow({ScriptStep::data("1"), ScriptStep::zero(), ScriptStep::data("\r\na\r\n0\r\n")});
    ZUMBufferedInputStream bis(slow, 64);
    ZUMStrictChunkedInputStream inLine(bis);
    EXPECT_EQ(inLine.read(buf, 100), 0);
    inLine.unread("P", 1);
    EXPECT_EQ(drain(inLine, 100, Form::Byte), "Pa");
}

// A chunk larger than an int (2^31 + 3 bytes) arrives in many reads; the end
// of the input behind it is found at its 64-bit offset.
TEST(StrictChunkedInputStream, ChunkLargerThanAnInt)
{
    // 2^31 + 3 bytes 'x' (not held), behind the size line pushed in front.
    struct Xs : ZUMInputStream {
        long long left = (1LL << 31) + 3;
        int read(RVKByteBuffer& b, int count) override
        {
            unsigned const n = static_cast<unsigned>(std::min<long long>(count, left));
            b.reserve(static_cast<unsigned>(b.pcount()) + n);
            std::memset(b.str() + b.pcount(), 'x', n);
            b.setLength(static_cast<unsigned>(b.pcount()) + n);
            left -= n;
            return n ? static_cast<int>(n) : -1;
        }
        int read(char*, int) override { return -1; }
        int read() override { return -1; }
    } xs;
    ZUMBufferedInputStream bis(xs, 1 << 20);
    bis.unread("80000003;big\r\n", 14);
    ZUMStrictChunkedInputStream strict(bis);
    std::vector<char> buf(1 << 20);
    long long total = 0;
    int reads = 0;
    std::string const fault = raised([&] {
        for (int n; (n = strict.read(buf.data(), INT_MAX)) != -1; ++reads) {
            total += n;
        }
    });
    EXPECT_EQ(total, (1LL << 31) + 3);
    EXPECT_GT(reads, 2048);
    EXPECT_EQ(fault, "ZUMIOException(1,0) #CHUNKED_TRUNCATED 'input ended before the CR LF after chunk data at byte "
                     "2147483665' @ZUMStrictChunkedInputStream::read");
}
