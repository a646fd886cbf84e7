// write_chunked_gzip IN OUT [CHUNK_SIZE]: writes the file IN to OUT as an
// HTTP/1.1 response whose body is gzip-compressed and sent in the chunked
// transfer coding, in chunks of CHUNK_SIZE bytes (16384 when not given).
//
// The chain, from the top: gzip > chunked > buffered > the output file. The
// header lines go to the buffered stream before the body. At the end the
// streams are completed from the top down: finish() writes the rest of the
// compressed data and the gzip trailer, close() on the chunked stream the
// last chunk, flush() on the buffered stream what it still holds.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <string>

#include "ZUMStreams.h"

namespace {

int fail(std::string const& text)
{
    std::fprintf(stderr, "write_chunked_gzip: %s\n", text.c_str());
    return 1;
}

char const k_head[] =
    "HTTP/1.1 200 OK\r\n"
    "Content-Type: application/octet-stream\r\n"
    "Content-Encoding: gzip\r\n"
    "Transfer-Encoding: chunked\r\n"
    "\r\n";

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3 && argc != 4) {
        std::fprintf(stderr, "usage: write_chunked_gzip IN OUT [CHUNK_SIZE]\n");
        return 2;
    }
    long chunkSize = 16384;
    if (argc == 4) {
        char* end = nullptr;
        chunkSize = std::strtol(argv[3], &end, 10);
        if (*argv[3] == '\0' || *end != '\0' || chunkSize < 1 || chunkSize > (1L << 24)) {
            return fail(std::string("chunk size ") + argv[3] + ": not a number from 1 to 16777216");
        }
    }
    try {
        ZUMFileInputStream in(argv[1]);  // a file that does not open raises at the first read
        std::ofstream outFile(argv[2], std::ios::binary);
        if (!outFile) {
            return fail(std::string(argv[2]) + ": cannot create: " + std::strerror(errno));
        }
        // ZUMStdOutputStream raises when a write fails; ZUMFileOutputStream
        // would not tell.
        ZUMStdOutputStream file(outFile);
        ZUMBufferedOutputStream buffered(file, 16384);
        buffered.write(k_head, static_cast<int>(sizeof k_head - 1));
        ZUMChunkedOutputStream chunked(buffered, static_cast<int>(chunkSize));
        ZUMGZIPOutputStream gzip(chunked);

        // A write of 0 bytes opens the member: an empty file still gets one
        // (20 bytes), since a gzip body without a member is not gzip.
        static char buf[65536];
        gzip.write(buf, 0);
        int n;
        while ((n = in.read(buf, static_cast<int>(sizeof buf))) != -1) {
            gzip.write(buf, n);
        }
        // On a failure before this point nothing below runs, and OUT lacks
        // the last chunk: no reader takes what was written for a whole body.
        // (The gzip stream's destructor finishes its member, but that is not
        // the end of the chunked body.)
        gzip.finish();
        chunked.close();
        buffered.flush();
        file.close();  // flushes the file; raises if the bytes did not get there
    } catch (ZUMIOException const& e) {
        if (e.hasMessage(ZUMMessage::FILE_OPEN_FAILED) || e.hasMessage(ZUMMessage::FILE_READ_FAILED)) {
            return fail(std::string(argv[1]) + ": " + std::strerror(static_cast<int>(e.getCode())));
        }
        if (e.hasMessage(ZUMMessage::TEXT_ERROR)) {  // raised by the output stream
            return fail(std::string(argv[2]) + ": cannot write: " + std::strerror(static_cast<int>(e.getCode())));
        }
        return fail(e.what());
    } catch (std::exception const& e) {
        return fail(e.what());
    }
    return 0;
}
