// zumcat: reads a file or standard input through a chain of the library's
// streams and writes the result to standard output.
//
//   zumcat [--progress] OPERATION [OPTIONS] [FILE]
//
// Every operation is a chain: an endpoint over the input, the library's
// filters, an endpoint over standard output. Bad input ends the program with
// one line on standard error naming what is wrong, and exit status 1.

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "RVKCore.h"
#include "ZUMBase64InputStream.h"
#include "ZUMBase64OutputStream.h"
#include "ZUMBlockInputStream.h"
#include "ZUMBufferedInputStream.h"
#include "ZUMChunkedInputStream.h"
#include "ZUMChunkedOutputStream.h"
#include "ZUMGZIPInputStream.h"
#include "ZUMGZIPOutputStream.h"
#include "ZUMStreams.h"
#include "ZUMXmlEncodeOutputStream.h"

namespace {

int const k_io_size = 65536;

// ---- usage ------------------------------------------------------------------

struct Operation {
    char const* name;
    char const* synopsis;
    char const* help;
};

Operation const k_operations[] = {
    {"http", "http [--body] [FILE]",
     "Reads a raw HTTP/1.1 message: the start line and header lines (CR LF), the body\n"
     "decoded by its Transfer-Encoding (chunked) or Content-Length and its\n"
     "Content-Encoding (gzip), then the trailer fields. Prints the start line, the\n"
     "headers, the body and the trailer under headings; with --body, the decoded\n"
     "body alone.\n"},
    {"gunzip", "gunzip [FILE]",
     "Decompresses gzip data. Every member of a multi-member input is decoded in\n"
     "turn, as gzip -d does.\n"},
    {"gzip", "gzip [FILE]", "Compresses the input into one gzip member.\n"},
    {"unchunk", "unchunk [FILE]",
     "Decodes a body in the HTTP/1.1 chunked transfer coding. A trailer after the\n"
     "last chunk is not printed.\n"},
    {"chunk", "chunk [--size N] [FILE]",
     "Writes the input in the HTTP/1.1 chunked transfer coding, in chunks of N\n"
     "bytes (default 4096), with the last chunk and an empty trailer.\n"},
    {"base64", "base64 [--wrap N] [FILE]",
     "Encodes the input as Base64; with --wrap N, in lines of N characters ended by\n"
     "CR LF (0, the default, writes one line without line break).\n"},
    {"unbase64", "unbase64 [FILE]",
     "Decodes Base64 text. CR and LF between the characters are skipped, so text\n"
     "written with line breaks decodes too.\n"},
    {"xml-escape", "xml-escape [FILE]",
     "Escapes the input for XML text and attribute values: & < > \" ' become\n"
     "references, control characters other than tab, LF and CR become numeric\n"
     "references; other bytes, UTF-8 included, pass unchanged.\n"},
};

void printUsage(FILE* to)
{
    std::fprintf(to, "usage: zumcat [--progress] OPERATION [OPTIONS] [FILE]\n\n"
                     "Reads FILE (or standard input) and writes to standard output.\n\n"
                     "Operations:\n");
    for (Operation const& op : k_operations) {
        std::fprintf(to, "  zumcat %s\n", op.synopsis);
    }
    std::fprintf(to, "\n  --progress  print bytes read and the rate to standard error\n"
                     "  --help      this text; OPERATION --help describes one operation\n");
}

Operation const* findOperation(std::string const& name)
{
    for (Operation const& op : k_operations) {
        if (name == op.name) {
            return &op;
        }
    }
    return nullptr;
}

// ---- errors -----------------------------------------------------------------

// A failure of the tool itself (not of a stream).
struct ToolError {
    std::string text;
};

// The one-line description of a library exception: the English texts of its
// messages (catalog messages and texts), joined by ": ".
std::string describe(RVKThrowable const& thrown)
{
    std::string line;
    if (auto const* exception = dynamic_cast<RVKException const*>(&thrown)) {
        for (std::size_t i = 0; i < exception->getMessageCount(); ++i) {
            I18NString text;
            exception->getMessageAt(i).format("", "", text);
            if (text.length() == 0) {
                continue;
            }
            if (!line.empty()) {
                line += ": ";
            }
            line += text.c_str();
        }
    }
    if (line.empty()) {
        line = thrown.what();
    }
    return line;
}

// ---- progress ---------------------------------------------------------------

// A pass-through input filter that counts the bytes read and reports them,
// with the rate, on standard error about once a second and at the end.
class ProgressInputStream : public ZUMFilterInputStream {
public:
    explicit ProgressInputStream(ZUMInputStream& upstream)
        : m_start(std::chrono::steady_clock::now()), m_last(m_start)
    {
        wrap(upstream);
    }

