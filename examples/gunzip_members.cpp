// gunzip_members IN.gz OUT: writes the content of every gzip member of IN.gz,
// one after the other, to OUT, as gzip -d does with concatenated members.
//
// ZUMMultiMemberGZIPInputStream reads the members in turn, checks each one,
// accepts NUL padding after the last and raises for any other trailing byte.
// Each failure it raises ends in a text that says where the fault is, for
// instance "in the CRC-32 of member 2, at byte 17701"; this program prints
// that text after its own words.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <string>

#include "RVKCore.h"  // RVKMessageString, the text the stream adds last
#include "ZUMStreams.h"

namespace {

int fail(std::string const& text)
{
    std::fprintf(stderr, "gunzip_members: %s\n", text.c_str());
    return 1;
}

// The place of the fault: the text the multi-member stream adds last.
std::string place(ZUMIOException const& e)
{
    std::size_t count = e.getMessageCount();
    auto const* text = count ? dynamic_cast<RVKMessageString const*>(&e.getMessageAt(count - 1)) : nullptr;
    return text ? std::string(" (") + text->getString().c_str() + ")" : std::string();
}

// What a ZUMIOException of the chain says, in one line.
std::string describe(ZUMIOException const& e, char const* in, char const* out)
{
    std::string where = std::string(in) + ": ";
    if (e.hasMessage(ZUMMessage::GZIP_TRUNCATED)) {
        // Code 1: the input ended inside the trailer. The data was delivered
        // but its CRC-32 and length were never compared: not verified.
        return where + (e.getCode() == 1 ? "the member is not verified" : "the input is cut short") + place(e);
    }
    if (e.hasMessage(ZUMMessage::GZIP_NOT_GZIP)) {
        return where + "not in gzip format" + place(e);
    }
    if (e.hasMessage(ZUMMessage::GZIP_UNSUPPORTED)) {
        return where + "unsupported compression method or header flags" + place(e);
    }
    if (e.hasMessage(ZUMMessage::GZIP_CRC_MISMATCH) || e.hasMessage(ZUMMessage::GZIP_LENGTH_MISMATCH)) {
        return where + "the data does not match the CRC-32 or length in the trailer" + place(e);
    }
    if (e.hasMessage(ZUMMessage::GZIP_CORRUPT)) {
        return where + "the compressed data is corrupt" + place(e);
    }
    if (e.hasMessage(ZUMMessage::GZIP_TRAILING_GARBAGE)) {
        return where + "data after the last member" + place(e);
    }
    if (e.hasMessage(ZUMMessage::FILE_OPEN_FAILED) || e.hasMessage(ZUMMessage::FILE_READ_FAILED)) {
        return where + std::strerror(static_cast<int>(e.getCode()));
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
    try {
        ZUMFileInputStream file(argv[1]);  // a file that does not open raises at the first read
        ZUMMultiMemberGZIPInputStream gunzip(file);
        std::ofstream outFile(argv[2], std::ios::binary);
        if (!outFile) {
            return fail(std::string(argv[2]) + ": cannot create: " + std::strerror(errno));
        }
        // ZUMStdOutputStream raises when a write fails; ZUMFileOutputStream
        // would not tell.
        ZUMStdOutputStream out(outFile);
        static char buf[65536];
        int n;
        while ((n = gunzip.read(buf, static_cast<int>(sizeof buf))) != -1) {
            out.write(buf, n);
        }
        out.close();  // flushes the file; raises if the bytes did not get there
    } catch (ZUMIOException const& e) {
        // Every failure ends the run: a member that failed its checks, or one
        // cut inside its trailer (delivered, never verified), or bytes after
        // the last member, which gzip -d warns about.
        return fail(describe(e, argv[1], argv[2]));
    } catch (std::exception const& e) {  // RVKThrowable and the standard library's
        return fail(e.what());
    }
    return 0;
}
