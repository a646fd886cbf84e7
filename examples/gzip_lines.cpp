// gzip_lines IN.gz OUT: reads the gzip file IN.gz line by line with
// std::getline and writes each line to OUT behind its number, as cat -n does.
//
// ZUMInputStreamBuf makes the gzip stream a std::streambuf, so all of
// <istream> works on the decoded text. This program reads one gzip member and
// refuses a file with more (gunzip_members reads them all).
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iomanip>
#include <istream>
#include <string>

#include "ZUMStreams.h"

namespace {

int fail(std::string const& text)
{
    std::fprintf(stderr, "gzip_lines: %s\n", text.c_str());
    return 1;
}

// The texts of the exception's catalog messages, joined by ": ".
std::string messageTexts(ZUMIOException const& e)
{
    std::string line;
    for (std::size_t i = 0; i < e.getMessageCount(); ++i) {
        I18NString text;
        e.getMessageAt(i).format("", "", text);
        line += (line.empty() ? "" : ": ") + std::string(text.c_str());
    }
    return line.empty() ? e.what() : line;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: gzip_lines IN.gz OUT\n");
        return 2;
    }
    try {
        ZUMFileInputStream file(argv[1]);
        ZUMBufferedInputStream bis(file, 65536);  // to look behind the member at the end
        ZUMGZIPInputStream gunzip(bis);
        ZUMInputStreamBuf buf(gunzip);
        std::istream in(&buf);
        // An exception of the chain (damaged data, a read error) sets badbit,
        // which ends a getline loop just as the end of the text does. With
        // badbit in exceptions() the istream rethrows the library's exception.
        in.exceptions(std::ios::badbit);

        std::ofstream out(argv[2], std::ios::binary);
        if (!out) {
            return fail(std::string(argv[2]) + ": cannot create: " + std::strerror(errno));
        }
        std::string line;
        long number = 0;
        while (std::getline(in, line)) {
            out << std::setw(6) << ++number << '\t' << line << '\n';
        }
        // The streambuf reads the gzip stream with the array form, which
        // raises at damaged data after delivering what came before it; so the
        // member ended here with its CRC-32 and length checked.
        gunzip.unWrap();  // hands the bytes read beyond the member back to bis
        if (bis.read() != -1) {
            return fail(std::string(argv[1]) + ": more data follows the first gzip member");
        }
        out.close();
        if (!out) {
            return fail(std::string(argv[2]) + ": cannot write: " + std::strerror(errno));
        }
    } catch (ZUMIOException const& e) {
        if (e.hasMessage(ZUMMessage::FILE_OPEN_FAILED) || e.hasMessage(ZUMMessage::FILE_READ_FAILED)) {
            return fail(std::string(argv[1]) + ": " + std::strerror(static_cast<int>(e.getCode())));
        }
        // Input that ends inside the trailer (code 1) is raised once; later
        // reads return -1. The lines were delivered but never verified.
        if (e.hasMessage(ZUMMessage::GZIP_TRUNCATED) && e.getCode() == 1) {
            return fail(std::string(argv[1]) + ": the input ends inside the gzip trailer: not verified");
        }
        return fail(std::string(argv[1]) + ": " + messageTexts(e));
    } catch (std::exception const& e) {
        return fail(e.what());
    }
    return 0;
}
