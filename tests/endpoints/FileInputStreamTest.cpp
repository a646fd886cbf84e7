#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <functional>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

char const k_read_bytes[] = "int ZUMFileInputStream::read(char *, int)";
char const k_read_byte[] = "int ZUMFileInputStream::read()";

// The rendering of the ZUMIOException that a file stream raises.
std::string io(int code, char const* number, std::string const& name, std::string const& error, char const* method)
{
    return "ZUMIOException(1," + std::to_string(code) + ") #" + number + " '" + name + "' '" + error + "' @" + method;
}

std::string missing(std::string const& name, char const* method)
{
    return io(ENOENT, "91f2b0d2", name, "No such file or directory", method);
}

std::string raisedOn(char const* error_class, char const* method)
{
    return std::string(error_class) + "() @" + method;
}

}  // namespace

TEST(FileInputStream, MissingFileRaisesOnEveryReadUntilClosed)
{
    TempDir dir;
    std::string path = dir.file("missing.bin");
    ZUMFileInputStream in(path.c_str());
    EXPECT_FALSE(in.isOpen());
    char buf[8];
    RVKByteBuffer bb(4, 4);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(raised([&] { in.read(); }), missing(path, k_read_byte));
        EXPECT_EQ(raised([&] { in.read(buf, 8); }), missing(path, k_read_bytes));
        EXPECT_EQ(raised([&] { in.read(bb, 8); }), missing(path, k_read_bytes));
    }
    EXPECT_EQ(bb.pcount(), 0);
    in.close();
    EXPECT_EQ(raised([&] { in.read(); }), raisedOn("RVKIllegalStateError", k_read_byte));
    EXPECT_EQ(raised([&] { in.read(buf, 8); }), raisedOn("RVKIllegalStateError", k_read_bytes));
}

TEST(FileInputStream, OpenErrorsCarryCodeNameAndSystemText)
{
    TempDir dir;
    std::string path = dir.write("a.bin", "ab");
    std::string long_path = dir.file(std::string(150, 'n') + "/x");  // the name is kept whole
    std::string in_missing_dir = dir.file("no/such/dir.bin");
    int write_only = ::open(dir.file("w.bin").c_str(), O_WRONLY | O_CREAT, 0600);
    char const* by_path = "ZUMFileInputStream::tryOpen(const char*)";
    struct Case {
        std::function<void(ZUMFileInputStream&)> action;
        std::string raises;
    } const cases[] = {
        {[&](ZUMFileInputStream& s) { s.tryOpen(in_missing_dir.c_str()); }, missing(in_missing_dir, by_path)},
        {[&](ZUMFileInputStream& s) { s.tryOpen(long_path.c_str()); }, missing(long_path, by_path)},
        // glibc's fdopen refuses "rb" on a descriptor opened for writing only.
        {[&](ZUMFileInputStream& s) { s.tryOpen(write_only); },
         io(EINVAL, "91f2b0d2", "", "Invalid argument", "ZUMFileInputStream::tryOpen(int)")},
        {[&](ZUMFileInputStream& s) { EXPECT_FALSE(s.open(write_only)); s.read(); },
         io(EINVAL, "91f2b0d2", "", "Invalid argument", k_read_byte)},
        {[&](ZUMFileInputStream& s) { EXPECT_FALSE(s.open(static_cast<FILE*>(nullptr))); s.read(); },
         io(EINVAL, "91f2b0d2", "", "Invalid argument", k_read_byte)},
        // The tryOpen forms refuse null before they close anything.
        {[&](ZUMFileInputStream& s) { s.tryOpen(static_cast<FILE*>(nullptr)); },
         raisedOn("RVKIllegalArgumentError", "void ZUMFileInputStream::tryOpen(FILE*)")},
        {[&](ZUMFileInputStream& s) { s.tryOpen(static_cast<char const*>(nullptr)); },
         raisedOn("RVKIllegalArgumentError", by_path)},
    };
    for (auto const& c : cases) {
        ZUMFileInputStream in(path.c_str());
        EXPECT_EQ(raised([&] { c.action(in); }), c.raises);
        bool refused = c.raises.rfind("RVKIllegalArgumentError", 0) == 0;
        EXPECT_EQ(in.isOpen(), refused);
        EXPECT_TRUE(!refused || in.read() == 'a');
    }
    EXPECT_TRUE(fdIsOpenOn(write_only, dir.file("w.bin")));  // a refused descriptor stays the caller's
    ::close(write_only);
}

