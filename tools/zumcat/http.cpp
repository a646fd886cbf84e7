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

// The chunked stream ends a body at the last chunk (size 0), at a size line
// it cannot use, or where the input ends; the last line it read tells which.
// Raises Failure unless it was the last chunk.
void checkChunkedEnd(InputBuffer const& input)
{
    if (input.lastLineLength() <= 0) {
        throw Failure{"the input ended before the last chunk of the chunked body"};
    }
    std::string const& line = input.lastLine();
    std::string const at = std::to_string(input.lastLineOffset());
    unsigned long long size = 0;
    std::size_t digits = 0;
    while (digits < line.size() && std::isxdigit(static_cast<unsigned char>(line[digits])) && size < 0x80000000ULL) {
        char c = static_cast<char>(std::tolower(static_cast<unsigned char>(line[digits++])));
        size = size * 16 + static_cast<unsigned>(c <= '9' ? c - '0' : c - 'a' + 10);
    }
    if (digits == 0) {
        throw Failure{"malformed chunk-size line at byte " + at};
    }
    if (size >= 0x80000000ULL) {
        throw Failure{"chunk size too large at byte " + at};
    }
    if (size > 0) {
        throw Failure{"the input ended inside the chunk of " + std::to_string(size) +
                      " bytes whose size line is at byte " + at};
    }
}

// Raises Failure when the body that started at input offset `start` ended
// before its framing said it would.
void checkBodyEnd(InputBuffer const& input, Framing const& framing, long long start)
{
    if (framing.chunked) {
        checkChunkedEnd(input);
    } else if (framing.length >= 0 && input.position() - start < framing.length) {
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
    // rest of the input.
    ZUMChunkedInputStream chunkedBody(input);
    ZUMBlockInputStream blockBody(input);
    ZUMInputStream* body = &input;
    if (framing.chunked) {
        body = &chunkedBody;
    } else if (framing.length >= 0) {
        blockBody.resetBlockSize(static_cast<int>(framing.length));
        body = &blockBody;
    }

    long long const bodyStart = input.position();
    long long garbageAt = -1;
    long long garbageBytes = 0;
    try {
        if (framing.gzip) {
            garbageAt = gunzipMembers(*body, input, out, buf, true);
        }
        if (garbageAt >= 0) {
            garbageBytes = drain(*body, buf);
        } else {
            copy(*body, out, buf);  // all of the body without gzip
        }
    } catch (ZUMIOException const& e) {
        // Compressed data cut short by the framing: the message is incomplete.
        if (e.hasMessage(ZUMMessage::GZIP_TRUNCATED)) {
            checkBodyEnd(input, framing, bodyStart);
        }
        throw;
    }
    checkBodyEnd(input, framing, bodyStart);

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
    if (garbageAt >= 0) {
        throw Failure{trailingGarbage(garbageBytes, garbageAt)};
    }
}

void unchunk(InputBuffer& input, ZUMOutputStream& out, std::vector<char>& buf)
{
    ZUMChunkedInputStream chunked(input);
    copy(chunked, out, buf);
    checkChunkedEnd(input);
    RVKByteBuffer line(256, 256);
    readFields(input, line, "trailer");
}

}  // namespace zumcat
