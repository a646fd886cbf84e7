#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <string>

#include "RVKCore.h"
#include "TempDir.h"
#include "ZUMFileInputStream.h"
#include "ZUMIOException.h"

namespace {

const unsigned long OPEN_FAILED = 0x91f2b0d2UL;
const unsigned long READ_FAILED = 0x91fe8ba5UL;
const char READ_BYTES[] = "int ZUMFileInputStream::read(char *, int)";
const char READ_BYTE[] = "int ZUMFileInputStream::read()";

std::string text(RVKMessageBase const& m)
{
    return dynamic_cast<RVKMessageString const&>(m).getString().c_str();
}

// Runs `call`, which must raise ZUMIOException, and checks everything it
// carries.
void expectIO(std::function<void()> const& call, long code, unsigned long number,
              std::string const& name, std::string const& error, char const* method)
{
    try {
        call();
        ADD_FAILURE() << "no exception";
    } catch (ZUMIOException const& e) {
        EXPECT_EQ(e.getSeverity(), 1);
        EXPECT_EQ(e.getCode(), code);
        ASSERT_EQ(e.getMessageCount(), 3u);
        auto const& catalog = dynamic_cast<RVKMessage const&>(e.getMessageAt(0));
        EXPECT_EQ(catalog.getMsgNumber(), number);
        EXPECT_STREQ(catalog.getMsgFile().c_str(), "rvkzummsgs");
        EXPECT_EQ(text(e.getMessageAt(1)), name);
        EXPECT_EQ(text(e.getMessageAt(2)), error);
        ASSERT_EQ(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, method);
        EXPECT_STREQ(e.getBackTraceEntry(0).macro, "RVK_THROW");
        EXPECT_NE(std::strstr(e.getBackTraceEntry(0).location.file, "ZUMFileInputStream"), nullptr);
    }
}

template <class Error>
void expectError(std::function<void()> const& call, char const* method)
{
    try {
        call();
        ADD_FAILURE() << "no exception";
    } catch (Error const& e) {
        EXPECT_EQ(e.getCode(), 0);
        ASSERT_EQ(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, method);
    }
}

}  // namespace

TEST(FileInputStream, MissingFileRaisesOnEveryReadUntilClosed)
{
    TempDir dir;
    std::string path = dir.file("missing.bin");
    ZUMFileInputStream in(path.c_str());
    EXPECT_FALSE(in.isOpen());
    char buf[8];
    expectIO([&] { in.read(); }, ENOENT, OPEN_FAILED, path, "No such file or directory", READ_BYTE);
    expectIO([&] { in.read(buf, 8); }, ENOENT, OPEN_FAILED, path, "No such file or directory", READ_BYTES);
    RVKByteBuffer bb(4, 4);
    expectIO([&] { in.read(bb, 8); }, ENOENT, OPEN_FAILED, path, "No such file or directory", READ_BYTES);
    EXPECT_EQ(bb.pcount(), 0);
    in.close();
    expectError<RVKIllegalStateError>([&] { in.read(); }, READ_BYTE);
    expectError<RVKIllegalStateError>([&] { in.read(buf, 8); }, READ_BYTES);
}

TEST(FileInputStream, TryOpenRaisesTheOpenErrorAtOnce)
{
    TempDir dir;
    std::string longPath = dir.file(std::string(150, 'n') + "/x");  // name kept whole
    std::string isDirFile = dir.write("plain", "x") + "/below";
    struct Case { std::string path; long code; char const* error; } cases[] = {
        {dir.file("missing.bin"), ENOENT, "No such file or directory"},
        {dir.file("no/such/dir.bin"), ENOENT, "No such file or directory"},
        {longPath, ENOENT, "No such file or directory"},
        {isDirFile, ENOTDIR, "Not a directory"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.path);
        ZUMFileInputStream in;
        expectIO([&] { in.tryOpen(c.path.c_str()); }, c.code, OPEN_FAILED, c.path, c.error,
                 "ZUMFileInputStream::tryOpen(const char*)");
        EXPECT_FALSE(in.isOpen());
    }
}

