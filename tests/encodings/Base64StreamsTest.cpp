#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

#include "TestFiles.h"
#include "TestStreams.h"

using Writes = std::vector<std::string>;

// Where the input stream's reads raise from, as its back-trace names them.
std::string const k_in_read = "@ZUMBase64InputStream::read";

// Both ways: the RFC 4648 vectors; the input stream in every read form.
TEST(Base64Streams, Rfc4648Vectors)
{
    struct Case { std::string bytes, text; std::size_t piece; } const cases[] = {
        {"", "", 1},    {"f", "Zg==", 1},   {"fo", "Zm8=", 1},  {"foo", "Zm9v", 1},  {"foob", "Zm9vYg==", 1},
        {"fooba", "Zm9vYmE=", 2}, {"foobar", "Zm9vYmFy", 6},
    };
    for (auto const& c : cases) {
        RecordingOutputStream down;
        ZUMBase64OutputStream out(down);
        writeInPieces(out, c.bytes, {c.piece});
        out.flush();
        std::string const text = down.all();
        EXPECT_EQ(text, c.text);
        for (auto [count, form] : {std::pair{1, Form::Array}, {2, Form::Array}, {1000, Form::Array}, {0, Form::Byte},
                                   {4, Form::Buffer}}) {
            ZUMMemoryInputStream source(text.data(), static_cast<int>(text.size()));
            ZUMBase64InputStream in;
            in.wrap(source);
            EXPECT_TRUE(drain(in, count, form) == c.bytes) << c.text << " read by " << count;
        }
    }
}

// Text in lines of 76 by an independent encoder (Python's
// base64.encodebytes: tests/data/base64/make_fixtures.py), with CR LF or LF
// alone, decodes through a filter that drops the line breaks beneath the
// Base64 stream.
TEST(Base64InputStream, MimeTextDecodesWithLineBreaksDropped)
{
    std::string input = dataFile("base64/input.bin");
    ASSERT_EQ(input.size(), 10000u);
    for (int n : {0, 1, 2, 3, 56, 57, 58, 113, 114, 115, 3072, 3073, 4000, 10000}) {
        std::string expected = dataFile("base64/mime-" + std::to_string(n) + ".txt");
        std::string lf = expected;
        lf.erase(std::remove(lf.begin(), lf.end(), '\r'), lf.end());
        for (auto [text, form] : {std::pair{expected, Form::Buffer}, {lf, Form::Array}}) {
            ZUMMemoryInputStream raw(text.data(), static_cast<int>(text.size()));
            ZUMBufferedInputStream bis(raw, 100);
            ZUMStripLineBreaksInputStream strip(bis);
            ZUMBase64InputStream b64;
            b64.wrap(strip);
            EXPECT_TRUE(drain(b64, 77, form) == input.substr(0, static_cast<std::size_t>(n))) << n << " bytes";
        }
    }
}

