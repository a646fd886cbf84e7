#include <gtest/gtest.h>

#include "TestStreams.h"

namespace {

// An input filter that passes every read through unchanged.
class PassFilter : public ZUMFilterInputStream {
public:
    PassFilter() = default;
    explicit PassFilter(ZUMInputStream* upstream) { wrap(*upstream); }
    int read(RVKByteBuffer& buffer, int count) override { return p_upstream->read(buffer, count); }
    int read(char* buf, int count) override { return p_upstream->read(buf, count); }
    int read() override { return p_upstream->read(); }
};

// An output filter that counts its flushes and otherwise keeps the base's
// flush and close.
class CountingFilter : public ZUMFilterOutputStream {
public:
    explicit CountingFilter(ZUMOutputStream& downstream) : ZUMFilterOutputStream(downstream) {}
    void write(char const* bytes, int count) override { p_downstream->write(bytes, count); }
    void flush() override { ++flushes, ZUMFilterOutputStream::flush(); }
    int flushes = 0;
};

std::string const k_not_wrapped = "RVKIllegalStateError() @ZUMFilterInputStream::unWrap - stream not wrapped";

}  // namespace

TEST(ZUMFilterInputStream, WrapAndUnWrapCheckTheirState)
{
    PassFilter f;  // unwrapped: answers false or 0 and raises nothing
    EXPECT_EQ(f.canTimeout() + f.setTimeout(5) + f.getTimeout() + f.canCancel() + f.setCancel(1) + f.getCancel(), 0);
    EXPECT_NO_THROW(f.cancel());
    EXPECT_NO_THROW(f.close());
    EXPECT_EQ(raised([&] { f.unWrap(); }), k_not_wrapped);
    ZUMMemoryInputStream memory("ab", 2), other("xy", 2);
    f.wrap(memory);
    EXPECT_EQ(raised([&] { f.wrap(other); }),
              "RVKIllegalStateError() @ZUMFilterInputStream::wrap - stream is already wrapped");
    EXPECT_EQ(raised([&] { f.unWrap(); }), "RVKAssertError() @ZUMFilterInputStream::unWrap - upstream can't unread");
    EXPECT_EQ(f.read(), 'a');

    ScriptedInputStream pushable({ScriptStep::data("pq")}, true);
    PassFilter g(&pushable);
    g.close();  // closing keeps the filter wrapped
    g.unWrap();
    EXPECT_EQ(raised([&] { g.unWrap(); }), k_not_wrapped);
    g.wrap(memory);
    EXPECT_EQ(g.read(), 'b');
}

// Wrapped, a filter passes timeout, cancel and close on to the stream beneath
// (which refuses the first two here).
TEST(ZUMFilterInputStream, PassesCloseTimeoutAndCancelThroughAStack)
{
    ZUMMemoryInputStream memory("ab", 2);
    PassFilter bottom(&memory), top(&bottom);
    EXPECT_THROW(top.setTimeout(5), RVKUnsupportedOperationError);
    EXPECT_THROW(top.setCancel(1), RVKUnsupportedOperationError);
    EXPECT_THROW(top.cancel(), RVKUnsupportedOperationError);
    top.close();
    EXPECT_FALSE(memory.isOpen());
    EXPECT_EQ(top.getUpstream(), &bottom);
}

TEST(ZUMFilterOutputStream, WrapAndUnWrapAssertTheirStateAndUnWrapFlushesOnce)
{
    RecordingOutputStream a, b;
    {
        CountingFilter f(a);
        EXPECT_EQ(raised([&] { f.wrap(b); }), "RVKAssertError(RVK_ASSERT(!p_downstream);) @-");
        f.write("1", 1);
        f.close();  // the base's flush and close pass nothing down
        f.unWrap();
        EXPECT_EQ(raised([&] { f.unWrap(); }), "RVKAssertError(RVK_ASSERT(p_downstream);) @-");
        EXPECT_EQ(f.flushes, 1);
        f.wrap(b);
        f.write("2", 1);
    }  // destroying a wrapped filter leaves the stream beneath alone
    EXPECT_EQ(a.all() + b.all(), "12");
    EXPECT_EQ(a.flushes + a.closes + b.flushes + b.closes, 0);
}
