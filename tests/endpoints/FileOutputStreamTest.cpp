#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "RVKCore.h"
#include "TempDir.h"
#include "ZUMFileInputStream.h"
#include "ZUMFileOutputStream.h"

TEST(FileOutputStream, OpenErrorNamesThePathAndTheSystemText)
{
    TempDir dir;
    std::string inMissing = dir.file("out/data.bin");
    std::string longPath = dir.file("missing/" + std::string(200, 'x'));
    struct Case { std::string path; std::string shown; char const* error; } cases[] = {
        {inMissing, inMissing, "No such file or directory"},
        {dir.path(), dir.path(), "Is a directory"},
        {longPath, longPath.substr(0, 128), "No such file or directory"},
    };
    for (auto const& c : cases) {
        for (int flag : {0, 1}) {
            SCOPED_TRACE(c.path + " flag " + std::to_string(flag));
            try {
                ZUMFileOutputStream out(c.path.c_str(), flag);
                ADD_FAILURE() << "no exception";
            } catch (RVKAssertError const& e) {
                EXPECT_EQ(e.getCode(), 0);
                EXPECT_EQ(std::string(e.getText()), "The file " + c.shown +
                          " does not open successfully for writing. [" + c.error + "]");
                ASSERT_EQ(e.getBackTraceSize(), 1u);
                EXPECT_EQ(e.getBackTraceEntry(0).method, nullptr);
                EXPECT_STREQ(e.getBackTraceEntry(0).macro, "RVK_THROW");
            }
        }
    }
}

TEST(FileOutputStream, TruncatesAnExistingFileInBothModes)
{
    TempDir dir;
    for (int flag : {0, 1}) {
        SCOPED_TRACE(flag);
        std::string path = dir.write("f", "old content");
        {
            ZUMFileOutputStream out(path.c_str(), flag);
            EXPECT_EQ(slurp(path), "");
            out.write("new", 3);
        }
        EXPECT_EQ(slurp(path), "new");
    }
}

TEST(FileOutputStream, FlushHandsBytesToTheFileAndCloseEndsWriting)
{
    TempDir dir;
    std::string path = dir.file("f");
    ZUMFileOutputStream out(path.c_str(), 0);
    out.write("ab", 2);
    out.write(nullptr, 5);
    out.write("zz", -1);
    out.flush();
    EXPECT_EQ(slurp(path), "ab");
    out.write("c", 1);
    out.close();
    EXPECT_EQ(slurp(path), "abc");
    out.write("d", 1);
    out.flush();
    out.close();
    EXPECT_EQ(slurp(path), "abc");

    ZUMFileOutputStream none(static_cast<char const*>(nullptr), 0);
    none.write("x", 1);
    none.flush();
    none.close();
}

TEST(FileOutputStream, ClosesAHandedInFileOnlyWhenOwnedOrClosed)
{
    TempDir dir;
    std::string path = dir.file("f");
    struct Case { int owns; bool callClose; bool openAfter; } cases[] = {
        {0, false, true}, {1, false, false}, {0, true, false}, {1, true, false},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(testing::Message() << "owns " << c.owns << " close " << c.callClose);
        FILE* f = std::fopen(path.c_str(), "wb");
        ASSERT_NE(f, nullptr);
        int fd = fileno(f);
        {
            ZUMFileOutputStream out(f, c.owns);
            out.write("x", 1);
            if (c.callClose) {
                out.close();
                EXPECT_FALSE(fdIsOpenOn(fd, path));
            }
        }  // a second fclose here would be caught by the sanitizers
        EXPECT_EQ(fdIsOpenOn(fd, path), c.openAfter);
        if (c.openAfter) {
            std::fclose(f);
        }
        EXPECT_EQ(slurp(path), "x");
    }
}

TEST(FileStreams, WrittenFileReadsBackByteIdentical)
{
    TempDir dir;
    std::mt19937 random(5);
    for (std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{5} << 20}) {
        SCOPED_TRACE(size);
        std::string data(size, '\0');
        for (char& b : data) b = static_cast<char>(random());
        if (size > 0) data[0] = '\xff';
        std::string path = dir.file("round.bin");
        {
            ZUMFileOutputStream out(path.c_str(), 0);
            for (std::size_t at = 0; at < size; at += 65521) {
                out.write(data.data() + at, static_cast<int>(std::min<std::size_t>(65521, size - at)));
            }
        }
        ZUMFileInputStream in(path.c_str());
        RVKByteBuffer back(1024, 1024);
        while (in.read(back, 100000) != -1) {
        }
        ASSERT_EQ(static_cast<std::size_t>(back.pcount()), size);
        EXPECT_TRUE(std::string(back.str(), size) == data);
    }
}
