#ifndef RVK_BASE64_H
#define RVK_BASE64_H

#include "RVKExport.h"

// Base64 with the standard alphabet (A-Z a-z 0-9 + /) and '=' padding, as in
// RFC 4648. The flags arguments are reserved and must be 0: the text has no
// line breaks.

// The number of bytes that the encoded text of n input bytes needs, the
// terminating NUL included.
RVK_API unsigned RVKBase64EncodedSize(unsigned n, int flags);

// Encodes n bytes of `in` into `out` (RVKBase64EncodedSize(n, 0) bytes of
// room), NUL-terminated, the last group padded. Returns the number of
// characters written, NUL not counted.
RVK_API unsigned RVKBase64Encode(char const* in, unsigned n, char* out, int flags);

// Decodes the NUL-terminated text into `out` (room for 3 bytes per 4
// characters) and stores the number of bytes in *outLength. Returns 0 on
// success; non-zero when the length is not a multiple of 4, a character lies
// outside the alphabet (line breaks included) or '=' stands anywhere but in
// the last one or two places. On failure *outLength holds the bytes decoded
// before the faulty group.
RVK_API int RVKBase64Decode(char const* text, char* out, unsigned* outLength);

// As RVKBase64Decode, for `length` characters that need not be NUL-terminated.
RVK_API int RVKBase64DecodeN(char const* text, unsigned length, char* out, unsigned* outLength);

#endif
