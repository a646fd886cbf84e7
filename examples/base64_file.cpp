// base64_file encode IN OUT: writes the file IN to OUT as Base64 text in
// lines of 76 characters ended by CR LF, as MIME bodies are written.
// base64_file decode IN OUT: writes the bytes of the Base64 text IN to OUT;
// line breaks and other white space in the text are skipped.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <string>

#include "ZUMStreams.h"

namespace {

int fail(std::string const& text)
{
    std::fprintf(stderr, "base64_file: %s\n", text.c_str());
    return 1;
}

void encode(ZUMInputStream& in, ZUMOutputStream& out, char* buf, int size)
{
    ZUMBase64OutputStream base64(out);
    base64.lineBreak(76);
    long long total = 0;
    int n;
    while ((n = in.read(buf, size)) != -1) {
        base64.write(buf, n);
        total += n;
    }
    base64.flush();  // writes the last one or two bytes, padded; close() would not
    // The stream ends every full line with CR LF; end a last, shorter line too.
    if ((total + 2) / 3 * 4 % 76 != 0) {
        out.write("\r\n", 2);
    }
}

void decode(ZUMInputStream& in, ZUMOutputStream& out, char* buf, int size)
{
    // The Base64 stream hands every four bytes to the decoder as they come,
    // so the line breaks (and any other white space) are dropped beneath it.
    ZUMStripLineBreaksInputStream text(in, 1);
    ZUMBase64InputStream base64;
    base64.wrap(text);
    int n;
    while ((n = base64.read(buf, size)) != -1) {
        out.write(buf, n);
    }
    // Not seen here: a text that ends inside a group of four characters. The
    // stream drops those one to three characters without a word, so a text
    // cut short loses up to two bytes unnoticed; where that matters, the
    // sender must pass the length along.
}

}  // namespace

int main(int argc, char** argv)
{
    std::string mode = argc == 4 ? argv[1] : "";
    if (mode != "encode" && mode != "decode") {
        std::fprintf(stderr, "usage: base64_file encode|decode IN OUT\n");
        return 2;
    }
    try {
        ZUMFileInputStream in(argv[2]);  // a file that does not open raises at the first read
        std::ofstream outFile(argv[3], std::ios::binary);
        if (!outFile) {
            return fail(std::string(argv[3]) + ": cannot create: " + std::strerror(errno));
        }
        // ZUMStdOutputStream raises when a write fails; ZUMFileOutputStream
        // would not tell.
        ZUMStdOutputStream out(outFile);
        static char buf[65536];
        if (mode == "encode") {
            encode(in, out, buf, static_cast<int>(sizeof buf));
        } else {
            decode(in, out, buf, static_cast<int>(sizeof buf));
        }
        out.close();  // flushes the file; raises if the bytes did not get there
    } catch (ZUMIOException const& e) {
        if (e.hasMessage(ZUMMessage::FILE_OPEN_FAILED) || e.hasMessage(ZUMMessage::FILE_READ_FAILED)) {
            return fail(std::string(argv[2]) + ": " + std::strerror(static_cast<int>(e.getCode())));
        }
        if (e.hasMessage(ZUMMessage::TEXT_ERROR)) {  // raised by the output stream
            return fail(std::string(argv[3]) + ": cannot write: " + std::strerror(static_cast<int>(e.getCode())));
        }
        return fail(e.what());
    } catch (RVKAssertError const& e) {
        // The decoder refuses a group with a character outside the alphabet
        // or a '=' before its end with this assertion.
        return fail(mode == "decode" ? std::string(argv[2]) + ": not Base64 text" : e.what());
    } catch (std::exception const& e) {
        return fail(e.what());
    }
    return 0;
}