    int read(RVKByteBuffer& buffer, int count) override { return count_bytes(p_upstream->read(buffer, count)); }
    int read(char* buf, int count) override { return count_bytes(p_upstream->read(buf, count)); }
    int read() override
    {
        int c = p_upstream->read();
        count_bytes(c < 0 ? -1 : 1);
        return c;
    }

    void report(bool final)
    {
        auto now = std::chrono::steady_clock::now();
        double seconds = std::chrono::duration<double>(now - m_start).count();
        double mb = static_cast<double>(m_total) / 1e6;
        std::fprintf(stderr, "\rzumcat: %.1f MB read, %.1f MB/s%s", mb,
                     seconds > 0 ? mb / seconds : 0.0, final ? "\n" : "");
        std::fflush(stderr);
        m_last = now;
    }

private:
    int count_bytes(int n)
    {
        if (n > 0) {
            m_total += static_cast<unsigned long long>(n);
            if (std::chrono::steady_clock::now() - m_last >= std::chrono::seconds(1)) {
                report(false);
            }
        }
        return n;
    }

    std::chrono::steady_clock::time_point m_start;
    std::chrono::steady_clock::time_point m_last;
    unsigned long long m_total = 0;
};

// A pass-through input filter that drops CR and LF bytes, so that Base64
// text written with line breaks reaches the decoder as plain groups.
class LineBreakDroppingInputStream : public ZUMFilterInputStream {
public:
    explicit LineBreakDroppingInputStream(ZUMInputStream& upstream) { wrap(upstream); }

    int read(char* buf, int count) override
    {
        if (count <= 0) {
            return 0;
        }
        // Reads until at least one byte survives or the upstream ends; an
        // upstream that keeps delivering nothing counts as ended.
        for (int empty = 0; empty < 1000;) {
            int n = p_upstream->read(buf, count);
            if (n < 0) {
                return -1;
            }
            empty = n == 0 ? empty + 1 : 0;
            int kept = 0;
            for (int i = 0; i < n; ++i) {
                if (buf[i] != '\r' && buf[i] != '\n') {
                    buf[kept++] = buf[i];
                }
            }
            if (kept > 0) {
                return kept;
            }
        }
        return -1;
    }
    int read(RVKByteBuffer& buffer, int count) override
    {
        int old = buffer.pcount();
        buffer.reserve(static_cast<unsigned>(old + (count > 0 ? count : 0)));
        int n = read(buffer.str() + old, count);
        if (n > 0) {
            buffer.setLength(static_cast<unsigned>(old + n));
        }
        return n;
    }
    int read() override
    {
        char c;
        return read(&c, 1) == 1 ? static_cast<unsigned char>(c) : -1;
    }
};

// ---- the chains -------------------------------------------------------------

// Copies everything `in` delivers to `out`.
void copy(ZUMInputStream& in, ZUMOutputStream& out, std::vector<char>& buf)
{
    int empty = 0;
    for (;;) {
        int n = in.read(buf.data(), static_cast<int>(buf.size()));
        if (n < 0) {
            return;
        }
        if (n == 0) {
            if (++empty == 1000) {
                throw ToolError{"the input makes no progress"};
            }
            continue;
        }
        empty = 0;
        out.write(buf.data(), n);
    }
}

// A line without its CR LF.
std::string lineText(RVKByteBuffer const& line)
{
    std::string text(line.str(), static_cast<std::size_t>(line.pcount()));
    if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0) {
        text.resize(text.size() - 2);
    }
    return text;
}

bool equalsIgnoringCase(std::string a, std::string b)
{
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return true;
}

// Whether the comma-separated header value lists `token`.
bool listsToken(std::string const& value, char const* token)
{
    std::size_t at = 0;
    while (at <= value.size()) {
        std::size_t end = value.find(',', at);
        if (end == std::string::npos) {
            end = value.size();
        }
        std::string item = value.substr(at, end - at);
        std::size_t first = item.find_first_not_of(" \t");
        std::size_t last = item.find_last_not_of(" \t");
        if (first != std::string::npos && equalsIgnoringCase(item.substr(first, last - first + 1), token)) {
            return true;
        }
        at = end + 1;
    }
    return false;
}

