#include "RVKBase64.h"

#include <cstdint>
#include <cstring>

// Table-driven Base64. Encoding maps 12 input bits at a time to two output
// characters through one 4096-entry table, so a group of three bytes costs
// two lookups and two 16-bit stores. Decoding maps each of the four characters
// of a group through its own 256-entry table that already holds the six bits
// in their final place; invalid characters carry a flag bit, so a group costs
// four lookups, three ORs and one test.

namespace {

char const k_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t const k_invalid = 0x01000000u;

struct Tables {
    std::uint16_t pairs[4096];       // 12 bits -> two characters, in memory order
    std::uint32_t decode[4][256];    // character at place i -> its bits in place
    Tables()
    {
        for (unsigned v = 0; v < 4096; ++v) {
            unsigned char two[2] = {static_cast<unsigned char>(k_alphabet[v >> 6]),
                                    static_cast<unsigned char>(k_alphabet[v & 63u])};
            std::memcpy(&pairs[v], two, 2);
        }
        for (unsigned place = 0; place < 4; ++place) {
            for (unsigned c = 0; c < 256; ++c) {
                decode[place][c] = k_invalid;
            }
            for (unsigned i = 0; i < 64; ++i) {
                decode[place][static_cast<unsigned char>(k_alphabet[i])] =
                    static_cast<std::uint32_t>(i) << (18u - 6u * place);
            }
        }
    }
};

Tables const k_tables;

inline std::uint32_t sextets(unsigned char const* in)
{
    return k_tables.decode[0][in[0]] | k_tables.decode[1][in[1]] | k_tables.decode[2][in[2]] |
           k_tables.decode[3][in[3]];
}

}  // namespace

unsigned RVKBase64EncodedSize(unsigned n, int /*flags*/)
{
    return (n / 3u + (n % 3u != 0)) * 4u + 1u;
}

unsigned RVKBase64Encode(char const* in, unsigned n, char* out, int /*flags*/)
{
    unsigned char const* src = reinterpret_cast<unsigned char const*>(in);
    char* dst = out;
    unsigned groups = n / 3u;
    for (unsigned g = 0; g < groups; ++g) {
        std::uint32_t v = (static_cast<std::uint32_t>(src[0]) << 16) |
                          (static_cast<std::uint32_t>(src[1]) << 8) | src[2];
        std::memcpy(dst, &k_tables.pairs[v >> 12], 2);
        std::memcpy(dst + 2, &k_tables.pairs[v & 0xFFFu], 2);
        src += 3;
        dst += 4;
    }
    unsigned rest = n - groups * 3u;
    if (rest != 0) {
        std::uint32_t v = static_cast<std::uint32_t>(src[0]) << 16;
        if (rest == 2) {
            v |= static_cast<std::uint32_t>(src[1]) << 8;
        }
        dst[0] = k_alphabet[v >> 18];
        dst[1] = k_alphabet[(v >> 12) & 63u];
        dst[2] = rest == 2 ? k_alphabet[(v >> 6) & 63u] : '=';
        dst[3] = '=';
        dst += 4;
    }
    *dst = '\0';
    return static_cast<unsigned>(dst - out);
}

int RVKBase64DecodeN(char const* text, unsigned length, char* out, unsigned* outLength)
{
    unsigned char const* src = reinterpret_cast<unsigned char const*>(text);
    unsigned char* dst = reinterpret_cast<unsigned char*>(out);
    unsigned written = 0;
    int status = 0;
    if (length % 4u != 0) {
        status = 1;
        length -= length % 4u;  // decode the whole groups, report the rest
    }
    unsigned groups = length / 4u;
    // Every group but the last is plain; the last may carry padding.
    unsigned plain = groups == 0 ? 0 : groups - 1;
    unsigned g = 0;
    for (; g < plain; ++g) {
        std::uint32_t v = sextets(src);
        if (v & k_invalid) {
            if (outLength) {
                *outLength = written;
            }
            return 2;
        }
        dst[0] = static_cast<unsigned char>(v >> 16);
        dst[1] = static_cast<unsigned char>(v >> 8);
        dst[2] = static_cast<unsigned char>(v);
        src += 4;
        dst += 3;
        written += 3;
    }
    if (groups != 0) {
        unsigned char last[4] = {src[0], src[1], src[2], src[3]};
        unsigned bytes = 3;
        if (last[3] == '=') {
            bytes = 2;
            last[3] = 'A';
            if (last[2] == '=') {
                bytes = 1;
                last[2] = 'A';
            }
        }
        std::uint32_t v = sextets(last);
        if (v & k_invalid) {
            status = 2;
        } else {
            dst[0] = static_cast<unsigned char>(v >> 16);
            if (bytes > 1) {
                dst[1] = static_cast<unsigned char>(v >> 8);
            }
            if (bytes > 2) {
                dst[2] = static_cast<unsigned char>(v);
            }
            written += bytes;
        }
    }
    if (outLength) {
        *outLength = written;
    }
    return status;
}

int RVKBase64Decode(char const* text, char* out, unsigned* outLength)
{
    if (!text) {
        if (outLength) {
            *outLength = 0;
        }
        return 0;
    }
    return RVKBase64DecodeN(text, static_cast<unsigned>(std::strlen(text)), out, outLength);
}
