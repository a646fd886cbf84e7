#include <gtest/gtest.h>

#include "TestStreams.h"

TEST(BlockInputStream, DeliversBlocksWithUnreadBytesInThemAndUnWrapHandsReadAheadBack)
{
    ZUMMemoryInputStream mem("0123456789abcdefgh", 18);
    ZUMBlockInputStream block(mem, 3);
    EXPECT_EQ(block.read(), -1);  // no block opened yet
    block.resetBlockSize(4);
    EXPECT_EQ(drain(block, 100), "0123");
    block.resetBlockSize(5);
    char buf[3];
    ASSERT_EQ(block.read(buf, 2), 2);
    block.unread("XY", 2);  // inside a block: part of it
    EXPECT_EQ(drain(block, 100, Form::Byte), "XY678");
    block.unread("Z", 1);  // after its end: kept for the next one
    EXPECT_EQ(block.read(), -1);
    block.resetBlockSize(2);
    EXPECT_EQ(drain(block, 100, Form::Array), "Z9");
    block.resetBlockSize(50);
    EXPECT_EQ(drain(block, 100), "abcdefgh");
    block.resetBlockSize(5);
    EXPECT_EQ(block.read(buf, 3), -1);  // the stream beneath has ended

    // unWrap hands the read-ahead back from an owned or a lent buffered stream.
    ZUMMemoryInputStream mem1("0123456789", 10), mem2("0123456789", 10);
    ZUMBufferedInputStream lower(mem1, 10), lent(mem2, 8);
    ZUMBlockInputStream owned(lower, 8), borrowing(lent);
    for (ZUMBlockInputStream* block : {&owned, &borrowing}) {
        block->resetBlockSize(3);
        EXPECT_EQ(drain(*block, 100), "012");
        block->unWrap();
    }
    EXPECT_EQ(drain(lower, 100), "3456789");
    EXPECT_EQ(lent.getUpstream(), &mem2);
    EXPECT_EQ(drain(lent, 100), "3456789");
}
