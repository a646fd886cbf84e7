#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

std::string const k_read_bytes = "int ZUMFileInputStream::read(char *, int)";
std::string const k_read_byte = "int ZUMFileInputStream::read()";
std::string const k_by_path = "ZUMFileInputStream::tryOpen(const char*)";

// The rendering of the ZUMIOException that a file stream raises.
std::string io(int code, char const* number, std::string const& name, std::string const& error,
               std::string const& method)
{
    return "ZUMIOException(1," + std::to_string(code) + ") #" + number + " '" + name + "' '" + error + "' @" + method;
}

// Whether descriptor `fd` is open on the file `path` (a closed descriptor may
// be reused by the next open, for another file).
bool fdIsOpenOn(int fd, std::string const& path)
{
    struct stat by_fd, by_path;
    return ::fstat(fd, &by_fd) == 0 && ::stat(path.c_str(), &by_path) == 0 && by_fd.st_dev == by_path.st_dev &&
           by_fd.st_ino == by_path.st_ino;
}

}  // namespace

// Each way of (re)opening a stream that was open on a file of "ab": what the
// call raises, then what every read raises, twice (an error of opening or of
// reading is remembered), or, when the call was refused before it closed
// anything, the file read on. A closed stream raises RVKIllegalStateError.
TEST(FileInputStream, OpenAndReadErrorsCarryCodeNameAndSystemTextOnEveryRead)
{
    TempDir dir;
    std::string path = dir.write("a.bin", "ab"), missing = dir.file("no/such/dir.bin"), wo = dir.file("w.bin");
    std::string long_path = dir.file(std::string(150, 'n') + "/x");  // the name is kept whole
    int write_only = ::open(wo.c_str(), O_WRONLY | O_CREAT, 0600);
    std::string const enoent = "No such file or directory", einval = "Invalid argument";
    std::string const by_fd = "ZUMFileInputStream::tryOpen(int)", null_file = "void ZUMFileInputStream::tryOpen(FILE*)";
    // The method that raises at once ("": none), then, unless the call was
    // refused, the code, catalog number, system text and name every read raises.
    struct Case { std::function<void(ZUMFileInputStream&)> call; std::string method; int code; char const* number;
                  std::string error, name; };
    Case const cases[] = {
        {[&](ZUMFileInputStream& s) { EXPECT_FALSE(s.open(missing.c_str())); }, "", ENOENT, "FILE_OPEN_FAILED", enoent,
         missing},
        {[&](ZUMFileInputStream& s) { s.tryOpen(missing.c_str()); }, k_by_path, ENOENT, "FILE_OPEN_FAILED", enoent,
         missing},
        {[&](ZUMFileInputStream& s) { s.tryOpen(long_path.c_str()); }, k_by_path, ENOENT, "FILE_OPEN_FAILED", enoent,
         long_path},
        // A directory and a stdio file open for writing only: real read errors.
        {[&](ZUMFileInputStream& s) { s.tryOpen(dir.path().c_str()); }, "", EISDIR, "FILE_READ_FAILED",
         "Is a directory", dir.path()},
        {[&](ZUMFileInputStream& s) { s.tryOpen(std::fopen(wo.c_str(), "wb")); }, "", EBADF, "FILE_READ_FAILED",
         "Bad file descriptor", ""},
        // glibc's fdopen refuses "rb" on a descriptor opened for writing only.
        {[&](ZUMFileInputStream& s) { s.tryOpen(write_only); }, by_fd, EINVAL, "FILE_OPEN_FAILED", einval, ""},
        {[&](ZUMFileInputStream& s) { EXPECT_FALSE(s.open(write_only)); }, "", EINVAL, "FILE_OPEN_FAILED", einval, ""},
        {[&](ZUMFileInputStream& s) { EXPECT_FALSE(s.open(static_cast<FILE*>(nullptr))); }, "", EINVAL,
         "FILE_OPEN_FAILED", einval, ""},
        // The tryOpen forms refuse null before they close anything.
        {[&](ZUMFileInputStream& s) { s.tryOpen(static_cast<FILE*>(nullptr)); }, null_file, 0, "", "", ""},
        {[&](ZUMFileInputStream& s) { s.tryOpen(static_cast<char const*>(nullptr)); }, k_by_path, 0, "", "", ""},
    };
    for (auto const& c : cases) {
        ZUMFileInputStream in(path.c_str());
        EXPECT_EQ(raised([&] { c.call(in); }), c.method.empty() ? "none"
                                               : c.code     ? io(c.code, c.number, c.name, c.error, c.method)
                                                            : "RVKIllegalArgumentError() @" + c.method);
        EXPECT_EQ(in.isOpen(), c.code == 0 || c.number == std::string("FILE_READ_FAILED")) << c.method << c.name;
        char buf[8];
        RVKByteBuffer bb(4, 4);
        for (int i = 0; c.code && i < 2; ++i) {
            EXPECT_EQ(raised([&] { in.read(buf, 8); }), io(c.code, c.number, c.name, c.error, k_read_bytes));
            EXPECT_EQ(raised([&] { in.read(bb, 8); }), io(c.code, c.number, c.name, c.error, k_read_bytes));
            EXPECT_EQ(raised([&] { in.read(); }), io(c.code, c.number, c.name, c.error, k_read_byte));
        }
        EXPECT_EQ(bb.pcount(), 0);
        EXPECT_TRUE(c.code || in.read() == 'a');
        in.close();
        EXPECT_EQ(raised([&] { in.read(); }), "RVKIllegalStateError() @" + k_read_byte);
        EXPECT_EQ(raised([&] { in.read(buf, 8); }), "RVKIllegalStateError() @" + k_read_bytes);
    }
    EXPECT_TRUE(fdIsOpenOn(write_only, wo));  // a refused descriptor stays the caller's
    ::close(write_only);
}