TEST(FileInputStream, DescriptorThatFdopenRefusesStaysTheCallers)
{
    TempDir dir;
    int fd = ::open(dir.file("w.bin").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_GE(fd, 0);
    ZUMFileInputStream in;
    EXPECT_FALSE(in.open(fd));  // not readable: glibc's fdopen refuses "rb"
    expectIO([&] { in.read(); }, EINVAL, OPEN_FAILED, "", "Invalid argument", READ_BYTE);
    expectIO([&] { in.tryOpen(fd); }, EINVAL, OPEN_FAILED, "", "Invalid argument",
             "ZUMFileInputStream::tryOpen(int)");
    EXPECT_TRUE(fdIsOpen(fd));
    ::close(fd);
    expectIO([&] { in.tryOpen(-1); }, EBADF, OPEN_FAILED, "", "Bad file descriptor",
             "ZUMFileInputStream::tryOpen(int)");
}

TEST(FileInputStream, NullFileOrPath)
{
    TempDir dir;
    std::string path = dir.write("a.bin", "ab");
    ZUMFileInputStream in;
    EXPECT_FALSE(in.open(static_cast<FILE*>(nullptr)));
    expectIO([&] { in.read(); }, EINVAL, OPEN_FAILED, "", "Invalid argument", READ_BYTE);
    EXPECT_FALSE(in.open(static_cast<char const*>(nullptr)));
    expectIO([&] { in.read(); }, EINVAL, OPEN_FAILED, "", "Invalid argument", READ_BYTE);

    // The tryOpen forms refuse null before they close anything.
    ASSERT_TRUE(in.open(path.c_str()));
    expectError<RVKIllegalArgumentError>([&] { in.tryOpen(static_cast<FILE*>(nullptr)); },
                                         "void ZUMFileInputStream::tryOpen(FILE*)");
    expectError<RVKIllegalArgumentError>([&] { in.tryOpen(static_cast<char const*>(nullptr)); },
                                         "ZUMFileInputStream::tryOpen(const char*)");
    EXPECT_EQ(in.read(), 'a');
}

TEST(FileInputStream, ReadErrorIsRaisedAgainOnEveryRead)
{
    TempDir dir;
    std::string writeOnly = dir.file("w.bin");
    struct Case { char const* what; std::function<void(ZUMFileInputStream&)> open;
                  std::string name; long code; char const* error; } cases[] = {
        {"directory", [&](ZUMFileInputStream& s) { s.tryOpen(dir.path().c_str()); },
         dir.path(), EISDIR, "Is a directory"},
        {"write-only FILE*", [&](ZUMFileInputStream& s) { s.tryOpen(std::fopen(writeOnly.c_str(), "wb")); },
         "", EBADF, "Bad file descriptor"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.what);
        ZUMFileInputStream in;
        c.open(in);
        char buf[8];
        expectIO([&] { in.read(buf, 8); }, c.code, READ_FAILED, c.name, c.error, READ_BYTES);
        expectIO([&] { in.read(); }, c.code, READ_FAILED, c.name, c.error, READ_BYTE);
        EXPECT_TRUE(in.isOpen());
    }
}

TEST(FileInputStream, EndOfFileIsReachedAgainOnEveryRead)
{
    TempDir dir;
    ZUMFileInputStream in(dir.write("three", "abc").c_str());
    char buf[10];
    EXPECT_EQ(in.read(buf, 10), 3);
    EXPECT_EQ(std::string(buf, 3), "abc");
    RVKByteBuffer bb(4, 4);
    bb.appendChars("x", 1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(in.read(buf, 10), -1);
        EXPECT_EQ(in.read(), -1);
        EXPECT_EQ(in.read(bb, 10), -1);
    }
    EXPECT_EQ(std::string(bb.str(), bb.pcount()), "x");
    // A bad count or array is refused, at the end too.
    expectError<RVKIllegalArgumentError>([&] { in.read(buf, 0); }, READ_BYTES);
    expectError<RVKIllegalArgumentError>([&] { in.read(nullptr, 4); }, READ_BYTES);
    expectError<RVKIllegalArgumentError>([&] { in.read(bb, -1); }, READ_BYTES);
}

TEST(FileInputStream, DeliversEveryByteValue)
{
    TempDir dir;
    std::string all;
    for (int b = 255; b >= 0; --b) all += static_cast<char>(b);
    std::string path = dir.write("all", all);
    ZUMFileInputStream single(path.c_str());
    for (int b = 255; b >= 0; --b) ASSERT_EQ(single.read(), b);
    EXPECT_EQ(single.read(), -1);

    ZUMFileInputStream block(path.c_str());
    RVKByteBuffer bb(1, 1);
    bb.appendChars("<", 1);
    EXPECT_EQ(block.read(bb, 100), 100);
    EXPECT_EQ(block.read(bb, 1000), 156);
    EXPECT_EQ(std::string(bb.str(), bb.pcount()), "<" + all);
}

TEST(FileInputStream, OwnsAndClosesAHandedInFile)
{
    TempDir dir;
    std::string path = dir.write("a", "ab");
    std::string other = dir.write("b", "XY");
    struct Case { char const* what; std::function<void(ZUMFileInputStream*&)> end; } cases[] = {
        {"destructor", [](ZUMFileInputStream*& s) { delete s; s = nullptr; }},
        {"close", [](ZUMFileInputStream*& s) { s->close(); }},
        {"open(path)", [&](ZUMFileInputStream*& s) { EXPECT_TRUE(s->open(other.c_str())); EXPECT_EQ(s->read(), 'X'); }},
        {"failed open", [&](ZUMFileInputStream*& s) { EXPECT_FALSE(s->open(dir.file("none").c_str())); }},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.what);
        FILE* f = std::fopen(path.c_str(), "rb");
        ASSERT_NE(f, nullptr);
        int fd = fileno(f);
        auto* in = new ZUMFileInputStream(f);
        EXPECT_EQ(in->read(), 'a');
        EXPECT_TRUE(fdIsOpenOn(fd, path));
        c.end(in);
        EXPECT_FALSE(fdIsOpenOn(fd, path));
        delete in;
    }

    // A descriptor is closed with the stdio file made from it.
    int fd = ::open(path.c_str(), O_RDONLY);
    {
        ZUMFileInputStream in(fd);
        EXPECT_EQ(in.read(), 'a');
    }
    EXPECT_FALSE(fdIsOpen(fd));
}

TEST(FileInputStream, ReopenStartsAfreshAndForgetsTheOldError)
{
    TempDir dir;
    std::string a = dir.write("a", "ab");
    ZUMFileInputStream in(dir.file("missing").c_str());
    EXPECT_TRUE(in.open(a.c_str()));
    EXPECT_EQ(in.read(), 'a');
    in.tryOpen(a.c_str());
    EXPECT_EQ(in.read(), 'a');
    EXPECT_EQ(in.read(), 'b');
    EXPECT_EQ(in.read(), -1);
}
