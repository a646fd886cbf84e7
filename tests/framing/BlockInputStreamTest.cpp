#include <gtest/gtest.h>

#include "FramingTestUtil.h"
#include "TestStreams.h"
#include "ZUMBlockInputStream.h"

TEST(BlockInputStream, DeliversBlocksOneAfterAnother)
{
    ZUMMemoryInputStream mem("0123456789", 10);
    ZUMBlockInputStream block(mem, 3);
    char buf[100];
    EXPECT_EQ(block.read(buf, 100), -1);  // no block opened yet
    block.resetBlockSize(4);
    EXPECT_EQ(readAll(block, 100), "0123");
    block.resetBlockSize(6);
    EXPECT_EQ(readAll(block, 100), "456789");
    block.resetBlockSize(5);
    EXPECT_EQ(block.read(buf, 100), -1);  // the stream beneath has ended
    EXPECT_EQ(block.read(), -1);

    ZUMMemoryInputStream mem2("abcdef", 6);
    ZUMBlockInputStream bytes(mem2, 16);
    bytes.resetBlockSize(3);
    EXPECT_EQ(readAllBytes(bytes), "abc");
}

TEST(BlockInputStream, UnreadBytesBelongToTheCurrentOrNextBlock)
{
    ZUMMemoryInputStream mem("abcdefgh", 8);
    ZUMBlockInputStream block(mem, 16);
    block.resetBlockSize(5);
    char buf[3];
    ASSERT_EQ(block.read(buf, 3), 3);
    block.unread("XY", 2);
    EXPECT_EQ(readAll(block, 100), "XYde");

    // After the end of a block: kept for the next one.
    block.unread("Z", 1);
    EXPECT_EQ(block.read(), -1);
    block.resetBlockSize(2);
    EXPECT_EQ(readAll(block, 100), "Zf");
}

TEST(BlockInputStream, UnWrapHandsReadAheadBackOnlyFromAnOwnedStream)
{
    ZUMMemoryInputStream mem("0123456789", 10);
    ZUMBufferedInputStream lower(mem, 10);
    ZUMBlockInputStream owned(lower, 8);
    owned.resetBlockSize(3);
    EXPECT_EQ(readAll(owned, 100), "012");
    owned.unWrap();
    EXPECT_EQ(readAll(lower, 100), "3456789");

    ZUMMemoryInputStream mem2("0123456789", 10);
    ZUMBufferedInputStream lent(mem2, 8);
    ZUMBlockInputStream borrowing(lent);
    borrowing.resetBlockSize(3);
    EXPECT_EQ(readAll(borrowing, 100), "012");
    borrowing.unWrap();
    EXPECT_EQ(lent.getUpstream(), &mem2);
    EXPECT_EQ(readAll(lent, 100), "3456789");
}
