#include <gtest/gtest.h>

#include <climits>
#include <filesystem>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

std::string const k_az = "abcdefghijklmnopqrstuvwxyz";

// A fault as the table writes it: "!M " or "!T " for the two catalog numbers,
// then the text message.
std::string faultOf(ZUMIOException const& e)
{
    auto const* number = dynamic_cast<RVKMessage const*>(&e.getMessageAt(0));
    auto const* text = dynamic_cast<RVKMessageString const*>(&e.getMessageAt(1));
    std::string const kind = !number                                                  ? "?"
                             : number->getMsgNumber() == ZUMMessage::CHUNKED_MALFORMED ? "M"
                             : number->getMsgNumber() == ZUMMessage::CHUNKED_TRUNCATED ? "T"
                                                                                       : "?";
    return "!" + kind + " " + (text ? text->getString().c_str() : "?");
}

// What the strict stream delivers from `in` in reads of `count` in the given
// form, then either its fault or, after -1, "|" and what is left in `bis`.
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
        return got + faultOf(e);
    }
    return got + "!spins";
}

// Bodies and what the stream makes of them. `oracle` is false where h11 reads
// the framing differently from the grammar the stream follows (it takes
// anything behind ";" as an extension and blanks before the CR LF, refuses
// blanks before ";" and sizes of more than 20 digits, and has no line limit).
struct Framing {
    std::string body, outcome;
    bool oracle;
};

std::vector<Framing> framings()
{
    std::string const line4096 = "5;" + std::string(4092, 'n') + "\r\n";
    return {
        // Well-formed: the data, then the trailer section left behind.
        {"5\r\nhello\r\n6\r\n world\r\n0\r\n\r\n", "hello world|\r\n", true},
        {"1a;name=value\r\n" + k_az + "\r\n0\r\n\r\n", k_az + "|\r\n", true},
        {"1A;q=\"a \\\"b\\\\\";t;u=v\r\n" + k_az + "\r\n0;last\r\n\r\n", k_az + "|\r\n", true},
        {"3;q=\"\x80\t\xff(),/:<>?@[]{}=;\"\r\nabc\r\n0\r\n\r\n", "abc|\r\n", true},
        {"4\r\n\r\n\r\n\r\n0\r\nX: y\r\nZ: w\r\n\r\n", "\r\n\r\n|X: y\r\nZ: w\r\n\r\n", true},
        {"0005\r\nhello\r\n000\r\n\r\n", "hello|\r\n", true},
        {"0\r\n\r\n", "|\r\n", true},
        {line4096 + "hello\r\n0\r\n\r\n", "hello|\r\n", true},
        {"5 ;a = b\t;\tc\r\nhello\r\n0 ; d\r\n\r\n", "hello|\r\n", false},
        {std::string(20, '0') + "5\r\nhello\r\n0\r\n\r\n", "hello|\r\n", false},
        // The message ends after the last chunk, before its trailer is whole.
        {"5\r\nhello\r\n0\r\n", "hello|", true},
        {"5\r\nhello\r\n0\r\nX: y\r\n", "hello|X: y\r\n", true},
        // Malformed size lines.
        {" 5\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 0", true},
        {"0x5\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 1", true},
        {"g\r\n", "!M malformed chunk-size line at byte 0", true},
        {"\r\n5\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 0", true},
        {"5\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 1", true},
        {"5\r\rhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 2", true},
        {"5\r\nhello\r\n0\n\r\n", "hello!M malformed chunk-size line at byte 11", true},
        {"5\r\nhello\r\n5 \r\nhello\r\n0\r\n\r\n", "hello!M malformed chunk-size line at byte 12", false},
        {std::string("5\0\r\nhello\r\n0\r\n\r\n", 16), "!M malformed chunk-size line at byte 1", true},
        {"5;\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 2", false},
        {"5;a=\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 4", false},
        {"5;a b\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 4", false},
        {"5;a=\x01\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 4", false},
        {"5;a=b c\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 6", false},
        {"5;a=\"x\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 6", false},
        {"5;a=\"x\"y\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 7", false},
        {"5;a=\"\\\x7f\"\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 6", false},
        {"5;(\r\nhello\r\n0\r\n\r\n", "!M malformed chunk-size line at byte 2", false},
        {"5;" + std::string(4093, 'n') + "\r\nhello\r\n0\r\n\r\n",
         "!M chunk-size line longer than 4096 bytes at byte 4096", false},
        {"2\r\nab\r\n" + line4096 + "hello\r\n0\r\n\r\n", "abhello|\r\n", true},
        // Sizes from 2^63 on.
        {"8000000000000000\r\nab", "!M chunk size of 2^63 or more at byte 15", true},
        {"ffffffffffffffff\r\nab", "!M chunk size of 2^63 or more at byte 15", true},
        {"10000000000000000\r\nab", "!M chunk size of 2^63 or more at byte 16", true},
        // Data not followed by CR LF.
        {"5\r\nhelloXX0\r\n\r\n", "hello!M chunk data not followed by CR LF at byte 8", true},
        {"5\r\nhello\n0\r\n\r\n", "hello!M chunk data not followed by CR LF at byte 8", true},
        {"5\r\nhello\r0\r\n\r\n", "hello!M chunk data not followed by CR LF at byte 9", true},
        // Input that ends before the last chunk.
        {"", "!T input ended before a chunk-size line at byte 0", true},
        {"5", "!T input ended inside a chunk-size line at byte 1", true},
        {"5;a=\"x", "!T input ended inside a chunk-size line at byte 6", true},
        {"5\r", "!T input ended inside a chunk-size line at byte 2", true},
        {"5\r\nhel", "hel!T input ended inside chunk data at byte 6", true},
        {"7fffffffffffffff\r\nab", "ab!T input ended inside chunk data at byte 20", true},
        {"5\r\nhello", "hello!T input ended before the CR LF after chunk data at byte 8", true},
        {"5\r\nhello\r", "hello!T input ended before the CR LF after chunk data at byte 9", true},
        {"5\r\nhello\r\n", "hello!T input ended before a chunk-size line at byte 10", true},
    };
}

}  // namespace

