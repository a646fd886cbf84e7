#include "RVKBase64.h"

#include <cstdint>
#include <cstring>

// Table-driven Base64, several bytes a step.
//
// Encoding maps 12 input bits at a time to two output characters through one
// 4096-entry table. The main loop reads 8 input bytes as one big-endian
// number and encodes the first 6 of them: four lookups, four 2-byte stores.
//
// Decoding maps each character of a group through the table of its place in
// the group (0 to 3). An entry holds the character's six bits already in
// their place among the three output bytes, in memory order, so the OR of the
// four entries is the group's three bytes as they are stored; characters
// outside the alphabet set a flag in the fourth byte. The main loop decodes
// two groups a step and stores each with one 4-byte store (the fourth byte is
// overwritten by the next group), and tests the flag once per step.
//
// Nothing depends on the byte order of the machine: the tables are built by
// copying bytes into their entries.

namespace {

char const k_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Tables {
    std::uint16_t pairs[4096];     // 12 bits -> two characters, in memory order
    std::uint32_t decode[4][256];  // place, character -> its bits, in memory order
    std::uint32_t invalid;         // the flag of a character outside the alphabet

    Tables()
    {
        for (unsigned v = 0; v < 4096; ++v) {
            unsigned char two[2] = {static_cast<unsigned char>(k_alphabet[v >> 6]),
                                    static_cast<unsigned char>(k_alphabet[v & 63u])};
            std::memcpy(&pairs[v], two, 2);
        }
        unsigned char const flag[4] = {0, 0, 0, 0x80};
        std::memcpy(&invalid, flag, 4);
        for (unsigned place = 0; place < 4; ++place) {
            for (unsigned c = 0; c < 256; ++c) {
                decode[place][c] = invalid;
            }
            for (unsigned i = 0; i < 64; ++i) {
                std::uint32_t bits = static_cast<std::uint32_t>(i) << (18u - 6u * place);
                unsigned char bytes[4] = {static_cast<unsigned char>(bits >> 16),
                                          static_cast<unsigned char>(bits >> 8),
                                          static_cast<unsigned char>(bits), 0};
                std::memcpy(&decode[place][static_cast<unsigned char>(k_alphabet[i])], bytes, 4);
            }
        }
    }
};

Tables const k_tables;

// The three bytes of the group at `in`, in memory order, with the invalid
// flag set if any character is outside the alphabet.
inline std::uint32_t group(unsigned char const* in)
{
    return k_tables.decode[0][in[0]] | k_tables.decode[1][in[1]] | k_tables.decode[2][in[2]] |
           k_tables.decode[3][in[3]];
}

// Stores the first n (1 to 3) bytes of a decoded group.
inline void storeBytes(unsigned char* out, std::uint32_t v, unsigned n)
{
    unsigned char bytes[4];
    std::memcpy(bytes, &v, 4);
    out[0] = bytes[0];
    if (n > 1) {
        out[1] = bytes[1];
    }
    if (n > 2) {
        out[2] = bytes[2];
    }
}

// Decodes the last group of a text, where '=' may stand in the last one or
// two places. Returns the number of bytes stored (1 to 3), or 0 for a group
// that is not Base64 (nothing is stored then).
inline unsigned decodeLastGroup(unsigned char const* in, unsigned char* out)
{
    unsigned char last[4] = {in[0], in[1], in[2], in[3]};
    unsigned bytes = 3;
    if (last[3] == '=') {
        bytes = 2;
        last[3] = 'A';
        if (last[2] == '=') {
            bytes = 1;
            last[2] = 'A';
        }
    }
    std::uint32_t v = group(last);
    if (v & k_tables.invalid) {
        return 0;
    }
    storeBytes(out, v, bytes);
    return bytes;
}

inline void encodeGroup(unsigned char const* in, char* out)
{
    std::uint32_t v = (static_cast<std::uint32_t>(in[0]) << 16) |
                      (static_cast<std::uint32_t>(in[1]) << 8) | in[2];
    std::memcpy(out, &k_tables.pairs[v >> 12], 2);
    std::memcpy(out + 2, &k_tables.pairs[v & 0xFFFu], 2);
}

}  // namespace

unsigned RVKBase64EncodedSize(unsigned n, int /*flags*/)
{
    return (n / 3u + (n % 3u != 0)) * 4u + 1u;
}

unsigned RVKBase64Encode(char const* in, unsigned n, char* out, int /*flags*/)
{
    unsigned char const* src = reinterpret_cast<unsigned char const*>(in);
    unsigned char const* end = src + n;
    char* dst = out;
    // Six bytes a step while eight can be read.
    while (end - src >= 8) {
        std::uint64_t w = 0;
        for (int i = 0; i < 8; ++i) {
            w = (w << 8) | src[i];
        }
        std::memcpy(dst, &k_tables.pairs[(w >> 52) & 0xFFFu], 2);
        std::memcpy(dst + 2, &k_tables.pairs[(w >> 40) & 0xFFFu], 2);
        std::memcpy(dst + 4, &k_tables.pairs[(w >> 28) & 0xFFFu], 2);
        std::memcpy(dst + 6, &k_tables.pairs[(w >> 16) & 0xFFFu], 2);
        src += 6;
        dst += 8;
    }
    while (end - src >= 3) {
        encodeGroup(src, dst);
        src += 3;
        dst += 4;
    }
    unsigned rest = static_cast<unsigned>(end - src);
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
    if (length == 4) {
        // One group, as the Base64 input stream decodes them.
        unsigned bytes = decodeLastGroup(src, dst);
        if (outLength) {
            *outLength = bytes;
        }
        return bytes == 0 ? 2 : 0;
    }
    std::uint32_t const invalid = k_tables.invalid;
    int status = 0;
    if (length % 4u != 0) {
        status = 1;
        length -= length % 4u;  // decode the whole groups, report the rest
    }
    unsigned groups = length / 4u;
    // Every group but the last is plain; the last may carry padding.
    unsigned plain = groups == 0 ? 0 : groups - 1;
    unsigned g = 0;
    // Two groups a step while a third group follows them: the 4-byte stores
    // then stay within the output.
    for (; g + 2 < groups; g += 2) {
        std::uint32_t v0 = group(src);
        std::uint32_t v1 = group(src + 4);
        if ((v0 | v1) & invalid) {
            break;  // the group-wise loop below finds which one
        }
        std::memcpy(dst, &v0, 4);
        std::memcpy(dst + 3, &v1, 4);
        src += 8;
        dst += 6;
    }
    for (; g < plain; ++g) {
        std::uint32_t v = group(src);
        if (v & invalid) {
            if (outLength) {
                *outLength = static_cast<unsigned>(dst - reinterpret_cast<unsigned char*>(out));
            }
            return 2;
        }
        storeBytes(dst, v, 3);
        src += 4;
        dst += 3;
    }
    if (groups != 0) {
        unsigned bytes = decodeLastGroup(src, dst);
        if (bytes == 0) {
            status = 2;
        }
        dst += bytes;
    }
    if (outLength) {
        *outLength = static_cast<unsigned>(dst - reinterpret_cast<unsigned char*>(out));
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
