// Builds a small chain over memory and prints what it read.
#include <cstdio>

#include "RVKCore.h"
#include "ZUMStreams.h"

int main()
{
    static char const text[] = "Hello from a memory input stream.\n";
    ZUMMemoryInputStream in(text, static_cast<int>(sizeof text - 1));
    ZUMMemoryOutputStream out;
    char chunk[8];
    int n;
    while ((n = in.read(chunk, static_cast<int>(sizeof chunk))) != -1) {
        out.write(chunk, n);
    }
    std::fwrite(out.bytes(), 1, static_cast<std::size_t>(out.length()), stdout);
    return 0;
}
