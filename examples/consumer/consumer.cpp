// A program outside this project that uses the installed library: copies
// bytes from a memory input stream to a memory output stream. It uses stream
// classes only, so linked with --as-needed it does not list libRVKCore.so.
#include <cstdio>

#include "ZUMStreams.h"

int main()
{
    static char const text[] = "first\r\nsecond\r\n";
    ZUMMemoryInputStream raw(text, static_cast<int>(sizeof text - 1));
    ZUMMemoryOutputStream out;
    char buf[4];
    int n;
    while ((n = raw.read(buf, static_cast<int>(sizeof buf))) != -1) {
        out.write(buf, n);
    }
    std::printf("consumer read %d bytes: %.*s", out.length(), out.length(), out.bytes());
    return out.length() == static_cast<int>(sizeof text - 1) ? 0 : 1;
}
