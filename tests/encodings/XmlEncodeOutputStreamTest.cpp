#include <gtest/gtest.h>

#include <algorithm>

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
    EXPECT_EQ(down.writes, Writes{});
    EXPECT_EQ((Row{down.flushes, down.closes}), (Row{0, 0}));
    ZUMXmlEncodeOutputStream unwrapped;
    EXPECT_EQ(raised([&] { unwrapped.write("a", 1); }), "RVKIllegalStateError() @ZUMXmlEncodeOutputStream::write");
}
