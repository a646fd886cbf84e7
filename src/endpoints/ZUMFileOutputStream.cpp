#include "ZUMFileOutputStream.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include "RVKAssertError.h"
#include "RVKMacros.h"

namespace {

// Raises the error of a file that did not open for writing: RVKAssertError
// whose text names the path (at most 128 bytes of it) and the system's text
// for `err`.
[[noreturn]] void raiseOpenFailure(const char* path, int err)
{
    static const char pattern[] = "The file %.128s does not open successfully for writing. [%s]";

    I18NString errorText;
    const char* systemText = std::strerror(err);
    if (systemText != nullptr && *systemText != '\0') {
        errorText = I18NString(systemText, I18NGetPlatformDefaultEncoding(), -1, nullptr, nullptr);
    }

    int needed = std::snprintf(nullptr, 0, pattern, path, errorText.c_str());
    if (needed < 0) {
        needed = 0;
    }
    std::size_t size = static_cast<std::size_t>(needed) + 1;
    std::unique_ptr<char[]> text(RVK_GUARDED_NEW(new char[size]));
    text[0] = '\0';
    std::snprintf(text.get(), size, pattern, path, errorText.c_str());
    RVK_THROW(RVKAssertError(0, text.get()), nullptr);
}

}  // namespace

ZUMFileOutputStream::ZUMFileOutputStream(const char* path, int flag)
    : m_file(nullptr), m_owns_file(1)
{
    if (path == nullptr) {
        return;
    }
    m_file = std::fopen(path, flag != 0 ? "wb+a" : "wb");
    if (m_file == nullptr) {
        raiseOpenFailure(path, errno);
    }
}

ZUMFileOutputStream::ZUMFileOutputStream(FILE* file, int owns) : m_file(file), m_owns_file(owns)
{
}

ZUMFileOutputStream::~ZUMFileOutputStream()
{
    if (m_owns_file != 0 && m_file != nullptr) {
        std::fclose(m_file);
    }
    m_file = nullptr;
}

void ZUMFileOutputStream::write(const char* bytes, int count)
{
    if (m_file == nullptr || bytes == nullptr || count < 1) {
        return;
    }
    std::fwrite(bytes, 1, static_cast<std::size_t>(count), m_file);
}

void ZUMFileOutputStream::flush()
{
    if (m_file != nullptr) {
        std::fflush(m_file);
    }
}

void ZUMFileOutputStream::close()
{
    if (m_file != nullptr) {
        std::fclose(m_file);
        m_file = nullptr;
    }
}
