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

void ZUMXmlEncodeOutputStream::write(char const* bytes, int count)
{
    RVK_ASSERT(bytes);
    RVK_ASSERT(0 <= count);
    if (!p_downstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr), "ZUMXmlEncodeOutputStream::write");
    }
    char const* run = bytes;
    char const* end = bytes + count;
    char numeric[8];
    for (char const* at = bytes; at != end; ++at) {
        unsigned char byte = static_cast<unsigned char>(*at);
        char const* replacement;
        int length;
        switch (byte) {
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
        case '\t':
        case '\n':
        case '\r':
            continue;
        default:
            if (byte >= 0x20) {
                continue;
            }
            length = std::snprintf(numeric, sizeof numeric, "&#%d;", byte);
            replacement = numeric;
            break;
        }
        if (at != run) {
            p_downstream->write(run, static_cast<int>(at - run));
        }
        p_downstream->write(replacement, length);
        run = at + 1;
    }
    if (end != run) {
        p_downstream->write(run, static_cast<int>(end - run));
    }
}
