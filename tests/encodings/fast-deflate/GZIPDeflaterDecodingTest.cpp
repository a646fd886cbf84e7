// The members that the gzip output stream writes with ISA-L's deflater (fast
// deflate build only) decode to their content with zlib, the gzip program and
// Python's gzip module, whatever the pieces the content was written in.

#include <gtest/gtest.h>

#include <random>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

// Content of a random kind and size: incompressible bytes, text, runs of a
// byte, or a mix of the three.
std::string generatedContent(std::mt19937& rng)
{
    static std::size_t const scales[] = {1, 100, 4096, 65536, 300000};
    std::size_t n = rng() % scales[rng() % 5];
    switch (rng() % 4) {
    case 0:
        return testBytes(n, rng());
    case 1:
        return mixedData(n, rng());
    case 2:
        return std::string(n, static_cast<char>(rng()));
    default:
        return mixedData(n / 2, rng()) + std::string(n / 4, 'a') + testBytes(n / 4, rng());
    }
}

struct Sample {
    std::string name;
    std::string content;
};

// The contents of the gzip fixtures, then generated contents.
std::vector<Sample> samples()
{
    std::vector<Sample> all;
    for (char const* name : {"empty.content", "hello.content", "mixed.content"}) {
        all.push_back({name, dataFile(std::string("gzip/") + name)});
    }
    std::mt19937 rng(22);
    for (int i = 0; i < 60; ++i) {
        all.push_back({"generated-" + std::to_string(i), generatedContent(rng)});
    }
    return all;
}

// Write patterns: the sizes of the writes, taken in turn (0: a write of
// nothing in the middle of the member).
std::vector<std::vector<std::size_t>> const k_patterns = {
    {std::size_t(1) << 30}, {16384}, {4999, 0, 70000}, {1, 7, 100, 3}};

}  // namespace

TEST(GZIPFastDeflate, MembersDecodeWithZlibGzipAndPython)
{
    TempDir dir;
    std::string list;
    for (Sample const& s : samples()) {
        for (std::size_t p = 0; p < k_patterns.size(); ++p) {
            if (p == 3 && s.content.size() > 20000) {
                continue;  // byte-sized writes on small contents only
            }
            RecordingOutputStream down;
            {
                ZUMGZIPOutputStream gz(down);
                writeInPieces(gz, s.content, k_patterns[p]);
            }  // the destructor finishes the member
            std::string const member = down.all();
            std::string const name = s.name + "-p" + std::to_string(p);
            EXPECT_TRUE(zlibInflate(member) == s.content) << name << ": " << zlibInflate(member).substr(0, 80);
            dir.write(name + ".gz", member);
            dir.write(name + ".want", s.content);
            list += name + "\n";
        }
    }
    dir.write("list", list);
    std::string const at = shellQuoted(dir.path());
    if (haveProgram("gzip")) {
        ASSERT_TRUE(runCommand("cd " + at + " && while read -r n; do gzip -dc < \"$n.gz\" | "
                               "cmp -s - \"$n.want\" || echo \"$n\"; done < list > gzip.bad"));
        EXPECT_EQ(readFile(dir.file("gzip.bad")), "") << "members that gzip -dc does not decode to their content";
    }
    if (haveProgram("python3")) {
        dir.write("check.py", R"(import gzip
for n in open("list").read().split():
    try:
        ok = gzip.decompress(open(n + ".gz", "rb").read()) == open(n + ".want", "rb").read()
    except Exception:
        ok = False
    if not ok:
        print(n)
)");
        ASSERT_TRUE(runCommand("cd " + at + " && python3 check.py > python.bad"));
        EXPECT_EQ(readFile(dir.file("python.bad")), "") << "members that Python's gzip does not decode right";
    }
}
