#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

// What a strict stream makes of `text`, delivered by the source in pieces of
// `piece` bytes (0: at once) with a read of 0 bytes after each when `zeros`,
// read in reads of `count`: the bytes delivered, then "|" and what the read
// that stopped raised ("end" for -1), then "|" and what the read after that
// gives (the end and a fault both stay).
std::string decode(std::string const& text, int flag, int count = 16384, std::size_t piece = 0, bool zeros = false)
{
    ScriptedInputStream source(ScriptedInputStream::pieces(text, {piece}, zeros));
    ZUMStrictBase64InputStream b64(source, flag);
    std::string got;
    std::vector<char> buf(static_cast<std::size_t>(count));
    std::string stop = "end";
    for (int empty = 0; empty < 100;) {
        int n = 0;
        std::string r = raised([&] { n = b64.read(buf.data(), count); });
        if (r != "none") {
            stop = r;
            break;
        }
        if (n < 0) {
            break;
        }
        got.append(buf.data(), static_cast<std::size_t>(n));
        empty = n == 0 ? empty + 1 : 0;
    }
    std::string again = raised([&] { EXPECT_EQ(b64.read(), -1); });
    return got + "|" + stop + "|" + (again == "none" ? "end" : again == stop ? "same" : again);
}

std::string malformed(char const* text)
{
    return std::string("ZUMIOException(1,0) #BASE64_MALFORMED '") + text + "' @ZUMStrictBase64InputStream::read";
}

std::string truncated(char const* text)
{
    return std::string("ZUMIOException(1,0) #BASE64_TRUNCATED '") + text + "' @ZUMStrictBase64InputStream::read";
}

}  // namespace

// Whole texts, in every read size and source piece size: padded groups may
// be followed by more groups, unused bits of padded groups are ignored, and
// with the flag blanks anywhere are skipped.
TEST(StrictBase64InputStream, DecodesTextsWhateverTheReadAndPieceSizes)
{
    std::string const data = testBytes(40000, 3);
    std::string plain(RVKBase64EncodedSize(40000, 0), '\0');
    plain.resize(RVKBase64Encode(data.data(), 40000, &plain[0], 0));
    std::string mime;  // lines of 76 and CR LF, a tab and a space here and there
    for (std::size_t at = 0; at < plain.size(); at += 76) {
        mime += plain.substr(at, 76) + (at % 760 == 0 ? " \t\r\n" : "\r\n");
    }
    struct Case { std::string text; int flag; std::string bytes; } const cases[] = {
        {"", 0, ""},          {"Zm9vYmFy", 0, "foobar"}, {"Zm9vYmE=", 0, "fooba"}, {"YQ==YWI=YWJj", 0, "aababc"},
        {"YR==YWJ=", 0, "aab"}, {"+/+/", 0, "\xfb\xff\xbf"}, {" \r\n\t", 1, ""},
        {"\r\nY W\tJ\rj\n\r\nYQ\r\n==\r\n", 1, "abca"}, {plain, 0, data}, {mime, 1, data},
    };
    for (auto const& c : cases) {
        std::string const expected = c.bytes + "|end|end";
        for (int count : {1, 2, 3, 4, 7, 16384, 40000}) {
            EXPECT_EQ(decode(c.text, c.flag, count), expected) << c.text.substr(0, 20) << " read by " << count;
        }
        for (std::size_t piece : {1, 3, 5, 16383}) {
            EXPECT_EQ(decode(c.text, c.flag, 1000, piece, piece < 5), expected)
                << c.text.substr(0, 20) << " in pieces of " << piece;
        }
    }
}

// Every complete group before the fault is delivered, then the fault is
// raised with its byte offset (blanks skipped by the flag counted), and
// again by every later read.
TEST(StrictBase64InputStream, FaultsComeAfterTheBytesBeforeThemAndNameTheirOffset)
{
    struct Case { std::string text; int flag; std::string bytes; std::string fault; } const cases[] = {
        {"YWJj!", 0, "abc", malformed("invalid character '!' at byte 4")},
        {"YWJjYW!j", 0, "abc", malformed("invalid character '!' at byte 6")},
        {std::string("YQ\0=", 4), 0, "", malformed("invalid character 0x00 at byte 2")},
        {"YWJj\x80", 0, "abc", malformed("invalid character 0x80 at byte 4")},
        {"YQ==\n", 0, "a", malformed("invalid character 0x0a at byte 4")},
        {"YWJj\vYQ==", 1, "abc", malformed("invalid character 0x0b at byte 4")},
        {"=YQ=", 0, "", malformed("misplaced padding '=' at byte 0")},
        {"YWJjY=Q=", 0, "abc", malformed("misplaced padding '=' at byte 5")},
        {"YQ=A", 0, "", malformed("misplaced padding '=' at byte 2")},
        {"YQ=!", 0, "", malformed("invalid character '!' at byte 3")},
        {"YQ===", 0, "a", malformed("misplaced padding '=' at byte 4")},
        {"YQ\r\n= A", 1, "", malformed("misplaced padding '=' at byte 4")},
        {"Y", 0, "", truncated("1 character left over from the group at byte 0")},
        {"YWJjZA", 0, "abc", truncated("2 characters left over from the group at byte 4")},
        {"YWJj\r\n\r\nZ A=\r\n", 1, "abc", truncated("3 characters left over from the group at byte 8")},
    };
    for (auto const& c : cases) {
        std::string const expected = c.bytes + "|" + c.fault + "|same";
        for (int count : {1, 2, 16384}) {
            for (std::size_t piece : {1, 0}) {
                EXPECT_EQ(decode(c.text, c.flag, count, piece), expected) << c.text << " by " << count << "/" << piece;
            }
        }
    }
    ZUMMemoryInputStream source("!", 1);
    try {
        ZUMStrictBase64InputStream(source).read();
        ADD_FAILURE() << "no fault";
    } catch (ZUMIOException const& e) {
        EXPECT_NE(std::string(e.what()).find("invalid character '!' at byte 0"), std::string::npos) << e.what();
    }
}

