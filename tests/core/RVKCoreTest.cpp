#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "TestStreams.h"

namespace {

// Whether the decoding succeeded, and the bytes it gave. The output has room
// for exactly 3 bytes per 4 characters, so that a write beyond the room is
// seen by the sanitizers.
std::pair<bool, std::string> decodeN(std::string const& text)
{
    std::vector<char> out(text.size() / 4 * 3);
    unsigned n = 12345;
    int status = RVKBase64DecodeN(text.data(), static_cast<unsigned>(text.size()),
                                  out.empty() ? nullptr : out.data(), &n);
    return {status == 0, std::string(out.data(), n)};
}

}  // namespace

// Padding only at the end of the last group; text that is not a multiple of
// 4 gives its whole groups and fails. The NUL-terminated form decodes alike,
// and a null text as nothing.
TEST(Base64Codec, PaddingAndTheNulTerminatedForm)
{
    struct Case { char const* text; bool ok; std::string bytes; } const cases[] = {
        {"Zg==", true, "f"},      {"Zm8=", true, "fo"},    {"Zm9v", true, "foo"},    {"Zm9vYg==", true, "foob"},
        {"Zm9vYmFy", true, "foobar"}, {"Z===", false, ""}, {"====", false, ""},      {"Zg=v", false, ""},
        {"Zg==Zm9v", false, ""},  // padding in a group that is not the last
        {"Zm9vYmE", false, "foo"}, {"Zm9v\r\nYm", false, "foo"}, {"=m9v", false, ""}, {"Zm=v", false, ""},
        {"Zm9vY===", false, "foo"}, {"Zm9", false, ""},
        {"Zm9vYmFyZm9vYmFy", true, "foobarfoobar"}, {"Zm9*YmFyZm9vYmFy", false, ""},  // two groups a step
    };
    for (Case const& c : cases) {
        EXPECT_EQ(decodeN(c.text), std::pair(c.ok, c.bytes)) << c.text;
        char out[16];
        unsigned n = 99;
        EXPECT_EQ(RVKBase64Decode(c.text, out, &n) == 0, c.ok) << c.text;
        EXPECT_EQ(std::string(out, n), c.bytes) << c.text;
    }
    unsigned n = 99;
    EXPECT_EQ(RVKBase64Decode(nullptr, nullptr, &n), 0);
    EXPECT_EQ(n, 0u);
}

// Appends keep the content and the terminating NUL while the storage grows,
// also when the bytes come from the buffer's own storage.
TEST(RVKByteBuffer, GrowsKeepingContentAndTerminatingNulAlsoFromItsOwnBytes)
{
    for (unsigned initial : {0u, 1u, 7u}) {
        RVKByteBuffer b(initial, 3);
        std::string expected;
        for (int i = 0; i < 300; ++i) {
            std::string piece = testBytes(static_cast<std::size_t>(1 + i % 3), static_cast<unsigned>(i));
            b.appendChars(piece.data(), static_cast<unsigned>(piece.size()));
            expected += piece;
            ASSERT_EQ(b.str()[b.pcount()], '\0');
        }
        EXPECT_EQ(str(b), expected) << "initial " << initial;
        for (int i = 0; i < 4; ++i) {
            b.appendChars(b.str(), static_cast<unsigned>(b.pcount()));  // moves its own storage
            expected += expected;
        }
        b.appendChars(b.str() + 2, 2);
        EXPECT_TRUE(str(b) == expected + expected.substr(2, 2));
    }
}

// Readers reserve room, write behind the content and then set the length;
// growing keeps the bytes within the room and zeroes the rest.
TEST(RVKByteBuffer, ReserveAndSetLength)
{
    RVKByteBuffer b(2, 2);
    b.appendChars("ab", 2);
    b.reserve(7);
    std::memcpy(b.str() + b.pcount(), "cdefg", 5);
    b.setLength(9);
    EXPECT_EQ(str(b), std::string("abcdefg\0\0", 9));
    EXPECT_EQ(b.str()[9], '\0');
}
