#ifndef ZUM_TEST_TEMP_DIR_H
#define ZUM_TEST_TEMP_DIR_H

// A fresh directory under $TMPDIR (or /tmp) for one test, removed with its
// content when the object goes, and small helpers for files in it.

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class TempDir {
public:
    TempDir()
    {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/zumtest.XXXXXX";
        if (!mkdtemp(pattern.data())) {
            throw std::runtime_error("mkdtemp failed");
        }
        m_path = pattern;
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    std::string const& path() const { return m_path; }
    std::string file(std::string const& name) const { return m_path + "/" + name; }

    // Writes `bytes` to the file `name` and returns its path.
    std::string write(std::string const& name, std::string const& bytes) const
    {
        std::string p = file(name);
        std::ofstream(p, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return p;
    }

private:
    std::string m_path;
};

// The whole content of a file.
inline std::string slurp(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Whether descriptor `fd` is still open in this process.
inline bool fdIsOpen(int fd)
{
    return fcntl(fd, F_GETFD) != -1 || errno != EBADF;
}

// Whether descriptor `fd` is open on the file `path` (a closed descriptor
// may be reused by the next open, for another file).
inline bool fdIsOpenOn(int fd, std::string const& path)
{
    struct stat byFd, byPath;
    return fstat(fd, &byFd) == 0 && stat(path.c_str(), &byPath) == 0
        && byFd.st_dev == byPath.st_dev && byFd.st_ino == byPath.st_ino;
}

#endif
