#include <gtest/gtest.h>

#include <string>

#include "TestStreams.h"

namespace {

std::string content(ZUMMemoryOutputStream const& out)
{
    return std::string(out.bytes(), static_cast<std::size_t>(out.length()));
}

}  // namespace

TEST(ZUMMemoryOutputStream, CollectsWritesInOrder)
{
    for (int initial : {0, 1, 1024}) {
        ZUMMemoryOutputStream out(initial, 1);
        EXPECT_EQ(out.length(), 0);
        out.write("abc", 3);
        out.write("de", 2);
        out.write("ignored", 0);
        out.write(nullptr, 0);
        EXPECT_EQ(content(out), "abcde");
    }
}

TEST(ZUMMemoryOutputStream, ResetStartsAgainAndFlushCloseChangeNothing)
{
    ZUMMemoryOutputStream out;
    out.write("abc", 3);
    out.flush();
    out.close();
    out.flush();
    EXPECT_EQ(content(out), "abc");
    out.write("d", 1);
    EXPECT_EQ(content(out), "abcd");
    out.reset();
    EXPECT_EQ(out.length(), 0);
    out.write("x", 1);
    EXPECT_EQ(content(out), "x");
}

TEST(ZUMMemoryOutputStream, RejectsNegativeCountsAndNullBytes)
{
    ZUMMemoryOutputStream out;
    out.write("ab", 2);
    EXPECT_EQ(raisedText<RVKAssertError>([&] { out.write("ab", -1); }), "RVK_ASSERT(count >= 0);");
    EXPECT_THROW(out.write(nullptr, 3), RVKAssertError);
    EXPECT_EQ(content(out), "ab");
}