// Where coreutils' base64 -d (with the flag: base64 -di) accepts a text the
// stream gives the same bytes, where it rejects one the stream raises. The
// stream raises for what base64 skips beyond the flag: LF without it, any
// byte but CR, LF, tab and space with it.
TEST(StrictBase64InputStream, AgreesWithCoreutilsBase64)
{
    if (!haveProgram("base64")) {
        GTEST_SKIP() << "no base64 program";
    }
    TempDir dir;
    std::string const texts[] = {
        "", "YQ==", "YWI=", "YWJj", "YR==", "YWJ=", "YQ==YQ==", "YQ==YWI=YWJj", "YQ=", "YQ", "Y", "YWJjZ",
        "====", "Y===", "A=BC", "=YQ=", "YQ=A", "YQ===", "YQ==A", "YQ==ABCD", "YWJj=", "YQ==!", "!YQ==",
        "YQ=!=", "Y Q==", "Y\tQ==", "Y\rQ==", "Y\nQ==", "YQ==\n", "YQ==\r\n", "YQ\r\n==\r\n", "YQ=\n=",
        "YWJj\x80", std::string("YW\0Jj", 5), "Zm9v\vYmFy", "Zm9v YmFy\r\n", " \r\n\t", "-_-_", "Zm9v\r\nYmE",
    };
    for (std::string const& text : texts) {
        std::string const in = dir.write("in", text);
        for (int flag : {0, 1}) {
            std::string const out = dir.file("out");
            bool const accepted = runCommand("base64 -d" + std::string(flag ? "i" : "") + " < " + shellQuoted(in) +
                                             " > " + shellQuoted(out) + " 2>/dev/null");
            bool skipsMore = false;  // bytes base64 skips and the stream does not
            for (char ch : text) {
                bool const alphabet = std::isalnum(static_cast<unsigned char>(ch)) || ch == '+' || ch == '/' || ch == '=';
                bool const blank = ch == '\r' || ch == '\n' || ch == '\t' || ch == ' ';
                skipsMore = skipsMore || (!alphabet && !(flag && blank));
            }
            std::string const ours = decode(text, flag);
            std::string const stop = ours.substr(ours.find('|') + 1);
            if (accepted && !skipsMore) {
                EXPECT_EQ(ours, readFile(out) + "|end|end") << text << " flag " << flag;
            } else {
                EXPECT_NE(stop, "end|end") << text << " flag " << flag << ": base64 accepted " << accepted;
            }
        }
    }
}

TEST(StrictBase64InputStream, ReadFormsUnwrapAndMisuse)
{
    ZUMStrictBase64InputStream b64;
    char buf[4];
    EXPECT_EQ(raised([&] { b64.read(buf, 4); }), "RVKIllegalStateError() @ZUMStrictBase64InputStream::read");
    EXPECT_EQ(raised([&] { b64.unWrap(); }), "RVKIllegalStateError() @ZUMStrictBase64InputStream::unWrap");
    EXPECT_EQ(b64.canUnread(), 0);

    // unWrap hands the text read ahead back to a stream that can unread, and
    // the stream starts afresh: offsets from 0, no fault, not ended.
    std::string const text = "YWJjZGVm!";
    ZUMMemoryInputStream raw(text.data(), static_cast<int>(text.size()));
    ZUMBufferedInputStream bis(raw, 64);
    b64.wrap(bis);
    RVKByteBuffer got(0, 16);
    got << ">";
    EXPECT_EQ(b64.read(got, 0), 0);
    EXPECT_EQ(b64.read(got, 3), 3);
    EXPECT_EQ(str(got), ">abc");
    EXPECT_EQ(raised([&] { b64.read(nullptr, 1); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    b64.unWrap();
    EXPECT_EQ(drain(bis), "ZGVm!");
    ZUMMemoryInputStream bad("Z!", 2);
    b64.wrap(bad);
    EXPECT_EQ(raised([&] { b64.read(); }), malformed("invalid character '!' at byte 1"));
    b64.unWrap();  // over a stream that cannot unread: dropped
    ScriptedInputStream good({ScriptStep::data("Zg=="), ScriptStep::end(), ScriptStep::data("Zg==")});
    b64.wrap(good);
    EXPECT_EQ(b64.read(), 'f');
    EXPECT_EQ(b64.read(got, 5), -1);
    EXPECT_EQ(b64.read(got, 5), -1);
    EXPECT_EQ(good.counts.size(), 2u);  // not read again after the end
    EXPECT_EQ(str(got), ">abc");
}
