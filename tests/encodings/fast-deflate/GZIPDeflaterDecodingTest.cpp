// The members that the gzip output stream writes with ISA-L's deflater (fast
// deflate build only) decode to their content with zlib, the gzip program and
// Python's gzip module, whatever the pieces the content was written in.
// Random contents and write schedules against zlib: fuzz target roundtrip_gzip_isal.

#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

TEST(GZIPFastDeflate, MembersDecodeWithZlibGzipAndPython)
{
    // The gzip fixtures' contents, then incompressible bytes, text and runs of
    // a byte, from one byte to past the 64 KiB history window.
    std::vector<std::string> contents;
    for (char const* name : {"empty", "hello", "mixed"}) {
        contents.push_back(dataFile(std::string("gzip/") + name + ".content"));
    }
    for (std::size_t n : {1, 4096, 300000}) {
        contents.insert(contents.end(), {testBytes(n, n), mixedData(n, n + 1), std::string(n, 'a')});
    }
    // Write sizes, taken in turn (0: a write of nothing in the middle of the member).
    std::vector<std::size_t> const patterns[] = {{std::size_t(1) << 30}, {4999, 0, 70000}, {1, 7, 100, 3}};
    TempDir dir;
    std::string list;
    for (std::size_t i = 0; i < contents.size(); ++i) {
        for (std::size_t p = 0; p < 3; ++p) {
            RecordingOutputStream down;
            {
                ZUMGZIPOutputStream gz(down);
                writeInPieces(gz, contents[i], patterns[p]);
            }  // the destructor finishes the member
            std::string const name = std::to_string(i) + "-p" + std::to_string(p);
            EXPECT_TRUE(zlibInflate(down.all()) == contents[i]) << name;
            dir.write(name + ".gz", down.all());
            dir.write(name + ".want", contents[i]);
            list += name + "\n";
        }
    }
    dir.write("list", list);
    std::string const at = "cd " + shellQuoted(dir.path()) + " && ";
    if (haveProgram("gzip")) {
        ASSERT_TRUE(runCommand(at + "while read -r n; do gzip -dc < \"$n.gz\" | cmp -s - \"$n.want\" || "
                                    "echo \"$n\"; done < list > gzip.bad"));
        EXPECT_EQ(readFile(dir.file("gzip.bad")), "") << "members that gzip -dc does not decode to their content";
    }
    if (haveProgram("python3")) {
        dir.write("check.py", "import gzip\n"
                              "def read(path): return open(path, 'rb').read()\n"
                              "for n in open('list').read().split():\n"
                              "    if gzip.decompress(read(n + '.gz')) != read(n + '.want'): print(n)\n");
        ASSERT_TRUE(runCommand(at + "python3 check.py > python.bad"));  // fails too on a member Python rejects
        EXPECT_EQ(readFile(dir.file("python.bad")), "") << "members that Python's gzip does not decode right";
    }
}
