#include <gtest/gtest.h>

#include <functional>
#include <string>

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

// An output filter that counts its flushes (which may be told to fail) and
// otherwise keeps the base's flush and close.
class CountingFilter : public ZUMFilterOutputStream {
public:
    CountingFilter() = default;
    explicit CountingFilter(ZUMOutputStream& downstream) : ZUMFilterOutputStream(downstream) {}
    void write(char const* bytes, int count) override { p_downstream->write(bytes, count); }
    void flush() override
    {
        ++flushes;
        wrapped_at_flush = p_downstream != nullptr;
        if (fail_flush) {
            RVK_THROW(RVKIllegalStateError(0, nullptr), "CountingFilter::flush");
        }
        ZUMFilterOutputStream::flush();
    }
    int flushes = 0;
    bool wrapped_at_flush = false;
    bool fail_flush = false;
};

// An endpoint that implements the timeout and cancel operations and records
// the arguments it was given.
class TimedEndpoint : public ScriptedInputStream {
public:
    TimedEndpoint() : ScriptedInputStream({}, true) {}
    RVK_bool canTimeout() const override { return 1; }
    RVK_bool setTimeout(int s) override { timeout = s; return s > 0; }
    RVK_bool canCancel() const override { return 1; }
    RVK_bool setCancel(int setting) override { cancel_setting = setting; return 1; }
    int getCancel() const override { return cancel_setting + 100; }
    void cancel() override { RVK_THROW(ZUMIOCancelException(static_cast<RVKSeverity>(1), 4L), "TimedEndpoint::cancel"); }
    int cancel_setting = 0;
};

template <class Error>
void expectRaise(std::function<void()> const& call, char const* method)
{
    try {
        call();
        ADD_FAILURE() << "no raise: " << method;
    } catch (Error const& e) {
        EXPECT_EQ(e.getCode(), 0);
        ASSERT_EQ(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, method);
    }
}

void expectAssert(std::function<void()> const& call, char const* text)
{
    try {
        call();
        ADD_FAILURE() << "no raise: " << text;
    } catch (RVKAssertError const& e) {
        EXPECT_STREQ(e.getText(), text);
    }
}

}  // namespace

TEST(ZUMFilterInputStream, WrapTwiceRaisesAndKeepsTheFirstUpstream)
{
    ZUMMemoryInputStream first("ab", 2);
    ZUMMemoryInputStream second("xy", 2);
    PassFilter f(&first);
    expectRaise<RVKIllegalStateError>([&] { f.wrap(second); },
                                      "ZUMFilterInputStream::wrap - stream is already wrapped");
    EXPECT_EQ(f.read(), 'a');
    EXPECT_EQ(second.read(), 'x');
}

TEST(ZUMFilterInputStream, UnWrapNeedsAnUpstreamThatCanUnread)
{
    PassFilter f;
    expectRaise<RVKIllegalStateError>([&] { f.unWrap(); },
                                      "ZUMFilterInputStream::unWrap - stream not wrapped");
    ZUMMemoryInputStream memory("ab", 2);
    f.wrap(memory);
    expectRaise<RVKAssertError>([&] { f.unWrap(); },
                                "ZUMFilterInputStream::unWrap - upstream can't unread");
    EXPECT_EQ(f.getUpstream(), &memory);
    EXPECT_EQ(f.read(), 'a');

    ScriptedInputStream pushable({ScriptStep::data("pq")}, true);
    PassFilter g(&pushable);
    g.close();  // closing keeps the filter wrapped
    EXPECT_EQ(g.getUpstream(), &pushable);
    g.unWrap();
    EXPECT_EQ(g.getUpstream(), nullptr);
    expectRaise<RVKIllegalStateError>([&] { g.unWrap(); },
                                      "ZUMFilterInputStream::unWrap - stream not wrapped");
    g.wrap(memory);
    EXPECT_EQ(g.read(), 'b');
}

TEST(ZUMFilterInputStream, UnwrappedAnswersFalseOrZeroWithoutRaising)
{
    PassFilter f;
    EXPECT_EQ(f.canTimeout(), 0);
    EXPECT_EQ(f.setTimeout(5), 0);
    EXPECT_EQ(f.getTimeout(), 0);
    EXPECT_EQ(f.canCancel(), 0);
    EXPECT_EQ(f.setCancel(1), 0);
    EXPECT_EQ(f.getCancel(), 0);
    EXPECT_NO_THROW(f.cancel());
    EXPECT_NO_THROW(f.close());
}

