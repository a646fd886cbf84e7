// gunzip_members IN.gz OUT: writes the content of every gzip member of IN.gz,
// one after the other, to OUT, as gzip -d does with concatenated members.
//
// A gzip input stream decodes one member and reads ahead beyond it. So the
// file is read through a buffered stream, which can take bytes back: after
// each member, unWrap() hands the read-ahead back to it, one byte is read and
// pushed back to see whether another member follows, and the same gzip stream
// is wrapped again for that member.
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
    std::fprintf(stderr, "gunzip_members: %s\n", text.c_str());
    return 1;
}

// What a ZUMIOException of the chain says, in one line.
std::string describe(ZUMIOException const& e, char const* in, char const* out, int member)
{
    std::string where = std::string(in) + ": member " + std::to_string(member) + ": ";
    if (e.hasMessage(ZUMMessage::GZIP_TRUNCATED)) {
        // Code 1: the input ended inside the trailer. The data was delivered
        // but its CRC-32 and length were never compared: not verified.
        return where + (e.getCode() == 1 ? "the input ends inside the trailer; the member is not verified"
                                         : "the input ends inside the member");
    }
    if (e.hasMessage(ZUMMessage::GZIP_NOT_GZIP)) {
        return where + (member == 1 ? "not in gzip format" : "not in gzip format (data after the last member?)");
    }
    if (e.hasMessage(ZUMMessage::GZIP_UNSUPPORTED)) {
        return where + "unsupported compression method or header flags";
    }
    if (e.hasMessage(ZUMMessage::GZIP_CRC_MISMATCH) || e.hasMessage(ZUMMessage::GZIP_LENGTH_MISMATCH)) {
        return where + "the data does not match the CRC-32 or length in the trailer";
    }
    if (e.hasMessage(ZUMMessage::GZIP_CORRUPT)) {
        return where + "the compressed data is corrupt";
    }
    if (e.hasMessage(ZUMMessage::FILE_OPEN_FAILED) || e.hasMessage(ZUMMessage::FILE_READ_FAILED)) {
        return std::string(in) + ": " + std::strerror(static_cast<int>(e.getCode()));
    }
    if (e.hasMessage(ZUMMessage::TEXT_ERROR)) {  // raised by the output stream
        return std::string(out) + ": cannot write: " + std::strerror(static_cast<int>(e.getCode()));
    }
    return e.what();
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: gunzip_members IN.gz OUT\n");
        return 2;
    }
    int member = 1;
    try {
        ZUMFileInputStream file(argv[1]);  // a file that does not open raises at the first read
        ZUMBufferedInputStream bis(file, 65536);
        std::ofstream outFile(argv[2], std::ios::binary);
        if (!outFile) {
            return fail(std::string(argv[2]) + ": cannot create: " + std::strerror(errno));
        }
        // ZUMStdOutputStream raises when a write fails; ZUMFileOutputStream
        // would not tell.
        ZUMStdOutputStream out(outFile);
        ZUMGZIPInputStream gunzip;
        static char buf[65536];
        for (;; ++member) {
            gunzip.wrap(bis);
            // The array form: at damaged data it returns the bytes decoded
            // before the damage (possibly 0), and the next read raises
            // GZIP_CORRUPT. The buffer form and read() would return -1 there,
            // which this loop would take for the end of the member.
            int n;
            while ((n = gunzip.read(buf, static_cast<int>(sizeof buf))) != -1) {
                out.write(buf, n);
            }
            gunzip.unWrap();  // the bytes read beyond the member go back to bis
            int next = bis.read();
            if (next == -1) {
                break;
            }
            char c = static_cast<char>(next);
            bis.unread(&c, 1);
        }
        out.close();  // flushes the file; raises if the bytes did not get there
    } catch (ZUMIOException const& e) {
        // Every exception ends the run. One raised while the trailer is read
        // (the input ended there, or the stream beneath failed there) leaves
        // the member ended, and further reads return -1: a program that went
        // on reading would take an unverified member for a whole one.
        return fail(describe(e, argv[1], argv[2], member));
    } catch (std::exception const& e) {  // RVKThrowable and the standard library's
        return fail(e.what());
    }
    return 0;
}
