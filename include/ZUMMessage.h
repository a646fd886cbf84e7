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
    // The compressed input ended before the gzip header or trailer was
    // complete (code 0 in the header, -5 in the deflate data, 1 in the
    // trailer).
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

    // The message `number` of the catalog "rvkzummsgs".
    explicit ZUMMessage(unsigned long number);
    ~ZUMMessage() override;
};

#endif
