#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "TestFiles.h"
#include "TestStreams.h"

using Writes = std::vector<std::string>;

// Runs of plain bytes go down in one write, each replacement in one of its
// own: the five specials by name, the control bytes other than tab, LF and CR
// by number; flush and close pass nothing down.
TEST(XmlEncodeOutputStream, RunsAndReplacementsInOrder)
{
    std::vector<std::pair<std::string, Writes>> cases = {
        {"a<b>&\"'c", {"a", "&lt;", "b", "&gt;", "&amp;", "&quot;", "&#39;", "c"}},
        {"plain text, <<", {"plain text, ", "&lt;", "&lt;"}},
        {std::string("x\t\n\r\x7f\xc3\xa9\0\x1fy", 10), {"x\t\n\r\x7f\xc3\xa9", "&#0;", "&#31;", "y"}},
        {"", {}},
    };
    std::string const specials = "\"&'<>", named[] = {"&quot;", "&amp;", "&#39;", "&lt;", "&gt;"};
    for (int b = 0; b < 256; ++b) {
        std::size_t at = specials.find(static_cast<char>(b));
        std::string expected = at != std::string::npos                   ? named[at]
                               : b < 32 && b != 9 && b != 10 && b != 13 ? "&#" + std::to_string(b) + ";"
                                                                        : std::string(1, static_cast<char>(b));
        cases.push_back({std::string(1, static_cast<char>(b)), {expected}});
    }
    // A special byte at every place of a longer run: the runs before and after
    // it each go out in one write (the run scan steps several bytes at a time).
    std::string const plain = "abcdefghijklmnopq";
    for (std::size_t at = 0; at <= plain.size(); ++at) {
        Writes expected = {plain.substr(0, at), "&amp;", plain.substr(at)};
        expected.erase(std::remove(expected.begin(), expected.end(), ""), expected.end());
        cases.push_back({plain.substr(0, at) + "&" + plain.substr(at), expected});
    }
    for (auto const& [in, writes] : cases) {
        RecordingOutputStream down;
        ZUMXmlEncodeOutputStream(down).write(in.data(), static_cast<int>(in.size()));
        EXPECT_EQ(down.writes, writes) << in;
    }
    RecordingOutputStream down;
    ZUMXmlEncodeOutputStream out(down);
    EXPECT_EQ(raised([&] { out.write(nullptr, 0); }), "RVKAssertError(RVK_ASSERT(bytes);) @-");
    EXPECT_EQ(raised([&] { out.write("a", -1); }), "RVKAssertError(RVK_ASSERT(0 <= count);) @-");
    out.flush();
    out.close();
    EXPECT_EQ(down.writes.size() + down.flushes + down.closes, 0u);
    ZUMXmlEncodeOutputStream unwrapped;
    EXPECT_EQ(raised([&] { unwrapped.write("a", 1); }), "RVKIllegalStateError() @ZUMXmlEncodeOutputStream::write");
}

// Escaped text inside an element and an attribute value parses with Python's
// xml.dom.minidom (tests/data/xml/parse.py) back to the input, with line ends
// read as LF, and tab and LF in an attribute value as spaces.
TEST(XmlEncodeOutputStream, IndependentParserGivesTheTextBack)
{
    if (!haveProgram("python3")) {
        GTEST_SKIP() << "python3 not found: the independent XML parser cannot run";
    }
    std::string printable(95, ' ');
    std::iota(printable.begin(), printable.end(), ' ');
    struct Case { std::string text, as_text, as_attribute; } const cases[] = {
        {"a<b>c&d\"e'f\tg\nh\ri\r\nj", "a<b>c&d\"e'f\tg\nh\ni\nj", "a<b>c&d\"e'f g h i j"},
        {printable + "\t\n\r", printable + "\t\n\n", printable + "   "},
        {"Gr\xc3\xbc\xc3\x9f" "e, \xe6\x97\xa5\xe6\x9c\xac, \xf0\x9f\x98\x80 <&>'\"", "", ""},
        {"", "", ""},
    };
    TempDir dir;
    std::string command = "python3 " + shellQuoted(ZUM_TEST_DATA_DIR "/xml/parse.py");
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        ZUMMemoryOutputStream doc;
        ZUMXmlEncodeOutputStream escaped(doc);
        std::string const& text = cases[i].text;
        auto plain = [&](char const* markup) { doc.write(markup, static_cast<int>(std::strlen(markup))); };
        plain("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r a=\"");
        escaped.write(text.data(), static_cast<int>(text.size()));
        plain("\">");
        escaped.write(text.data(), static_cast<int>(text.size()));
        plain("</r>\n");
        command += " " + shellQuoted(dir.write("doc" + std::to_string(i) + ".xml", str(doc)));
    }
    ASSERT_TRUE(runCommand(command));
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        std::string name = dir.file("doc" + std::to_string(i) + ".xml");
        bool same = cases[i].as_text.empty();
        EXPECT_EQ(readFile(name + ".text"), same ? cases[i].text : cases[i].as_text) << name;
        EXPECT_EQ(readFile(name + ".attr"), same ? cases[i].text : cases[i].as_attribute) << name;
    }
}