// Every framing gives the same data and the same fault, with its place,
// whatever the read form and however the input arrives: at once, or a byte a
// read with an empty read after each.
TEST(StrictChunkedInputStream, FramingsDecodeOrFailAtTheirPlaceInEveryReadForm)
{
    struct Form3 { std::size_t piece; Form form; int count; } const forms[] = {
        {0, Form::Buffer, 4096}, {1, Form::Array, 3}, {0, Form::Byte, 1}};
    for (auto const& f : framings()) {
        for (auto const& form : forms) {
            ScriptedInputStream up(ScriptedInputStream::pieces(f.body, {form.piece}, form.piece != 0));
            ZUMBufferedInputStream bis(up, 64);
            ZUMStrictChunkedInputStream strict(bis);
            EXPECT_EQ(decode(strict, bis, form.form, form.count), f.outcome)
                << testing::PrintToString(f.body.substr(0, 40)) << " form " << static_cast<int>(form.form);
        }
    }
}

// h11 (Debian's python3-h11), a parser of its own, reads each framing as the
// body of a response: where it refuses one, the stream raises; where it
// decodes one to the end of the message, the stream delivers the same data
// and leaves a whole trailer section behind.
TEST(StrictChunkedInputStream, AgreesWithAnIndependentParser)
{
    if (!runCommand("/usr/bin/python3 -c 'import h11' 2>/dev/null")) {
        GTEST_SKIP() << "/usr/bin/python3 with h11 not found (python3-h11; scripts/install-deps installs it)";
    }
    std::vector<Framing> checked;
    std::string hex;
    for (auto const& f : framings()) {
        if (f.oracle) {
            checked.push_back(f);
            for (unsigned char c : f.body) {
                hex += "0123456789abcdef"[c >> 4];
                hex += "0123456789abcdef"[c & 15];
            }
            hex += "\n";
        }
    }
    TempDir dir;
    std::string const out = dir.file("verdicts");
    ASSERT_TRUE(runCommand("/usr/bin/python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/chunked/h11_dechunk.py") + " " +
                           shellQuoted(dir.write("bodies", hex)) + " > " + shellQuoted(out)));
    std::istringstream verdicts(readFile(out));
    for (auto const& f : checked) {
        std::string verdict;
        ASSERT_TRUE(std::getline(verdicts, verdict));
        std::size_t const end = f.outcome.find('|');
        std::string const rest = end == std::string::npos ? "" : f.outcome.substr(end + 1);
        bool const whole = rest == "\r\n" || (rest.size() > 4 && rest.compare(rest.size() - 4, 4, "\r\n\r\n") == 0);
        std::string data;
        for (std::size_t i = 0; whole && i < end; ++i) {
            char hexByte[3];
            std::snprintf(hexByte, sizeof hexByte, "%02x", static_cast<unsigned char>(f.outcome[i]));
            data += hexByte;
        }
        EXPECT_EQ(verdict.rfind("ok ", 0) == 0 ? verdict : "refused", whole ? "ok " + data : "refused")
            << testing::PrintToString(f.body.substr(0, 40)) << ": " << verdict;
    }
}

