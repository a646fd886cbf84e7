#include "options.h"

#include <cstdlib>
#include <cstring>

#include "messages.h"
#include "operations.h"

#ifndef ZUM_VERSION
#error "ZUM_VERSION (the library's version) is set by the build"
#endif

namespace zumcat {

namespace {

Operation const k_operations[] = {
    {"http", "http [--body] [FILE]",
     "Reads a raw HTTP/1.1 message: the start line and header lines (CR LF), the body\n"
     "decoded by its Transfer-Encoding (chunked) or Content-Length and its\n"
     "Content-Encoding (gzip), then the trailer fields. Prints the start line, the\n"
     "headers, the body and the trailer under headings; with --body, the decoded\n"
     "body alone. Malformed chunked framing, and a message cut short (inside the\n"
     "body, before the last chunk, or before the empty line that ends the\n"
     "trailer), is an error, reported after what was decoded has been written.\n",
     runHttp},
    {"gunzip", "gunzip [FILE]",
     "Decompresses gzip data. Every member of a multi-member input is decoded in\n"
     "turn, as gzip -d does; NUL bytes after the last member are padding. Any other\n"
     "bytes after it are reported as trailing garbage (exit status 1, after all\n"
     "members have been written).\n",
     runGunzip},
    {"gzip", "gzip [FILE]", "Compresses the input into one gzip member.\n",
     runGzip},
    {"unchunk", "unchunk [FILE]",
     "Decodes a body in the HTTP/1.1 chunked transfer coding. A trailer after the\n"
     "last chunk is read but not printed. Malformed framing (a size line that is\n"
     "not hex digits and extensions, data not followed by CR LF), or a body\n"
     "without the last chunk or the empty line after the trailer, is an error,\n"
     "reported after the data.\n",
     runUnchunk},
    {"chunk", "chunk [--size N] [FILE]",
     "Writes the input in the HTTP/1.1 chunked transfer coding, in chunks of N\n"
     "bytes (1 to 16777216, default 4096), with the last chunk and an empty\n"
     "trailer.\n",
     runChunk},
    {"base64", "base64 [--wrap N] [FILE]",
     "Encodes the input as Base64, ended by a line break; with --wrap N, in lines\n"
     "of N characters (1 to 65535), each ended by CR LF (0, the default, writes\n"
     "one line ended by LF).\n",
     runBase64},
    {"unbase64", "unbase64 [FILE]",
     "Decodes Base64 text. CR, LF, tab and space are skipped wherever they stand,\n"
     "so text written with line breaks decodes too. Any other character outside the\n"
     "alphabet, misplaced '=' padding, or text that ends inside a group of four\n"
     "characters is an error naming the byte (counted from 0), reported after\n"
     "the bytes decoded before it.\n",
     runUnbase64},
    {"xml-escape", "xml-escape [FILE]",
     "Escapes the input for XML text and attribute values: & < > \" ' become\n"
     "references, control characters other than tab, LF and CR become numeric\n"
     "references; other bytes, UTF-8 included, pass unchanged.\n",
     runXmlEscape},
};

Operation const* findOperation(std::string const& name)
{
    for (Operation const& op : k_operations) {
        if (name == op.name) {
            return &op;
        }
    }
    return nullptr;
}

int parseNumber(char const* text, char const* what, int low, int high)
{
    char* end = nullptr;
    long value = text ? std::strtol(text, &end, 10) : 0;
    if (!text || *text == '\0' || *end != '\0' || value < low || value > high) {
        throw Usage{std::string(what) + " needs a number from " + std::to_string(low) + " to " +
                    std::to_string(high)};
    }
    return static_cast<int>(value);
}

}  // namespace

std::string usageText()
{
    std::string text = "usage: zumcat [--progress] OPERATION [OPTIONS] [FILE]\n\n"
                       "Reads FILE (or standard input, also for -) through the ZUM Streams\n"
                       "library and writes to standard output.\n\n"
                       "Operations:\n";
    for (Operation const& op : k_operations) {
        text += std::string("  zumcat ") + op.synopsis + "\n";
    }
    text += "\n"
            "  --progress  report bytes in and out and the rate on standard error: a\n"
            "              status line updated in place on a terminal (with percent and\n"
            "              time left when the input size is known), else one summary\n"
            "              line at the end\n"
            "  --help      this text; OPERATION --help (or help OPERATION) describes one\n"
            "  --version   the version of the library zumcat was built with\n"
            "\n"
            "Exit status: 0 success; 1 bad input (trailing garbage after gzip members\n"
            "included) or a read or write error, reported in one line on standard error\n"
            "after what was decoded has been written; 2 a command line that cannot be\n"
            "used. A closed pipe on standard output ends zumcat quietly.\n";
    return text;
}

std::string operationHelp(Operation const& op)
{
    return std::string("usage: zumcat [--progress] ") + op.synopsis + "\n\n" + op.help;
}

std::string versionText()
{
    return "zumcat " ZUM_VERSION " (ZUM Streams " ZUM_VERSION ")\n";
}

Options parseArguments(int argc, char** argv)
{
    Options o;
    bool hasFile = false;
    bool helpWord = false;  // "zumcat help [OPERATION]"
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            o.action = Options::HELP;
            return o;
        }
        if (arg == "--version" && !o.op) {
            o.action = Options::VERSION;
            return o;
        }
        if (arg == "--progress") {
            o.progress = true;
        } else if (helpWord) {
            o.op = findOperation(arg);
            if (!o.op) {
                throw Usage{"unknown operation '" + arg + "' (zumcat --help lists them)"};
            }
            return o;
        } else if (!o.op) {
            if (arg == "help") {
                helpWord = true;
                o.action = Options::HELP;
                continue;
            }
            o.op = findOperation(arg);
            if (!o.op) {
                throw Usage{"unknown operation '" + arg + "' (zumcat --help lists them)"};
            }
        } else if (arg == "--body" && std::strcmp(o.op->name, "http") == 0) {
            o.body = true;
        } else if (arg == "--size" && std::strcmp(o.op->name, "chunk") == 0) {
            o.size = parseNumber(i + 1 < argc ? argv[++i] : nullptr, "--size", 1, 1 << 24);
        } else if (arg == "--wrap" && std::strcmp(o.op->name, "base64") == 0) {
            o.wrap = parseNumber(i + 1 < argc ? argv[++i] : nullptr, "--wrap", 0, 65535);
        } else if (arg.size() > 1 && arg[0] == '-') {
            throw Usage{"unknown option '" + arg + "' for " + o.op->name};
        } else if (!hasFile) {
            o.file = arg;
            hasFile = true;
        } else {
            throw Usage{"only one input file may be given"};
        }
    }
    if (!o.op && o.action == Options::RUN) {
        throw Usage{"no operation given (zumcat --help lists them)"};
    }
    return o;
}

}  // namespace zumcat
