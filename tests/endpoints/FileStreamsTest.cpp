#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <functional>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

std::string const k_read_bytes = "int ZUMFileInputStream::read(char *, int)";
std::string const k_read_byte = "int ZUMFileInputStream::read()";
std::string const k_by_path = "ZUMFileInputStream::tryOpen(const char*)";
using Action = std::function<void(ZUMFileInputStream&)>;

// The rendering of the ZUMIOException that a file stream raises.
std::string io(int code, char const* number, std::string const& name, std::string const& error,
               std::string const& method)
{
    return "ZUMIOException(1," + std::to_string(code) + ") #" + number + " '" + name + "' '" + error + "' @" + method;
}

}  // namespace

// An error of opening (a missing file) or of reading (a directory, a stdio
// file open for writing only: a real ferror) is raised on every read; a
// closed stream raises RVKIllegalStateError.
TEST(FileInputStream, FailuresAreRaisedAgainOnEveryRead)
{
    TempDir dir;
    std::string missing = dir.file("missing.bin"), write_only = dir.file("w.bin");
    struct Case { Action open; std::string name; int code; char const *number, *error; } const cases[] = {
        {[&](ZUMFileInputStream& s) { s.open(missing.c_str()); }, missing, ENOENT, "FILE_OPEN_FAILED",
         "No such file or directory"},
        {[&](ZUMFileInputStream& s) { s.tryOpen(dir.path().c_str()); }, dir.path(), EISDIR, "FILE_READ_FAILED",
         "Is a directory"},
        {[&](ZUMFileInputStream& s) { s.tryOpen(std::fopen(write_only.c_str(), "wb")); }, "", EBADF, "FILE_READ_FAILED",
         "Bad file descriptor"},
    };
    for (auto const& c : cases) {
        ZUMFileInputStream in;
        c.open(in);
        char buf[8];
        RVKByteBuffer bb(4, 4);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(raised([&] { in.read(buf, 8); }), io(c.code, c.number, c.name, c.error, k_read_bytes));
            EXPECT_EQ(raised([&] { in.read(bb, 8); }), io(c.code, c.number, c.name, c.error, k_read_bytes));
            EXPECT_EQ(raised([&] { in.read(); }), io(c.code, c.number, c.name, c.error, k_read_byte));
        }
        EXPECT_EQ(bb.pcount(), 0);
        in.close();
        EXPECT_EQ(raised([&] { in.read(); }), "RVKIllegalStateError() @" + k_read_byte);
        EXPECT_EQ(raised([&] { in.read(buf, 8); }), "RVKIllegalStateError() @" + k_read_bytes);
    }
}

TEST(FileInputStream, OpenErrorsCarryCodeNameAndSystemText)
{
    TempDir dir;
    std::string path = dir.write("a.bin", "ab");
    std::string long_path = dir.file(std::string(150, 'n') + "/x");  // the name is kept whole
    std::string in_missing_dir = dir.file("no/such/dir.bin");
    int write_only = ::open(dir.file("w.bin").c_str(), O_WRONLY | O_CREAT, 0600);
    std::string const invalid = io(EINVAL, "FILE_OPEN_FAILED", "", "Invalid argument", k_read_byte);
    struct Case { Action action; std::string raises; } const cases[] = {
        {[&](ZUMFileInputStream& s) { s.tryOpen(in_missing_dir.c_str()); },
         io(ENOENT, "FILE_OPEN_FAILED", in_missing_dir, "No such file or directory", k_by_path)},
        {[&](ZUMFileInputStream& s) { s.tryOpen(long_path.c_str()); },
         io(ENOENT, "FILE_OPEN_FAILED", long_path, "No such file or directory", k_by_path)},
        // glibc's fdopen refuses "rb" on a descriptor opened for writing only.
        {[&](ZUMFileInputStream& s) { s.tryOpen(write_only); },
         io(EINVAL, "FILE_OPEN_FAILED", "", "Invalid argument", "ZUMFileInputStream::tryOpen(int)")},
        {[&](ZUMFileInputStream& s) { EXPECT_FALSE(s.open(write_only)); s.read(); }, invalid},
        // The tryOpen forms refuse null before they close anything.
        {[&](ZUMFileInputStream& s) { s.tryOpen(static_cast<FILE*>(nullptr)); },
         "RVKIllegalArgumentError() @void ZUMFileInputStream::tryOpen(FILE*)"},
        {[&](ZUMFileInputStream& s) { s.tryOpen(static_cast<char const*>(nullptr)); },
         "RVKIllegalArgumentError() @" + k_by_path},
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

TEST(FileInputStream, DeliversEveryByteThenEndOfFileOnEveryRead)
{
    TempDir dir;
    std::string all = "\xff" + testBytes(1000);
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
    EXPECT_EQ(raised([&] { in.read(buf, 0); }), "RVKIllegalArgumentError() @" + k_read_bytes);
    EXPECT_THROW(in.read(nullptr, 4), RVKIllegalArgumentError);
    EXPECT_THROW(in.read(bb, -1), RVKIllegalArgumentError);
    // Opening again starts afresh and forgets an earlier error.
    ZUMFileInputStream again(dir.file("missing").c_str());
    EXPECT_TRUE(again.open(path.c_str()));
    EXPECT_EQ(drain(again, 300, Form::Array), all);
    again.tryOpen(path.c_str());
    EXPECT_EQ(drain(again, 700), all);
}

// A stdio file handed in is closed by the destructor, close(), and opening
// another file (also when that fails); a descriptor with the file made from it.
TEST(FileInputStream, OwnsAndClosesAHandedInFile)
{
    TempDir dir;
    std::string path = dir.write("a", "ab"), other = dir.write("b", "XY");
    std::function<void(ZUMFileInputStream*&)> const ends[] = {
        [](ZUMFileInputStream*& s) { delete s, s = nullptr; },
        [](ZUMFileInputStream*& s) { s->close(); },
        [&](ZUMFileInputStream*& s) { EXPECT_TRUE(s->open(other.c_str())); EXPECT_EQ(s->read(), 'X'); },
        [&](ZUMFileInputStream*& s) { EXPECT_FALSE(s->open(dir.file("none").c_str())); },
    };
    for (auto const& end : ends) {
        FILE* f = std::fopen(path.c_str(), "rb");
        int fd = fileno(f);
        auto* in = new ZUMFileInputStream(f);
        EXPECT_EQ(in->read(), 'a');
        EXPECT_TRUE(fdIsOpenOn(fd, path));
        end(in);
        EXPECT_FALSE(fdIsOpenOn(fd, path));
        delete in;
    }
    int fd = ::open(path.c_str(), O_RDONLY);
    delete new ZUMFileInputStream(fd);
    EXPECT_FALSE(fdIsOpenOn(fd, path));
}

TEST(FileOutputStream, OpenErrorNamesThePathAndTheSystemText)
{
    TempDir dir;
    std::string in_missing = dir.file("out/data.bin"), long_path = dir.file("missing/" + std::string(200, 'x'));
    struct Case { std::string path, shown; char const* error; } const cases[] = {
        {in_missing, in_missing, "No such file or directory"},
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
