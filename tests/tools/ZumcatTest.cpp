// zumcat end to end, run as a person runs it: arguments, standard input,
// standard output, standard error and the exit status. Every operation
// round-trips with its inverse over the fixtures; bad input and bad command
// lines give one plain line and their documented status.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

struct Result { int status; std::string out, err; };

// Runs `zumcat ARGS` through the shell in `dir`, where the file "in" holds
// `input`. `shell` is the command line, "%" standing for zumcat with its
// arguments and its output going to the files "out" and "err".
Result zumcat(std::string const& args, std::string const& input, TempDir const& dir, std::string shell = "% <in")
{
    dir.write("in", input);
    shell.replace(shell.find('%'), 1, std::string(ZUMCAT_PATH) + " " + args + " >out 2>err");
    int raw = std::system(("cd " + shellQuoted(dir.path()) + " && " + shell).c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readFile(dir.file("out")), readFile(dir.file("err"))};
}

std::string const k_any = "\x01(any)";  // an output the case does not look at

}  // namespace

TEST(Zumcat, EveryOperationRoundTripsDecodesOthersOutputAndHasHelp)
{
    TempDir dir;
    std::string const inputs[] = {"", "x", dataFile("gzip/mixed.content"), dataFile("chunked/nginx_ssi.expected"),
                                  testBytes(70000, 7)};
    struct Pair { char const *encode, *decode; } const pairs[] = {
        {"gzip", "gunzip"}, {"chunk --size 1", "unchunk"}, {"chunk", "unchunk"}, {"chunk --size 16384", "unchunk"},
        {"base64", "unbase64"}, {"base64 --wrap 76", "unbase64 -"},
    };
    for (Pair const& pair : pairs) {
        for (std::string const& input : inputs) {
            Result encoded = zumcat(pair.encode, input, dir);
            Result decoded = zumcat(pair.decode, encoded.out, dir);
            EXPECT_EQ(encoded.status + decoded.status, 0) << pair.encode << ": " << encoded.err << decoded.err;
            EXPECT_TRUE(decoded.out == input) << pair.encode << " | " << pair.decode << ", " << input.size();
        }
    }
    EXPECT_EQ(zumcat("xml-escape", "a<b>&\"'\x01\t\xc3\xa9", dir).out, "a&lt;b&gt;&amp;&quot;&#39;&#1;\t\xc3\xa9");
    // Several members in one input decode one after the other, as gzip -d does.
    Result both = zumcat("gunzip", dataFile("gzip/gzip-9-name.gz") + dataFile("gzip/py-flags-1e.gz"), dir);
    EXPECT_TRUE(both.out == dataFile("gzip/mixed.content") + dataFile("gzip/hello.content")) << both.err;
    EXPECT_EQ(zumcat("unchunk", dataFile("chunked/nginx_gzip.body"), dir).out, dataFile("chunked/nginx_gzip.expected"));

    for (std::string op : {"http", "gunzip", "gzip", "unchunk", "chunk", "base64", "unbase64", "xml-escape"}) {
        for (std::string args : {op + " --help", "help " + op}) {
            Result help = zumcat(args, "", dir);
            EXPECT_TRUE(help.status == 0 && help.out.find("usage: zumcat [--progress] " + op) == 0) << args;
        }
    }
    for (char const* args : {"--help", "help"}) {
        Result help = zumcat(args, "", dir);
        EXPECT_EQ(help.status, 0);
        EXPECT_NE(help.out.find("Exit status: 0 success; 1 bad input"), std::string::npos) << help.out;
    }
    // --version names the version the build gave the project.
    std::string const cmake = readFile(ZUM_SOURCE_DIR "/CMakeLists.txt"), key = "project(ZUMStreams VERSION ";
    std::size_t at = cmake.find(key);
    ASSERT_NE(at, std::string::npos);
    std::string version = cmake.substr(at + key.size(), cmake.find_first_of(" )", at + key.size()) - at - key.size());
    Result shown = zumcat("--version", "", dir);
    EXPECT_EQ(shown.out, "zumcat " + version + " (ZUM Streams " + version + ")\n");
    EXPECT_EQ(shown.status, 0);
}

TEST(Zumcat, Base64OutputEndsWithALineBreak)
{
    TempDir dir;
    std::string abc57, text76;  // one full line of 76 characters
    for (int i = 0; i < 19; ++i) {
        abc57 += "abc";
        text76 += "YWJj";
    }
    struct Case { char const* args; std::string input, out; } const cases[] = {
        {"base64", "", ""},
        {"base64", "abc", "YWJj\n"},
        {"base64", "abcd", "YWJjZA==\n"},
        {"base64 --wrap 4", "abc", "YWJj\r\n"},
        {"base64 --wrap 4", "abcd", "YWJj\r\nZA==\r\n"},
        {"base64 --wrap 76", abc57, text76 + "\r\n"},
    };
    for (Case const& c : cases) {
        Result r = zumcat(c.args, c.input, dir);
        EXPECT_EQ(r.out, c.out) << c.args << " on " << c.input.size() << " bytes";
        EXPECT_EQ(r.status, 0);
    }
}

