#include <gtest/gtest.h>

#include "TestStreams.h"

// Where the filter's reads raise from, as its back-trace names them.
std::string const k_read = "@ZUMStripLineBreaksInputStream::read";

// CR and LF (or all ASCII white space) are dropped wherever they fall in the
// upstream's reads; every other byte passes in order, in every read form.
TEST(StripLineBreaksInputStream, DropsLineBreaksOrWhiteSpaceInEveryReadForm)
{
    struct Case { std::string input; int all; std::string kept; } const cases[] = {
        {"ab\r\ncd\r\n", 0, "abcd"},
        {"\r\n\r\n\n\r", 0, ""},
        {"a b\tc\x0b\x0c\r\nd", 0, "a b\tc\x0b\x0c" "d"},
        {"a b\tc\x0b\x0c\r\nd", 1, "abcd"},
        {"no breaks at all", 0, "no breaks at all"},
        {std::string("\0\r\x80\n\xff", 5), 1, std::string("\0\x80\xff", 3)},
        {"", 0, ""},
    };
    for (auto const& c : cases) {
        for (std::size_t piece : {1, 2, 3, 100}) {
            for (Form form : {Form::Buffer, Form::Array, Form::Byte}) {
                ScriptedInputStream up(ScriptedInputStream::pieces(c.input, {piece}, piece == 2));
                ZUMStripLineBreaksInputStream strip(up, c.all);
                EXPECT_TRUE(drain(strip, 3, form) == c.kept)
                    << testing::PrintToString(c.input) << " in pieces of " << piece;
            }
        }
    }
}

// A run of dropped bytes, however long, is read through within one call, so
// that only the upstream's 0 and -1 come out as 0 and -1 (a long run of blank
// lines is not the end of Base64 text); the stream passes close and
// timeouts down, cannot unread and unwraps from any upstream.
TEST(StripLineBreaksInputStream, LongRunsEmptyReadsAndFilterOperations)
{
    std::vector<ScriptStep> script(5000, ScriptStep::data("\r\n"));
    script.push_back(ScriptStep::data("\nx"));
    script.push_back(ScriptStep::zero());
    script.insert(script.end(), 3, ScriptStep::data("\n"));
    ScriptedInputStream up(script);
    ZUMStripLineBreaksInputStream strip(up);
    char buf[8];
    EXPECT_EQ(strip.read(buf, 8), 1);
    EXPECT_EQ(buf[0], 'x');
    EXPECT_EQ(up.counts.size(), 5001u);
    EXPECT_EQ(strip.read(buf, 8), 0) << "an upstream read of 0 bytes";
    EXPECT_EQ(strip.read(buf, 0), 0);
    EXPECT_EQ(strip.read(buf, 8), -1);
    EXPECT_EQ(up.counts.size(), 5006u);
    std::string const blank_lines = "QUJD" + std::string(20000, '\n') + "REVG";
    ZUMMemoryInputStream lines(blank_lines.data(), static_cast<int>(blank_lines.size()));
    ZUMStripLineBreaksInputStream unbroken(lines);
    ZUMBase64InputStream decoded;
    decoded.wrap(unbroken);
    EXPECT_EQ(drain(decoded, 100), "ABCDEF");

    strip.close();
    EXPECT_EQ(up.closes, 1);
    EXPECT_FALSE(strip.canUnread());
    EXPECT_EQ(raised([&] { strip.unread("a", 1); }), "text: not implemented");
    EXPECT_EQ(raised([&] { strip.setTimeout(5); }),
              "RVKUnsupportedOperationError() " + k_set_timeout);
    EXPECT_EQ(raised([&] { strip.read(nullptr, 4); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    strip.unWrap();
    EXPECT_EQ(raised([&] { strip.unWrap(); }), "RVKIllegalStateError() @ZUMStripLineBreaksInputStream::unWrap");
    EXPECT_EQ(raised([&] { strip.read(); }), "RVKIllegalStateError() " + k_read);
    RVKByteBuffer into(0, 16);
    EXPECT_EQ(raised([&] { strip.read(into, 0); }), "RVKIllegalStateError() " + k_read);
}
