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
            EXPECT_EQ(encoded.status, 0) << pair.encode << ": " << encoded.err;
            EXPECT_EQ(decoded.status, 0) << pair.decode << ": " << decoded.err;
            EXPECT_TRUE(decoded.out == input) << pair.encode << " | " << pair.decode << ", " << input.size();
        }
    }
    // Several members in one input decode one after the other, as gzip -d does.
    Result both = zumcat("gunzip", dataFile("gzip/gzip-9-name.gz") + dataFile("gzip/py-flags-1e.gz"), dir);
    EXPECT_TRUE(both.out == dataFile("gzip/mixed.content") + dataFile("gzip/hello.content")) << both.err;

    for (std::string args : {"gunzip --help", "help gunzip"}) {
        Result help = zumcat(args, "", dir);
        EXPECT_EQ(help.status, 0) << args;
        EXPECT_EQ(help.out.find("usage: zumcat [--progress] gunzip"), 0u) << args;
    }
    for (char const* args : {"--help", "help"}) {
        Result help = zumcat(args, "", dir);
        EXPECT_EQ(help.status, 0);
        EXPECT_NE(help.out.find("Exit status: 0 success; 1 bad input"), std::string::npos) << help.out;
    }
    // http prints the start line, the headers, the body with its codings and
    // the trailer of the captured response.
    std::string const sample = ZUM_SOURCE_DIR "/examples/http-sample/sample-response.http";
    std::string body = readFile(ZUM_SOURCE_DIR "/examples/http-sample/sample-body.txt");
    Result full = zumcat("http", readFile(sample), dir);
    EXPECT_EQ(full.status, 0) << full.err;
    EXPECT_EQ(full.out.find("== start line ==\nHTTP/1.1 200 OK\n== headers ==\n"), 0u);
    EXPECT_NE(full.out.find("Content-Encoding: gzip\n"), std::string::npos);
    EXPECT_NE(full.out.find("== body, chunked, gzip ==\n" + body + "\n== trailer ==\nX-Served-By: zum-sample\n"),
              std::string::npos);
}

// The cases of tests/data/zumcat/cases.tsv: the output (on bad input, what
// was decoded before the failure), one plain line on standard error for a
// failure, and the documented exit status.
TEST(Zumcat, CasesGiveTheirOutputErrorLineAndStatus)
{
    TempDir dir;
    std::vector<std::vector<std::string>> const cases = dataTable("zumcat/cases.tsv");
    ASSERT_GE(cases.size(), 35u);
    for (auto const& c : cases) {
        Result r = zumcat(c.at(0), c.at(1), dir);
        EXPECT_EQ(r.status, std::stoi(c.at(2))) << c[0];
        EXPECT_TRUE(c.at(3) == "*" || r.out == c[3]) << c[0] << " wrote " << r.out.size() << " bytes";
        EXPECT_EQ(r.err, c.at(4).empty() ? "" : "zumcat: " + c[4] + "\n") << c[0];
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
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_EQ(r.err.rfind("/s\n") + 3, r.err.size()) << r.err;
    }
    // The reader of standard output goes away: no message, with SIGPIPE
    // taken by default or ignored.
    dir.write("big", testBytes(3000000, 5));
    for (char const* trap : {"", "trap '' PIPE; "}) {
        std::string command =
            "cd " + shellQuoted(dir.path()) + " && (" + trap + ZUMCAT_PATH " base64 big 2>err) | head -c 1";
        EXPECT_TRUE(runCommand(command + " >/dev/null")) << command;
        EXPECT_EQ(readFile(dir.file("err")), "") << command;
    }
    std::string full = "cd " + shellQuoted(dir.path()) + " && " ZUMCAT_PATH " base64 big >/dev/full 2>err";
    EXPECT_FALSE(runCommand(full));
    EXPECT_EQ(readFile(dir.file("err")), "zumcat: base64: cannot write to standard output: No space left on device\n");
}
