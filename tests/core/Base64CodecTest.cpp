#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestStreams.h"

namespace {

char const k_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Six bits at a time, straight from the definition of the encoding.
std::string referenceEncode(std::string const& bytes)
{
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned v = 0;
        std::size_t n = bytes.size() - i < 3 ? bytes.size() - i : 3;
        for (std::size_t k = 0; k < 3; ++k) {
            v = (v << 8) | (k < n ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= n ? k_alphabet[(v >> (18 - 6 * k)) & 63u] : '=';
        }
    }
    return text;
}

std::string encode(std::string const& bytes)
{
    std::vector<char> out(RVKBase64EncodedSize(static_cast<unsigned>(bytes.size()), 0));
    unsigned n = RVKBase64Encode(bytes.data(), static_cast<unsigned>(bytes.size()), out.data(), 0);
    EXPECT_EQ(out[n], '\0');
    return std::string(out.data(), n);
}

struct Decoded {
    int status;
    std::string bytes;
};

// Decodes into an output of exactly 3 bytes per 4 characters, so that a write
// beyond the room is seen by the sanitizers.
Decoded decodeN(std::string const& text)
{
    std::vector<char> out(text.size() / 4 * 3);
    unsigned n = 12345;
    int status = RVKBase64DecodeN(text.data(), static_cast<unsigned>(text.size()),
                                  out.empty() ? nullptr : out.data(), &n);
    return {status, std::string(out.data(), n)};
}

}  // namespace

// Every length up to a few steps of the wide loops, and every byte value:
// encoding matches the definition, and decoding gives the bytes back.
TEST(Base64Codec, RoundTripsEveryLength)
{
    for (std::size_t n = 0; n <= 100; ++n) {
        std::string bytes = testBytes(n);
        std::string text = encode(bytes);
        ASSERT_EQ(text, referenceEncode(bytes)) << n;
        ASSERT_EQ(RVKBase64EncodedSize(static_cast<unsigned>(n), 0), text.size() + 1) << n;
        Decoded d = decodeN(text);
        ASSERT_EQ(d.status, 0) << n;
        ASSERT_EQ(d.bytes, bytes) << n;
    }
    std::string all;
    for (int b = 0; b < 256; ++b) {
        all += static_cast<char>(b);
    }
    EXPECT_EQ(encode(all), referenceEncode(all));
    EXPECT_EQ(decodeN(encode(all)).bytes, all);
}

// A character outside the alphabet anywhere fails the decoding, and the bytes
// of the groups before its group are reported.
TEST(Base64Codec, RejectsABadCharacterAtEveryPlace)
{
    std::string const bytes = testBytes(60);
    std::string const text = encode(bytes);  // 80 characters, no padding
    for (char bad : {'*', '\0', '\n', '-', '\x80', '\xff'}) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            std::string broken = text;
            broken[at] = bad;
            Decoded d = decodeN(broken);
            EXPECT_NE(d.status, 0) << at;
            EXPECT_EQ(d.bytes, bytes.substr(0, at / 4 * 3)) << at;
        }
    }
}

TEST(Base64Codec, Padding)
{
    struct Case {
        char const* text;
        int ok;
        char const* bytes;
    };
    Case const cases[] = {
        {"Zg==", 1, "f"},    {"Zm8=", 1, "fo"},   {"Zm9v", 1, "foo"},
        {"Zm9vYg==", 1, "foob"},
        {"Z===", 0, ""},     {"====", 0, ""},     {"Zg=v", 0, ""},
        {"Zg==Zm9v", 0, ""},  // padding in a group that is not the last
        {"Zm9vYmFy", 1, "foobar"},
        {"Zm9vYmE", 0, "foo"},  // not a multiple of 4: the whole groups only
        {"Zm9v\r\nYm", 0, "foo"}, {"=m9v", 0, ""}, {"Zm=v", 0, ""}, {"Zm9vY===", 0, "foo"},
    };
    for (Case const& c : cases) {
        Decoded d = decodeN(c.text);
        EXPECT_EQ(d.status == 0, c.ok != 0) << c.text;
        EXPECT_EQ(d.bytes, c.bytes) << c.text;
    }
}

TEST(Base64Codec, NulTerminatedForm)
{
    char out[8];
    unsigned n = 99;
    EXPECT_EQ(RVKBase64Decode("Zm9vYmE=", out, &n), 0);
    EXPECT_EQ(std::string(out, n), "fooba");
    EXPECT_EQ(RVKBase64Decode(nullptr, out, &n), 0);
    EXPECT_EQ(n, 0u);
    EXPECT_NE(RVKBase64Decode("Zm9", out, &n), 0);
}
