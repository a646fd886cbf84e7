#include "streams.h"

#include <cerrno>
#include <cstring>

#include "ZUMReadSupport.h"
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

// ---- InputBuffer ------------------------------------------------------------

int InputBuffer::readline(RVKByteBuffer& line)
{
    long long offset = position();
    int before = line.pcount();
    int n = ZUMBufferedInputStream::readline(line);
    m_last_length = n;
    m_last_offset = offset;
    if (n > 0) {
        m_last_line.assign(line.str() + before, static_cast<std::size_t>(n));
    } else {
        m_last_line.clear();
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

// ---- Base64TextCheck --------------------------------------------------------

namespace {

enum : unsigned char { OTHER, ALPHABET, PAD, BREAK };

// The class of every byte value in Base64 text.
struct ByteClasses {
    unsigned char of[256];
    ByteClasses() : of()
    {
        for (unsigned c = 0; c < 256; ++c) {
            bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
            of[c] = letter || c == '+' || c == '/' ? ALPHABET : c == '=' ? PAD : c == '\r' || c == '\n' ? BREAK : OTHER;
        }
    }
};

ByteClasses const k_classes;

std::string misplacedPadding(long long offset)
{
    return "misplaced Base64 padding '=' at byte " + std::to_string(offset);
}

}  // namespace

int Base64TextCheck::check(char* buf, int n)
{
    int kept = 0;
    int i = 0;
    while (i < n) {
        // The common case: a run of alphabet characters, no padding pending.
        int end = i;
        while (end < n && m_pad_offset < 0 && k_classes.of[static_cast<unsigned char>(buf[end])] == ALPHABET) {
            ++end;
        }
        if (end > i) {
            int const run = end - i;
            int const group = (m_group + run) & 3;
            if (group != 0 && run >= group) {
                m_group_start = m_offset + end - group;
            }
            m_group = group;
            if (kept != i) {
                std::memmove(buf + kept, buf + i, static_cast<std::size_t>(run));
            }
            kept += run;
            i = end;
            continue;
        }
        // Any other byte, one at a time.
        unsigned char const c = static_cast<unsigned char>(buf[i]);
        unsigned char const kind = k_classes.of[c];
        long long const at = m_offset + i;
        ++i;
        if (kind == BREAK) {
            buf[kept++] = static_cast<char>(c);  // dropped by the line-break filter above
            continue;
        }
        if (kind == OTHER) {
            m_fault = "invalid Base64 character " + byteText(c) + " at byte " + std::to_string(at);
        } else if (kind == PAD && m_group < 2) {
            m_fault = misplacedPadding(at);
        } else if (kind == ALPHABET) {  // after a '=' in third place
            m_fault = misplacedPadding(m_pad_offset);
        }
        if (!m_fault.empty()) {
            m_offset = at;
            return kept;
        }
        if (m_group == 0) {
            m_group_start = at;
        }
        if (m_group == 2) {
            m_pad_offset = at;  // the fourth character must be '=' too
        }
        m_group = (m_group + 1) & 3;
        if (m_group == 0) {
            m_pad_offset = -1;
        }
        buf[kept++] = static_cast<char>(c);
    }
    m_offset += n;
    return kept;
}

int Base64TextCheck::read(char* buf, int count)
{
    if (!m_fault.empty()) {
        return -1;
    }
    for (;;) {
        int n = p_upstream->read(buf, count);
        if (n <= 0) {
            if (n < 0 && m_group != 0) {
                m_fault = "the Base64 text ends inside a group of four characters: " + std::to_string(m_group) +
                          " left over from byte " + std::to_string(m_group_start);
            }
            return n;
        }
        int kept = check(buf, n);
        if (kept > 0) {
            return kept;
        }
        if (!m_fault.empty()) {
            return -1;
        }
        // Only line breaks that continue a run already delivered: read on.
    }
}

int Base64TextCheck::read(RVKByteBuffer& buffer, int count)
{
    return count > 0 ? zum_detail::readInto(*this, buffer, count) : 0;
}

int Base64TextCheck::read()
{
    return zum_detail::readByte(*this);
}

}  // namespace zumcat