TEST(FileInputStream, ReadErrorIsRaisedAgainOnEveryRead)
{
    TempDir dir;
    std::string write_only = dir.file("w.bin");
    struct Case {
        std::function<void(ZUMFileInputStream&)> open;
        std::string name;
        int code;
        char const* error;
    } const cases[] = {
        {[&](ZUMFileInputStream& s) { s.tryOpen(dir.path().c_str()); }, dir.path(), EISDIR, "Is a directory"},
        {[&](ZUMFileInputStream& s) { s.tryOpen(std::fopen(write_only.c_str(), "wb")); }, "", EBADF,
         "Bad file descriptor"},
    };
    for (auto const& c : cases) {
        ZUMFileInputStream in;
        c.open(in);
        char buf[8];
        EXPECT_EQ(raised([&] { in.read(buf, 8); }), io(c.code, "91fe8ba5", c.name, c.error, k_read_bytes));
        EXPECT_EQ(raised([&] { in.read(); }), io(c.code, "91fe8ba5", c.name, c.error, k_read_byte));
        EXPECT_TRUE(in.isOpen());
    }
}

TEST(FileInputStream, DeliversEveryByteThenEndOfFileOnEveryRead)
{
    TempDir dir;
    std::string all = testBytes(1000);
    all[0] = '\xff';
    std::string path = dir.write("all", all);
    ZUMFileInputStream in(path.c_str());
    EXPECT_EQ(in.read(), 255);
    EXPECT_EQ(drain(in, 0, Form::Byte), all.substr(1));
    char buf[10];
    RVKByteBuffer bb(1, 1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(in.read(buf, 10) + in.read() + in.read(bb, 10), -3);
    }
    EXPECT_EQ(bb.pcount(), 0);
    // A bad count or array is refused, at the end too.
    EXPECT_EQ(raised([&] { in.read(buf, 0); }), raisedOn("RVKIllegalArgumentError", k_read_bytes));
    EXPECT_EQ(raised([&] { in.read(nullptr, 4); }), raisedOn("RVKIllegalArgumentError", k_read_bytes));
    EXPECT_EQ(raised([&] { in.read(bb, -1); }), raisedOn("RVKIllegalArgumentError", k_read_bytes));
    // Opening again starts afresh and forgets an earlier error.
    ZUMFileInputStream again(dir.file("missing").c_str());
    EXPECT_TRUE(again.open(path.c_str()));
    EXPECT_EQ(drain(again, 300, Form::Array), all);
    again.tryOpen(path.c_str());
    EXPECT_EQ(drain(again, 700), all);
}

TEST(FileInputStream, OwnsAndClosesAHandedInFile)
{
    TempDir dir;
    std::string path = dir.write("a", "ab");
    std::string other = dir.write("b", "XY");
    struct Case {
        std::function<void(ZUMFileInputStream*&)> end;
    } const cases[] = {
        {[](ZUMFileInputStream*& s) { delete s; s = nullptr; }},
        {[](ZUMFileInputStream*& s) { s->close(); }},
        {[&](ZUMFileInputStream*& s) { EXPECT_TRUE(s->open(other.c_str())); EXPECT_EQ(s->read(), 'X'); }},
        {[&](ZUMFileInputStream*& s) { EXPECT_FALSE(s->open(dir.file("none").c_str())); }},
    };
    for (auto const& c : cases) {
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
    int fd = ::open(path.c_str(), O_RDONLY);  // closed with the stdio file made from it
    {
        ZUMFileInputStream in(fd);
        EXPECT_EQ(in.read(), 'a');
    }
    EXPECT_FALSE(fdIsOpenOn(fd, path));
}