// The chunked bodies of tests/data/chunked (nginx's and Python's) decode as
// the lenient stream decodes them, with the same trailer left behind.
TEST(StrictChunkedInputStream, ReadsTheBodiesOfOtherSoftware)
{
    for (auto const& entry : std::filesystem::directory_iterator(ZUM_TEST_DATA_DIR "/chunked")) {
        if (entry.path().extension() != ".body") {
            continue;
        }
        std::string const name = "chunked/" + entry.path().stem().string();
        std::string const body = dataFile(name + ".body");
        ScriptedInputStream up(ScriptedInputStream::pieces(body, {1, 7, 4000}));
        ZUMBufferedInputStream bis(up, 1000);
        ZUMStrictChunkedInputStream strict(bis);
        EXPECT_TRUE(drain(strict, 5000) == dataFile(name + ".expected")) << name;
        EXPECT_EQ(drain(bis, 0, Form::Line), dataFile(name + ".trailer")) << name;
    }
}

// A fault is raised again by every later read, and what() names it with its
// place. A failure of the stream beneath passes, and the next read goes on
// inside the size line where it stopped.
TEST(StrictChunkedInputStream, FaultsStayAndFailuresBeneathResume)
{
    ZUMMemoryInputStream mem("3\r\nabcX", 7);
    ZUMStrictChunkedInputStream strict(mem, 16);
    char buf[8];
    ASSERT_EQ(strict.read(buf, 8), 3);
    std::string const first = raised([&] { strict.read(buf, 8); });
    EXPECT_EQ(first, "ZUMIOException(1,0) #CHUNKED_MALFORMED 'chunk data not followed by CR LF at byte 6'"
                     " @ZUMStrictChunkedInputStream::read");
    EXPECT_EQ(raised([&] { strict.read(); }), first);
    RVKByteBuffer into(16, 16);
    EXPECT_EQ(raised([&] { strict.read(into, 8); }), first);
    try {
        strict.read(buf, 8);
    } catch (ZUMIOException const& e) {
        EXPECT_NE(std::string(e.what()).find("the chunked framing is malformed; chunk data not followed by CR LF at "
                                             "byte 6"),
                  std::string::npos)
            << e.what();
    }

    ScriptedInputStream up({ScriptStep::data("1"), ScriptStep::throwIO(), ScriptStep::data("2;x"),
                            ScriptStep::throwText("beneath"),
                            ScriptStep::data("=y\r\n" + k_az.substr(0, 18) + "\r\n0\r\n")});
    ZUMBufferedInputStream bis(up, 64);
    ZUMStrictChunkedInputStream resumed(bis);
    EXPECT_THROW(resumed.read(buf, 8), ZUMIOException);
    EXPECT_EQ(raised([&] { resumed.read(); }), "text: beneath");
    EXPECT_EQ(drain(resumed, 5), k_az.substr(0, 18));
}

