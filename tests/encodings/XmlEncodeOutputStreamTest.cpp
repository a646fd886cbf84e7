#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

using Writes = std::vector<std::string>;

Writes escapedWrites(std::string const& in)
{
    RecordingOutputStream down;
    ZUMXmlEncodeOutputStream out(down);
    out.write(in.data(), static_cast<int>(in.size()));
    return down.writes;
}

// What an XML parser gives back for literal text: line ends normalised to
// LF, and in an attribute value tab and LF then read as spaces.
std::string parsedForm(std::string const& text, bool attribute)
{
    std::string lf;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i] == '\r' ? '\n' : text[i];
        i += text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n' ? 1 : 0;
        lf += attribute && (c == '\t' || c == '\n') ? ' ' : c;
    }
    return lf;
}

}  // namespace

TEST(XmlEncodeOutputStream, RunsAndReplacementsInOrder)
{
    struct Case {
        std::string in;
        Writes out;
    } const cases[] = {
        {"a<b>&\"'c", {"a", "&lt;", "b", "&gt;", "&amp;", "&quot;", "&#39;", "c"}},
        {"plain text, no specials", {"plain text, no specials"}},
        {"<<", {"&lt;", "&lt;"}},
        {std::string("x\t\n\r\x7f\xc3\xa9\0y", 9), {"x\t\n\r\x7f\xc3\xa9", "&#0;", "y"}},
        {"", {}},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(escapedWrites(c.in), c.out) << c.in;
    }
    std::string const named[] = {"&quot;", "&amp;", "&#39;", "&lt;", "&gt;"};
    for (int b = 0; b < 256; ++b) {
        std::string expected(1, static_cast<char>(b));
        if (b < 32 && b != 9 && b != 10 && b != 13) {
            expected = "&#" + std::to_string(b) + ";";
        } else if (std::strchr("\"&'<>", b) && b) {
            expected = named[std::strchr("\"&'<>", b) - "\"&'<>"];
        }
        EXPECT_EQ(escapedWrites(std::string(1, static_cast<char>(b))), Writes{expected}) << b;
    }
}

TEST(XmlEncodeOutputStream, Misuse)
{
    ZUMXmlEncodeOutputStream unwrapped;
    EXPECT_EQ(raised([&] { unwrapped.write("a", 1); }), "RVKIllegalStateError() @ZUMXmlEncodeOutputStream::write");
    RecordingOutputStream down;
    ZUMXmlEncodeOutputStream out(down);
    EXPECT_EQ(raised([&] { out.write(nullptr, 0); }), "RVKAssertError(RVK_ASSERT(bytes);) @-");
    EXPECT_EQ(raised([&] { out.write("a", -1); }), "RVKAssertError(RVK_ASSERT(0 <= count);) @-");
    out.flush();
    out.close();
    EXPECT_TRUE(down.writes.empty());
    EXPECT_EQ(down.flushes + down.closes, 0);
}

// Escaped text inside an element and an attribute value parses with Python's
// xml.dom.minidom (tests/data/xml/parse.py) back to the input.
TEST(XmlEncodeOutputStream, IndependentParserGivesTheTextBack)
{
    if (!haveProgram("python3")) {
        GTEST_SKIP() << "python3 not found: the independent XML parser cannot run";
    }
    std::string printable;
    for (int c = 32; c < 127; ++c) {
        printable += static_cast<char>(c);
    }
    std::string const texts[] = {
        "a<b>c&d\"e'f\tg\nh\ri\r\nj",
        printable + "\t\n\r",
        "Gr\xc3\xbc\xc3\x9f" "e, \xe6\x97\xa5\xe6\x9c\xac, \xe2\x82\xac, \xf0\x9f\x98\x80 <&>'\"",
        "",
    };
    TempDir dir;
    std::string command = "python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/xml/parse.py");
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        ZUMMemoryOutputStream doc;
        ZUMXmlEncodeOutputStream escaped(doc);
        auto plain = [&](char const* markup) { doc.write(markup, static_cast<int>(std::strlen(markup))); };
        plain("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r a=\"");
        escaped.write(texts[i].data(), static_cast<int>(texts[i].size()));
        plain("\">");
        escaped.write(texts[i].data(), static_cast<int>(texts[i].size()));
        plain("</r>\n");
        command += " " + shellQuoted(dir.write("doc" + std::to_string(i) + ".xml", std::string(doc.bytes(), doc.length())));
    }
    ASSERT_TRUE(runCommand(command));
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        std::string name = dir.file("doc" + std::to_string(i) + ".xml");
        EXPECT_EQ(readFile(name + ".text"), parsedForm(texts[i], false)) << name;
        EXPECT_EQ(readFile(name + ".attr"), parsedForm(texts[i], true)) << name;
    }
}
