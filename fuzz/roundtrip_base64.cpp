// Fuzz target: Base64 out and back in.
//
// Input: 8 setting bytes, then the content.
//   0: line length (0: no line breaks)
//   1-4: write sizes (a step of 0 mod 5 writes with the flush flag, which
//        pads the pending group); 5-6: source read sizes; 7: read sizes
//
// Checks: the text has only Base64 characters, cut into lines of exactly the
// line length with CR LF behind each full line; without the line breaks the
// Base64 input stream decodes it back to the content, then -1.

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    unsigned short lineLength = in.byte();
    Schedule writeSteps(in.take(4));
    Schedule sourceSteps(in.take(2));
    Schedule readSteps(in.take(1));
    std::string content = in.rest();

    ZUMMemoryOutputStream out;
    {
        ZUMBase64OutputStream b64(out);
        b64.lineBreak(lineLength);
        std::size_t at = 0;
        while (at < content.size()) {
            std::uint8_t step = writeSteps.next();
            std::size_t n = step == 0 ? 1 : step;
            n = n < content.size() - at ? n : content.size() - at;
            b64.write(content.data() + at, static_cast<int>(n), step % 5 == 0);
            at += n;
        }
        b64.flush();
    }
    std::string wire = collected(out);

    std::string text;
    std::size_t column = 0;
    for (std::size_t i = 0; i < wire.size(); ++i) {
        char c = wire[i];
        if (c == '\r') {
            FUZZ_CHECK(lineLength > 0 && column == lineLength && i + 1 < wire.size() && wire[i + 1] == '\n');
            ++i;
            column = 0;
            continue;
        }
        FUZZ_CHECK((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+'
                   || c == '/' || c == '=');
        FUZZ_CHECK(lineLength == 0 || column < lineLength);
        ++column;
        text.push_back(c);
    }
    FUZZ_CHECK(text.size() % 4 == 0);

    FuzzSource source(text, sourceSteps, 0, false);
    ZUMBase64InputStream decoder;
    decoder.wrap(source);
    std::string got;
    for (std::size_t reads = 0;; ++reads) {
        FUZZ_CHECK(reads < size + 100);
        std::uint8_t step = readSteps.next();
        if (readOnce(decoder, step, readCount(step), got) < 0) {
            break;
        }
    }
    FUZZ_CHECK(got == content);
    FUZZ_CHECK(source.atEnd());
    return 0;
}
