#ifndef ZUM_STD_OUTPUT_STREAM_H
#define ZUM_STD_OUTPUT_STREAM_H

#include <ostream>

#include "ZUMExport.h"
#include "ZUMOutputStream.h"

// An endpoint output stream over a std::ostream (referenced, never owned), so
// that any output filter of the library can write to a standard stream. A
// write or flush that leaves the ostream bad raises ZUMIOException (code
// errno, message ZUMMessage::TEXT_ERROR with the text "std::ostream write
// failed"). close() flushes; the ostream stays usable.
class ZUM_API ZUMStdOutputStream : public ZUMOutputStream {
public:
    // Writes to `stream`.
    explicit ZUMStdOutputStream(std::ostream& stream);
    ~ZUMStdOutputStream() override;

    // Writes the bytes. Raises ZUMIOException; RVKAssertError for a negative
    // count or null bytes with a positive count.
    void write(char const* bytes, int count) override;
    // Flushes the ostream. Raises ZUMIOException.
    void flush() override;
    // Flushes the ostream. Raises ZUMIOException.
    void close() override;

private:
    ZUMStdOutputStream(ZUMStdOutputStream const&) = delete;
    ZUMStdOutputStream& operator=(ZUMStdOutputStream const&) = delete;

    void check(char const* method);

    std::ostream& m_stream;
};

#endif
