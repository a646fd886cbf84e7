// Reads CR LF lines through a buffered stream over memory and prints them.
#include <cstdio>

#include "RVKCore.h"
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
