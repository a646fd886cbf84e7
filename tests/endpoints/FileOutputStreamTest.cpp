#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

TEST(FileOutputStream, OpenErrorNamesThePathAndTheSystemText)
{
    TempDir dir;
    std::string in_missing = dir.file("out/data.bin"), long_path = dir.file("missing/" + std::string(200, 'x'));
    struct Case { std::string path, shown; char const* error; } const cases[] = {
        {in_missing, in_missing, "No such file or directory"},
        {dir.path(), dir.path(), "Is a directory"},
        {long_path, long_path.substr(0, 128), "No such file or directory"},
    };
    for (auto const& c : cases) {
        for (int flag : {0, 1}) {
            EXPECT_EQ(raised([&] { ZUMFileOutputStream out(c.path.c_str(), flag); }),
                      "RVKAssertError(The file " + c.shown + " does not open successfully for writing. [" + c.error +
                          "]) @-");
        }
    }
}

// Both modes truncate; flush hands the bytes to the file, close ends writing,
// and nothing is reported after opening.
TEST(FileOutputStream, TruncatesWritesAndEndsWritingAtClose)
{
    TempDir dir;
    for (int flag : {0, 1}) {
        std::string path = dir.write("f", "old content");
        ZUMFileOutputStream out(path.c_str(), flag);
        EXPECT_EQ(readFile(path), "");
        out.write("ab", 2);
        out.write(nullptr, 5);
        out.write("zz", -1);
        out.flush();
        EXPECT_EQ(readFile(path), "ab");
        out.write("c", 1);
        out.close();
        out.write("d", 1);
        out.flush();
        out.close();
        EXPECT_EQ(readFile(path), "abc");
    }
    ZUMFileOutputStream none(static_cast<char const*>(nullptr), 0);
    none.write("x", 1);
    none.flush();
    none.close();
}

TEST(FileOutputStream, ClosesAHandedInFileOnlyWhenOwnedOrClosed)
{
    TempDir dir;
    std::string path = dir.file("f");
    struct Case { int owns; bool call_close, open_after; } const cases[] = {
        {0, false, true}, {1, false, false}, {0, true, false}, {1, true, false}};
    for (auto const& c : cases) {
        FILE* f = std::fopen(path.c_str(), "wb");
        int fd = fileno(f);
        {
            ZUMFileOutputStream out(f, c.owns);
            out.write("x", 1);
            if (c.call_close) {
                out.close();
            }
        }  // a second fclose here would be caught by the sanitizers
        EXPECT_EQ(fdIsOpenOn(fd, path), c.open_after) << c.owns << c.call_close;
        if (c.open_after) {
            std::fclose(f);
        }
        EXPECT_EQ(readFile(path), "x");
    }
}

TEST(FileStreams, WrittenFileReadsBackByteIdentical)
{
    TempDir dir;
    std::string path = dir.file("round.bin");
    for (std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{5} << 20}) {
        std::string data = "\xff" + testBytes(size, 5);
        data.resize(size);
        {
            ZUMFileOutputStream out(path.c_str(), 0);
            writeInPieces(out, data, {65521});
        }
        ZUMFileInputStream in(path.c_str());
        EXPECT_TRUE(drain(in, 100000) == data) << size;
    }
}
