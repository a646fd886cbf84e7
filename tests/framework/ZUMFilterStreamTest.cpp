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

// An endpoint that implements the timeout and cancel operations.
class TimedEndpoint : public ScriptedInputStream {
public:
    TimedEndpoint() : ScriptedInputStream({}) {}
    RVK_bool canTimeout() const override { return 1; }
    RVK_bool setTimeout(int s) override { return timeout = s, s > 0; }
    int getTimeout() const override { return timeout; }
    void cancel() override { RVK_THROW(ZUMIOCancelException(static_cast<RVKSeverity>(1), 4L), "TimedEndpoint"); }
    int timeout = 30;
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

TEST(ZUMFilterInputStream, PassesCloseTimeoutAndCancelThroughAStack)
{
    TimedEndpoint endpoint;
    PassFilter bottom(&endpoint), top(&bottom);
    EXPECT_EQ(top.getTimeout(), 30);
    EXPECT_EQ(top.canTimeout() + top.setTimeout(12) + top.setTimeout(-1), 2);
    EXPECT_EQ(endpoint.timeout, -1);
    EXPECT_EQ(raised([&] { top.cancel(); }), "ZUMIOCancelException(1,4) @TimedEndpoint");
    EXPECT_EQ(raised([&] { top.setCancel(1); }), "RVKUnsupportedOperationError() @ZUMInputStream::setCancel");
    top.close();
    EXPECT_EQ(endpoint.closes, 1);
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
