// http_response RESPONSE BODY: reads a raw HTTP/1.1 response from the file
// RESPONSE, prints its start line, header fields and trailer fields, and
// writes the decoded body to the file BODY. The body must be chunked; a
// Content-Encoding of gzip is decoded.
//
// One buffered stream carries the whole message: the header lines are read
// from it with readline, the chunked stream decodes the body from it (with a
// gzip stream on top for a gzip body), and the trailer is read from it again
// behind the last chunk.
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <string>

#include "RVKCore.h"
#include "ZUMStreams.h"

namespace {

int fail(std::string const& text)
{
    std::fprintf(stderr, "http_response: %s\n", text.c_str());
    return 1;
}

// Reads lines up to the empty line that ends a header or trailer, printing
// each behind `label`. Returns false when the response ends first.
bool readFields(ZUMBufferedInputStream& bis, char const* label, bool& chunked, bool& gzip)
{
    RVKByteBuffer line(256, 256);
    for (;;) {
        line.reset();
        int n = bis.readline(line);
        if (n < 2 || line.str()[n - 2] != '\r' || line.str()[n - 1] != '\n') {
            return false;  // -1, or the last bytes of the input without CR LF
        }
        if (n == 2) {
            return true;
        }
        std::string field(line.str(), static_cast<std::size_t>(n - 2));
        std::printf("%s: %s\n", label, field.c_str());
        std::transform(field.begin(), field.end(), field.begin(), [](unsigned char c) { return std::tolower(c); });
        chunked |= field.rfind("transfer-encoding:", 0) == 0 && field.find("chunked") != std::string::npos;
        gzip |= field.rfind("content-encoding:", 0) == 0 && field.find("gzip") != std::string::npos;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: http_response RESPONSE BODY\n");
        return 2;
    }
    try {
        ZUMFileInputStream file(argv[1]);
        ZUMBufferedInputStream bis(file, 16384);
        bool chunked = false;
        bool gzip = false;
        RVKByteBuffer start(256, 256);
        if (bis.readline(start) < 0 || std::strncmp(start.str(), "HTTP/1.", 7) != 0) {
            return fail(std::string(argv[1]) + ": not an HTTP/1.x response");
        }
        std::printf("status: %.*s\n", std::max(start.pcount() - 2, 0), start.str());
        if (!readFields(bis, "header", chunked, gzip)) {
            return fail(std::string(argv[1]) + ": the response ends inside its header");
        }
        if (!chunked) {
            return fail(std::string(argv[1]) + ": the body is not chunked");
        }

        std::ofstream out(argv[2], std::ios::binary);
        if (!out) {
            return fail(std::string(argv[2]) + ": cannot create: " + std::strerror(errno));
        }
        ZUMChunkedInputStream chunks(bis);  // reads through our bis, which keeps the trailer
        ZUMGZIPInputStream gunzip;
        ZUMInputStream* body = &chunks;
        if (gzip) {
            gunzip.wrap(chunks);
            body = &gunzip;
        }
        // The buffer form returns -1 at the end and also at damaged gzip data
        // (where the array form would return 0). So after -1 the loop reads
        // once more: at the end that gives -1 again, at damaged or cut data it
        // raises GZIP_CORRUPT or GZIP_TRUNCATED.
        RVKByteBuffer data(16384, 16384);
        long total = 0;
        while (body->read(data, 16384) != -1 || body->read(data, 16384) != -1) {
            out.write(data.str(), data.pcount());
            total += data.pcount();
            data.reset();
        }
        if (gzip) {
            gunzip.unWrap();  // hands the bytes read beyond the member back to the chunked stream
            if (chunks.read() != -1) {
                return fail(std::string(argv[1]) + ": the body goes on after the gzip member");
            }
        }
        std::printf("body: %ld bytes\n", total);
        // A body cut inside a chunk ends with -1 like a whole one; what tells
        // them apart is the last chunk, trailer and empty line that follow.
        if (!readFields(bis, "trailer", chunked, gzip)) {
            return fail(std::string(argv[1]) + ": the response ends inside its body or trailer");
        }
        if (!out.flush()) {
            return fail(std::string(argv[2]) + ": cannot write: " + std::strerror(errno));
        }
    } catch (ZUMIOException const& e) {
        if (e.hasMessage(ZUMMessage::FILE_OPEN_FAILED) || e.hasMessage(ZUMMessage::FILE_READ_FAILED)) {
            return fail(std::string(argv[1]) + ": " + std::strerror(static_cast<int>(e.getCode())));
        }
        if (e.hasMessage(ZUMMessage::GZIP_TRUNCATED)) {
            return fail(std::string(argv[1]) + ": the gzip body is cut short");
        }
        if (e.hasMessage(ZUMMessage::GZIP_CRC_MISMATCH) || e.hasMessage(ZUMMessage::GZIP_LENGTH_MISMATCH)) {
            return fail(std::string(argv[1]) + ": the body does not match the CRC-32 or length of its gzip trailer");
        }
        if (e.hasMessage(ZUMMessage::GZIP_CORRUPT)) {
            return fail(std::string(argv[1]) + ": the gzip body is corrupt");
        }
        return fail(std::string(argv[1]) + ": " + e.what());
    } catch (std::exception const& e) {
        return fail(e.what());
    }
    return 0;
}
