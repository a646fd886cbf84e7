#include <gtest/gtest.h>

#include "RVKCore.h"

// Encoding, and decoding of good text, are checked through the Base64 streams
// (the RFC 4648 vectors and random bytes of every value); here the decoder's
// refusals.
TEST(RVKBase64, RejectsMalformedText)
{
    char const* const bad[] = {
        "Zm9v!mFy", "Zm-v", "Zm_v", "Zm9 ", "Zm9\x80", "\xffm9v",  // outside the alphabet
        "Zm9v\r\nYm", "Zm\r\n", "Zm9v\nYmFy",                       // line breaks
        "=m9v", "Z=9v", "Zm=v", "Zg==Zm9v", "Zm9vY===", "====",     // misplaced padding
        "Zm9", "Zm9vY", "Zg=", "Z",                                 // length not a multiple of 4
    };
    for (char const* text : bad) {
        char out[16];
        unsigned length = 0;
        EXPECT_NE(RVKBase64Decode(text, out, &length), 0) << text;
    }
}
