#include <gtest/gtest.h>

#include "RaiseChecks.h"
#include "TestStreams.h"
#include "ZUMBase64InputStream.h"

namespace {

// Reads everything with block reads of `count`, through the array form.
std::string readAll(ZUMInputStream& in, int count)
{
    std::string got;
    char buf[64];
    int n;
    while ((n = in.read(buf, count)) != -1) {
        got.append(buf, static_cast<std::size_t>(n));
    }
    return got;
}

}  // namespace

TEST(Base64InputStream, Rfc4648Vectors)
{
    struct Case {
        char const* text;
        char const* bytes;
    };
    Case const cases[] = {{"", ""},         {"Zg==", "f"},         {"Zm8=", "fo"},
                          {"Zm9v", "foo"},  {"Zm9vYg==", "foob"},  {"Zm9vYmE=", "fooba"},
                          {"Zm9vYmFy", "foobar"}, {"Zm9vYm", "foo"} /* truncated group dropped */};
    for (auto const& c : cases) {
        for (int count : {1, 2, 3, 64}) {
            ZUMMemoryInputStream text(c.text, static_cast<int>(std::strlen(c.text)));
            ZUMBase64InputStream in;
            in.wrap(text);
            EXPECT_EQ(readAll(in, count), c.bytes) << c.text << " read by " << count;
        }
    }
}

TEST(Base64InputStream, HeldBytesComeFirst)
{
    ZUMMemoryInputStream text("aGVsbG8=", 8);
    ZUMBase64InputStream in;
    in.wrap(text);
    char buf[8];
    ASSERT_EQ(in.read(buf, 2), 2);
    EXPECT_EQ(std::string(buf, 2), "he");
    ASSERT_EQ(in.read(buf, 2), 2);
    EXPECT_EQ(std::string(buf, 2), "ll");
    EXPECT_EQ(in.read(buf, 0), 0);
    ASSERT_EQ(in.read(buf, 2), 1);
    EXPECT_EQ(buf[0], 'o');
    EXPECT_EQ(in.read(buf, 2), -1);
    EXPECT_EQ(in.read(buf, 2), -1);
}

TEST(Base64InputStream, SingleByteAndByteBufferReads)
{
    ZUMMemoryInputStream text("QQ==/w==Zm9vYmFy", 16);
    ZUMBase64InputStream in;
    in.wrap(text);
    EXPECT_EQ(in.read(), 65);
    EXPECT_EQ(in.read(), 255);
    RVKByteBuffer buffer(0, 16);
    buffer.appendChars("x", 1);
    EXPECT_EQ(in.read(buffer, 0), -1);
    EXPECT_EQ(in.read(buffer, 4), 4);
    EXPECT_EQ(in.read(buffer, 4), 2);
    EXPECT_EQ(in.read(buffer, 4), -1);
    EXPECT_EQ(std::string(buffer.str(), buffer.pcount()), "xfoobar");
    EXPECT_EQ(in.read(), -1);
}

TEST(Base64InputStream, ShortUpstreamReadsLoseNoText)
{
    std::string text = "Zm9vYmFyZm9vYmFy";  // foobarfoobar
    for (std::size_t piece : {1, 2, 3, 5}) {
        for (bool zeros : {false, true}) {
            ScriptedInputStream source(ScriptedInputStream::pieces(text, piece, zeros));
            ZUMBase64InputStream in;
            in.wrap(source);
            std::string got;
            char buf[64];
            // A read of nothing at a group's start ends a call, not the text.
            for (int calls = 0; calls < 100; ++calls) {
                int n = in.read(buf, 64);
                if (n > 0) {
                    got.append(buf, static_cast<std::size_t>(n));
                } else if (source.stepsLeft() == 0) {
                    break;
                }
            }
            EXPECT_EQ(got, "foobarfoobar") << "pieces of " << piece << (zeros ? " with zeros" : "");
        }
    }
}

TEST(Base64InputStream, ArrayReadOfNothingDoesNotTouchTheUpstream)
{
    ScriptedInputStream source({ScriptStep::data("Zm9v")});
    ZUMBase64InputStream in;
    in.wrap(source);
    char buf[4];
    EXPECT_EQ(in.read(buf, 0), 0);
    EXPECT_EQ(in.read(buf, -3), 0);
    EXPECT_EQ(source.array_reads, 0);
}

TEST(Base64InputStream, WrapAndUnwrap)
{
    ZUMBase64InputStream in;
    char buf[4];
    expectIllegalState([&] { in.read(buf, 4); }, "ZUMBase64InputStream::read");
    expectIllegalState([&] { in.unWrap(); }, "ZUMBase64InputStream::unWrap");
    ZUMMemoryInputStream first("Zm9v", 4);
    in.wrap(first);
    EXPECT_EQ(in.read(), 'f');
    in.unWrap();  // drops the held "oo", even over a stream that can't unread
    expectIllegalState([&] { in.read(); }, "ZUMBase64InputStream::read");
    ZUMMemoryInputStream second("YmFy", 4);
    in.wrap(second);
    expectAssert([&] { in.read(static_cast<char*>(nullptr), 4); }, "RVK_ASSERT(buf);");
    EXPECT_EQ(readAll(in, 4), "bar");
    EXPECT_FALSE(in.canUnread());
    EXPECT_THROW(in.unread("x", 1), char const*);
}

TEST(Base64InputStream, Failures)
{
    // Line breaks are not Base64: the decoder rejects the group.
    ZUMMemoryInputStream broken("Zm9v\r\nYmFy", 10);
    ZUMBase64InputStream in;
    in.wrap(broken);
    char buf[8];
    EXPECT_EQ(in.read(buf, 3), 3);
    expectAssert([&] { in.read(buf, 3); }, "RVK_ASSERT(sta == 0);");

    ScriptedInputStream source({ScriptStep::data("Zm"), ScriptStep::throwText("not implemented"),
                                ScriptStep::throwIO()});
    ZUMBase64InputStream failing;
    failing.wrap(source);
    expectConvertedText([&] { failing.read(buf, 3); }, "ZUMBase64InputStream::read", "not implemented");
    EXPECT_THROW(failing.read(buf, 3), ZUMIOException);
}
