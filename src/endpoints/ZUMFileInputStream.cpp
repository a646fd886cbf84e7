#include "ZUMFileInputStream.h"

#include <cerrno>
#include <cstring>

#include "RVKIllegalArgumentError.h"
#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "ZUMRaise.h"
#include "ZUMReadSupport.h"

namespace {

char const k_read_bytes_method[] = "int ZUMFileInputStream::read(char *, int)";
char const k_read_byte_method[] = "int ZUMFileInputStream::read()";
char const k_try_open_file_method[] = "void ZUMFileInputStream::tryOpen(FILE*)";
char const k_try_open_fd_method[] = "ZUMFileInputStream::tryOpen(int)";
char const k_try_open_path_method[] = "ZUMFileInputStream::tryOpen(const char*)";

// The system's text for error number `err`, or "" for a negative number and
// for one the system does not know. strerror invents "Unknown error N" for
// those; that placeholder is not passed on.
char const* errnoText(int err)
{
    if (err < 0) {
        return "";
    }
#if defined(__GLIBC__) && defined(_GNU_SOURCE) \
    && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 32))
    if (strerrordesc_np(err) == nullptr) {
        return "";
    }
    return std::strerror(err);
#else
    static const char unknown[] = "Unknown error";
    const char* text = std::strerror(err);
    if (text == nullptr || std::strncmp(text, unknown, sizeof unknown - 1) == 0) {
        return "";
    }
    return text;
#endif
}

// The exceptions of a failed open and a failed read: error number as code,
// the catalog message, then the file name and the error text.
[[noreturn]] void raiseOpenFailure(int err, char const* filename, char const* method)
{
    ZUM_RAISE_IO_TEXTS(method, err, ZUMMessage::FILE_OPEN_FAILED, filename, errnoText(err));
}

[[noreturn]] void raiseReadFailure(int err, char const* filename, char const* method)
{
    ZUM_RAISE_IO_TEXTS(method, err, ZUMMessage::FILE_READ_FAILED, filename, errnoText(err));
}

}  // namespace

ZUMFileInputStream::ZUMFileInputStream() : m_filename(nullptr), m_file(nullptr), m_open_errno(0)
{
}

ZUMFileInputStream::ZUMFileInputStream(FILE* file) : ZUMFileInputStream()
{
    ZUMFileInputStream::open(file);
}

ZUMFileInputStream::ZUMFileInputStream(int fd) : ZUMFileInputStream()
{
    ZUMFileInputStream::open(fd);
}

ZUMFileInputStream::ZUMFileInputStream(const char* path) : ZUMFileInputStream()
{
    ZUMFileInputStream::open(path);
}

ZUMFileInputStream::~ZUMFileInputStream()
{
    ZUMFileInputStream::close();
}

void ZUMFileInputStream::checkReadable(const char* method)
{
    if (m_open_errno != 0) {
        raiseOpenFailure(m_open_errno, m_filename, method);
    }
    if (m_file == nullptr) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), method);
    }
}

int ZUMFileInputStream::read(RVKByteBuffer& buffer, int count)
{
    // A closed stream raises before the buffer grows.
    checkReadable(k_read_bytes_method);
    return zum_detail::readInto(*this, buffer, count, zum_detail::k_read_into_nothing_is_end);
}

int ZUMFileInputStream::read(char* buf, int count)
{
    checkReadable(k_read_bytes_method);
    if (buf == nullptr || count < 1) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr), k_read_bytes_method);
    }
    if (std::feof(m_file)) {
        return -1;
    }
    errno = 0;
    std::size_t n = std::fread(buf, 1, static_cast<std::size_t>(count), m_file);
    if (std::ferror(m_file)) {
        raiseReadFailure(errno, m_filename, k_read_bytes_method);
    }
    return n == 0 ? -1 : static_cast<int>(n);
}

int ZUMFileInputStream::read()
{
    checkReadable(k_read_byte_method);
    if (std::feof(m_file)) {
        return -1;
    }
    errno = 0;
    int c = std::fgetc(m_file);
    if (std::ferror(m_file)) {
        raiseReadFailure(errno, m_filename, k_read_byte_method);
    }
    return c;
}

void ZUMFileInputStream::close()
{
    if (m_file != nullptr) {
        std::fclose(m_file);
        m_file = nullptr;
    }
    m_open_errno = 0;
    if (m_filename != nullptr) {
        delete[] m_filename;
        m_filename = nullptr;
    }
}

RVK_bool ZUMFileInputStream::canUnread()
{
    return 0;
}

RVK_bool ZUMFileInputStream::open(FILE* file)
{
    close();
    if (file != nullptr) {
        m_file = file;
    } else {
        m_open_errno = EINVAL;
    }
    return isOpen();
}

RVK_bool ZUMFileInputStream::open(int fd)
{
    close();
    errno = 0;
    m_file = fdopen(fd, "rb");
    if (m_file == nullptr) {
        m_open_errno = errno;
    }
    return isOpen();
}

RVK_bool ZUMFileInputStream::open(const char* path)
{
    close();
    if (path == nullptr) {
        m_open_errno = EINVAL;
        return isOpen();
    }
    std::size_t length = std::strlen(path);
    m_filename = RVK_GUARDED_NEW(new char[length + 1]);
    std::memcpy(m_filename, path, length + 1);
    errno = 0;
    m_file = std::fopen(m_filename, "rb");
    if (m_file == nullptr) {
        m_open_errno = errno;
    }
    return isOpen();
}

void ZUMFileInputStream::tryOpen(FILE* file)
{
    if (file == nullptr) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr), k_try_open_file_method);
    }
    if (!open(file)) {
        raiseOpenFailure(m_open_errno, m_filename, k_try_open_file_method);
    }
}

void ZUMFileInputStream::tryOpen(int fd)
{
    if (!open(fd)) {
        raiseOpenFailure(m_open_errno, m_filename, k_try_open_fd_method);
    }
}

void ZUMFileInputStream::tryOpen(const char* path)
{
    if (path == nullptr) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr), k_try_open_path_method);
    }
    if (!open(path)) {
        raiseOpenFailure(m_open_errno, m_filename, k_try_open_path_method);
    }
}

RVK_bool ZUMFileInputStream::isOpen()
{
    return m_file != nullptr ? 1 : 0;
}