// Reads header lines (or trailer fields) up to the empty line; returns them.
std::vector<std::string> readFields(ZUMBufferedInputStream& bis, RVKByteBuffer& line, bool trailer)
{
    std::vector<std::string> fields;
    for (;;) {
        line.reset();
        int n = bis.readline(line);
        if (n < 0) {
            if (trailer) {
                return fields;  // a message may end without the final empty line
            }
            throw ToolError{"the input ended inside the header lines"};
        }
        std::string text = lineText(line);
        if (text.empty()) {
            return fields;
        }
        fields.push_back(text);
    }
}

void http(ZUMInputStream& src, ZUMOutputStream& out, bool bodyOnly, std::vector<char>& buf)
{
    ZUMBufferedInputStream bis(src, k_io_size);
    RVKByteBuffer line(256, 256);
    if (bis.readline(line) < 0) {
        throw ToolError{"the input is empty: no HTTP start line"};
    }
    std::string start = lineText(line);
    if (start.compare(0, 5, "HTTP/") != 0 && start.find(" HTTP/") == std::string::npos) {
        throw ToolError{"the input does not begin with an HTTP/1.1 start line"};
    }
    std::vector<std::string> headers = readFields(bis, line, false);

    bool chunked = false;
    bool gzip = false;
    long long length = -1;
    for (std::string const& field : headers) {
        std::size_t colon = field.find(':');
        if (colon == std::string::npos) {
            throw ToolError{"malformed header line: " + field};
        }
        std::string name = field.substr(0, colon);
        std::string value = field.substr(colon + 1);
        if (equalsIgnoringCase(name, "Transfer-Encoding")) {
            chunked = listsToken(value, "chunked");
        } else if (equalsIgnoringCase(name, "Content-Encoding")) {
            gzip = listsToken(value, "gzip") || listsToken(value, "x-gzip");
        } else if (equalsIgnoringCase(name, "Content-Length")) {
            char* end = nullptr;
            length = std::strtoll(value.c_str(), &end, 10);
            if (length < 0 || length > 0x7fffffff || end == value.c_str()) {
                throw ToolError{"unusable Content-Length: " + value};
            }
        }
    }

    auto text = [&out](std::string const& s) { out.write(s.data(), static_cast<int>(s.size())); };
    if (!bodyOnly) {
        text("== start line ==\n" + start + "\n== headers ==\n");
        for (std::string const& field : headers) {
            text(field + "\n");
        }
        text(std::string("== body") + (chunked ? ", chunked" : "") + (gzip ? ", gzip" : "") + " ==\n");
    }

    // The body's framing: chunked, a block of Content-Length bytes, or the
    // rest of the input.
    ZUMChunkedInputStream chunkedBody(bis);
    ZUMBlockInputStream blockBody(bis);
    ZUMInputStream* body = &bis;
    if (chunked) {
        body = &chunkedBody;
    } else if (length >= 0) {
        blockBody.resetBlockSize(static_cast<int>(length));
        body = &blockBody;
    }

    if (gzip) {
        ZUMGZIPInputStream gunzip(*body);
        copy(gunzip, out, buf);
        gunzip.unWrap();  // hands read-ahead back to the framing stream
    }
    // Whatever the framing still holds (all of the body without gzip).
    copy(*body, out, buf);

    std::vector<std::string> trailer;
    if (chunked) {
        trailer = readFields(bis, line, true);
    }
    if (!bodyOnly) {
        text("\n== trailer ==\n");
        for (std::string const& field : trailer) {
            text(field + "\n");
        }
    }
}

void gunzip(ZUMInputStream& src, ZUMOutputStream& out, std::vector<char>& buf)
{
    ZUMBufferedInputStream bis(src, k_io_size);
    ZUMGZIPInputStream gz(bis);
    for (;;) {
        copy(gz, out, buf);
        gz.unWrap();  // the bytes behind the member go back to bis
        int next = bis.read();
        if (next < 0) {
            return;
        }
        char first = static_cast<char>(next);
        bis.unread(&first, 1);
        gz.wrap(bis);  // the next member
    }
}

struct Options {
    Operation const* op = nullptr;
    std::string file;
    bool hasFile = false;
    bool body = false;
    bool progress = false;
    int size = 4096;
    int wrap = 0;
};

int parseNumber(char const* text, char const* what, int low, int high)
{
    char* end = nullptr;
    long value = text ? std::strtol(text, &end, 10) : 0;
    if (!text || *text == '\0' || *end != '\0' || value < low || value > high) {
        throw ToolError{std::string(what) + " needs a number from " + std::to_string(low) + " to " +
                        std::to_string(high)};
    }
    return static_cast<int>(value);
}