// Files written in pieces read back byte for byte (0xFF as 255), then -1 on
// every read in every form; a bad count or array is refused, at the end too.
// Opening again starts afresh and forgets an earlier error.
TEST(FileStreams, WrittenFileReadsBackByteIdenticalThenEndOfFileOnEveryRead)
{
    TempDir dir;
    std::string path = dir.file("round.bin");
    for (std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{1001}, std::size_t{5} << 20}) {
        std::string data = ("\xff" + testBytes(size, 5)).substr(0, size);
        {
            ZUMFileOutputStream out(path.c_str(), 0);
            writeInPieces(out, data, {65521});
        }
        ZUMFileInputStream in(path.c_str());
        EXPECT_TRUE(drain(in, 100000, size < 2000 ? Form::Byte : Form::Buffer) == data) << size;
        char buf[10];
        RVKByteBuffer bb(1, 1);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ((Row{in.read(buf, 10), in.read(), in.read(bb, 10)}), (Row{-1, -1, -1}));
        }
        EXPECT_EQ(bb.pcount(), 0);
        EXPECT_EQ(raised([&] { in.read(buf, 0); }), "RVKIllegalArgumentError() @" + k_read_bytes);
        EXPECT_THROW(in.read(nullptr, 4), RVKIllegalArgumentError);
        EXPECT_THROW(in.read(bb, -1), RVKIllegalArgumentError);
    }
    ZUMFileInputStream again(dir.file("missing").c_str());
    EXPECT_TRUE(again.open(path.c_str()));
    std::string const all = readFile(path);
    EXPECT_TRUE(drain(again, 300, Form::Array) == all);
    again.tryOpen(path.c_str());
    EXPECT_TRUE(drain(again, 700) == all);
}

// A path that does not open raises at construction, naming the path (cut to
// 128 bytes) and the system text; both modes truncate; flush hands the bytes
// to the file, close ends writing, and nothing is reported after opening.
TEST(FileOutputStream, OpenErrorTruncationAndEndOfWritingAtClose)
{
    TempDir dir;
    std::string in_missing = dir.file("out/data.bin"), long_path = dir.file("missing/" + std::string(200, 'x'));
    for (int flag : {0, 1}) {
        for (auto const& [path, shown] : {std::pair{in_missing, in_missing}, {long_path, long_path.substr(0, 128)}}) {
            EXPECT_EQ(raised([&] { ZUMFileOutputStream out(path.c_str(), flag); }),
                      "RVKAssertError(The file " + shown + " does not open successfully for writing. "
                      "[No such file or directory]) @-");
        }
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

// A stdio file handed to an input stream is closed by the destructor, close()
// and opening another file (also when that fails), a descriptor with the file
// made from it. One handed to an output stream is closed at destruction when
// the stream owns it, and by close() in any case.
TEST(FileStreams, HandedInFilesAreClosedByTheirOwner)
{
    TempDir dir;
    std::string path = dir.write("a", "ab"), other = dir.write("b", "XY"), written = dir.file("f");
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
    for (int owns : {0, 1}) {
        for (bool close : {false, true}) {
            FILE* f = std::fopen(written.c_str(), "wb");
            fd = fileno(f);
            {
                ZUMFileOutputStream out(f, owns);
                out.write("x", 1);
                if (close) {
                    out.close();
                }
            }  // a second fclose here would be caught by the sanitizers
            EXPECT_EQ(fdIsOpenOn(fd, written), !owns && !close) << owns << close;
            if (!owns && !close) {
                std::fclose(f);
            }
            EXPECT_EQ(readFile(written), "x");
        }
    }
}
