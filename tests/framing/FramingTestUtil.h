#ifndef ZUM_FRAMING_TEST_UTIL_H
#define ZUM_FRAMING_TEST_UTIL_H

#include <string>
#include <vector>

#include "RVKByteBuffer.h"
#include "RVKThrowable.h"
#include "ZUMInputStream.h"

// Reads `in` with block reads of `count` into a byte buffer until -1 and
// returns everything; each result above 0 is recorded in `sizes` if given.
// Gives up after 10000 reads in a row that deliver nothing.
inline std::string readAll(ZUMInputStream& in, int count, std::vector<int>* sizes = nullptr)
{
    RVKByteBuffer got(0, 256);
    for (int empty = 0; empty < 10000;) {
        int n = in.read(got, count);
        if (n < 0) {
            break;
        }
        empty = n == 0 ? empty + 1 : 0;
        if (n > 0 && sizes) {
            sizes->push_back(n);
        }
    }
    return std::string(got.str(), static_cast<std::size_t>(got.pcount()));
}

// Reads `in` with the single-byte read until -1.
inline std::string readAllBytes(ZUMInputStream& in)
{
    std::string got;
    for (int c = in.read(); c != -1; c = in.read()) {
        got += static_cast<char>(c);
    }
    return got;
}

inline std::string text(RVKByteBuffer const& b)
{
    return std::string(b.str(), static_cast<std::size_t>(b.pcount()));
}

// The assertion text or method text of a caught core throwable.
inline std::string assertText(RVKThrowable const& e)
{
    return e.getText() ? e.getText() : "";
}

inline std::string methodText(RVKThrowable const& e)
{
    return e.getBackTraceSize() && e.getBackTraceEntry(0).method ? e.getBackTraceEntry(0).method : "";
}

#endif
