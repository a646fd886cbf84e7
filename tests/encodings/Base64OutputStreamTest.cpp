#include <gtest/gtest.h>

#include <vector>

#include "ExternalTool.h"
#include "RaiseChecks.h"
#include "TestStreams.h"
#include "ZUMBase64InputStream.h"
#include "ZUMBase64OutputStream.h"

namespace {

using Writes = std::vector<std::string>;

std::vector<std::size_t> sizes(RecordingOutputStream const& out)
{
    std::vector<std::size_t> s;
    for (auto const& w : out.writes) {
        s.push_back(w.size());
    }
    return s;
}

}  // namespace

TEST(Base64OutputStream, Rfc4648Vectors)
{
    struct Case {
        char const* in;
        char const* out;
    };
    Case const cases[] = {{"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},
                          {"foo", "Zm9v"},  {"foob", "Zm9vYg=="},  {"fooba", "Zm9vYmE="},
                          {"foobar", "Zm9vYmFy"}};
    for (auto const& c : cases) {
        RecordingOutputStream down;
        ZUMBase64OutputStream out(down);
        out.write(c.in, static_cast<int>(std::strlen(c.in)));
        out.flush();
        EXPECT_EQ(down.all(), c.out) << c.in;
    }
}

TEST(Base64OutputStream, CompleteGroupsGoOutAtOnceTheRestAtFlush)
{
    RecordingOutputStream down;
    ZUMBase64OutputStream out(down);
    out.write("hello", 5);
    EXPECT_EQ(down.writes, Writes{"aGVs"});
    out.flush();
    out.flush();
    EXPECT_EQ(down.writes, (Writes{"aGVs", "bG8="}));

    down.writes.clear();
    out.write("a", 1);
    out.write("b", 1);
    EXPECT_TRUE(down.writes.empty());
    out.write("c", 1);
    EXPECT_EQ(down.writes, Writes{"YWJj"});
    EXPECT_EQ(down.flushes, 0);
}

TEST(Base64OutputStream, LargeWritesGoOutIn4096CharacterBlocks)
{
    RecordingOutputStream down;
    ZUMBase64OutputStream out(down);
    std::string data = testBytes(7000);
    out.write(data.data(), 7000);
    EXPECT_EQ(sizes(down), (std::vector<std::size_t>{4096, 4096, 1140}));
    out.close();
    EXPECT_EQ(down.writes.size(), 3u);  // close leaves the byte pending
    out.flush();
    EXPECT_EQ(sizes(down).back(), 4u);
}

TEST(Base64OutputStream, LineBreaks)
{
    std::string data = testBytes(200);
    struct Case {
        std::vector<int> writes;
        std::vector<std::size_t> downstream;
    };
    Case const cases[] = {
        {{57}, {76, 2}},
        {{114}, {76, 2, 76, 2}},
        {{30}, {40}},
        {{30, 30}, {40, 36, 2, 4}},  // the second write continues the line
        {{3, 3}, {4, 4}},
    };
    for (auto const& c : cases) {
        RecordingOutputStream down;
        ZUMBase64OutputStream out(down);
        out.lineBreak(76);
        std::size_t at = 0;
        for (int n : c.writes) {
            out.write(data.data() + at, n);
            at += static_cast<std::size_t>(n);
        }
        EXPECT_EQ(sizes(down), c.downstream) << c.writes.size() << " writes, first " << c.writes[0];
        for (std::size_t i = 0; i < down.writes.size(); ++i) {
            if (down.writes[i].size() == 2) {
                EXPECT_EQ(down.writes[i], "\r\n");
            }
        }
    }
}

TEST(Base64OutputStream, ShorterLineEndsAtOnce)
{
    RecordingOutputStream down;
    ZUMBase64OutputStream out(down);
    out.lineBreak(10);
    out.write("abcdef", 6);  // 8 characters on the line
    out.lineBreak(4);
    out.write("ghi", 3);
    out.write("jkl", 3);
    EXPECT_EQ(down.writes, (Writes{"YWJjZGVm", "Z2hp", "\r\n", "amts", "\r\n"}));
    out.lineBreak(0);
    out.write("abcdef", 6);
    EXPECT_EQ(down.writes.back(), "YWJjZGVm");
}

TEST(Base64OutputStream, MatchesAnIndependentEncoderWithLineBreaks)
{
    std::string input = readFile(ZUM_TEST_DATA_DIR "/base64/input.bin");
    ASSERT_EQ(input.size(), 10000u);
    int const sizes[] = {0, 1, 2, 3, 56, 57, 58, 113, 114, 115, 3072, 3073, 4000, 10000};
    int const pieces[] = {1, 5, 57, 1000, 10000};
    for (int n : sizes) {
        std::string expected = readFile(ZUM_TEST_DATA_DIR "/base64/mime-" + std::to_string(n) + ".txt");
        for (int piece : pieces) {
            RecordingOutputStream down;
            ZUMBase64OutputStream out(down);
            out.lineBreak(76);
            for (int at = 0; at < n; at += piece) {
                out.write(input.data() + at, std::min(piece, n - at));
            }
            out.flush();
            std::string text = down.all();
            // The independent encoder also ends a last, partial line.
            if (!text.empty() && text.compare(text.size() - 2, 2, "\r\n") != 0) {
                text += "\r\n";
            }
            EXPECT_TRUE(text == expected) << n << " bytes in pieces of " << piece;
        }
    }
}

TEST(Base64OutputStream, UnwrapAndDestructionWriteThePendingGroup)
{
    RecordingOutputStream down;
    {
        ZUMBase64OutputStream out(down);
        out.write("ab", 2);
        out.unWrap();
        EXPECT_EQ(down.all(), "YWI=");
        out.wrap(down);
        out.write("c", 1);
    }
    EXPECT_EQ(down.all(), "YWI=Yw==");
    {
        ZUMBase64OutputStream out(down);
        out.write("d", 1);
        down.throw_text_on_write = "broken pipe";
    }  // the failure of the destructor's flush is dropped
}

TEST(Base64OutputStream, Misuse)
{
    ZUMBase64OutputStream unwrapped;
    unwrapped.flush();  // nothing pending: no write, no failure
    expectIllegalState([&] { unwrapped.write("a", 1); }, "ZUMBase64OutputStream::write");
    RecordingOutputStream down;
    ZUMBase64OutputStream out(down);
    expectAssert([&] { out.write("abc", -1); }, "RVK_ASSERT(count >= 0);");
    expectAssert([&] { out.write(nullptr, 0); }, "RVK_ASSERT(bytes || bFlush);");
    expectAssert([&] { out.write(nullptr, 2, 1); }, "RVK_ASSERT(bytes || count == 0);");
    expectAssert([&] { out.wrap(down); }, "RVK_ASSERT(!p_downstream);");
    down.throw_text_on_write = "broken pipe";
    expectConvertedText([&] { out.write("abc", 3); }, "ZUMBase64OutputStream::flush", "broken pipe");
}

TEST(Base64OutputStream, RoundTripThroughTheInputStream)
{
    std::string data = testBytes(20000, 7);
    for (int piece : {1, 2, 4, 3071, 3072, 3073, 20000}) {
        ZUMMemoryOutputStream text;
        ZUMBase64OutputStream out(text);
        for (int at = 0; at < 20000; at += piece) {
            out.write(data.data() + at, std::min(piece, 20000 - at));
        }
        out.flush();
        ZUMMemoryInputStream source(text.bytes(), text.length());
        ZUMBase64InputStream in;
        in.wrap(source);
        RVKByteBuffer decoded;
        while (in.read(decoded, 1000) != -1) {
        }
        EXPECT_TRUE(std::string(decoded.str(), decoded.pcount()) == data) << "pieces of " << piece;
    }
}