// Bytes pushed back come first, in a chunk, between chunks or inside a size
// line, and the framing goes on behind them; after the end they stay in the
// buffered stream. unWrap is refused while data is due; an owned buffered
// stream hands the trailer back; one not yet wrapped reads no input.
TEST(StrictChunkedInputStream, UnreadUnWrapAndOwnedBufferedStreams)
{
    std::string const body = "5\r\nhello\r\n6\r\n world\r\n0\r\nT: 1\r\n\r\n";
    ScriptedInputStream up({ScriptStep::data(body)}, true);
    ZUMStrictChunkedInputStream strict(up, 64);
    char buf[100];
    ASSERT_EQ(strict.read(buf, 2), 2);
    strict.unread("HE", 2);
    ASSERT_EQ(strict.read(buf, 100), 2);
    ASSERT_EQ(strict.read(buf, 100), 3);
    strict.unread("XY", 2);
    EXPECT_EQ(raised([&] { strict.unWrap(); }), "RVKAssertError(RVK_ASSERT(!m_chunk_left && !m_pushed_back);) @-");
    EXPECT_EQ(strict.read(), 'X');
    EXPECT_EQ(drain(strict, 100), "Y world");
    strict.unread("Z", 1);
    EXPECT_EQ(strict.read(buf, 100), -1);
    strict.unWrap();
    EXPECT_EQ(up.unreads.back(), "ZT: 1\r\n\r\n");
    EXPECT_EQ(raised([&] { strict.unWrap(); }), "RVKIllegalStateError() @void ZUMBufferedInputStream::unWrap()");

    ZUMStrictChunkedInputStream unwrapped(16);
    ZUMMemoryInputStream mem("1\r\na\r\n0\r\n\r\n", 11);
    EXPECT_EQ(raised([&] { unwrapped.read(); }),
              "ZUMIOException(1,0) #CHUNKED_TRUNCATED 'input ended before a chunk-size line at byte 0'"
              " @ZUMStrictChunkedInputStream::read");
    unwrapped.wrap(mem);
    EXPECT_THROW(unwrapped.read(), ZUMIOException);
    EXPECT_EQ(raised([&] { unwrapped.wrap(mem); }),
              "RVKIllegalStateError() @ZUMFilterInputStream::wrap - stream is already wrapped");
    EXPECT_EQ(raised([] { ZUMStrictChunkedInputStream bad(0); }),
              "RVKIllegalArgumentError() @ZUMStrictChunkedInputStream::ZUMStrictChunkedInputStream - size must be 1 "
              "or more");

    // Inside a size line: the pushed-back bytes come, then the line goes on.
    ScriptedInputStream slow(
        {ScriptStep::data("1"), ScriptStep::zero(), ScriptStep::data("0\r\n" + k_az.substr(0, 16) + "\r\n0\r\n")});
    ZUMBufferedInputStream bis(slow, 64);
    ZUMStrictChunkedInputStream inLine(bis);
    EXPECT_EQ(inLine.read(buf, 100), 0);
    inLine.unread("P", 1);
    EXPECT_EQ(drain(inLine, 100, Form::Byte), "P" + k_az.substr(0, 16));
}

// A chunk larger than an int (2^31 + 3 bytes) arrives in many reads, then
// the framing behind it is checked.
TEST(StrictChunkedInputStream, ChunkLargerThanAnInt)
{
    // The head, then `size` bytes 'x' (not held), then the tail.
    class Generated : public ZUMInputStream {
    public:
        Generated(std::string head, long long size, std::string tail)
            : m_head(std::move(head)), m_size(size), m_tail(std::move(tail))
        {
        }
        int read(RVKByteBuffer& b, int count) override
        {
            long long const h = static_cast<long long>(m_head.size());
            std::string const* s = m_at < h ? &m_head : m_at >= h + m_size ? &m_tail : nullptr;
            long long const from = m_at < h ? m_at : m_at - h - m_size;
            long long const left = s ? static_cast<long long>(s->size()) - from : h + m_size - m_at;
            if (left <= 0) {
                return -1;
            }
            unsigned const n = static_cast<unsigned>(std::min<long long>(count, left));
            if (s) {
                b.appendChars(s->data() + from, n);
            } else {
                b.reserve(static_cast<unsigned>(b.pcount()) + n);
                std::memset(b.str() + b.pcount(), 'x', n);
                b.setLength(static_cast<unsigned>(b.pcount()) + n);
            }
            m_at += n;
            return static_cast<int>(n);
        }
        int read(char*, int) override { return -1; }
        int read() override { return -1; }

    private:
        std::string m_head;
        long long m_size;
        std::string m_tail;
        long long m_at = 0;
    };
    long long const size = (1LL << 31) + 3;
    Generated gen("80000003;big\r\n", size, "\r\n0\r\n\r\n");
    ZUMStrictChunkedInputStream strict(gen, 1 << 20);
    std::vector<char> buf(1 << 20);
    long long total = 0;
    int reads = 0;
    for (int n; (n = strict.read(buf.data(), INT_MAX)) != -1; ++reads) {
        total += n;
    }
    EXPECT_EQ(total, size);
    EXPECT_GT(reads, 2048);
}
