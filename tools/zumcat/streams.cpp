#include "streams.h"

#include <cerrno>
#include <cstring>

#include "messages.h"
#include "progress.h"

namespace zumcat {

// ---- InputCounter -----------------------------------------------------------

int InputCounter::counted(int n)
{
    if (n > 0) {
        m_count += n;
    } else if (n < 0) {
        m_ended = true;
    }
    if (m_progress) {
        m_progress->tick();
    }
    return n;
}

// ---- StandardOutput ---------------------------------------------------------

void StandardOutput::check()
{
    if (std::ferror(stdout)) {
        if (errno == EPIPE) {
            throw BrokenPipe{};
        }
        throw Failure{std::string("cannot write to standard output: ") + std::strerror(errno)};
    }
}

void StandardOutput::write(char const* bytes, int count)
{
    if (count <= 0) {
        return;
    }
    ZUMFileOutputStream::write(bytes, count);
    m_count += count;
    m_last = bytes[count - 1];
    check();
    if (m_progress) {
        m_progress->tick();
    }
}

void StandardOutput::flush()
{
    ZUMFileOutputStream::flush();
    check();
}

}  // namespace zumcat
