#include "ZUMXmlEncodeOutputStream.h"

#include <cstdio>

#include "RVKIllegalStateError.h"
#include "RVKMacros.h"

ZUMXmlEncodeOutputStream::ZUMXmlEncodeOutputStream()
{
}

ZUMXmlEncodeOutputStream::ZUMXmlEncodeOutputStream(ZUMOutputStream& out)
    : ZUMFilterOutputStream(out)
{
}

ZUMXmlEncodeOutputStream::~ZUMXmlEncodeOutputStream() = default;

namespace {

// 1 for each byte that is replaced: the five markup characters and the
// control bytes other than tab, line feed and carriage return.
struct SpecialBytes {
    unsigned char is[256];
    constexpr SpecialBytes() : is()
    {
        for (int b = 0; b < 0x20; ++b) {
            is[b] = b != '\t' && b != '\n' && b != '\r';
        }
        is[static_cast<unsigned char>('"')] = 1;
        is[static_cast<unsigned char>('&')] = 1;
        is[static_cast<unsigned char>('\'')] = 1;
        is[static_cast<unsigned char>('<')] = 1;
        is[static_cast<unsigned char>('>')] = 1;
    }
};

constexpr SpecialBytes k_special;

// 1 when byte `c` is replaced, else 0 (an integer, so that four of them can
// be combined without branches).
unsigned special(char c)
{
    return k_special.is[static_cast<unsigned char>(c)];
}

// The first byte from `at` that is replaced, or `end`. Four bytes a step
// while none of them is.
char const* skipRun(char const* at, char const* end)
{
    while (end - at >= 4 && (special(at[0]) | special(at[1]) | special(at[2]) | special(at[3])) == 0) {
        at += 4;
    }
    while (at != end && !special(*at)) {
        ++at;
    }
    return at;
}

}  // namespace

void ZUMXmlEncodeOutputStream::write(char const* bytes, int count)
{
    RVK_ASSERT(bytes);
    RVK_ASSERT(0 <= count);
    if (!p_downstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "ZUMXmlEncodeOutputStream::write");
    }
    char const* end = bytes + count;
    char numeric[8];
    for (char const* run = bytes; run != end;) {
        char const* at = skipRun(run, end);
        if (at != run) {
            p_downstream->write(run, static_cast<int>(at - run));
        }
        if (at == end) {
            break;
        }
        char const* replacement;
        int length;
        switch (*at) {
        case '"':
            replacement = "&quot;";
            length = 6;
            break;
        case '&':
            replacement = "&amp;";
            length = 5;
            break;
        case '\'':
            replacement = "&#39;";
            length = 5;
            break;
        case '<':
            replacement = "&lt;";
            length = 4;
            break;
        case '>':
            replacement = "&gt;";
            length = 4;
            break;
        default:  // a control byte
            length = std::snprintf(numeric, sizeof numeric, "&#%d;", static_cast<unsigned char>(*at));
            replacement = numeric;
            break;
        }
        p_downstream->write(replacement, length);
        run = at + 1;
    }
}
