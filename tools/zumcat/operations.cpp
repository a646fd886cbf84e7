#include "operations.h"

#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "RVKCore.h"
#include "ZUMReadSupport.h"
#include "ZUMStreams.h"
#include "http.h"
#include "messages.h"
#include "options.h"
#include "progress.h"
#include "streams.h"

namespace zumcat {

void copy(ZUMInputStream& in, ZUMOutputStream& out, std::vector<char>& buf)
{
    int empty = 0;
    for (;;) {
        int n = in.read(buf.data(), static_cast<int>(buf.size()));
        if (n < 0) {
            return;
        }
        if (n == 0) {
            if (++empty == zum_detail::k_max_empty_reads) {
                throw Failure{"the input makes no progress"};
            }
            continue;
        }
        empty = 0;
        out.write(buf.data(), n);
    }
}

long long drain(ZUMInputStream& in, std::vector<char>& buf)
{
    long long total = 0;
    for (int empty = 0; empty < zum_detail::k_max_empty_reads;) {
        int n = in.read(buf.data(), static_cast<int>(buf.size()));
        if (n < 0) {
            break;
        }
        empty = n == 0 ? empty + 1 : 0;
        total += n;
    }
    return total;
}

void runHttp(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf)
{
    InputBuffer input(in, k_io_size);
    http(input, out, o.body, buf);
}

void runGunzip(Options const&, InputCounter& source, StandardOutput& out, std::vector<char>& buf)
{
    InputBuffer input(source, k_io_size);
    checkGzipMagic(input);
    ZUMMultiMemberGZIPInputStream gz(input);
    copy(gz, out, buf);
}

void runGzip(Options const&, InputCounter& in, StandardOutput& out, std::vector<char>& buf)
{
    ZUMGZIPOutputStream gz(out);
    static char const none = 0;
    gz.write(&none, 0);  // an empty input still gives a complete member
    copy(in, gz, buf);
    gz.finish();
}

void runUnchunk(Options const&, InputCounter& in, StandardOutput& out, std::vector<char>& buf)
{
    InputBuffer input(in, k_io_size);
    unchunk(input, out, buf);
}

void runChunk(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf)
{
    ZUMChunkedOutputStream chunked(out, o.size);
    copy(in, chunked, buf);
    chunked.close();
}

// Base64 text, ended by a line break as text files are: CR LF after a last
// partial line of wrapped text, LF after the one line of unwrapped text.
void runBase64(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf)
{
    int const wrap = o.wrap;
    ZUMBase64OutputStream b64(out);
    b64.lineBreak(static_cast<unsigned short>(wrap));
    copy(in, b64, buf);
    b64.flush();
    if (out.count() > 0 && out.lastByte() != '\n') {
        out.write(wrap > 0 ? "\r\n" : "\n", wrap > 0 ? 2 : 1);
    }
}

void runUnbase64(Options const&, InputCounter& source, StandardOutput& out, std::vector<char>& buf)
{
    // Blanks are skipped, so text wrapped in CR LF or LF lines decodes.
    ZUMStrictBase64InputStream b64(source, 1);
    copy(b64, out, buf);
}

void runXmlEscape(Options const&, InputCounter& in, StandardOutput& out, std::vector<char>& buf)
{
    ZUMXmlEncodeOutputStream xml(out);
    copy(in, xml, buf);
}

bool checkGzipMagic(ZUMInputStream& in)
{
    char magic[2];
    int have = 0;
    for (int c; have < 2 && (c = in.read()) >= 0; ++have) {
        magic[have] = static_cast<char>(c);
    }
    if ((have > 0 && magic[0] != '\x1f') || (have == 2 && magic[1] != '\x8b')) {
        throw Failure{catalogText(ZUMMessage::GZIP_NOT_GZIP)};
    }
    if (have > 0) {
        in.unread(magic, have);
    }
    return have > 0;
}

namespace {

// Opens the input (a path, or standard input for "" and "-") and returns its
// size in bytes when it is a regular file, else -1.
long long openInput(std::string const& path, ZUMFileInputStream& file)
{
    struct stat st;
    bool known;
    if (path.empty() || path == "-") {
        known = ::fstat(STDIN_FILENO, &st) == 0;
        file.tryOpen(::dup(STDIN_FILENO));
    } else {
        known = ::stat(path.c_str(), &st) == 0;
        file.tryOpen(path.c_str());
    }
    return known && S_ISREG(st.st_mode) ? static_cast<long long>(st.st_size) : -1;
}

}  // namespace

void run(Options const& o)
{
    ZUMFileInputStream file;
    long long const size = openInput(o.file, file);
    InputCounter in(file);
    StandardOutput out;
    std::unique_ptr<Progress> progress;
    if (o.progress) {
        progress = std::make_unique<Progress>(in, out, size, ::isatty(STDERR_FILENO) == 1);
        in.watch(progress.get());
        out.watch(progress.get());
    }
    try {
        std::vector<char> buf(static_cast<std::size_t>(k_io_size));
        o.op->run(o, in, out, buf);
        out.flush();
    } catch (...) {
        if (progress) {
            std::fflush(stdout);
            progress->finish();
        }
        throw;
    }
    if (progress) {
        progress->finish();
    }
}

}  // namespace zumcat
