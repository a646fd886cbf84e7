#include <gtest/gtest.h>

#include "TestStreams.h"

TEST(ZUMMemoryInputStream, ReadsAnArrayOrABufferTheCallerAppendsToAndRewindsOnOpen)
{
    std::string const bytes = "\xff\x80" + testBytes(254);
    ZUMMemoryInputStream in(bytes.data(), 256);
    EXPECT_EQ(drain(in, 0, Form::Byte), bytes);  // byte values as 0 to 255
    char buf[4] = {'#'};
    RVKByteBuffer b;
    EXPECT_EQ((Row{in.read(), in.read(buf, 3), in.read(buf, 0), in.read(b, 0)}), (Row{-1, -1, -1, -1}));
    EXPECT_EQ(in.open(), 1);
    EXPECT_EQ((Row{in.read(buf, 0), in.read(b, 0)}), (Row{0, 0}));  // nothing asked, not at the end
    EXPECT_EQ((Row{in.read(buf, -1), in.read(b, -1)}), (Row{-1, -1}));
    EXPECT_EQ(raised([&] { in.read(nullptr, 5); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_EQ(in.read(buf, 3), 3);
    EXPECT_EQ(drain(in, 100), bytes.substr(3));
    in.close();
    EXPECT_EQ((Row{in.read(), in.read(buf, 3), in.read(b, 3), in.readFully(b, 1)}), (Row{-1, -1, -1, -1}));
    EXPECT_EQ(raised([&] { in.read(nullptr, -1); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_EQ(in.open(), 1);
    EXPECT_EQ(in.read(), 255);
    ZUMMemoryInputStream none(nullptr, 10), negative("abc", -1);  // bad arguments: closed
    EXPECT_EQ((Row{none.isOpen(), negative.isOpen(), none.open()}), (Row{0, 0, 0}));
    EXPECT_EQ((Row{none.read(), negative.read()}), (Row{-1, -1}));

    // Over a byte buffer: what the caller appends later is read.
    RVKByteBuffer source(0, 1);
    ZUMMemoryInputStream over(source);
    EXPECT_EQ(over.read(), -1);
    std::string all = testBytes(50 * 51 / 2);
    for (std::size_t i = 1, at = 0; i <= 50; at += i++) {  // appends that move the storage between reads
        source.appendChars(all.data() + at, static_cast<unsigned>(i));
        ASSERT_EQ(drain(over, 64), all.substr(at, i));
    }
    source.reset();  // shrunk below the position
    EXPECT_EQ(over.read(), -1);
    EXPECT_EQ(over.open(), 1);
    source.appendChars("z", 1);
    EXPECT_EQ(over.read(), 'z');
    EXPECT_EQ((Row{over.canUnread(), over.open(nullptr, 5), over.open()}), (Row{0, 0, 0}));
    delete new ZUMMemoryInputStream(source);  // destroying a stream leaves its source alone
    EXPECT_EQ((Row{over.open(source), over.read()}), (Row{1, 'z'}));
}

TEST(ZUMMemoryOutputStream, CollectsWritesUntilReset)
{
    for (int initial : {0, 1, 1024}) {
        ZUMMemoryOutputStream out(initial, 1);
        out.write("abc", 3);
        out.write(nullptr, 0);
        out.flush();
        out.close();  // flush and close change nothing
        out.write("de", 2);
        EXPECT_EQ(std::string(out.bytes(), static_cast<std::size_t>(out.length())), "abcde");
        EXPECT_EQ(raised([&] { out.write("ab", -1); }), "RVKAssertError(RVK_ASSERT(count >= 0);) @-");
        EXPECT_THROW(out.write(nullptr, 3), RVKAssertError);
        out.reset();
        out.write("x", 1);
        EXPECT_EQ(std::string(out.bytes(), static_cast<std::size_t>(out.length())), "x");
    }
}
