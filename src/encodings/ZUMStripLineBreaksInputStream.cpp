#include "ZUMStripLineBreaksInputStream.h"

#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "ZUMReadSupport.h"

namespace {

// For each byte value, whether it is dropped: bit 0 in line-break mode, bit 1
// in white-space mode.
struct DropTable {
    unsigned char of[256];
    constexpr DropTable() : of()
    {
        of[static_cast<unsigned char>('\r')] = of[static_cast<unsigned char>('\n')] = 3;
        of[static_cast<unsigned char>(' ')] = of[static_cast<unsigned char>('\t')] = 2;
        of[static_cast<unsigned char>('\v')] = of[static_cast<unsigned char>('\f')] = 2;
    }
};
constexpr DropTable k_drop;

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
    unsigned char const mode = m_all_white_space ? 2 : 1;
    int kept = 0;
    while (kept < n && !(k_drop.of[static_cast<unsigned char>(buf[kept])] & mode)) {
        ++kept;  // the common case: nothing to drop, nothing moves
    }
    for (int i = kept; i < n; ++i) {
        buf[kept] = buf[i];
        kept += (k_drop.of[static_cast<unsigned char>(buf[i])] & mode) ? 0 : 1;
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
    // Every pass consumes upstream bytes, so the loop ends with the input.
    for (;;) {
        int n = p_upstream->read(buf, count);
        if (n <= 0) {
            return n;
        }
        int kept = strip(buf, n);
        if (kept > 0) {
            return kept;
        }
    }
}

int ZUMStripLineBreaksInputStream::read(RVKByteBuffer& buffer, int count)
{
    return zum_detail::readInto(*this, buffer, count);
}

int ZUMStripLineBreaksInputStream::read()
{
    return zum_detail::readByte(*this);
}

void ZUMStripLineBreaksInputStream::unWrap()
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "ZUMStripLineBreaksInputStream::unWrap");
    }
    p_upstream = nullptr;
}