TEST(ZUMFilterInputStream, PassesCloseTimeoutAndCancelThroughAStack)
{
    TimedEndpoint endpoint;
    endpoint.timeout = 30;
    PassFilter bottom(&endpoint), middle(&bottom), top(&middle);
    EXPECT_EQ(top.getTimeout(), 30);
    EXPECT_EQ(top.canTimeout(), 1);
    EXPECT_EQ(top.setTimeout(12), 1);
    EXPECT_EQ(top.setTimeout(-1), 0);
    EXPECT_EQ(endpoint.timeout, -1);
    EXPECT_EQ(top.canCancel(), 1);
    EXPECT_EQ(top.setCancel(3), 1);
    EXPECT_EQ(top.getCancel(), 103);
    try {
        top.cancel();
        ADD_FAILURE() << "cancel did not raise";
    } catch (ZUMIOCancelException const& e) {
        EXPECT_EQ(e.getCode(), 4);
        EXPECT_EQ(e.getBackTraceSize(), 1u);  // the filters add nothing
    }
    top.close();
    EXPECT_EQ(endpoint.closes, 1);
    EXPECT_EQ(top.getUpstream(), &middle);
}

TEST(ZUMFilterInputStream, PassesTheEndpointsRefusalsUnchanged)
{
    ZUMMemoryInputStream memory("ab", 2);
    PassFilter bottom(&memory), top(&bottom);
    expectRaise<RVKUnsupportedOperationError>(
        [&] { top.setTimeout(5); }, "RVK_bool ZUMInputStream::setTimeout( int time_limit_sec )");
    expectRaise<RVKUnsupportedOperationError>([&] { top.cancel(); }, "ZUMInputStream::cancel");
    EXPECT_EQ(top.canTimeout(), 0);
    top.close();
    EXPECT_FALSE(memory.isOpen());
}

TEST(ZUMFilterStreams, DestroyingAWrappedFilterLeavesTheStreamBeneathUsable)
{
    ZUMMemoryInputStream memory("abc", 3);
    RecordingOutputStream recorder;
    {
        PassFilter in(&memory);
        EXPECT_EQ(in.read(), 'a');
        CountingFilter out(recorder);
        out.write("w", 1);
    }
    EXPECT_TRUE(memory.isOpen());
    EXPECT_EQ(memory.read(), 'b');
    EXPECT_EQ(recorder.flushes + recorder.closes, 0);
    recorder.write("z", 1);
    EXPECT_EQ(recorder.all(), "wz");
}

TEST(ZUMFilterOutputStream, WrapAndUnWrapAssertTheirState)
{
    RecordingOutputStream a, b;
    CountingFilter f(a);
    expectAssert([&] { f.wrap(b); }, "RVK_ASSERT(!p_downstream);");
    f.write("1", 1);
    EXPECT_EQ(a.all(), "1");
    f.unWrap();
    expectAssert([&] { f.unWrap(); }, "RVK_ASSERT(p_downstream);");
    CountingFilter unwrapped;
    EXPECT_EQ(unwrapped.getDownstream(), nullptr);
    unwrapped.wrap(b);
    unwrapped.write("2", 1);
    EXPECT_EQ(b.all(), "2");
}

TEST(ZUMFilterOutputStream, UnWrapFlushesOnceWhileStillWrapped)
{
    RecordingOutputStream a;
    CountingFilter f(a);
    f.unWrap();
    EXPECT_EQ(f.flushes, 1);
    EXPECT_TRUE(f.wrapped_at_flush);
    EXPECT_EQ(f.getDownstream(), nullptr);

    CountingFilter failing(a);
    failing.fail_flush = true;
    EXPECT_THROW(failing.unWrap(), RVKIllegalStateError);
    EXPECT_EQ(failing.getDownstream(), &a);
}

TEST(ZUMFilterOutputStream, BaseFlushAndCloseWriteNothingDownstream)
{
    RecordingOutputStream a;
    CountingFilter f(a);
    f.close();
    f.flush();
    f.ZUMFilterOutputStream::close();
    EXPECT_TRUE(a.writes.empty());
    EXPECT_EQ(a.flushes, 0);
    EXPECT_EQ(a.closes, 0);
    f.write("after", 5);
    EXPECT_EQ(a.all(), "after");
}
