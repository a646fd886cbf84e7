#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "RVKCore.h"

namespace {

std::string encode(std::string const& in)
{
    std::vector<char> out(RVKBase64EncodedSize(static_cast<unsigned>(in.size()), 0), '#');
    unsigned n = RVKBase64Encode(in.data(), static_cast<unsigned>(in.size()), out.data(), 0);
    EXPECT_EQ(n + 1, out.size());
    EXPECT_EQ(out.back(), '\0');
    return std::string(out.data(), n);
}

// The decoded bytes, or "<status N>" on failure.
std::string decode(std::string const& text)
{
    std::vector<char> out(text.size() / 4 * 3 + 3);
    unsigned length = 12345;
    int status = RVKBase64Decode(text.c_str(), out.data(), &length);
    if (status != 0) {
        return "<status " + std::to_string(status) + ">";
    }
    return std::string(out.data(), length);
}

}  // namespace

TEST(RVKBase64, Rfc4648VectorsBothWays)
{
    struct Case {
        char const* plain;
        char const* text;
    };
    Case const cases[] = {
        {"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},          {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(encode(c.plain), c.text);
        EXPECT_EQ(decode(c.text), c.plain);
    }
}

TEST(RVKBase64, EveryByteValueRoundTripsAtEveryLengthUpTo64)
{
    for (int start = 0; start < 256; ++start) {
        for (int length = 0; length <= 64; ++length) {
            std::string bytes;
            for (int i = 0; i < length; ++i) {
                bytes += static_cast<char>((start + i * 7) & 0xFF);
            }
            std::string text = encode(bytes);
            ASSERT_EQ(text.size(), (static_cast<std::size_t>(length) + 2) / 3 * 4);
            ASSERT_EQ(decode(text), bytes) << "start " << start << " length " << length;
        }
    }
}

TEST(RVKBase64, RejectsMalformedText)
{
    char const* const bad[] = {
        "Zm9v!mFy", "Zm-v", "Zm_v", "Zm9 ", "Zm9\x80", "\xffm9v",  // outside the alphabet
        "Zm9v\r\nYm", "Zm\r\n", "Zm9v\nYmFy",                       // line breaks
        "=m9v", "Z=9v", "Zm=v", "Zg==Zm9v", "Zm9vY===", "====",     // misplaced padding
        "Zm9", "Zm9vY", "Zg=", "Z",                                 // length not a multiple of 4
    };
    for (char const* text : bad) {
        std::vector<char> out(16);
        unsigned length = 0;
        EXPECT_NE(RVKBase64Decode(text, out.data(), &length), 0) << text;
    }
}
