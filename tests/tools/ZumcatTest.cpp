// zumcat end to end: every operation round-trips with its inverse over the
// fixtures, the decoders agree with independent producers, and bad input
// gives one line on standard error and exit status 1.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

struct Result { int status; std::string out, err; };

// Runs zumcat with `args` on `input` (given as a file).
Result zumcat(std::string const& args, std::string const& input, TempDir const& dir)
{
    std::string command = std::string(ZUMCAT_PATH) + " " + args + " " + shellQuoted(dir.write("in", input)) + " >" +
                          shellQuoted(dir.file("out")) + " 2>" + shellQuoted(dir.file("err"));
    int raw = std::system(command.c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readFile(dir.file("out")), readFile(dir.file("err"))};
}

}  // namespace

TEST(Zumcat, EveryOperationRoundTripsDecodesOthersOutputAndHasHelp)
{
    TempDir dir;
    std::string const inputs[] = {"", "x", dataFile("gzip/mixed.content"), dataFile("chunked/nginx_ssi.expected"),
                                  testBytes(70000, 7)};
    struct Pair { char const *encode, *decode; } const pairs[] = {
        {"gzip", "gunzip"}, {"chunk --size 1", "unchunk"}, {"chunk", "unchunk"}, {"chunk --size 16384", "unchunk"},
        {"base64", "unbase64"}, {"base64 --wrap 76", "unbase64"},
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
        Result help = zumcat(op + " --help", "", dir);
        EXPECT_TRUE(help.status == 0 && help.out.find("usage: zumcat [--progress] " + op) == 0) << help.out;
    }
}

TEST(Zumcat, HttpPrintsHeadersBodyAndTrailerOfTheCapturedResponse)
{
    TempDir dir;
    std::string sample = readFile(ZUM_SOURCE_DIR "/examples/http-sample/sample-response.http");
    std::string body = readFile(ZUM_SOURCE_DIR "/examples/http-sample/sample-body.txt");
    ASSERT_FALSE(sample.empty());
    Result only = zumcat("http --body", sample, dir);
    EXPECT_EQ(only.status, 0) << only.err;
    EXPECT_EQ(only.out, body);
    Result full = zumcat("http", sample, dir);
    EXPECT_EQ(full.status, 0) << full.err;
    EXPECT_EQ(full.out.find("== start line ==\nHTTP/1.1 200 OK\n== headers ==\n"), 0u);
    EXPECT_NE(full.out.find("Content-Encoding: gzip\n"), std::string::npos);
    EXPECT_NE(full.out.find("== body, chunked, gzip ==\n" + body + "\n== trailer ==\nX-Served-By: zum-sample\n"),
              std::string::npos);
    // A plain response framed by Content-Length: the bytes behind it are not body.
    EXPECT_EQ(zumcat("http --body", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhelloEXTRA", dir).out, "hello");
}

TEST(Zumcat, BadInputGivesOneLineNamingTheFault)
{
    TempDir dir;
    std::string member = dataFile("gzip/gzip-9-name.gz"), bad_crc = member, bad_length = member;
    bad_crc[bad_crc.size() - 8] ^= 0x55;
    bad_length[bad_length.size() - 1] ^= 0x01;
    struct Case { std::string args, input, says; } const cases[] = {
        {"gunzip", "GET /index.html HTTP/1.1\r\nHost: example\r\n\r\n", "not in gzip format"},
        {"gunzip", member.substr(0, member.size() / 2), "ended before the gzip header or trailer"},
        {"gunzip", bad_crc, "CRC-32 mismatch"},
        {"gunzip", bad_length, "length mismatch"},
        {"gunzip", std::string("\x1f\x8b\x08\x20\0\0\0\0\0\0xxxxxxxx", 18), "unknown gzip header flags"},
        {"unbase64", "QUJD*===", "RVK_ASSERT(sta == 0);"},
        {"http", "", "no HTTP start line"},
        {"http", "HTTP/1.1 200 OK\r\nServer: x\r\n", "ended inside the header lines"},
        {"chunk --size 0", "", "--size needs a number"},
        {"frobnicate", "", "unknown operation 'frobnicate'"},
        {"gunzip /nonexistent/file.gz", "", "only one input file"},
    };
    for (Case const& c : cases) {
        Result r = zumcat(c.args, c.input, dir);
        EXPECT_EQ(r.status, 1) << c.args;
        EXPECT_NE(r.err.find(c.says), std::string::npos) << c.args << " said: " << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << c.args << " said: " << r.err;
    }
    std::string command = ZUMCAT_PATH " gunzip /nonexistent/file.gz 2>" + shellQuoted(dir.file("err"));
    EXPECT_NE(std::system(command.c_str()), 0);
    EXPECT_EQ(readFile(dir.file("err")),
              "zumcat: gunzip: the file cannot be opened for reading: /nonexistent/file.gz: "
              "No such file or directory\n");
}