// Whole groups go out at once, in blocks of at most 4096 characters, lines
// and CR LF as pieces of their own; the last one or two bytes wait for
// flush() (not close()). A shorter line ends the current one at once.
TEST(Base64OutputStream, WritePatternUnwrapDestructionAndMisuse)
{
    RecordingOutputStream down;
    ZUMBase64OutputStream out(down);
    out.write("hello", 5);
    out.flush();
    out.flush();
    out.write("ab", 2);
    out.write("c", 1);
    EXPECT_EQ(down.writes, (Writes{"aGVs", "bG8=", "YWJj"}));
    std::string data = testBytes(7000);
    out.write(data.data(), 7000);
    out.close();
    EXPECT_EQ(down.sizes(), (std::vector<std::size_t>{4, 4, 4, 4096, 4096, 1140}));
    out.flush();
    EXPECT_EQ(down.sizes().back(), 4u);
    EXPECT_EQ((Row{down.flushes, down.closes}), (Row{0, 0}));

    down.writes.clear();
    out.lineBreak(10);
    out.write("abcdef", 6);
    out.lineBreak(4);
    out.write("ghi", 3);
    out.write("jkl", 3);
    out.lineBreak(0);  // no line breaks, however long the output
    out.write(std::string(60, '\0').data(), 60);
    EXPECT_EQ(down.writes, (Writes{"YWJjZGVm", "Z2hp", "\r\n", "amts", "\r\n", std::string(80, 'A')}));

    // unWrap and the destructor write the pending group; a failure of the
    // destructor's flush is dropped.
    down.writes.clear();
    {
        ZUMBase64OutputStream pending(down);
        pending.write("ab", 2);
        pending.unWrap();
        EXPECT_EQ(down.all(), "YWI=");
        pending.wrap(down);
        pending.write("c", 1);
        EXPECT_EQ(raised([&] { pending.wrap(down); }), "RVKAssertError(RVK_ASSERT(!p_downstream);) @-");
    }
    EXPECT_EQ(down.all(), "YWI=Yw==");  // the destructor writes the pending group
    {
        ZUMBase64OutputStream failing(down);
        failing.write("d", 1);
        down.failAt(1, "broken pipe");
    }
    ZUMBase64OutputStream unwrapped;
    unwrapped.flush();  // nothing pending: no write, no failure
    EXPECT_EQ(raised([&] { unwrapped.write("a", 1); }), "RVKIllegalStateError() @ZUMBase64OutputStream::write");
    EXPECT_EQ(raised([&] { out.write("abc", -1); }), "RVKAssertError(RVK_ASSERT(count >= 0);) @-");
    EXPECT_EQ(raised([&] { out.write(nullptr, 0); }), "RVKAssertError(RVK_ASSERT(bytes || bFlush);) @-");
    EXPECT_EQ(raised([&] { out.write(nullptr, 2, 1); }), "RVKAssertError(RVK_ASSERT(bytes || count == 0);) @-");
    down.failAt(1, "broken pipe");
    EXPECT_EQ(raised([&] { errno = 32, out.write("abc", 3); }),
              "ZUMIOException(1,32) #TEXT_ERROR 'broken pipe' @ZUMBase64OutputStream::flush");
}

// Wrapping and unwrapping, misuse, and failures of the stream beneath.
TEST(Base64InputStream, WrapUnwrapAndFailures)
{
    ZUMBase64InputStream in;
    char buf[8];
    EXPECT_EQ(raised([&] { in.read(buf, 4); }), "RVKIllegalStateError() " + k_in_read);
    EXPECT_EQ(raised([&] { in.unWrap(); }), "RVKIllegalStateError() @ZUMBase64InputStream::unWrap");
    ZUMMemoryInputStream first("Zm9v", 4), second("YmFyZm9vYm\0\nYmFy", 16);  // NUL and line breaks are not Base64
    in.wrap(first);
    EXPECT_EQ(in.read(), 'f');
    in.unWrap();  // drops the held "oo", even over a stream that can't unread
    in.wrap(second);
    EXPECT_EQ((Row{in.read(buf, 0), in.read(buf, -3)}), (Row{0, 0}));
    EXPECT_EQ(raised([&] { in.read(static_cast<char*>(nullptr), 4); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_EQ(in.read(buf, 6), 6);
    EXPECT_EQ(raised([&] { in.read(buf, 3); }), "RVKAssertError(RVK_ASSERT(sta == 0);) @-");
    EXPECT_FALSE(in.canUnread());
    EXPECT_THROW(in.unread("x", 1), char const*);
    ScriptedInputStream zeros(ScriptedInputStream::pieces("Zm9vYmFy", {3}, true));  // a 0-byte read after each piece
    ZUMBase64InputStream through;
    through.wrap(zeros);
    EXPECT_EQ(drain(through, 64), "foobar");

    ScriptedInputStream source(
        {ScriptStep::data("Zm"), ScriptStep::throwText("not implemented"), ScriptStep::throwIO()});
    ZUMBase64InputStream failing;
    failing.wrap(source);
    EXPECT_EQ(raised([&] { errno = 3, failing.read(buf, 3); }),
              "ZUMIOException(1,3) #TEXT_ERROR 'not implemented' " + k_in_read);
    EXPECT_EQ(raised([&] { failing.read(buf, 3); }), "ZUMIOException(1,5) @ScriptedInputStream::read");
}

