#include "ZUMFileInputStream.h"

#include <cerrno>
#include <cstring>

#include "RVKIllegalArgumentError.h"
#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "ZUMRaise.h"

namespace {

const int ERROR_INVALID_ARGUMENT = EINVAL;  // 22

const char READ_BYTES_METHOD[] = "int ZUMFileInputStream::read(char *, int)";
const char READ_BYTE_METHOD[] = "int ZUMFileInputStream::read()";

// The system's text for error number `err`, or "" for a negative number and
// for one the system does not know. strerror invents "Unknown error N" for
// those; that placeholder is not passed on.
const char* get_errno_msg(int err)
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
[[noreturn]] void throw_open_exception(int err, const char* filename, const char* method)
{
    ZUM_RAISE_IO_TEXTS(method, err, ZUMMessage::FILE_OPEN_FAILED, filename, get_errno_msg(err));
}

[[noreturn]] void throw_read_exception(int err, const char* filename, const char* method)
{
    ZUM_RAISE_IO_TEXTS(method, err, ZUMMessage::FILE_READ_FAILED, filename, get_errno_msg(err));
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
    try {
        ZUMFileInputStream::close();
    } catch (...) {
    }
}

void ZUMFileInputStream::checkReadable(const char* method)
{
    if (m_open_errno != 0) {
        throw_open_exception(m_open_errno, m_filename, method);
    }
    if (m_file == nullptr) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), method);
    }
}

int ZUMFileInputStream::read(RVKByteBuffer& buffer, int count)
{
    // Grow only when a read can follow: a closed stream or a bad count raises
    // below without touching the buffer. Both values fit in 31 bits, so their
    // sum fits in an unsigned.
    if (count > 0 && m_file != nullptr) {
        buffer.reserve(static_cast<unsigned>(buffer.pcount()) + static_cast<unsigned>(count));
    }
    int n = read(buffer.str() + buffer.pcount(), count);
    if (n <= 0) {
        return -1;
    }
    buffer.setLength(static_cast<unsigned>(buffer.pcount()) + static_cast<unsigned>(n));
    return n;
}

int ZUMFileInputStream::read(char* buf, int count)
{
    checkReadable(READ_BYTES_METHOD);
    if (buf == nullptr || count < 1) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr), READ_BYTES_METHOD);
    }
    if (std::feof(m_file)) {
        return -1;
    }
    errno = 0;
    std::size_t n = std::fread(buf, 1, static_cast<std::size_t>(count), m_file);
    if (std::ferror(m_file)) {
        throw_read_exception(errno, m_filename, READ_BYTES_METHOD);
    }
    return n == 0 ? -1 : static_cast<int>(n);
}

int ZUMFileInputStream::read()
{
    checkReadable(READ_BYTE_METHOD);
    if (std::feof(m_file)) {
        return -1;
    }
    errno = 0;
    int c = std::fgetc(m_file);
    if (std::ferror(m_file)) {
        throw_read_exception(errno, m_filename, READ_BYTE_METHOD);
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
        m_open_errno = ERROR_INVALID_ARGUMENT;
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
        m_open_errno = ERROR_INVALID_ARGUMENT;
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
    static const char method[] = "void ZUMFileInputStream::tryOpen(FILE*)";
    if (file == nullptr) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr), method);
    }
    if (!open(file)) {
        throw_open_exception(m_open_errno, m_filename, method);
    }
}

void ZUMFileInputStream::tryOpen(int fd)
{
    if (!open(fd)) {
        throw_open_exception(m_open_errno, m_filename, "ZUMFileInputStream::tryOpen(int)");
    }
}

void ZUMFileInputStream::tryOpen(const char* path)
{
    static const char method[] = "ZUMFileInputStream::tryOpen(const char*)";
    if (path == nullptr) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr), method);
    }
    if (!open(path)) {
        throw_open_exception(m_open_errno, m_filename, method);
    }
}

RVK_bool ZUMFileInputStream::isOpen()
{
    return m_file != nullptr ? 1 : 0;
}
