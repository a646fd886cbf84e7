#include "http.h"

#include <cctype>
#include <cstdlib>
#include <string>

#include "RVKCore.h"
#include "ZUMStreams.h"
#include "messages.h"
#include "operations.h"
#include "streams.h"

namespace zumcat {

namespace {

// ---- header fields ----------------------------------------------------------

// A line without its CR LF.
std::string lineText(RVKByteBuffer const& line)
{
    std::string text(line.str(), static_cast<std::size_t>(line.pcount()));
    if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0) {
        text.resize(text.size() - 2);
    }
    return text;
}

bool equalsIgnoringCase(std::string const& a, std::string const& b)
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

// Reads header lines (or trailer fields) up to the empty line that ends them.
std::vector<std::string> readFields(InputBuffer& input, RVKByteBuffer& line, char const* what)
{
    std::vector<std::string> fields;
    for (;;) {
        line.reset();
        if (input.readline(line) < 0) {
            throw Failure{std::string("the input ended before the empty line that ends the ") + what};
        }
        std::string text = lineText(line);
        if (text.empty()) {
            return fields;
        }
        fields.push_back(text);
    }
}

// What the header lines say about the body.
struct Framing {
    bool chunked = false;
    bool gzip = false;
    long long length = -1;  // Content-Length, -1 when not given
};

Framing framingOf(std::vector<std::string> const& headers)
{
    Framing framing;
    for (std::string const& field : headers) {
        std::size_t colon = field.find(':');
        if (colon == std::string::npos) {
            throw Failure{"malformed header line: " + field};
        }
        std::string name = field.substr(0, colon);
        std::string value = field.substr(colon + 1);
        if (equalsIgnoringCase(name, "Transfer-Encoding")) {
            framing.chunked = listsToken(value, "chunked");
        } else if (equalsIgnoringCase(name, "Content-Encoding")) {
            framing.gzip = listsToken(value, "gzip") || listsToken(value, "x-gzip");
        } else if (equalsIgnoringCase(name, "Content-Length")) {
            char* end = nullptr;
            framing.length = std::strtoll(value.c_str(), &end, 10);
            if (framing.length < 0 || framing.length > 0x7fffffff || end == value.c_str()) {
                throw Failure{"unusable Content-Length: " + value};
            }
        }
    }
    return framing;
}

// ---- the end of the body ----------------------------------------------------

// Raises Failure when a body of Content-Length bytes that started at input
// offset `start` ended before all of them came. A chunked body checks its own
// end.
void checkLength(InputBuffer const& input, Framing const& framing, long long start)
{
    if (!framing.chunked && framing.length >= 0 && input.position() - start < framing.length) {
        throw Failure{"the input ended after " + std::to_string(input.position() - start) + " of the " +
                      std::to_string(framing.length) + " body bytes that Content-Length announces"};
    }
}

}  // namespace

void http(InputBuffer& input, ZUMOutputStream& out, bool bodyOnly, std::vector<char>& buf)
{
    RVKByteBuffer line(256, 256);
    if (input.readline(line) < 0) {
        throw Failure{"the input is empty: no HTTP start line"};
    }
    std::string start = lineText(line);
    if (start.compare(0, 5, "HTTP/") != 0 && start.find(" HTTP/") == std::string::npos) {
        throw Failure{"the input does not begin with an HTTP/1.1 start line"};
    }
    std::vector<std::string> headers = readFields(input, line, "header lines");
    Framing framing = framingOf(headers);

    auto text = [&out](std::string const& s) { out.write(s.data(), static_cast<int>(s.size())); };
    if (!bodyOnly) {
        text("== start line ==\n" + start + "\n== headers ==\n");
        for (std::string const& field : headers) {
            text(field + "\n");
        }
        text(std::string("== body") + (framing.chunked ? ", chunked" : "") + (framing.gzip ? ", gzip" : "") +
             " ==\n");
    }

    // The body's framing: chunked, a block of Content-Length bytes, or the
    // rest of the input. The chunked stream reads through `input`, so the
    // trailer stays there.
    ZUMStrictChunkedInputStream chunkedBody(input);
    ZUMBlockInputStream blockBody(input);
    ZUMInputStream* body = &input;
    if (framing.chunked) {
        body = &chunkedBody;
    } else if (framing.length >= 0) {
        blockBody.resetBlockSize(static_cast<int>(framing.length));
        body = &blockBody;
    }

    long long const bodyStart = input.position();
    std::string garbage;
    try {
        if (framing.gzip && checkGzipMagic(*body)) {
            ZUMMultiMemberGZIPInputStream gz(*body);
            try {
                copy(gz, out, buf);
            } catch (ZUMIOException const& e) {
                if (e.hasMessage(ZUMMessage::CHUNKED_MALFORMED) || e.hasMessage(ZUMMessage::CHUNKED_TRUNCATED)) {
                    throw;
                }
                if (e.hasMessage(ZUMMessage::GZIP_TRUNCATED)) {
                    checkLength(input, framing, bodyStart);
                }
                // The gzip stream counts in the body's content, after the
                // chunked framing is taken off.
                if (!e.hasMessage(ZUMMessage::GZIP_TRAILING_GARBAGE)) {
                    throw Failure{describe(e) + " of the body's content"};
                }
                // The message goes on to its end; the garbage is named there.
                garbage = describe(e) + " of the body's content";
                drain(*body, buf);
            }
        } else {
            copy(*body, out, buf);
        }
    } catch (ZUMIOException const& e) {
        if (e.hasMessage(ZUMMessage::CHUNKED_MALFORMED) || e.hasMessage(ZUMMessage::CHUNKED_TRUNCATED)) {
            // The chunked stream counts from the body's first byte.
            throw Failure{describe(e) + " of the body, which begins at byte " + std::to_string(bodyStart)};
        }
        throw;
    }
    checkLength(input, framing, bodyStart);

    std::vector<std::string> trailer;
    if (framing.chunked) {
        trailer = readFields(input, line, "trailer");
    }
    if (!bodyOnly) {
        text("\n== trailer ==\n");
        for (std::string const& field : trailer) {
            text(field + "\n");
        }
    }
    if (!garbage.empty()) {
        throw Failure{garbage};
    }
}

void unchunk(InputBuffer& input, ZUMOutputStream& out, std::vector<char>& buf)
{
    ZUMStrictChunkedInputStream chunked(input);
    copy(chunked, out, buf);
    RVKByteBuffer line(256, 256);
    readFields(input, line, "trailer");
}

}  // namespace zumcat
