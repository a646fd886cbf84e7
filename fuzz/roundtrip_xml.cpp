// Fuzz target: XML escaping and its inverse.
//
// Input: 4 setting bytes (write sizes), then the content.
//
// Checks: the escaped text holds no " & ' < > other than in the five
// references and no control byte other than tab, line feed and carriage
// return; unescaping it (&lt; &gt; &amp; &quot; &#39; &#N;) gives the
// content back.

#include "FuzzSupport.h"

namespace {

// The inverse of the escaping; aborts on anything the escaper never writes.
std::string unescape(std::string const& s)
{
    static char const* const names[] = {"&lt;", "&gt;", "&amp;", "&quot;", "&#39;"};
    static char const values[] = {'<', '>', '&', '"', '\''};
    std::string out;
    for (std::size_t i = 0; i < s.size();) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        FUZZ_CHECK(c != '<' && c != '>' && c != '"' && c != '\'');
        FUZZ_CHECK(c >= 0x20 || c == '\t' || c == '\n' || c == '\r');
        if (c != '&') {
            out.push_back(static_cast<char>(c));
            ++i;
            continue;
        }
        bool known = false;
        for (std::size_t k = 0; k < 5 && !known; ++k) {
            std::size_t len = std::strlen(names[k]);
            if (s.compare(i, len, names[k]) == 0) {
                out.push_back(values[k]);
                i += len;
                known = true;
            }
        }
        if (known) {
            continue;
        }
        // &#N; with N in decimal, 0 to 31.
        FUZZ_CHECK(s.compare(i, 2, "&#") == 0);
        std::size_t j = i + 2;
        unsigned value = 0;
        while (j < s.size() && s[j] >= '0' && s[j] <= '9' && j - i < 5) {
            value = value * 10 + static_cast<unsigned>(s[j] - '0');
            ++j;
        }
        FUZZ_CHECK(j > i + 2 && j < s.size() && s[j] == ';' && value < 32);
        out.push_back(static_cast<char>(value));
        i = j + 1;
    }
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    Schedule writeSteps(in.take(4));
    std::string content = in.rest();

    ZUMMemoryOutputStream out;
    ZUMXmlEncodeOutputStream xml(out);
    std::size_t at = 0;
    while (at < content.size()) {
        std::uint8_t step = writeSteps.next();
        std::size_t n = step == 0 ? content.size() : step;
        n = n < content.size() - at ? n : content.size() - at;
        xml.write(content.data() + at, static_cast<int>(n));
        at += n;
    }
    xml.write(content.data(), 0);
    FUZZ_CHECK(unescape(collected(out)) == content);
    return 0;
}