// Parses the command line; returns -1 to go on, or an exit status.
int parse(int argc, char** argv, Options& o)
{
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            if (o.op) {
                std::printf("usage: zumcat [--progress] %s\n\n%s", o.op->synopsis, o.op->help);
            } else {
                printUsage(stdout);
            }
            return 0;
        }
        if (arg == "--progress") {
            o.progress = true;
        } else if (!o.op) {
            o.op = findOperation(arg);
            if (!o.op) {
                throw ToolError{"unknown operation '" + arg + "' (zumcat --help lists them)"};
            }
        } else if (arg == "--body" && std::strcmp(o.op->name, "http") == 0) {
            o.body = true;
        } else if (arg == "--size" && std::strcmp(o.op->name, "chunk") == 0) {
            o.size = parseNumber(i + 1 < argc ? argv[++i] : nullptr, "--size", 1, 1 << 24);
        } else if (arg == "--wrap" && std::strcmp(o.op->name, "base64") == 0) {
            o.wrap = parseNumber(i + 1 < argc ? argv[++i] : nullptr, "--wrap", 0, 65535);
        } else if (arg.size() > 1 && arg[0] == '-') {
            throw ToolError{"unknown option '" + arg + "' for " + o.op->name};
        } else if (!o.hasFile) {
            o.file = arg;
            o.hasFile = true;
        } else {
            throw ToolError{"only one input file may be given"};
        }
    }
    if (!o.op) {
        printUsage(stderr);
        return 2;
    }
    return -1;
}

void run(Options const& o)
{
    ZUMFileInputStream file;
    if (o.hasFile && o.file != "-") {
        file.tryOpen(o.file.c_str());
    } else {
        int fd = dup(STDIN_FILENO);
        file.tryOpen(fd);
    }
    ProgressInputStream progress(file);
    ZUMInputStream& src = o.progress ? static_cast<ZUMInputStream&>(progress) : file;
    ZUMFileOutputStream out(stdout, 0);
    std::vector<char> buf(static_cast<std::size_t>(k_io_size));

    std::string name = o.op->name;
    if (name == "http") {
        http(src, out, o.body, buf);
    } else if (name == "gunzip") {
        gunzip(src, out, buf);
    } else if (name == "gzip") {
        ZUMGZIPOutputStream gz(out);
        static char const none = 0;
        gz.write(&none, 0);  // an empty input still gives a complete member
        copy(src, gz, buf);
        gz.finish();
    } else if (name == "unchunk") {
        ZUMChunkedInputStream chunked(src, k_io_size);
        copy(chunked, out, buf);
    } else if (name == "chunk") {
        ZUMChunkedOutputStream chunked(out, o.size);
        copy(src, chunked, buf);
        chunked.close();
    } else if (name == "base64") {
        ZUMBase64OutputStream b64(out);
        b64.lineBreak(static_cast<unsigned short>(o.wrap));
        copy(src, b64, buf);
        b64.flush();
    } else if (name == "unbase64") {
        ZUMBufferedInputStream bis(src, k_io_size);
        LineBreakDroppingInputStream text(bis);
        ZUMBase64InputStream b64;  // completes groups that arrive in pieces
        b64.wrap(text);
        copy(b64, out, buf);
        b64.unWrap();
    } else if (name == "xml-escape") {
        ZUMXmlEncodeOutputStream xml(out);
        copy(src, xml, buf);
    }
    out.flush();
    if (std::ferror(stdout)) {
        throw ToolError{std::string("cannot write to standard output: ") + std::strerror(errno)};
    }
    if (o.progress) {
        progress.report(true);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    Options options;
    try {
        int status = parse(argc, argv, options);
        if (status >= 0) {
            return status;
        }
        run(options);
        return 0;
    } catch (ToolError const& e) {
        std::fprintf(stderr, "zumcat: %s\n", e.text.c_str());
    } catch (RVKThrowable const& e) {
        std::fflush(stdout);
        std::fprintf(stderr, "zumcat: %s%s\n", options.op ? options.op->name : "",
                     (": " + describe(e)).c_str());
    } catch (char const* text) {
        std::fprintf(stderr, "zumcat: %s\n", text);
    } catch (std::exception const& e) {
        std::fprintf(stderr, "zumcat: %s\n", e.what());
    }
    return 1;
}
