#include "ZUMStripLineBreaksInputStream.h"

#include "RVKIllegalStateError.h"
#include "RVKMacros.h"

namespace {

// Upstream reads in one call that may deliver nothing to keep before the
// call returns 0.
int const k_max_dropped_reads = 1000;

bool isLineBreak(unsigned char c)
{
    return c == '\r' || c == '\n';
}

bool isWhiteSpace(unsigned char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');  // space, \t \n \v \f \r
}

}  // namespace

ZUMStripLineBreaksInputStream::ZUMStripLineBreaksInputStream(int bAllWhiteSpace)
    : m_all_white_space(bAllWhiteSpace ? 1 : 0)
{
}

ZUMStripLineBreaksInputStream::ZUMStripLineBreaksInputStream(ZUMInputStream& upstream,
                                                             int bAllWhiteSpace)
    : ZUMStripLineBreaksInputStream(bAllWhiteSpace)
{
    wrap(upstream);
}

ZUMStripLineBreaksInputStream::~ZUMStripLineBreaksInputStream() = default;

int ZUMStripLineBreaksInputStream::strip(char* buf, int n) const
{
    bool (*const dropped)(unsigned char) = m_all_white_space ? isWhiteSpace : isLineBreak;
    int kept = 0;
    while (kept < n && !dropped(static_cast<unsigned char>(buf[kept]))) {
        ++kept;  // the common case: nothing to drop, nothing moves
    }
    for (int i = kept; i < n; ++i) {
        if (!dropped(static_cast<unsigned char>(buf[i]))) {
            buf[kept++] = buf[i];
        }
    }
    return kept;
}

int ZUMStripLineBreaksInputStream::read(char* buf, int count)
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "ZUMStripLineBreaksInputStream::read");
    }
    if (count <= 0) {
        return 0;
    }
    RVK_ASSERT(buf);
    for (int pass = 0; pass < k_max_dropped_reads; ++pass) {
        int n = p_upstream->read(buf, count);
        if (n <= 0) {
            return n;
        }
        int kept = strip(buf, n);
        if (kept > 0) {
            return kept;
        }
    }
    return 0;
}

int ZUMStripLineBreaksInputStream::read(RVKByteBuffer& buffer, int count)
{
    if (count <= 0) {
        return read(static_cast<char*>(nullptr), 0);  // the unwrapped check, then 0
    }
    unsigned const length = static_cast<unsigned>(buffer.pcount());
    buffer.reserve(length + static_cast<unsigned>(count));
    int n = read(buffer.str() + length, count);
    if (n > 0) {
        buffer.setLength(length + static_cast<unsigned>(n));
    } else {
        buffer.str()[length] = '\0';  // whatever the upstream wrote there is not kept
    }
    return n;
}

int ZUMStripLineBreaksInputStream::read()
{
    unsigned char byte = 0;
    for (int pass = 0; pass < k_max_dropped_reads; ++pass) {
        int n = read(reinterpret_cast<char*>(&byte), 1);
        if (n == 1) {
            return byte;
        }
        if (n < 0) {
            return -1;
        }
    }
    return -1;
}

void ZUMStripLineBreaksInputStream::unWrap()
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "ZUMStripLineBreaksInputStream::unWrap");
    }
    p_upstream = nullptr;
}