TEST(Zumcat, HttpPrintsHeadersBodyAndTrailerOfTheCapturedResponse)
{
    TempDir dir;
    std::string const path = ZUM_SOURCE_DIR "/examples/http-sample/sample-response.http";
    std::string body = readFile(ZUM_SOURCE_DIR "/examples/http-sample/sample-body.txt");
    Result only = zumcat("http --body " + shellQuoted(path), "", dir);
    EXPECT_EQ(only.status, 0) << only.err;
    EXPECT_EQ(only.out, body);
    Result full = zumcat("http", readFile(path), dir);
    EXPECT_EQ(full.status, 0) << full.err;
    EXPECT_EQ(full.out.find("== start line ==\nHTTP/1.1 200 OK\n== headers ==\n"), 0u);
    EXPECT_NE(full.out.find("Content-Encoding: gzip\n"), std::string::npos);
    EXPECT_NE(full.out.find("== body, chunked, gzip ==\n" + body + "\n== trailer ==\nX-Served-By: zum-sample\n"),
              std::string::npos);
    // A plain response framed by Content-Length: the bytes behind it are not body.
    EXPECT_EQ(zumcat("http --body", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhelloEXTRA", dir).out, "hello");
}

TEST(Zumcat, FailuresGiveOnePlainLineAfterTheDecodedOutputAndTheirStatus)
{
    TempDir dir;
    std::string member = dataFile("gzip/gzip-9-name.gz"), content = dataFile("gzip/mixed.content");
    std::string bad_crc = member, bad_length = member;
    bad_crc[bad_crc.size() - 8] ^= 0x55;
    bad_length[bad_length.size() - 1] ^= 0x01;
    std::string const sample = readFile(ZUM_SOURCE_DIR "/examples/http-sample/sample-response.http");
    std::string const ok = "HTTP/1.1 200 OK\r\n", chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
    std::string const gzipped = ok + "Content-Encoding: gzip\r\nContent-Length: " + std::to_string(member.size() + 2) +
                                "\r\n\r\n" + member + "xy";
    struct Case { std::string args, input; int status; std::string err, out; } const cases[] = {
        {"gunzip", "hello\n", 1, "gunzip: the input is not in gzip format", ""},
        {"gunzip", "hello world, as text\n", 1, "gunzip: the input is not in gzip format", ""},  // FEXTRA set
        {"gunzip", member + "junk", 1,
         "gunzip: trailing garbage ignored: 4 bytes after the last gzip member, from byte " +
             std::to_string(member.size()),
         content},
        {"gunzip", member.substr(0, member.size() / 2), 1,
         "gunzip: the compressed input ended before the gzip header or trailer was complete", k_any},
        {"gunzip", bad_crc, 1, "gunzip: CRC-32 mismatch: the data does not match the checksum in the gzip trailer",
         k_any},
        {"gunzip", bad_length, 1,
         "gunzip: length mismatch: the data does not match the length in the gzip trailer", k_any},
        {"gunzip", std::string("\x1f\x8b\x08\x20\0\0\0\0\0\0xxxxxxxx", 18), 1,
         "gunzip: unsupported compression method or unknown gzip header flags", ""},
        {"unbase64", "YWJj!!!!", 1, "unbase64: invalid Base64 character '!' at byte 4", "abc"},
        {"unbase64", std::string("YWJj\r\nZA\0=", 10), 1, "unbase64: invalid Base64 character 0x00 at byte 8", "abc"},
        {"unbase64", "YWJjZA\n", 1,
         "unbase64: the Base64 text ends inside a group of four characters: 2 left over from byte 4", "abc"},
        {"unbase64", "a=b\n", 1, "unbase64: misplaced Base64 padding '=' at byte 1", ""},
        {"unbase64", "YWJjYQ=A", 1, "unbase64: misplaced Base64 padding '=' at byte 6", "abc"},
        {"http", "", 1, "http: the input is empty: no HTTP start line", ""},
        {"http", ok + "Server: x\r\n", 1, "http: the input ended before the empty line that ends the header lines",
         ""},
        {"http --body", chunked + "5\r\nhel", 1,
         "http: the input ended inside the chunk of 5 bytes whose size line is at byte 47", "hel"},
        {"http --body", chunked + "5\r\nhello\r\n", 1, "http: the input ended before the last chunk of the chunked body",
         "hello"},
        {"http --body", chunked + "5\r\nhello\r\n0\r\nX: y\r\n", 1,
         "http: the input ended before the empty line that ends the trailer", "hello"},
        {"http --body", chunked + "5\r\nhello\r\nzz\r\n\r\n", 1, "http: malformed chunk-size line at byte 57", "hello"},
        {"http --body", ok + "Content-Length: 5\r\n\r\nhel", 1,
         "http: the input ended after 3 of the 5 body bytes that Content-Length announces", "hel"},
        {"http --body", sample.substr(0, sample.size() - 40), 1,
         "http: the input ended inside the chunk of 4371 bytes whose size line is at byte 28935", k_any},
        {"http --body", gzipped, 1,
         "http: trailing garbage ignored: 2 bytes after the last gzip member, from byte " +
             std::to_string(gzipped.size() - 2),
         content},
        {"unchunk", "5\r\nhello\r\n", 1, "unchunk: the input ended before the last chunk of the chunked body", "hello"},
        {"gunzip /nonexistent/file.gz", "", 1,
         "gunzip: the file cannot be opened for reading: /nonexistent/file.gz: No such file or directory", ""},
        {"chunk --size 0", "", 2, "--size needs a number from 1 to 16777216", ""},
        {"base64 --wrap", "", 2, "--wrap needs a number from 0 to 65535", ""},
        {"frobnicate", "", 2, "unknown operation 'frobnicate' (zumcat --help lists them)", ""},
        {"gzip --fast", "", 2, "unknown option '--fast' for gzip", ""},
        {"gunzip a.gz b.gz", "", 2, "only one input file may be given", ""},
    };
    for (Case const& c : cases) {
        Result r = zumcat(c.args, c.input, dir);
        EXPECT_EQ(r.status, c.status) << c.args;
        EXPECT_EQ(r.err, "zumcat: " + c.err + "\n") << c.args;
        EXPECT_TRUE(c.out == k_any || r.out == c.out) << c.args << " wrote " << r.out.size() << " bytes";
    }
    Result bare = zumcat("", "", dir);
    EXPECT_EQ(bare.status, 2);
    EXPECT_EQ(bare.err.find("zumcat: no operation given (zumcat --help lists them)\nusage: zumcat"), 0u) << bare.err;
}

TEST(Zumcat, ProgressReportsOnStandardErrorAndOutputFailuresAreNamedButBrokenPipesQuiet)
{
    TempDir dir;
    std::string const input = testBytes(70000, 3);
    // Not a terminal: one summary line at the end, whether the input is a
    // file or a pipe.
    for (char const* shell : {"% <in", "cat in | %"}) {
        Result r = zumcat("--progress gzip", input, dir, shell);
        EXPECT_EQ(r.status, 0);
        std::string figures = "zumcat: 70000 bytes in, " + std::to_string(r.out.size()) + " bytes out, ";
        EXPECT_EQ(r.err.find(figures), 0u) << r.err;  // then the time and the rate
        EXPECT_NE(r.err.find(" s, ", figures.size()), std::string::npos) << r.err;
        EXPECT_TRUE(std::count(r.err.begin(), r.err.end(), '\n') == 1 && r.err.rfind("/s\n") + 3 == r.err.size())
            << r.err;
    }
    // A terminal: a status line redrawn in place, with the percent of an
    // input whose size is known; a slow input shows more than one state.
    if (haveProgram("script")) {
        std::string tty = dir.file("tty");
        auto onTerminal = [&](std::string const& command) {
            std::string quoted = shellQuoted(command);
            std::system(("script -qec " + quoted + " /dev/null </dev/null >" + shellQuoted(tty)).c_str());
            return readFile(tty);
        };
        std::string in = dir.write("sized", input), zum = std::string(ZUMCAT_PATH);
        std::string shown = onTerminal(zum + " --progress gzip " + shellQuoted(in) + " >/dev/null");
        EXPECT_NE(shown.find("\rzumcat: 70.0 kB in, "), std::string::npos) << shown;
        EXPECT_NE(shown.find(", 100%, "), std::string::npos) << shown;
        shown = onTerminal("(printf abc; sleep 0.6; printf def) | " + zum + " --progress base64 >/dev/null");
        EXPECT_GE(std::count(shown.begin(), shown.end(), '\r'), 3) << shown;  // two states, then the line's end
        EXPECT_NE(shown.find("\rzumcat: 6 B in, 9 B out"), std::string::npos) << shown;
    } else {
        std::cout << "script (util-linux) is missing: the terminal status line is not checked\n";
    }
    // The reader of standard output goes away: no message, with SIGPIPE
    // taken by default or ignored.
    dir.write("big", testBytes(3000000, 5));
    for (char const* trap : {"", "trap '' PIPE; "}) {
        std::string command = "cd " + shellQuoted(dir.path()) + " && (" + trap + ZUMCAT_PATH " base64 big 2>err) | head -c 1";
        EXPECT_TRUE(runCommand(command + " >/dev/null")) << command;
        EXPECT_EQ(readFile(dir.file("err")), "") << command;
    }
    std::string full = "cd " + shellQuoted(dir.path()) + " && " ZUMCAT_PATH " base64 big >/dev/full 2>err";
    EXPECT_FALSE(runCommand(full));
    EXPECT_EQ(readFile(dir.file("err")), "zumcat: base64: cannot write to standard output: No space left on device\n");
}
