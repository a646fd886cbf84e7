#include <gtest/gtest.h>

#include <vector>

#include "ExternalTool.h"
#include "RaiseChecks.h"
#include "TestStreams.h"
#include "ZUMXmlEncodeOutputStream.h"

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
std::string parsedForm(std::string text, bool attribute)
{
    std::string lf;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') {
            lf += '\n';
            if (i + 1 < text.size() && text[i + 1] == '\n') {
                ++i;
            }
        } else {
            lf += text[i];
        }
    }
    if (attribute) {
        for (auto& c : lf) {
            if (c == '\t' || c == '\n') {
                c = ' ';
            }
        }
    }
    return lf;
}

}  // namespace

TEST(XmlEncodeOutputStream, RunsAndReplacementsInOrder)
{
    struct Case {
        std::string in;
        Writes out;
    };
    Case const cases[] = {
        {"a<b>&\"'c", {"a", "&lt;", "b", "&gt;", "&amp;", "&quot;", "&#39;", "c"}},
        {"plain text, no specials", {"plain text, no specials"}},
        {"<<", {"&lt;", "&lt;"}},
        {std::string("x\t\n\r\x7f\xc3\xa9\0y", 9), {"x\t\n\r\x7f\xc3\xa9", "&#0;", "y"}},
        {"", {}},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(escapedWrites(c.in), c.out) << c.in;
    }
}

// A special byte at every place of a longer run: the run before it and the
// run after it each go out in one write.
TEST(XmlEncodeOutputStream, SpecialByteAtEveryPlace)
{
    std::string const plain = "abcdefghijklmnopq";
    for (std::size_t at = 0; at <= plain.size(); ++at) {
        std::string in = plain;
        in.insert(at, 1, '&');
        Writes expected;
        if (at > 0) {
            expected.push_back(plain.substr(0, at));
        }
        expected.push_back("&amp;");
        if (at < plain.size()) {
            expected.push_back(plain.substr(at));
        }
        EXPECT_EQ(escapedWrites(in), expected) << at;
    }
}

TEST(XmlEncodeOutputStream, EveryByteValue)
{
    for (int b = 0; b < 256; ++b) {
        std::string expected(1, static_cast<char>(b));
        if (b < 32 && b != 9 && b != 10 && b != 13) {
            expected = "&#" + std::to_string(b) + ";";
        } else if (b == '"') {
            expected = "&quot;";
        } else if (b == '&') {
            expected = "&amp;";
        } else if (b == '\'') {
            expected = "&#39;";
        } else if (b == '<') {
            expected = "&lt;";
        } else if (b == '>') {
            expected = "&gt;";
        }
        EXPECT_EQ(escapedWrites(std::string(1, static_cast<char>(b))), Writes{expected}) << b;
    }
}

TEST(XmlEncodeOutputStream, Misuse)
{
    ZUMXmlEncodeOutputStream unwrapped;
    expectIllegalState([&] { unwrapped.write("a", 1); }, "ZUMXmlEncodeOutputStream::write");
    RecordingOutputStream down;
    ZUMXmlEncodeOutputStream out(down);
    expectAssert([&] { out.write(nullptr, 0); }, "RVK_ASSERT(bytes);");
    expectAssert([&] { out.write("a", -1); }, "RVK_ASSERT(0 <= count);");
    out.flush();
    out.close();
    EXPECT_TRUE(down.writes.empty());
    EXPECT_EQ(down.flushes + down.closes, 0);
}

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
    ScratchDir dir;
    ASSERT_TRUE(dir.ok());
    std::string command = "python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/xml/parse.py");
    int i = 0;
    for (auto const& text : texts) {
        ZUMMemoryOutputStream doc;
        ZUMXmlEncodeOutputStream escaped(doc);
        auto plain = [&](char const* markup) { doc.write(markup, static_cast<int>(std::strlen(markup))); };
        plain("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r a=\"");
        escaped.write(text.data(), static_cast<int>(text.size()));
        plain("\">");
        escaped.write(text.data(), static_cast<int>(text.size()));
        plain("</r>\n");
        std::string name = dir.file("doc" + std::to_string(i++) + ".xml");
        writeFile(name, std::string(doc.bytes(), static_cast<std::size_t>(doc.length())));
        command += " " + shellQuoted(name);
    }
    ASSERT_TRUE(runCommand(command));
    i = 0;
    for (auto const& text : texts) {
        std::string name = dir.file("doc" + std::to_string(i++) + ".xml");
        EXPECT_EQ(readFile(name + ".text"), parsedForm(text, false)) << name;
        EXPECT_EQ(readFile(name + ".attr"), parsedForm(text, true)) << name;
    }
}
