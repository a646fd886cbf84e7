#ifndef ZUM_MESSAGE_H
#define ZUM_MESSAGE_H

#include "RVKMessage.h"
#include "ZUMExport.h"

// A numbered message of the stream library's catalog "rvkzummsgs".
//
// The numbers the library raises are named below; a caller tells failures
// apart by them, for instance with ZUMIOException::hasMessage():
//
//     catch (ZUMIOException const& e) {
//         if (e.hasMessage(ZUMMessage::GZIP_CRC_MISMATCH)) { ... }
//     }
class ZUM_API ZUMMessage : public RVKMessage {
public:
    // An error given as text; the text follows as the next message.
    static constexpr unsigned long TEXT_ERROR = 0x91fdd700UL;
    // A file cannot be opened for reading; the file name and the system's
    // error text follow.
    static constexpr unsigned long FILE_OPEN_FAILED = 0x91f2b0d2UL;
    // A read of a file failed; the file name and the error text follow.
    static constexpr unsigned long FILE_READ_FAILED = 0x91fe8ba5UL;
    // The compressed input ended before the gzip member was complete: inside
    // the header (code 0), the deflate data (-5) or the trailer (1).
    static constexpr unsigned long GZIP_TRUNCATED = 0x91f36c62UL;
    // The input is not in gzip format (its first two bytes are not 1F 8B).
    static constexpr unsigned long GZIP_NOT_GZIP = 0xc1c209cfUL;
    // An unsupported compression method or unknown gzip header flags.
    static constexpr unsigned long GZIP_UNSUPPORTED = 0xc1c58e80UL;
    // The compressed data is corrupt (every read after a data error).
    static constexpr unsigned long GZIP_CORRUPT = 0x91f342d7UL;
    // The CRC-32 of the data differs from the one in the gzip trailer.
    static constexpr unsigned long GZIP_CRC_MISMATCH = 0xc1c34d1fUL;
    // The length of the data differs from the one in the gzip trailer.
    static constexpr unsigned long GZIP_LENGTH_MISMATCH = 0xc1c66a72UL;
    // Bytes other than NUL padding follow the last gzip member (multi-member
    // reader); the byte offset of the first such byte follows as text.
    static constexpr unsigned long GZIP_TRAILING_GARBAGE = 0xc1c7a3e1UL;
    // Chunked framing that breaks the transfer coding's grammar (strict
    // chunked reader); the byte offset in the body follows as text.
    static constexpr unsigned long CHUNKED_MALFORMED = 0xc1c81b44UL;
    // The chunked body ended before its last chunk (strict chunked reader);
    // the byte offset in the body follows as text.
    static constexpr unsigned long CHUNKED_TRUNCATED = 0x91f4d2a6UL;
    // A character outside the Base64 alphabet or misplaced padding (strict
    // Base64 reader); the byte offset follows as text.
    static constexpr unsigned long BASE64_MALFORMED = 0xc1c9e857UL;
    // Base64 text that ends inside a group of four (strict Base64 reader);
    // the byte offset follows as text.
    static constexpr unsigned long BASE64_TRUNCATED = 0x91f5a0b9UL;

    // The message `number` of the catalog "rvkzummsgs".
    explicit ZUMMessage(unsigned long number);
    ~ZUMMessage() override;
};

#endif
