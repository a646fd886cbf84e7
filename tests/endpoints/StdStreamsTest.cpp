// The endpoints over the standard C++ streams.
#include <gtest/gtest.h>

#include <sstream>

#include "TestStreams.h"

TEST(ZUMStdStreams, ReadAndWriteStandardStreams)
{
    std::istringstream source(std::string("\xff" "abcdef", 7));
    ZUMStdInputStream in(source);
    EXPECT_EQ(in.read(), 255);
    char buf[4];
    EXPECT_EQ(in.read(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 4), "abcd");
    RVKByteBuffer rest(0, 16);
    EXPECT_EQ(in.read(rest, 10), 2);
    EXPECT_EQ(str(rest), "ef");
    EXPECT_EQ((Row{in.read(buf, 4), in.read()}), (Row{-1, -1}));

    std::ostringstream sink;
    ZUMStdOutputStream out(sink);
    out.write("hello", 5);
    out.close();
    EXPECT_EQ(sink.str(), "hello");
    sink.setstate(std::ios::badbit);
    std::string failure = raised([&] { out.write("x", 1); });
    EXPECT_EQ(failure.rfind("ZUMIOException(1,", 0), 0u) << failure;
    EXPECT_NE(failure.find(" #TEXT_ERROR 'std::ostream write failed' @"), std::string::npos) << failure;
}
